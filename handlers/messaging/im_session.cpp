// IM sessions: start, accept, reject and close. The two answers serve
// file-transfer sessions too; only resid tells them apart.
#include <memory>
#include <string>
#include <vector>

#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

IMS_DISPATCH(DispatchIMStartSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requeststartimsession());
    auto& wireSession = *body.mutable_session();
    auto& base = *wireSession.mutable_basesessiondata();

    // The stack always gets a message, empty when the client sent none. Of a
    // first message only these fields are meant for the invitation.
    auto message = std::make_unique<ImMessage>();
    if (body.has_messageparam()) {
        auto& param = *body.mutable_messageparam();
        message->body = TAKE_STRING(param, body);
        message->contentType = TAKE_STRING(param, contenttype);
        message->xmsMessage = TAKE_STRING(param, xmsmessage);
        message->extraFt = param.extraft();
        message->imdn = protobuf_data_translation::translateFwImdnData(param.imdn());
    }

    auto session = std::make_unique<ImSessionParam>();
    session->sessionHandle = base.sessionhandle();
    session->id = base.id();
    session->isConference = base.isconference();
    session->sessionUri = TAKE_STRING(base, sessionuri);
    session->userAlias = TAKE_STRING(base, useralias);
    session->receivers = TakeStrings(base.mutable_receivers());
    session->contributionId = TAKE_STRING(base, contributionid);
    session->conversationId = TAKE_STRING(base, conversationid);
    session->inReplyToContributionId = TAKE_STRING(base, inreplytocontributionid);
    session->preferredLineUri = TAKE_STRING(base, preferredlineuri);
    session->sdpContentType = TAKE_STRING(base, sdpcontenttype);
    session->serviceId = base.serviceid();
    session->sender = TAKE_STRING(wireSession, sender);
    session->subject = TAKE_STRING(wireSession, subject);
    session->isRejoin = wireSession.isrejoin();
    session->isClosed = wireSession.isclosed();
    session->isInviteforbye = wireSession.isinviteforbye();
    session->isExtension = wireSession.isextension();
    session->acceptTypes = TakeStrings(wireSession.mutable_accepttypes());
    session->acceptWrappedTypes = TakeStrings(wireSession.mutable_acceptwrappedtypes());

    s_velar->OnRequest(
        token, new ImStartSessionData(request.reqid(), static_cast<int>(body.registrationhandle()),
                                      session.release(), std::move(message)));
}

IMS_DISPATCH(DispatchAcceptImSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestacceptimsession());
    s_velar->OnRequest(
        token, new RequestAcceptImSession(request.reqid(), static_cast<int>(body.sessionid()),
                                          TAKE_STRING(body, useralias)));
}

IMS_DISPATCH(DispatchImCloseSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestcloseimsession());
    auto* record = new CloseImSessionData(request.reqid());
    record->handle = body.sessionid();
    // Taken as it stands: without reasonHdr the stack gets code 0, not the
    // "absent" -1.
    record->reason =
        ReasonHdr(static_cast<int32_t>(body.reasonhdr().code()), body.reasonhdr().text());
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchRejectImSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestrejectimsession());
    auto* record = new RequestRejectImSession(request.reqid());
    record->handle = body.sessionhandle();
    record->sipCode = static_cast<int32_t>(body.sipcode());
    if (body.has_warninghdr()) {
        auto& warning = *body.mutable_warninghdr();
        record->warning =
            WarningHdr(warning.code(), TAKE_STRING(warning, host), TAKE_STRING(warning, text));
    } else {
        record->warning = WarningHdr(-1, "", "");
    }
    s_velar->OnRequest(token, record);
}

IMS_RESPONSE(ResponseStartSession) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<StartSessionRespData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_startsessionresp();
    body->set_sessionhandle(record->handle);
    body->set_fwsessionid(record->fwSessionId);
    SetImError(body->mutable_imerror(), record->error);
    return 0;
}

IMS_RESPONSE(ResponseCloseSession) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<CloseSessionRespData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_closesessionresp();
    body->set_sessionhandle(record->handle);
    SetImError(body->mutable_imerror(), record->error);
    return 0;
}
