// Requests on a call that stands: hold and resume, camera, re-INVITE, call
// type changes, DTMF, the audio interface, INFO and dialog publication.
#include "handlers/call/call_common.h"
#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"

namespace {

// Hold and resume name the call by its session alone; the framework's handle
// stays behind. The line is written once the stack has the record, from our
// own copy of the number.
void SendSessionOnly(uint32_t token, int id, const char* name, uint32_t session) {
    s_velar->OnRequest(token, new CallSessionId(id, static_cast<int>(session)));
    IMS_LOGI("%s() session: %d", name, static_cast<int>(session));
}

}  // namespace

IMS_DISPATCH(DispatchHoldCall) {
    auto& body = TakeBody(request.mutable_requestholdcall());
    SendSessionOnly(token, request.reqid(), __func__, body.session());
}

IMS_DISPATCH(DispatchResumeCall) {
    auto& body = TakeBody(request.mutable_requestresumecall());
    SendSessionOnly(token, request.reqid(), __func__, body.session());
}

IMS_DISPATCH(DispatchHoldVideo) {
    auto& body = TakeBody(request.mutable_requestholdvideo());
    SendSessionOnly(token, request.reqid(), __func__, body.session());
}

IMS_DISPATCH(DispatchResumeVideo) {
    auto& body = TakeBody(request.mutable_requestresumevideo());
    SendSessionOnly(token, request.reqid(), __func__, body.session());
}

IMS_DISPATCH(DispatchStartCamera) {
    auto& body = TakeBody(request.mutable_requeststartcamera());
    const unsigned int camera = body.camera();
    s_velar->OnRequest(token, new StartCamera(request.reqid(), body.session(), camera));
    IMS_LOGI("%s() cameraId: %d", __func__, camera);
}

// The record names no call: the framework's handle stays behind.
IMS_DISPATCH(DispatchStopCamera) {
    s_velar->OnRequest(token, new StopCamera(request.reqid()));
    IMS_LOGI("%s()", __func__);
}

IMS_DISPATCH(DispatchUpdateCall) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdatecall());
    auto* record = ims_call::NewRecord<CallUpdateData>(request.reqid());
    record->mSession = static_cast<int>(body.session());
    record->mAction = static_cast<int>(body.action());
    record->mCodecType = static_cast<int>(body.codectype());
    record->mCause = static_cast<int>(body.cause());
    record->mReasonText = TAKE_STRING(body, reasontext);
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchModifyCallType) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestmodifycalltype());
    s_velar->OnRequest(token, new ModifyCallTypeData(request.reqid(), body.session(),
                                                     body.oldtype(), body.newtype()));
}

IMS_DISPATCH(DispatchReplyModifyCallType) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestreplymodifycalltype());
    auto* record = ims_call::NewRecord<ReplyModifyCallType>(request.reqid());
    record->mSession = static_cast<int>(body.session());
    record->mReqType = body.reqtype();
    record->mCurType = body.curtype();
    record->mRepType = body.reptype();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchRejectModifyCallType) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestrejectmodifycalltype());
    auto* record = ims_call::NewRecord<RejectModifyCallType>(request.reqid());
    record->mSession = static_cast<int>(body.session());
    record->mReason = body.reason();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchSendDtmf) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsenddtmf());
    auto* record = ims_call::NewRecord<CallSendDtmf>(request.reqid());
    record->mHandle = static_cast<int>(body.handle());
    record->mSession = static_cast<int>(body.session());
    record->mCode = static_cast<int>(body.code());
    s_velar->OnRequest(token, record);
}

// Reads the body where it stands on the envelope; an absent one is created
// empty there, which reads as the defaults.
IMS_DISPATCH(DispatchUpdateAudioInterface) {
    IMS_LOGI("%s()", __func__);
    const auto* body = request.mutable_requestupdateaudiointerface();
    auto* record = ims_call::NewRecord<AudioInterfaceData>(request.reqid());
    record->mHandle = static_cast<int>(body->handle());
    record->mMode = body->mode();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchSendInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsendinfo());
    s_velar->OnRequest(
        token, new CallSendInfo(request.reqid(), body.handle(), body.session(),
                                static_cast<int>(body.calltype()), ims_call::ContentsOf(body)));
}

IMS_DISPATCH(DispatchPublishDialog) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestpublishdialog());
    auto* record = ims_call::NewRecord<CallPublishData>(request.reqid());
    record->mHandle = static_cast<int>(body.handle());
    record->mOrigUri = TAKE_STRING(body, origuri);
    record->mDispName = TAKE_STRING(body, dispname);
    record->mXmlBody = TAKE_STRING(body, xmlbody);
    record->mExpireTime = body.expiretime();
    s_velar->OnRequest(token, record);
}
