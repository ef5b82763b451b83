// Handlers of this family that are not written yet: they log and do nothing,
// so that their rows exist. Delete each one as its real handler lands.
#include <android/log.h>

#include "handlers/handlers.h"

#define PENDING() __android_log_print(ANDROID_LOG_ERROR, "[IMS6.0]", "%s() not available", __func__)

IMS_DISPATCH(DispatchMakeCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseCallResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchEndCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchHoldCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchResumeCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchHoldVideo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchResumeVideo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchStartCamera) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchStopCamera) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchAcceptCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchRejectCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchProgressIncomingCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchUpdateCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSendDtmf) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchMakeConfCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchUpdateConfCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchTransferCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchPullingCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchAcceptTransferCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchModifyCallType) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchReplyModifyCallType) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchRejectModifyCallType) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchExtendToConference) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchUpdateAudioInterface) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchCancelTransferCall) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchPublishDialog) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSendInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_NOTIFY(NotifyCallStatus) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyModifyCallCnfm) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyIncomingCall) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyModifyVideo) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyVideoEvent) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyDedicatedBearerEvent) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyRrcConnectionEvent) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyCdpnInfo) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyConfCallChanged) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyReferReceived) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyReferStatus) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyUpdateRouteTable) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyCallPublishStatus) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyDtmfEvent) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyRtpLossRateNoti) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyDialogEvent) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyDialogSubscribeStatus) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
