// Handlers of this family that are not written yet: they log and do nothing,
// so that their rows exist. Delete each one as its real handler lands.
#include <android/log.h>

#include "handlers/handlers.h"

#define PENDING() __android_log_print(ANDROID_LOG_ERROR, "[IMS6.0]", "%s() not available", __func__)

IMS_DISPATCH(DispatchSendMessage) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSendSmsResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSendRpAckResp) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchReceiveSmsResp) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_NOTIFY(NotifySmsRpAck) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyReceiveSms) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
