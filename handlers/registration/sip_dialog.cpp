// The SIP dialog channel and its reports.
#include "handlers/common/helpers.h"

IMS_DISPATCH(DispatchOpenSipDialog) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestopensipdialog());
    s_velar->OnRequest(token, new PrimitiveData<bool>(request.reqid(), body.isrequired()));
}

IMS_DISPATCH(DispatchSipDialogSendSip) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendsip());
    s_velar->OnRequest(token, new SendSipData(request.reqid(), static_cast<int>(body.handle()),
                                              body.sipmessage()));
}

IMS_RESPONSE(ResponseSendSipResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<SipDialogResponseData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_sipdialoggeneralresponse();
    body->set_handle(record->handle);
    body->set_success(record->success);
    if (!record->sipmessage.empty()) body->set_sipmessage(record->sipmessage);
    return 0;
}

IMS_NOTIFY(NotifySipMessage) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<SipMessageData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_sipmessage();
    body->set_handle(record->handle);
    body->set_direction(static_cast<imsCommonStruc::SipDirection>(record->direction));
    body->set_origin(static_cast<imsCommonStruc::SipOrigin>(record->origin));
    body->set_sipmessage(record->sipMessage);
    return 0;
}

IMS_NOTIFY(NotifyDumpMessage) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<DumpMessageData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_dumpmessage();
    body->set_tag(record->tag);
    body->set_value(record->value);
    body->set_secure(record->secure);
    return 0;
}

IMS_NOTIFY(NotifyEcholocateMsg) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<EcholocateData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_echolocatemsg();
    body->set_handle(record->handle);
    // Any kind but 0 is an RTP report; the wire knows only the two.
    if (record->msgType != 0) {
        body->set_msgtype(imsCommonStruc::ECHOLOCATE_TYPE_RTP);
        auto* rtp = body->mutable_echolocatertpdata();
        rtp->set_id(record->id);
        rtp->set_dir(record->dir);
        rtp->set_lossrate(record->lossrate);
        rtp->set_delay(record->delay);
        rtp->set_jitter(record->jitter);
        rtp->set_measuredperiod(record->measuredperiod);
        rtp->set_nwstate(record->nwstate);
    } else {
        body->set_msgtype(imsCommonStruc::ECHOLOCATE_TYPE_SIGNAL);
        auto* signal = body->mutable_echolocatesignaldata();
        signal->set_origin(record->origin);
        signal->set_callid(record->callid);
        signal->set_cseq(record->cseq);
        signal->set_line1(record->line1);
        signal->set_from(record->from);
        signal->set_to(record->to);
        // Sent even when empty, as the other six are.
        signal->set_reason(record->reason);
        signal->set_contents(record->contents);
    }
    return 0;
}
