// Inside an established chat: messages, composing indications, delivery
// notifications and participant changes.
#include <string>
#include <vector>

#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

IMS_DISPATCH(DispatchIMSendMessage) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendimmessage());
    auto& param = *body.mutable_messageparam();

    // The session already fixes who sends and who receives; of the message
    // only its content and delivery data go down. Sender, alias, receiver,
    // burn, public-account, silence and CPIM fields of the wire are not read.
    auto* message = new ImMessage();
    message->body = TAKE_STRING(param, body);
    message->contentType = TAKE_STRING(param, contenttype);
    message->imdn = protobuf_data_translation::translateFwImdnData(param.imdn());
    message->deviceName = TAKE_STRING(param, devicename);
    message->reliableMessage = TAKE_STRING(param, reliablemessage);
    message->xmsMessage = TAKE_STRING(param, xmsmessage);
    message->extraFt = param.extraft();
    message->ccParticipants = TakeStrings(param.mutable_ccparticipants());

    auto* record = new RequestSendImMessage(request.reqid());
    record->handle = body.sessiondata().sessionhandle();
    record->message = message;
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchIMSendComposingStatus) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendimcomposingstatus());
    auto* record = new RequestSendImComposingStatus(request.reqid());
    record->handle = body.sessionid();
    record->status.contentType = body.status().contenttype();
    record->status.interval = body.status().interval();
    record->status.isActive = body.status().isactive();
    s_velar->OnRequest(token, record);
}

// The one dispatch handler that validates: a status or service outside the
// known numbers is dropped here, and the client gets no answer at all.
IMS_DISPATCH(DispatchIMSendNotiStatus) {
    IMS_LOGI("%s()", __func__);
    static constexpr const char* kSignature =
        "void DispatchIMSendNotiStatus(uint32_t, imsCommonStruc::Request&, "
        "RequestInfo*)";
    auto& body = TakeBody(request.mutable_requestsendimnotificationstatus());
    auto& status = *body.mutable_status();
    const int value = static_cast<int>(status.status());
    if (value != 0 && value != 1) {
        IMS_LOGE("%s: Unsupported status!", IMS_METHOD_NAME(kSignature));
        return;
    }
    const int service = static_cast<int>(body.service());
    if (service < 0 || service > 2) {
        IMS_LOGE("%s: Unsupported service type!", IMS_METHOD_NAME(kSignature));
        return;
    }

    // Statuses 0 and 1 have the same numbers on both sides.
    auto* record = new RequestSendImNotiStatus(request.reqid());
    record->handle = body.sessionid();
    record->imdnMessageId = TAKE_STRING(status, imdnmessageid);
    record->imdnDateTime = TAKE_STRING(status, imdndatetime);
    record->status = static_cast<cpmim::ImNotificationStatus>(value);
    record->imdnRecRoute =
        protobuf_data_translation::translateFwImdnRecRoutes(status.imdnrecroute());
    record->registrationHandle = body.registrationhandle();
    record->uri = body.uri();
    record->conversationId = TAKE_STRING(body, conversationid);
    record->contributionId = TAKE_STRING(body, contributionid);
    record->service = service;
    record->preferredLineUri = TAKE_STRING(body, preferredlineuri);
    record->originalRecipientUri = TAKE_STRING(body, originalrecipienturi);
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchUpdateParticipants) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdateparticipants());
    auto* record = new RequestUpdateParticipants(request.reqid());
    record->handle = body.sessionhandle();
    record->reqType = static_cast<int32_t>(body.reqtype());
    record->receivers = TakeStrings(body.mutable_receiver());
    record->subject = TAKE_STRING(body, subject);
    record->userAlias = TAKE_STRING(body, useralias);
    s_velar->OnRequest(token, record);
}

IMS_RESPONSE(PrepareResponseIMSendMessage) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<SendImMessageRespData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_sendimmessageresp();
    body->set_sessionid(record->handle);
    body->set_imdnmessageid(record->imdnMessageId);
    SetImError(body->mutable_imerror(), record->error);
    return 0;
}

IMS_RESPONSE(ResponseUpdateParticipants) {
    IMS_LOGI("%s()", __func__);
    const auto* record =
        RecordOf<UpdateParticipantsRespData>(response, data, {"invalid stackResponse: NULL"});
    if (record == nullptr) return -1;
    auto* body = response.mutable_updateparticipantsresp();
    body->set_sessionhandle(record->handle);
    SetImError(body->mutable_imerror(), record->error);
    return 0;
}
