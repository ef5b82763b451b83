// Handlers of this family that are not written yet: they log and do nothing,
// so that their rows exist. Delete each one as its real handler lands.
#include <android/log.h>

#include "handlers/handlers.h"

#define PENDING() __android_log_print(ANDROID_LOG_ERROR, "[IMS6.0]", "%s() not available", __func__)

IMS_DISPATCH(DispatchXdmUpdateGbaData) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_RESPONSE(ResponseXdmGeneralResponse) {
    (void)token;
    (void)response;
    (void)data;
    PENDING();
    return -1;
}
IMS_DISPATCH(DispatchXdmUpdateAkaResp) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchXdmUpdateGbaKey) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchXdmFetchDocument) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchXdmUploadPresRules) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchXdmUploadContacts) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchXdmModifyContact) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_DISPATCH(DispatchXdmDeleteContact) {
    (void)token;
    (void)request;
    (void)info;
    PENDING();
}
IMS_NOTIFY(NotifyXdmGbaKey) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyXdmAuth) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyXdmStoreGbaAndGenKey) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
IMS_NOTIFY(NotifyXdmContactDownload) {
    (void)notify;
    (void)data;
    PENDING();
    return -1;
}
