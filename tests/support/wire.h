// Small builders of wire messages that test files of several families share.
#pragma once

#include "imsCommonStruc.pb.h"

namespace velard_test {

inline void addPair(imsCommonStruc::ExtraHeader* headers, const char* key, const char* value) {
    auto* pair = headers->add_pair();
    pair->set_key(key);
    pair->set_value(value);
}

}  // namespace velard_test
