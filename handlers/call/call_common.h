// What the call handlers share: extra headers and bodies as the stack takes
// them.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "imsCommonStruc.pb.h"
#include "stack/velar.h"

namespace ims_call {

// The stack takes one value per header name; the first pair that names it
// wins, as the framework lists the preferred value first.
inline std::map<std::string, std::string> HeaderMap(const imsCommonStruc::ExtraHeader& headers) {
    std::map<std::string, std::string> map;
    for (const auto& pair : headers.pair()) map.emplace(pair.key(), pair.value());
    return map;
}

// A body for the stack, or none. rawContents is never sent down: the stack
// works from the text form.
template <class Body>
std::unique_ptr<AdditionalContents> ContentsOf(const Body& body) {
    if (!body.has_additionalcontents()) return nullptr;
    const imsCommonStruc::AdditionalContents contents = body.additionalcontents();
    return std::make_unique<AdditionalContents>(contents.mimetype(), contents.contents());
}

}  // namespace ims_call
