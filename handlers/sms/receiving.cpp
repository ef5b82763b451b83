// Receiving a short message: the stack's notification and the framework's
// answer to it.
#include "handlers/common/helpers.h"
#include "handlers/common/take_fields.h"

IMS_NOTIFY(NotifyReceiveSms) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<ReceiveSmsData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_smsnoti();
    body->set_handle(r->mHandle);
    body->set_callid(r->mCallId);
    body->set_content(r->mContent);
    body->set_contenttype(r->mContentType);
    body->set_contentsubtype(r->mContentSubType);
    body->set_len(r->mLen);
    body->set_scuri(r->mScUri);
    return 0;
}

IMS_DISPATCH(DispatchReceiveSmsResp) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestreceivesmsresp());
    s_velar->OnRequest(
        token, new SmsReceiveResponse(request.reqid(), body.handle(), TAKE_STRING(body, callid),
                                      static_cast<int>(body.status())));
}
