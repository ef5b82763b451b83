// Small pieces shared by the handlers of registration, supplementary services
// and SMS.
#pragma once

#include <string>
#include <vector>

#include "handlers/handlers.h"

namespace helpers {

// The head of a response or notification handler: a record handed up as null
// is refused with one log line, any other gives the message its id.
inline bool refused(ImsData* data) {
    if (data != nullptr) return false;
    IMS_LOGE("invalid response: NULL");
    return true;
}

inline bool takeHead(imsCommonStruc::Response& response, ImsData* data) {
    if (refused(data)) return false;
    response.set_resid(static_cast<imsCommonStruc::Id>(data->GetId()));
    return true;
}

inline bool takeHead(imsCommonStruc::Notify& notify, ImsData* data) {
    if (refused(data)) return false;
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(data->GetId()));
    return true;
}

// Repeated wire strings in wire order.
template <class Repeated>
std::vector<std::string> toVector(const Repeated& values) {
    return std::vector<std::string>(values.begin(), values.end());
}

// Feature tags travel as the numbers of the wire's enumeration.
template <class Repeated>
std::vector<unsigned int> toTags(const Repeated& values) {
    return std::vector<unsigned int>(values.begin(), values.end());
}

}  // namespace helpers
