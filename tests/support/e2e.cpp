#include "e2e.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace velard_test {
namespace {

using Clock = std::chrono::steady_clock;

int remainingMs(Clock::time_point deadline) {
    auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left < 0 ? 0 : static_cast<int>(left);
}

sockaddr_un unixAddress(const std::string& path) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
    return addr;
}

// A UNIX stream socket bound at path.
int boundSocket(const std::string& path, int flags) {
    int fd = socket(AF_UNIX, SOCK_STREAM | flags, 0);
    sockaddr_un addr = unixAddress(path);
    if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
        throw std::runtime_error("cannot bind " + path);
    return fd;
}

// Reads what is there within the time into buf; false on timeout, throws on
// end of stream.
bool readSome(int fd, std::string& buf, int timeoutMs, const char* what) {
    pollfd pfd{fd, POLLIN, 0};
    if (poll(&pfd, 1, timeoutMs) <= 0) return false;
    char chunk[65536];
    ssize_t n = read(fd, chunk, sizeof chunk);
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) return true;
    if (n <= 0) throw std::runtime_error(std::string(what) + ": end of stream");
    buf.append(chunk, static_cast<size_t>(n));
    return true;
}

void writeAll(int fd, const std::string& bytes) {
    if (!velard_framing::WriteAll(fd, bytes)) throw std::runtime_error("write failed");
}

// Reads from fd into buf until take() yields a value; throws once the time
// is up.
template <typename Take>
auto readUntil(int fd, std::string& buf, int timeoutMs, const char* what, Take take) {
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        if (auto got = take()) return *got;
        if (!readSome(fd, buf, remainingMs(deadline), what) && remainingMs(deadline) == 0)
            throw std::runtime_error(std::string("nothing from ") + what + " within " +
                                     std::to_string(timeoutMs) + " ms");
    }
}

// Polls cond every stepMs until it holds; false when the deadline passes.
template <typename Cond>
bool waitUntil(Clock::time_point deadline, int stepMs, Cond cond) {
    while (!cond()) {
        if (remainingMs(deadline) == 0) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(stepMs));
    }
    return true;
}

}  // namespace

imsCommonStruc::Response Frame::response() const {
    imsCommonStruc::Response r;
    r.ParsePartialFromString(payload);
    return r;
}

imsCommonStruc::Notify Frame::notify() const {
    imsCommonStruc::Notify n;
    n.ParsePartialFromString(payload);
    return n;
}

std::string clientRecord(const std::string& payload, uint32_t token) {
    return velard_framing::EncodeClientRecord(token, payload);
}

std::string clientRecord(const imsCommonStruc::Request& request, uint32_t token) {
    return clientRecord(request.SerializePartialAsString(), token);
}

imsCommonStruc::Request uaDeletionRequest(uint32_t handle) {
    imsCommonStruc::Request r;
    r.set_reqid(imsCommonStruc::Id(103));
    r.mutable_requestuadeletion()->set_handle(handle);
    return r;
}

Json cancelAlarmRecord(int value) {
    return Json{{"class", "PrimitiveData<int>"}, {"id", 20002}, {"fields", {{"value", value}}}};
}

Daemon::Daemon() : Daemon(Options()) {}

Daemon::Daemon(const Options& options) {
    char tmpl[] = "/tmp/velard-e2e-XXXXXX";
    if (mkdtemp(tmpl) == nullptr) throw std::runtime_error("mkdtemp");
    dir_ = tmpl;
    std::string controlPath = dir_ + "/control.sock";
    if (options.controlled) {
        controlListen_ = boundSocket(controlPath, SOCK_CLOEXEC);
        if (listen(controlListen_, 1) != 0) throw std::runtime_error("control socket");
    }
    int listenFd = boundSocket(socketPath(), 0);  // inherited by the daemon

    pid_ = fork();
    if (pid_ == 0) {
        int logFd = open((dir_ + "/velard.log").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(logFd, 2);
        setenv("ANDROID_SOCKET_velard", std::to_string(listenFd).c_str(), 1);
        if (options.controlled)
            setenv("VELAR_SIM_CONTROL", controlPath.c_str(), 1);
        else
            unsetenv("VELAR_SIM_CONTROL");
        for (const auto& kv : options.env) putenv(strdup(kv.c_str()));
        // The daemon only ever ends by exit(-1) with records still held by
        // the stack's threads: a leak report at that point says nothing and
        // would replace the exit status. Leaks of the records themselves are
        // checked in process.
        std::string asan = "detect_leaks=0";
        if (const char* old = getenv("ASAN_OPTIONS")) asan = std::string(old) + ":" + asan;
        setenv("ASAN_OPTIONS", asan.c_str(), 1);
        execl(VELARD_BINARY, "velard", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(listenFd);
    auto deadline = Clock::now() + std::chrono::seconds(30);
    if (options.controlled) {
        pollfd pfd{controlListen_, POLLIN, 0};
        if (poll(&pfd, 1, remainingMs(deadline)) <= 0)
            throw std::runtime_error("the stack never connected to its controller");
        control_ = accept4(controlListen_, nullptr, nullptr, SOCK_CLOEXEC);
    }
    if (options.connect) {
        // The daemon listens once its stack is up; until then connect fails.
        if (!waitUntil(deadline, 5, [&] { return (client_ = connectClient()) >= 0; }))
            throw std::runtime_error("cannot connect to velard");
        // connect() returns once the kernel has queued the connection; until
        // the loop has accepted it, the daemon has no client and drops what
        // the stack sends. Wait for its word that it has one.
        if (!waitUntil(deadline, 2,
                       [&] { return log().find("new connection") != std::string::npos; }))
            throw std::runtime_error("velard never accepted");
    }
}

Daemon::~Daemon() {
    if (client_ >= 0) close(client_);
    if (control_ >= 0) close(control_);
    if (controlListen_ >= 0) close(controlListen_);
    if (pid_ > 0 && status_ < 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    std::string cmd = "rm -rf '" + dir_ + "'";
    if (system(cmd.c_str()) != 0) {
    }
}

int Daemon::connectClient() {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr = unixAddress(socketPath());
    if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

void Daemon::send(const imsCommonStruc::Request& request, uint32_t token) {
    sendRaw(clientRecord(request, token));
}

void Daemon::sendRaw(const std::string& bytes) {
    writeAll(client_, bytes);
}

void Daemon::closeClient() {
    if (client_ >= 0) close(client_);
    client_ = -1;
}

Frame Daemon::nextFrame(int timeoutMs) {
    std::string bytes;
    return readUntil(client_, bytes, timeoutMs, "client", [&]() -> std::optional<Frame> {
        clientReader_.Append(bytes.data(), bytes.size());
        bytes.clear();
        velard_framing::DaemonFrame f;
        auto r = clientReader_.Next(&f);
        if (r == velard_framing::ReadResult::kError)
            throw std::runtime_error(clientReader_.error());
        if (r == velard_framing::ReadResult::kNeedMore) return std::nullopt;
        return Frame{static_cast<uint32_t>(f.payload.size() + 8), f.type, f.token, f.payload};
    });
}

bool Daemon::expectNoFrame(int timeoutMs) {
    if (clientReader_.buffered() > 0) return false;
    std::string bytes;
    try {
        bool got = readSome(client_, bytes, timeoutMs, "client");
        clientReader_.Append(bytes.data(), bytes.size());
        return !got;
    } catch (const std::runtime_error&) {
        return true;
    }
}

Json Daemon::readControl(int timeoutMs) {
    return readUntil(control_, controlBuf_, timeoutMs, "control", [&]() -> std::optional<Json> {
        size_t nl = controlBuf_.find('\n');
        if (nl == std::string::npos) return std::nullopt;
        std::string line = controlBuf_.substr(0, nl);
        controlBuf_.erase(0, nl + 1);
        return Json::parse(line);
    });
}

Json Daemon::nextStackRequest(int timeoutMs) {
    if (!requests_.empty()) {
        Json j = requests_.front();
        requests_.pop_front();
        return j;
    }
    for (;;) {
        Json j = readControl(timeoutMs);
        if (j.value("type", "") == "request") return j;
    }
}

bool Daemon::expectNoStackRequest(int timeoutMs) {
    if (!requests_.empty()) return false;
    try {
        Json j = readControl(timeoutMs);
        requests_.push_back(j);
        return false;
    } catch (const std::runtime_error&) {
        return true;
    }
}

Json Daemon::control(Json message) {
    int seq = ++seq_;
    message["seq"] = seq;
    writeAll(control_, message.dump() + "\n");
    for (;;) {
        Json j = readControl(30000);
        std::string type = j.value("type", "");
        if (type == "request") {
            requests_.push_back(j);
            continue;
        }
        if (j.contains("seq") && j["seq"] == seq) return j;
    }
}

void Daemon::closeController() {
    if (control_ >= 0) close(control_);
    control_ = -1;
}

namespace {
void expectDone(const Json& answer) {
    if (answer.value("type", "") != "done")
        throw std::runtime_error("simulator: " + answer.value("message", answer.dump()));
}
}  // namespace

void Daemon::respond(uint32_t token, const Json& record) {
    expectDone(control(Json{{"type", "response"}, {"token", token}, {"record", record}}));
}

void Daemon::notify(const Json& record) {
    expectDone(control(Json{{"type", "notify"}, {"record", record}}));
}

void Daemon::burst(const Json& record, int threads, int count) {
    expectDone(control(
        Json{{"type", "burst"}, {"record", record}, {"threads", threads}, {"count", count}}));
}

void Daemon::config(const Json& settings) {
    Json m = settings;
    m["type"] = "config";
    expectDone(control(m));
}

int Daemon::waitExit(int timeoutMs) {
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int st = 0;
    if (!waitUntil(deadline, 5, [&] { return waitpid(pid_, &st, WNOHANG) == pid_; })) return -1;
    status_ = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
    return status_;
}

std::string Daemon::log() const {
    std::ifstream in(dir_ + "/velard.log");
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

}  // namespace velard_test
