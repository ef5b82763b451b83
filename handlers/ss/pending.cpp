// Handlers of this family that are not written yet: they log and do nothing,
// so that their rows exist. Delete each one as its real handler lands.
#include <android/log.h>

#include "handlers/handlers.h"

#define PENDING() __android_log_print(ANDROID_LOG_ERROR, "[IMS6.0]", "%s() not available", __func__)

IMS_DISPATCH(DispatchSSGetDivInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSSDivInfoResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSSGetICBInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSSICBInfoResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSSGetOCBInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSSOCBInfoResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSSGetOIPInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSSOIPInfoResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSSGetOIRInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSSOIRInfoResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSSGetCommWaitInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseSSCWInfoResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchSSSetDivInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSSetICBInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSSetOCBInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSSetOIRInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSSetCommWaitInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSUpdateGbaKey) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSUpdateDns) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSUpdateRouteResult) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSResetConfigure) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchSSGetSDInfo) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_NOTIFY(NotifyXCapMessage) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifySsRequestGenKey) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
