// Sending a short message: the request, the stack's answer, the network's
// RP-ACK and the framework's reply to it. Bodies and acknowledgement codes
// are opaque bytes and pass whole, zero bytes included.
#include "handlers/common/helpers.h"
#include "handlers/common/take_fields.h"

IMS_DISPATCH(DispatchSendMessage) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendmsg());
    // The stack tells a reply from a new message by the constructor used, so
    // presence decides, not content: an empty inReplyTo is still a reply.
    // contentLen goes as given, even where it disagrees with the body.
    SendMessageData* record;
    if (body.has_inreplyto()) {
        record = new SendMessageData(request.reqid(), static_cast<int>(body.handle()), body.smsc(),
                                     body.localuri(), body.contenttype(), body.contentsubtype(),
                                     body.contentlen(), body.contentbody(),
                                     TAKE_STRING(body, inreplyto));
    } else {
        record = new SendMessageData(request.reqid(), static_cast<int>(body.handle()), body.smsc(),
                                     body.localuri(), body.contenttype(), body.contentsubtype(),
                                     body.contentlen(), body.contentbody());
    }
    s_velar->OnRequest(token, record);
}

IMS_RESPONSE(ResponseSendSmsResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* r = RecordOf<SmsResponseData>(response, data);
    if (r == nullptr) return -1;
    auto* body = response.mutable_sendsmsresp();
    body->set_handle(r->mHandle);
    body->set_statuscode(r->mStatusCode);
    body->set_callid(r->mCallId);
    body->set_errstr(r->mErrStr);
    body->set_retryafter(r->mRetryAfter);
    return 0;
}

IMS_NOTIFY(NotifySmsRpAck) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<SmsRpAckData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_smsrpack();
    body->set_callid(r->mCallId);
    body->set_ackcode(r->mAckCode);
    body->set_acklen(r->mAckLen);
    body->set_contenttype(r->mContentType);
    body->set_contentsubtype(r->mContentSubType);
    return 0;
}

IMS_DISPATCH(DispatchSendRpAckResp) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendrpackresp());
    s_velar->OnRequest(
        token, new RpAckResponse(request.reqid(), body.handle(), TAKE_STRING(body, callid)));
}
