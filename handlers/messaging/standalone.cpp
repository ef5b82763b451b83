// Standalone messages and files: sent to a list of participants without an
// established chat session, each request carrying its session description,
// content and addressees by value. Incoming standalone files and their
// progress go through the file transfer handlers.
#include <string>

#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"
#include "handlers/messaging/file_transfer.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

using namespace protobuf_data_translation;
using namespace file_transfer;

namespace {

// The head both standalone requests share: the registration handle, the
// participants in wire order and the part of the session that applies. The
// addressees travel as participants, so neither the session handle nor the
// receivers nor the conference flag do.
template <class Record, class Body>
Record* newStandaloneRecord(int id, const Body& body) {
    auto* record = new Record(id);
    record->handle = body.registrationhandle();
    for (const auto& p : body.participant())
        record->participants.push_back(translateParticipant(p));
    copySessionIds(record->session, body.sessiondata());
    return record;
}

}  // namespace

IMS_DISPATCH(DispatchIMSendSlmMessage) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendimslmmessage());
    auto& wireSession = *body.mutable_sessiondata();
    auto& wireMessage = *body.mutable_messageparam();

    auto* record = newStandaloneRecord<RequestSendImSlmMessage>(request.reqid(), body);

    ImMessage& message = record->message;
    // The alias of a standalone message is the session's, not the message's.
    message.userAlias = TAKE_STRING(wireSession, useralias);
    message.body = TAKE_STRING(wireMessage, body);
    message.contentType = TAKE_STRING(wireMessage, contenttype);
    message.imdn = translateFwImdnData(wireMessage.imdn());
    message.deviceName = TAKE_STRING(wireMessage, devicename);
    message.reliableMessage = TAKE_STRING(wireMessage, reliablemessage);
    message.xmsMessage = TAKE_STRING(wireMessage, xmsmessage);
    message.extraFt = wireMessage.extraft();
    message.isBurnMsg = wireMessage.isburnmsg();
    message.isPublicAccountMsg = wireMessage.ispublicaccountmsg();

    record->reportData.spamFrom = body.reportdata().spamfrom();
    record->reportData.spamTo = body.reportdata().spamto();
    record->reportData.spamDate = body.reportdata().spamdate();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchSlmSendFile) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendslmfile());
    auto& wireSession = *body.mutable_sessiondata();
    auto& wirePayload = *body.mutable_payloadparam();

    auto* record = newStandaloneRecord<RequestSlmSendFile>(request.reqid(), body);
    record->session.sessionUri = TAKE_STRING(wireSession, sessionuri);
    record->session.sdpContentType = TAKE_STRING(wireSession, sdpcontenttype);

    // A standalone file always goes whole, whatever range the client names,
    // and without an icon; an empty file wraps round to the largest offset,
    // as unsigned arithmetic gives it.
    FtPayload& payload = record->payload;
    payload.fileAttr = fileAttrFromWire(wirePayload.fileattr());
    payload.fileAttr.start = 0;
    payload.fileAttr.end = payload.fileAttr.size - 1;
    payload.fileAttr.timeDuration = 0;
    copyPayloadContent(payload, wirePayload);
    s_velar->OnRequest(token, record);
}

IMS_RESPONSE(ResponseSendImSlmMessage) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<SendImSlmMessageRespData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_sendimslmmessageresp();
    body->set_imdnmessageid(record->imdnMessageId);
    SetImError(body->mutable_imerror(), record->error);
    if (record->retry.retryTimer != -1) SetRetryHdr(body->mutable_retryhdr(), record->retry);
    if (record->warning.code != -1) SetWarningHdr(body->mutable_warninghdr(), record->warning);
    return 0;
}

IMS_RESPONSE(PrepareResponseSlmSendFile) {
    if (logLevel > 1)
        IMS_LOGD("%s: ", IMS_METHOD_NAME(
                             "int PrepareResponseSlmSendFile(uint32_t, imsCommonStruc::Response&, "
                             "ImsData*)"));
    const auto* record = RecordOf<SendSlmFileRespData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_sendslmfileresp();
    body->set_sessionhandle(record->handle);
    body->set_imdnmessageid(record->imdnMessageId);
    SetImError(body->mutable_imerror(), record->error);
    return 0;
}

IMS_NOTIFY(PrepareNotifySlmIncoming) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<SlmIncomingData>(notify, data, {"null notification!"});
    if (record == nullptr) return -1;
    auto* body = notify.mutable_slmmessageincoming();
    auto* session = body->mutable_sessiondata();
    session->set_preferredlineuri(record->session.preferredLineUri);
    session->set_sessionhandle(record->session.sessionHandle);
    session->set_contributionid(record->session.contributionId);
    session->set_conversationid(record->session.conversationId);
    for (const auto& receiver : record->session.receivers) session->add_receivers(receiver);
    // The stack promises a message; should one ever be missing, the client
    // still learns of the incoming session, with an empty message.
    static const ImMessage kNoMessage{};
    translateStackImMessage(*body->mutable_msg(),
                            record->message != nullptr ? *record->message : kNoMessage);
    return 0;
}
