// The opening every notification handler of presence, capability exchange,
// XDM and content sharing follows once it has logged its name.
#pragma once

#include "handlers/handlers.h"

// The record of a notification, with notifyid set from it; null (logged) when
// the stack handed up none, and then nothing is sent.
template <class Record>
const Record* NotifyRecord(imsCommonStruc::Notify& notify, ImsData* data) {
    if (data == nullptr) {
        IMS_LOGE("invalid response: NULL");
        return nullptr;
    }
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(data->GetId()));
    return static_cast<const Record*>(data);
}
