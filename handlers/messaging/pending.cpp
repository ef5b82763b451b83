// Handlers of this family that are not written yet: they log and do nothing,
// so that their rows exist. Delete each one as its real handler lands.
#include <android/log.h>

#include "handlers/handlers.h"

#define PENDING() __android_log_print(ANDROID_LOG_ERROR, "[IMS6.0]", "%s() not available", __func__)

IMS_DISPATCH(DispatchIMStartSession) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseStartSession) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchAcceptImSession) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchRejectImSession) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseCloseSession) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchImCloseSession) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchIMSendMessage) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(PrepareResponseIMSendMessage) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchIMSendComposingStatus) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchIMSendNotiStatus) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchIMSendSlmMessage) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSendImSlmMessage) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSlmSendFile) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(PrepareResponseSlmSendFile) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchFTCancelSession) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchUpdateParticipants) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseUpdateParticipants) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchFTStartSession) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchFTAcceptSession) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchGroupListSubscribe) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchGroupInfoSubscribe) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_NOTIFY(NotifySessionStarted) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifySessionClosed) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyIncomingImChat) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyMessageReceived) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyImdnReceived) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyComposingStatusReceived) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifySessionEstablished) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(PrepareNotifyImMessageReportReceived) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyFtProgress) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(PrepareNotifyFtIncomingSession) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyGroupChatSubscribeStatus) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyGroupListUpdate) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyGroupInfoUpdate) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(PrepareNotifySlmIncoming) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyImConferenceInfoUpdate) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
