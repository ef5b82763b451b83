// File transfer inside a session: start, accept, cancel, progress and the
// offer of an incoming file. The daemon moves no file content, only its
// description; the same progress and incoming handlers serve standalone
// files under their own ids.
#include "handlers/common/take_fields.h"
#include "handlers/messaging/file_transfer.h"

#include <memory>
#include <string>

#include "handlers/handlers.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

using namespace protobuf_data_translation;

namespace file_transfer {

FileAttr fileAttrFromWire(const imsCommonStruc::ImFileAttr& wire) {
    FileAttr attr;
    attr.name = wire.name();
    attr.path = wire.path();
    attr.contentType = wire.contenttype();
    attr.size = wire.size();
    attr.start = wire.start();
    attr.end = wire.end();
    attr.timeDuration = wire.timeduration();
    return attr;
}

void copySessionIds(FtSessionParam& session, const imsCommonStruc::BaseSessionData& wire) {
    session.userAlias = wire.useralias();
    session.contributionId = wire.contributionid();
    session.conversationId = wire.conversationid();
    session.inReplyToContributionId = wire.inreplytocontributionid();
    session.preferredLineUri = wire.preferredlineuri();
}

void copyPayloadContent(FtPayload& payload, const imsCommonStruc::FtPayloadParam& wire) {
    payload.imdn = translateFwImdnData(wire.imdn());
    payload.deviceName = wire.devicename();
    payload.reliableMessage = wire.reliablemessage();
    payload.extraFt = wire.extraft();
    payload.isBurnMsg = wire.isburnmsg();
    payload.isPublicAccountMsg = wire.ispublicaccountmsg();
}

}  // namespace file_transfer

using namespace file_transfer;

namespace {

void fileAttrToWire(imsCommonStruc::ImFileAttr* wire, const FileAttr& attr) {
    wire->set_name(attr.name);
    wire->set_path(attr.path);
    wire->set_contenttype(attr.contentType);
    wire->set_size(attr.size);
    wire->set_start(attr.start);
    wire->set_end(attr.end);
    wire->set_timeduration(attr.timeDuration);
}

}  // namespace

IMS_DISPATCH(DispatchFTStartSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requeststartftsession());
    auto& wireSession = *body.mutable_sessiondata();
    auto& wirePayload = *body.mutable_payload();

    // The content type and service id of a transfer stay empty.
    auto* session = new FtSessionParam();
    session->sessionHandle = wireSession.sessionhandle();
    session->id = wireSession.id();
    session->isConference = wireSession.isconference();
    session->sessionUri = wireSession.sessionuri();
    // A conference transfer goes to the conference URI, never to a list.
    if (!wireSession.isconference())
        session->receivers.assign(wireSession.receivers().begin(), wireSession.receivers().end());
    copySessionIds(*session, wireSession);

    auto payload = std::make_unique<FtPayload>();
    payload->fileAttr = fileAttrFromWire(wirePayload.fileattr());
    payload->iconAttr = fileAttrFromWire(wirePayload.iconattr());
    copyPayloadContent(*payload, wirePayload);
    payload->isPush = wirePayload.ispush();

    ReportData report;
    report.spamFrom = body.reportdata().spamfrom();
    report.spamTo = body.reportdata().spamto();
    report.spamDate = body.reportdata().spamdate();

    s_velar->OnRequest(
        token, new FtStartSessionData(request.reqid(), static_cast<int>(body.registrationhandle()),
                                      session, std::move(payload), report));
}

IMS_DISPATCH(DispatchFTAcceptSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestacceptftsession());
    auto* record = new RequestAcceptFtSession(request.reqid());
    record->handle = body.sessionhandle();
    record->start = body.start();
    record->end = body.end();
    record->filePath = TAKE_STRING(body, filepath);
    record->userAlias = TAKE_STRING(body, useralias);
    s_velar->OnRequest(token, record);
}

// Serves 522 and 552 alike: the record keeps the id the client used.
IMS_DISPATCH(DispatchFTCancelSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestcancelftsession());
    auto* record = new CancelFtSessionData(static_cast<int>(request.reqid()));
    record->handle = body.sessionhandle();
    record->sipCode = body.sipcode();
    // An absent warning is code -1, which the stack reads as no header.
    const auto& warning = body.warninghdr();
    record->warning = body.has_warninghdr()
                          ? WarningHdr(warning.code(), warning.host(), warning.text())
                          : WarningHdr(-1, "", "");
    s_velar->OnRequest(token, record);
}

IMS_NOTIFY(NotifyFtProgress) {
    IMS_LOGV("%s()", "NotifyFtProgress");
    const auto* record = RecordOf<FtProgressData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_ftprogress();
    body->set_sessionhandle(record->handle);
    body->set_total(record->total);
    body->set_transferred(record->transferred);
    body->set_state(record->state);
    SetImError(body->mutable_imerror(), record->error);
    if (record->warning.code != -1) SetWarningHdr(body->mutable_warninghdr(), record->warning);
    if (record->reason.code != -1) SetReasonHdr(body->mutable_reasonhdr(), record->reason);
    return 0;
}

IMS_NOTIFY(PrepareNotifyFtIncomingSession) {
    const char* name =
        IMS_METHOD_NAME("int PrepareNotifyFtIncomingSession(imsCommonStruc::Notify&, ImsData*)");
    const auto* record = RecordOf<FtIncomingData>(notify, data, {kNullRecord, name});
    if (record == nullptr) return -1;
    if (logLevel > 1) IMS_LOGD("%s: reqId = %d", name, data->GetId());
    // The stack promises a payload; should one ever be missing, the client
    // still learns of the offer, with an empty description.
    static const FtPayload kNoPayload{};
    const FtPayload& payload = record->payload != nullptr ? *record->payload : kNoPayload;
    const FtSessionParam& session = record->session;

    auto* body = notify.mutable_ftincomingsession();
    auto* wireSession = body->mutable_session();
    wireSession->set_sessionhandle(session.sessionHandle);
    wireSession->set_sessionuri(session.sessionUri);
    wireSession->set_preferredlineuri(session.preferredLineUri);
    wireSession->set_sdpcontenttype(session.sdpContentType);
    wireSession->set_isconference(session.isConference);
    wireSession->set_contributionid(session.contributionId);
    wireSession->set_useralias(session.userAlias);
    wireSession->set_conversationid(session.conversationId);
    wireSession->set_inreplytocontributionid(session.inReplyToContributionId);
    wireSession->set_id(session.id);
    for (const auto& receiver : session.receivers) wireSession->add_receivers(receiver);

    auto* wirePayload = body->mutable_payload();
    fileAttrToWire(wirePayload->mutable_fileattr(), payload.fileAttr);
    wirePayload->set_devicename(payload.deviceName);
    wirePayload->set_reliablemessage(payload.reliableMessage);
    wirePayload->set_extraft(payload.extraFt);
    wirePayload->set_isburnmsg(payload.isBurnMsg);
    wirePayload->set_ispush(payload.isPush);
    // An icon is offered only with a path, and then only its path and size.
    if (!payload.iconAttr.path.empty()) {
        auto* icon = wirePayload->mutable_iconattr();
        icon->set_path(payload.iconAttr.path);
        icon->set_size(payload.iconAttr.size);
    }
    translateStackImdnData(*wirePayload->mutable_imdn(), payload.imdn);
    for (const auto& ns : payload.cpimNamespaces)
        translateCpimNamespace(*wirePayload->add_cpimnamespaces(), ns);
    wirePayload->set_sender(payload.sender);
    wirePayload->set_receiver(payload.receiver);
    wirePayload->set_silencesupported(payload.silenceSupported);
    return 0;
}
