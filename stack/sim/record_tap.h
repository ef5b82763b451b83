// The simulated stack's record tap: when the process that started the
// daemon asks for it (by naming an inherited datagram socket in
// VELAR_SIM_CAPTURE_FD), every record that crosses the stack boundary is
// written there as one JSON object, in the control channel's form, before it
// is handed on. The tap never blocks and never fails the stack: a record
// that does not fit is lost and the loss is logged once.
#pragma once

#include "../velar.h"

namespace velar_sim {

// Env itself, or, when tapping, callbacks that write each record first and
// then call env's.
IMS_Env* tapEnv(IMS_Env* env);
// Writes a request record (before the stack acts on it), when tapping.
void tapRequest(unsigned int token, ImsData* record);

}  // namespace velar_sim
