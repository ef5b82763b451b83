// In-process test support: run handlers against the simulated stack's
// capture hook and read what they produced.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/ims_core.h"
#include "stack/sim/velar_sim.h"
#include "tests/support/stderr_capture.h"

namespace velard_test {

using velar_sim::Json;

struct CapturedRecord {
    unsigned int token;
    std::unique_ptr<ImsData> record;
    Json json;  // the record as the control channel shows it
};

// While alive, every record handed to Velar::OnRequest is kept here instead
// of being answered. Also fills the dispatch maps and the stack pointer.
class StackCapture {
public:
    StackCapture();
    ~StackCapture();
    std::vector<CapturedRecord> records;
};

// Runs the dispatch handler of request.reqid() as the command channel would
// (through ProcessCommandBuffer, with a framed record) and returns the
// records it handed to the stack.
std::vector<CapturedRecord> dispatch(const imsCommonStruc::Request& request,
                                     unsigned int token = 1);
// The one record a request produced, as JSON (null when there was none).
Json dispatchOne(const imsCommonStruc::Request& request, unsigned int token = 1);

// Runs the response handler of the record's id; returns the handler's
// result and the Response it filled.
std::pair<int, imsCommonStruc::Response> respond(ImsData* record, unsigned int token = 1);
// Builds the record from its JSON form first.
std::pair<int, imsCommonStruc::Response> respondJson(const Json& record, unsigned int token = 1);
// Runs the notification handler of the record's id.
std::pair<int, imsCommonStruc::Notify> notify(ImsData* record);
std::pair<int, imsCommonStruc::Notify> notifyJson(const Json& record);

// Collects the log lines written to stderr while alive.
class LogCapture {
public:
    // Ends the capture (if still running) and returns the lines.
    std::vector<std::string> lines() { return splitLines(capture_.finish()); }
    bool contains(const std::string& text);

private:
    StderrCapture capture_;
};

}  // namespace velard_test
