// What the handlers take from the core, and all they take: the three
// signatures of the dispatch tables and the stack that a dispatch handler
// hands its record to. The core sits above the handlers, since its tables
// name them; below this header nothing else of the core is seen.
#pragma once

#include <cstdint>

#include "imsCommonStruc.pb.h"
#include "stack/velar.h"

// The core's entry for a request taken in. A dispatch handler is given it
// and leaves it alone: the record id comes from the request itself.
struct RequestInfo;

// The stack, set once before the first request is read.
extern Velar* s_velar;

#define IMS_DISPATCH(name)                                                                        \
    void name([[maybe_unused]] uint32_t token, [[maybe_unused]] imsCommonStruc::Request& request, \
              [[maybe_unused]] RequestInfo* info)
#define IMS_RESPONSE(name) \
    int name([[maybe_unused]] uint32_t token, imsCommonStruc::Response& response, ImsData* data)
#define IMS_NOTIFY(name) int name(imsCommonStruc::Notify& notify, ImsData* data)
