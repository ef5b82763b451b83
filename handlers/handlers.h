// What every handler file takes: the handler signatures and the stack from
// the core, the log, and the body of a request. The handlers themselves are
// declared by their rows in the core's tables.
#pragma once

#include <cstdint>
#include <utility>

#include "core/ims_handler.h"
#include "handlers/common/ims_log.h"

// A dispatch handler's own copy of its sub-message, moved out of the request
// rather than copied: the request is the caller's and is parsed into again
// for the next record, so copying every string of a large body would only
// double the allocations. An absent sub-message comes out empty and reads as
// its defaults, as the default instance would.
template <class Body>
Body TakeBody(Body* inRequest) {
    return std::move(*inRequest);
}
