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

IMS_NOTIFY(NotifyImConferenceInfoUpdate) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
