// Receiving a short message: the stack's notification and the framework's
// answer to it.
#include "handlers/registration/helpers.h"

IMS_NOTIFY(NotifyReceiveSms) {
    IMS_LOGV("%s()", __func__);
    if (!TakeHead(notify, data)) return -1;
    const auto& r = *static_cast<ReceiveSmsData*>(data);
    auto* body = notify.mutable_smsnoti();
    body->set_handle(r.mHandle);
    body->set_callid(r.mCallId);
    body->set_content(r.mContent);
    body->set_contenttype(r.mContentType);
    body->set_contentsubtype(r.mContentSubType);
    body->set_len(r.mLen);
    body->set_scuri(r.mScUri);
    return 0;
}

IMS_DISPATCH(DispatchReceiveSmsResp) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestreceivesmsresp());
    s_velar->OnRequest(token, new SmsReceiveResponse(403, body.handle(), body.callid(),
                                                     static_cast<int>(body.status())));
}
