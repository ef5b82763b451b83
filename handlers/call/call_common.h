// What the call handlers share: records the daemon builds itself, extra
// headers and bodies as the stack takes and gives them, and the check of a
// record handed up.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "handlers/common/record_head.h"
#include "handlers/common/take_fields.h"
#include "imsCommonStruc.pb.h"
#include "stack/velar.h"

namespace ims_call {

// A record with no exported constructor: the daemon sets its id itself.
template <class Record>
Record* NewRecord(int id) {
    auto* record = new Record();
    record->SetId(id);
    return record;
}

// The stack takes one value per header name; the first pair that names it
// wins, as the framework lists the preferred value first. The pairs are moved
// out of a body that the handler owns.
inline std::map<std::string, std::string> HeaderMap(imsCommonStruc::ExtraHeader* headers) {
    std::map<std::string, std::string> map;
    for (auto& pair : *headers->mutable_pair())
        map.emplace(TAKE_STRING(pair, key), TAKE_STRING(pair, value));
    return map;
}

// A body for the stack, or none. rawContents is never sent down: the stack
// works from the text form.
template <class Body>
std::unique_ptr<AdditionalContents> ContentsOf(const Body& body) {
    if (!body.has_additionalcontents()) return nullptr;
    const imsCommonStruc::AdditionalContents& contents = body.additionalcontents();
    return std::make_unique<AdditionalContents>(contents.mimetype(), contents.contents());
}

// The text form of a body handed up; an absent one gives empty strings, so
// that the message the client gets still parses.
inline void SetContents(imsCommonStruc::AdditionalContents* wire, const AdditionalContents* body) {
    wire->set_mimetype(body != nullptr ? body->mimeType : std::string());
    wire->set_contents(body != nullptr ? body->contents : std::string());
}

}  // namespace ims_call
