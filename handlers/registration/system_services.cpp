// Services the stack asks of the platform: DNS, alarms, certificates, access
// network, location.
#include "handlers/handlers.h"

IMS_NOTIFY(NotifyCancelAlarm) {
    IMS_LOGV("%s()", __func__);
    if (data == nullptr) {
        IMS_LOGE("invalid response: NULL");
        return -1;
    }
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(data->GetId()));
    auto* body = notify.mutable_cancelalarm();
    body->set_id(static_cast<uint32_t>(static_cast<PrimitiveData<int>*>(data)->value));
    return 0;
}
