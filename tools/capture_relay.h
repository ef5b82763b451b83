// Session capture for velard-host: a relay between the daemon and its
// clients that copies every record crossing the command socket, and every
// record the simulated stack reports, into one pcapng file (see pcapng.h).
//
// velard-host listens on the public socket itself and gives the daemon a
// private listening socket instead. Each client connection gets its own
// connection to the daemon, and bytes pass through unchanged and unbuffered
// beyond what a slow reader holds back, so the daemon sees exactly what the
// client sent, and the client sees everything the daemon does with it: its
// answers, its end of stream when it exits, a second connection closed at
// once. Records are cut by their length words only for the copy.
//
// The simulated stack writes its records to a datagram socket whose other
// end it inherits (named by kRecordFdEnv). The relay reads that socket
// before cutting frames the daemon sent, so a stack answer lands in the
// file before the frame it caused.
#pragma once

#include <memory>
#include <string>

namespace velard_capture {

inline constexpr const char* kRecordFdEnv = "VELAR_SIM_CAPTURE_FD";

class Relay;
// Dropping the handle finishes the capture: the last records and frames are
// written and every connection is closed.
struct RelayStop {
    void operator()(Relay* relay) const;
};
using RelayHandle = std::unique_ptr<Relay, RelayStop>;

struct RelayFds {
    int daemonListen = -1;   // to hand to the daemon as its listening socket
    int recordChannel = -1;  // to hand to the daemon for the stack's records
};

// Starts relaying in a thread of its own. publicFd is the bound socket
// clients connect to; it is put into listening state here and no longer
// inherited by the daemon. target is a file path or "-" for standard output
// (which then goes to standard error for everybody else, so that nothing
// but the capture reaches it). Null with *error set on failure.
RelayHandle StartRelay(const std::string& target, int publicFd, RelayFds* fds, std::string* error);

}  // namespace velard_capture
