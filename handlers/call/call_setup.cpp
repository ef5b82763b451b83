// Calls placed, ended, answered, rejected and progressed, and the call-level
// answer that most call requests share.
#include <string>
#include <utility>
#include <vector>

#include "handlers/call/call_common.h"
#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"

IMS_DISPATCH(DispatchMakeCall) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestmakecall());

    // letteringText and typeOfEmergencyService are not the stack's business:
    // an emergency call differs only in what the framework fills in below.
    auto* record = new CallSetupData(
        request.reqid(), static_cast<int>(body.handle()), TAKE_STRING(body, peeruri),
        TAKE_STRING(body, origuri), TAKE_STRING(body, dispname), TAKE_STRING(body, dialednumber),
        std::string(), static_cast<int>(body.calltype()), static_cast<int>(body.codec()),
        body.mode(), body.direction(), ims_call::ContentsOf(body), TAKE_STRING(body, cli),
        TAKE_STRING(body, softphonee911pani),
        ims_call::HeaderMap(body.mutable_additionalsipheaders()), TAKE_STRING(body, alertinfo),
        TAKE_STRING(body, photoring));
    record->mEcscfList = TakeStrings(body.mutable_ecscflist());
    // 0 means "no port given": the stack keeps its own default then.
    if (body.ecscfport() != 0) record->mEcscfPort = body.ecscfport();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchEndCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requestendcall());

    CallEndData::Reason* reason = nullptr;
    if (body.has_endreason()) {
        const auto& wire = body.endreason();
        std::vector<std::string> extension(wire.extension().begin(), wire.extension().end());
        reason = new CallEndData::Reason(wire.protocol(), static_cast<int>(wire.cause()),
                                         wire.text(), std::move(extension), wire.islocalrelease());
    }
    auto* record = ims_call::NewRecord<CallEndData>(request.reqid());
    record->mSession = static_cast<int>(body.session());
    record->mReason = reason;
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchAcceptCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requestacceptcall());
    s_velar->OnRequest(token, new CallAcceptData(request.reqid(), static_cast<int>(body.session()),
                                                 static_cast<int>(body.calltype())));
}

IMS_DISPATCH(DispatchRejectCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requestrejectcall());
    auto* record = ims_call::NewRecord<CallRejectData>(request.reqid());
    record->mSession = static_cast<int>(body.session());
    record->mStatusCode = static_cast<int>(body.statuscode());
    record->mReasonPhrase = body.reasonphrase();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchProgressIncomingCall) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestprogressincomingcall());
    auto* record = new CallSessionId(request.reqid(), static_cast<int>(body.session()));
    // Only a present header list reaches the stack, even an empty one.
    if (body.has_extraheader())
        record->setExtraHeader(ims_call::HeaderMap(body.mutable_extraheader()));
    s_velar->OnRequest(token, record);
}

IMS_RESPONSE(ResponseCallResponse) {
    IMS_LOGI("%s()", "ResponseCallResponse");
    const auto* record = RecordOf<CallResponseData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_callresponse();
    IMS_LOGI("%s() handle:%0x session:%d", "ResponseCallResponse", record->mHandle,
             record->mSession);
    body->set_handle(record->mHandle);
    body->set_session(record->mSession);
    body->set_result(static_cast<imsCommonStruc::Result>(record->mResult));
    body->set_reason(static_cast<imsCommonStruc::CallReason>(record->mReason));
    if (!record->mSipCallId.empty()) body->set_sipcallid(record->mSipCallId);
    return 0;
}
