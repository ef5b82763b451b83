// The head every response and notification handler follows once it has
// logged its name: a record handed up as null is refused with one log line
// and nothing goes to the client; any other gives the message its id.
#pragma once

#include "handlers/handlers.h"

inline bool RecordRefused(const ImsData* data) {
    if (data != nullptr) return false;
    IMS_LOGE("invalid response: NULL");
    return true;
}

inline bool TakeHead(imsCommonStruc::Response& response, const ImsData* data) {
    if (RecordRefused(data)) return false;
    response.set_resid(static_cast<imsCommonStruc::Id>(data->GetId()));
    return true;
}

inline bool TakeHead(imsCommonStruc::Notify& notify, const ImsData* data) {
    if (RecordRefused(data)) return false;
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(data->GetId()));
    return true;
}

// The record of a notification with notifyid set from it; null when refused.
template <class Record>
const Record* NotifyRecord(imsCommonStruc::Notify& notify, ImsData* data) {
    return TakeHead(notify, data) ? static_cast<const Record*>(data) : nullptr;
}
