// Small pieces shared by the handlers of registration, supplementary services
// and SMS.
#pragma once

#include <string>
#include <vector>

#include "handlers/common/record_head.h"

namespace helpers {

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
