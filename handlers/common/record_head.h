// The head of every response and notification handler, once it has logged
// its name: a record handed up as null is refused with one error line and
// nothing goes to the client; any other gives the message its id and is read
// as the class that the handler's row answers with. That is the only check
// made on what the stack hands up: a stack hands each id its own class.
#pragma once

#include "handlers/handlers.h"

// The line a handler writes for a null record. Most write the common one; a
// few have their own, some behind the handler's short name ("name: text").
constexpr const char* kNullRecord = "invalid response: NULL";
struct NullRecordLine {
    const char* text = kNullRecord;
    const char* name = nullptr;
};

namespace record_head {

inline void setId(imsCommonStruc::Response& response, int id) {
    response.set_resid(static_cast<imsCommonStruc::Id>(id));
}

inline void setId(imsCommonStruc::Notify& notify, int id) {
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(id));
}

}  // namespace record_head

// The record of a Response or Notify, with resid or notifyid set from it;
// null when refused.
template <class Record, class Message>
const Record* RecordOf(Message& message, ImsData* data, NullRecordLine line = {}) {
    if (data == nullptr) {
        if (line.name != nullptr)
            IMS_LOGE("%s: %s", line.name, line.text);
        else
            IMS_LOGE("%s", line.text);
        return nullptr;
    }
    record_head::setId(message, data->GetId());
    return static_cast<const Record*>(data);
}
