// End-to-end test support: the real velard on the simulated stack, over the
// real command socket, with the test as both the client and the stack's
// controller.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "framing.h"
#include "imsCommonStruc.pb.h"

namespace velard_test {

using Json = nlohmann::ordered_json;

struct Frame {
    uint32_t length = 0;  // the first word: payload size plus 8
    uint32_t type = 0;    // 1 response, 2 notify
    uint32_t token = 0;
    std::string payload;
    imsCommonStruc::Response response() const;
    imsCommonStruc::Notify notify() const;
};

// A client record: big-endian length, reserved word, token, payload.
std::string clientRecord(const std::string& payload, uint32_t token);
std::string clientRecord(const imsCommonStruc::Request& request, uint32_t token);

// The request (103) the core tests send: short, answered by one record.
imsCommonStruc::Request uaDeletionRequest(uint32_t handle);
// The notification (20002) the core tests raise from the stack.
Json cancelAlarmRecord(int value);

class Daemon {
public:
    struct Options {
        std::vector<std::string> env;  // extra NAME=VALUE for the daemon; a bare NAME unsets it
        bool controlled = true;        // false: auto mode
        bool connect = true;           // connect the client at start
    };
    Daemon();
    explicit Daemon(const Options& options);
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    // Client side.
    void send(const imsCommonStruc::Request& request, uint32_t token);
    void sendRaw(const std::string& bytes);
    Frame nextFrame(int timeoutMs = 10000);  // throws on timeout or end of stream
    // True when no frame arrives within the time.
    bool expectNoFrame(int timeoutMs = 200);
    void closeClient();
    int clientFd() const { return client_; }
    int connectClient();  // another connection to the same socket; returns its fd

    // Controller side.
    Json nextStackRequest(int timeoutMs = 10000);  // {"type":"request","token":T,"record":R}
    bool expectNoStackRequest(int timeoutMs = 200);
    // Each waits for the simulator's "done" (or throws on its "error").
    void respond(uint32_t token, const Json& record);
    void notify(const Json& record);
    void burst(const Json& record, int threads, int count);
    void config(const Json& settings);
    // Sends a raw control line; returns the simulator's answer to seq.
    Json control(Json message);
    // The controller goes away (the daemon and its client stay).
    void closeController();

    // The process.
    pid_t pid() const { return pid_; }
    // Exit status (as in WEXITSTATUS, or 128 + signal); -1 on timeout.
    int waitExit(int timeoutMs = 10000);
    std::string log() const;
    std::string socketPath() const { return dir_ + "/velard.sock"; }

private:
    Json readControl(int timeoutMs);
    std::string dir_;
    pid_t pid_ = -1;
    int status_ = -1;
    int controlListen_ = -1;
    int control_ = -1;
    int client_ = -1;
    std::string controlBuf_;
    velard_framing::DaemonFrameReader clientReader_;
    std::deque<Json> requests_;
    int seq_ = 0;
};

}  // namespace velard_test
