// Handlers of this family that are not written yet: they log and do nothing,
// so that their rows exist. Delete each one as its real handler lands.
#include <android/log.h>

#include "handlers/handlers.h"

#define PENDING() __android_log_print(ANDROID_LOG_ERROR, "[IMS6.0]", "%s() not available", __func__)

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
