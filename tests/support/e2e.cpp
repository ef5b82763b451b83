#include "e2e.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace velard_test {
namespace {

using Clock = std::chrono::steady_clock;

int remainingMs(Clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left < 0 ? 0 : static_cast<int>(left);
}

sockaddr_un unixAddress(const std::string& path) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
    return addr;
}

// Reads what is there within the time into buf; false on timeout, throws on
// end of stream.
bool readSome(int fd, std::string& buf, int timeoutMs, const char* what) {
    pollfd pfd{fd, POLLIN, 0};
    int r = poll(&pfd, 1, timeoutMs);
    if (r <= 0) return false;
    char chunk[65536];
    ssize_t n = read(fd, chunk, sizeof chunk);
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) return true;
    if (n <= 0) throw std::runtime_error(std::string(what) + ": end of stream");
    buf.append(chunk, static_cast<size_t>(n));
    return true;
}

void writeAll(int fd, const std::string& bytes) {
    size_t off = 0;
    while (off < bytes.size()) {
        ssize_t n = write(fd, bytes.data() + off, bytes.size() - off);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && errno == EAGAIN) {
            pollfd pfd{fd, POLLOUT, 0};
            poll(&pfd, 1, 1000);
            continue;
        }
        if (n <= 0) throw std::runtime_error("write failed");
        off += static_cast<size_t>(n);
    }
}

uint32_t le32(const std::string& s, size_t at) {
    return static_cast<uint32_t>(static_cast<unsigned char>(s[at])) |
           static_cast<uint32_t>(static_cast<unsigned char>(s[at + 1])) << 8 |
           static_cast<uint32_t>(static_cast<unsigned char>(s[at + 2])) << 16 |
           static_cast<uint32_t>(static_cast<unsigned char>(s[at + 3])) << 24;
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
    std::string out;
    uint32_t len = static_cast<uint32_t>(payload.size() + 8);
    out.push_back(static_cast<char>(len >> 24));
    out.push_back(static_cast<char>(len >> 16));
    out.push_back(static_cast<char>(len >> 8));
    out.push_back(static_cast<char>(len));
    out.append(4, '\0');
    for (int i = 0; i < 4; i++) out.push_back(static_cast<char>(token >> (8 * i)));
    out += payload;
    return out;
}

std::string clientRecord(const imsCommonStruc::Request& request, uint32_t token) {
    return clientRecord(request.SerializePartialAsString(), token);
}

Daemon::Daemon() : Daemon(Options()) {}

Daemon::Daemon(const Options& options) {
    char tmpl[] = "/tmp/velard-e2e-XXXXXX";
    if (mkdtemp(tmpl) == nullptr) throw std::runtime_error("mkdtemp");
    dir_ = tmpl;
    std::string controlPath = dir_ + "/control.sock";
    if (options.controlled) {
        controlListen_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un ca = unixAddress(controlPath);
        if (bind(controlListen_, reinterpret_cast<sockaddr*>(&ca), sizeof ca) != 0 ||
            listen(controlListen_, 1) != 0)
            throw std::runtime_error("control socket");
    }
    int listenFd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un la = unixAddress(socketPath());
    if (bind(listenFd, reinterpret_cast<sockaddr*>(&la), sizeof la) != 0)
        throw std::runtime_error("command socket");

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
        execl(VELARD_BINARY, "velard", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(listenFd);
    auto deadline = Clock::now() + std::chrono::seconds(5);
    if (options.controlled) {
        pollfd pfd{controlListen_, POLLIN, 0};
        if (poll(&pfd, 1, remainingMs(deadline)) <= 0)
            throw std::runtime_error("the stack never connected to its controller");
        control_ = accept4(controlListen_, nullptr, nullptr, SOCK_CLOEXEC);
    }
    if (options.connect) {
        // The daemon listens once its stack is up; until then connect fails.
        while ((client_ = connectClient()) < 0) {
            if (remainingMs(deadline) == 0) throw std::runtime_error("cannot connect to velard");
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        // connect() returns once the connection is queued; the daemon takes it
        // on its loop thread later, and a frame sent before that has no client
        // to go to. A test that begins with a notification would lose it on a
        // busy machine, so wait until the daemon has the connection.
        while (log().find("new connection") == std::string::npos) {
            if (remainingMs(deadline) == 0) throw std::runtime_error("velard never accepted");
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
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

void Daemon::sendRaw(const std::string& bytes) { writeAll(client_, bytes); }

void Daemon::closeClient() {
    if (client_ >= 0) close(client_);
    client_ = -1;
}

Frame Daemon::nextFrame(int timeoutMs) {
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        if (clientBuf_.size() >= 12) {
            uint32_t len = le32(clientBuf_, 0);
            if (len < 8) throw std::runtime_error("frame length below 8");
            if (clientBuf_.size() >= len + 4) {
                Frame f;
                f.length = len;
                f.type = le32(clientBuf_, 4);
                f.token = le32(clientBuf_, 8);
                f.payload = clientBuf_.substr(12, len - 8);
                clientBuf_.erase(0, len + 4);
                return f;
            }
        }
        if (!readSome(client_, clientBuf_, remainingMs(deadline), "client") &&
            remainingMs(deadline) == 0)
            throw std::runtime_error("no frame within " + std::to_string(timeoutMs) + " ms");
    }
}

bool Daemon::expectNoFrame(int timeoutMs) {
    if (!clientBuf_.empty()) return false;
    try {
        return !readSome(client_, clientBuf_, timeoutMs, "client");
    } catch (const std::runtime_error&) {
        return true;
    }
}

Json Daemon::readControl(int timeoutMs) {
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        size_t nl = controlBuf_.find('\n');
        if (nl != std::string::npos) {
            std::string line = controlBuf_.substr(0, nl);
            controlBuf_.erase(0, nl + 1);
            return Json::parse(line);
        }
        if (!readSome(control_, controlBuf_, remainingMs(deadline), "control") &&
            remainingMs(deadline) == 0)
            throw std::runtime_error("no control message within " + std::to_string(timeoutMs) +
                                     " ms");
    }
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
        Json j = readControl(5000);
        std::string type = j.value("type", "");
        if (type == "request") {
            requests_.push_back(j);
            continue;
        }
        if (j.contains("seq") && j["seq"] == seq) return j;
    }
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
    for (;;) {
        int st = 0;
        pid_t r = waitpid(pid_, &st, WNOHANG);
        if (r == pid_) {
            status_ = WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st);
            return status_;
        }
        if (remainingMs(deadline) == 0) return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

std::string Daemon::log() const {
    std::ifstream in(dir_ + "/velard.log");
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

}  // namespace velard_test
