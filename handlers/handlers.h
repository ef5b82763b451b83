// What every handler file takes: the handler signatures and the stack from
// the core, the log, and the body of a request. The handlers themselves are
// declared by their rows in the core's tables.
#pragma once

#include <cstdint>
#include <utility>

#include "core/ims_handler.h"
#include "handlers/common/ims_log.h"

// A dispatch handler's body: the sub-message of the request it was
// dispatched for, which is its own until it returns. It is taken in place
// (bind it to a reference, never copy it): the request is the reading
// thread's and is parsed into again for the next record, so the body's
// sub-messages and repeated elements are reused rather than destroyed and
// allocated anew per request, and the handler may move strings out of it
// (TAKE_STRING) into the stack's record. An absent sub-message reads as its
// defaults, as the default instance would.
template <class Body>
Body& TakeBody(Body* inRequest) {
    return *inRequest;
}
