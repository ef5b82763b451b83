// The daemon over its real socket: the real velard on the simulated stack,
// driven by a client that keeps a window of requests in flight.
//
//   socket_bench roundtrip [--rounds R] [--count N] [--window W[,W...]]
//                          [--only small|large] [--preload LIB] [--plot-data DIR]
//       Throughput and latency of a small request (103) and a large one (201,
//       long strings, extra headers), each beside two floors: the same frames
//       over the same kind of socket answered by a bare thread with a frame of
//       the daemon's size, and the same with the daemon's mandated system calls
//       and thread hand-off (no protobuf, no dispatch). --preload runs velard a
//       second time with LIB preloaded (a thread-caching allocator); the
//       daemon itself never depends on one. --plot-data writes each size's
//       latency distribution per window, all rounds pooled, for a plot.
//   socket_bench burst [--rounds R] [--threads T] [--count M]
//       T stack threads notify M times each at once; every frame must arrive
//       whole and exactly once. Rate and the daemon's CPU per notification.
//   socket_bench capture [--rounds R] [--count N] [--window W]
//       The round trip of both requests straight to velard and through
//       velard-host --capture (relay, pcapng file, the stack's records).
//   socket_bench machine
//       The machine's description.
//   socket_bench memory --records DIR [--count N]
//       Resident memory before and after N requests (default a million),
//       cycling through every request of DIR that the daemon answers.
//
// Output is Markdown, for docs/benchmarks.md. The daemon's log goes to
// /dev/null: its lines are still written, as on a device.
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "framing.h"
#include "imsCommonStruc.pb.h"
#include "measure.h"

using namespace velard_bench;
using Json = nlohmann::ordered_json;
namespace vf = velard_framing;

namespace {

// ---------------------------------------------------------------------------
// Sockets and the daemon process.

sockaddr_un unixAddress(const std::string& path) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
    return addr;
}

int listenOn(const std::string& path) {
    unlink(path.c_str());
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un a = unixAddress(path);
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || listen(fd, 4) != 0)
        throw std::runtime_error("cannot listen on " + path);
    return fd;
}

int connectTo(const std::string& path, int timeoutMs) {
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un a = unixAddress(path);
        if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0) return fd;
        close(fd);
        if (Clock::now() > deadline) throw std::runtime_error("cannot connect to " + path);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void writeAll(int fd, const std::string& bytes) {
    if (!vf::WriteAll(fd, bytes)) throw std::runtime_error("write failed");
}

class Daemon {
public:
    // Auto mode unless a control socket is given.
    explicit Daemon(const std::string& controlPath = "", const char* binary = VELARD_BINARY,
                    const std::string& preload = "") {
        char tmpl[] = "/tmp/velard-bench-XXXXXX";
        if (mkdtemp(tmpl) == nullptr) throw std::runtime_error("mkdtemp");
        dir_ = tmpl;
        int listenFd = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un a = unixAddress(socketPath());
        if (bind(listenFd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0)
            throw std::runtime_error("bind " + socketPath());
        pid_ = fork();
        if (pid_ == 0) {
            int null = open("/dev/null", O_WRONLY);
            dup2(null, 2);
            setenv("ANDROID_SOCKET_velard", std::to_string(listenFd).c_str(), 1);
            if (controlPath.empty())
                unsetenv("VELAR_SIM_CONTROL");
            else
                setenv("VELAR_SIM_CONTROL", controlPath.c_str(), 1);
            unsetenv("VELAR_SIM_SCRIPT");
            if (!preload.empty()) setenv("LD_PRELOAD", preload.c_str(), 1);
            execl(binary, "velard", static_cast<char*>(nullptr));
            _exit(127);
        }
        close(listenFd);
    }
    ~Daemon() {
        // The daemon ends with its client; a profiler running it gets to
        // write its figures then. Killed only when it does not end.
        if (client_ >= 0) close(client_);
        for (int i = 0; i < 500 && client_ >= 0; i++) {
            if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
                pid_ = -1;
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        unlink(socketPath().c_str());
        rmdir(dir_.c_str());
    }
    int connectClient() {
        client_ = connectTo(socketPath(), 5000);
        return client_;
    }
    pid_t pid() const { return pid_; }
    std::string socketPath() const { return dir_ + "/velard.sock"; }

private:
    std::string dir_;
    pid_t pid_ = -1;
    int client_ = -1;
};

// ---------------------------------------------------------------------------
// Frames.

uint32_t le32(const char* p) {
    const auto* u = reinterpret_cast<const unsigned char*>(p);
    return uint32_t{u[0]} | uint32_t{u[1]} << 8 | uint32_t{u[2]} << 16 | uint32_t{u[3]} << 24;
}

void putLe32(std::string& s, size_t at, uint32_t v) {
    for (int i = 0; i < 4; i++) s[at + i] = static_cast<char>(v >> (8 * i));
}

std::string clientRecord(const std::string& payload, uint32_t token) {
    return vf::EncodeClientRecord(token, payload);
}

using Frame = vf::DaemonFrame;

// Cuts daemon frames out of what a socket gives.
class FrameReader {
public:
    explicit FrameReader(int fd) : fd_(fd) {}
    // Reads what is there (poll first); false at end of stream.
    bool fill() {
        char chunk[65536];
        ssize_t n = read(fd_, chunk, sizeof chunk);
        if (n < 0 && (errno == EAGAIN || errno == EINTR)) return true;
        if (n <= 0) return false;
        reader_.Append(chunk, static_cast<size_t>(n));
        return true;
    }
    bool next(Frame* f) {
        vf::ReadResult r = reader_.Next(f);
        if (r == vf::ReadResult::kError) throw std::runtime_error(reader_.error());
        return r == vf::ReadResult::kFrame;
    }

private:
    int fd_;
    vf::DaemonFrameReader reader_;
};

bool waitReadable(int fd, int timeoutMs) {
    pollfd p{fd, POLLIN, 0};
    return poll(&p, 1, timeoutMs) > 0;
}

// ---------------------------------------------------------------------------
// The pipelined client, the same for the daemon and the floor.

struct RunStats {
    double seconds = 0;
    std::vector<double> latenciesNs;
    double throughput() const { return static_cast<double>(latenciesNs.size()) / seconds; }
};

// Sends n requests built from the templates in turn (token = sequence
// number), never more than window unanswered, and times each answer.
RunStats pipeline(int fd, const std::vector<std::string>& payloads, size_t n, size_t window) {
    std::vector<std::string> templates;
    for (const auto& p : payloads) templates.push_back(clientRecord(p, 0));
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    std::vector<Clock::time_point> sentAt(n);
    RunStats stats;
    stats.latenciesNs.reserve(n);
    std::string out;
    size_t outOff = 0, sent = 0, received = 0;
    FrameReader reader(fd);
    Frame f;
    auto start = Clock::now();
    while (received < n) {
        auto now = Clock::now();
        while (sent < n && sent - received < window) {
            std::string r = templates[sent % templates.size()];
            putLe32(r, 8, static_cast<uint32_t>(sent));
            out += r;
            sentAt[sent++] = now;
        }
        if (outOff < out.size()) {
            ssize_t w = write(fd, out.data() + outOff, out.size() - outOff);
            if (w > 0) outOff += static_cast<size_t>(w);
            if (outOff == out.size()) {
                out.clear();
                outOff = 0;
            }
        }
        pollfd p{fd, static_cast<short>(POLLIN | (outOff < out.size() ? POLLOUT : 0)), 0};
        if (poll(&p, 1, 5000) <= 0)
            throw std::runtime_error("no answer within 5 s after " + std::to_string(received));
        if (p.revents & POLLIN) {
            if (!reader.fill()) throw std::runtime_error("the daemon closed the socket");
            auto got = Clock::now();
            while (reader.next(&f)) {
                if (f.token >= sent) throw std::runtime_error("answer to a token never sent");
                stats.latenciesNs.push_back(
                    std::chrono::duration<double, std::nano>(got - sentAt[f.token]).count());
                received++;
            }
        }
    }
    stats.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return stats;
}

// The answer to one request, or false when none comes within the time.
bool probe(int fd, const std::string& payload, Frame* answer, int timeoutMs) {
    writeAll(fd, clientRecord(payload, 0xFFFF0000u));
    FrameReader reader(fd);
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (Clock::now() < deadline) {
        if (!waitReadable(fd, 50)) continue;
        if (!reader.fill()) return false;
        if (reader.next(answer)) return true;
    }
    return false;
}

// The floor: a bare thread that cuts the client's records and answers each
// with one frame of the given payload, one write per frame, as SendRecord.
//
// With the daemon's structure it does, without protocol buffers or dispatch,
// the system calls and the thread hand-off that the daemon's rules fix: a
// select before each batch of reads and its log line, reads until EAGAIN, one
// log line written per request on the reading thread, the record handed to a second thread
// (the stack's) that writes the three log lines of an answer and sends the
// frame. What the daemon costs beyond this is its own code.
class EchoServer {
public:
    EchoServer(std::string payload, bool structure)
        : payload_(std::move(payload)), structure_(structure) {
        char tmpl[] = "/tmp/velard-floor-XXXXXX";
        if (mkdtemp(tmpl) == nullptr) throw std::runtime_error("mkdtemp");
        dir_ = tmpl;
        listen_ = listenOn(path());
        null_ = open("/dev/null", O_WRONLY);
        thread_ = std::thread([this] { serve(); });
    }
    ~EchoServer() {
        thread_.join();
        close(null_);
        close(listen_);
        unlink(path().c_str());
        rmdir(dir_.c_str());
    }
    std::string path() const { return dir_ + "/floor.sock"; }
    // CPU time of the serving threads, once they have taken their client.
    double cpuNs() const {
        double sum = 0;
        for (int i = 0; i < (structure_ ? 2 : 1); i++) {
            while (tid_[i].load() == 0) std::this_thread::yield();
            sum += threadCpuNs(tid_[i].load());
        }
        return sum;
    }

private:
    void started() { tid_[slot_++] = static_cast<pid_t>(syscall(SYS_gettid)); }

    // The answer frame, built once; each answer only patches its token.
    std::string frame() const {
        std::string frame(12, '\0');
        putLe32(frame, 0, static_cast<uint32_t>(payload_.size() + 8));
        putLe32(frame, 4, 1);
        return frame + payload_;
    }

    void logLine(const char* fmt, int value = 0) {
        char line[128];
        int n = snprintf(line, sizeof line, fmt, value);
        if (write(null_, line, static_cast<size_t>(n)) < 0) throw std::runtime_error("log write");
    }

    // The stack's thread of the structured floor.
    void answer() {
        started();
        std::string out = frame();
        for (;;) {
            uint32_t token;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                cond_.wait(lock, [this] { return done_ || !queue_.empty(); });
                if (queue_.empty()) return;
                token = queue_.front();
                queue_.pop_front();
            }
            logLine("E [IMS6.0]: IMS_onResponse() Resp Id:%d\n", 103);
            logLine("I [IMS6.0]: ResponseGeneralResponse()\n");
            logLine("I [IMS6.0]: ResponseGeneralResponse() handle:%0x\n", 1);
            putLe32(out, 8, token);
            std::lock_guard<std::mutex> lock(writeMutex_);
            writeAll(fd_, out);
        }
    }

    void serve() {
        fd_ = accept(listen_, nullptr, nullptr);
        std::thread stack;
        if (structure_) {
            fcntl(fd_, F_SETFL, O_NONBLOCK);
            stack = std::thread([this] { answer(); });
        }
        started();
        std::string out = frame();
        std::vector<char> buf(0x80000 + 4);
        size_t have = 0;
        for (bool open = true; open;) {
            if (structure_) {
                fd_set set;
                FD_ZERO(&set);
                FD_SET(fd_, &set);
                int n = select(fd_ + 1, &set, nullptr, nullptr, nullptr);
                logLine("E [IMS6.0]: ImsEventLoop: select (%d)\n", n);
                if (n < 0) break;
            }
            for (;;) {
                ssize_t n = read(fd_, buf.data() + have, buf.size() - have);
                if (n == 0 || (n < 0 && errno != EAGAIN && errno != EINTR)) open = false;
                if (n <= 0) break;
                have += static_cast<size_t>(n);
                size_t off = 0;
                while (have - off >= 4) {
                    const auto* u = reinterpret_cast<const unsigned char*>(buf.data() + off);
                    size_t len = size_t{u[0]} << 24 | size_t{u[1]} << 16 | size_t{u[2]} << 8 | u[3];
                    if (have - off < 4 + len) break;
                    uint32_t token = le32(buf.data() + off + 8);
                    off += 4 + len;
                    if (!structure_) {
                        putLe32(out, 8, token);
                        writeAll(fd_, out);
                        continue;
                    }
                    logLine("I [IMS6.0]: DispatchUADeletion()\n");
                    {
                        std::lock_guard<std::mutex> lock(mutex_);
                        queue_.push_back(token);
                    }
                    cond_.notify_one();
                }
                memmove(buf.data(), buf.data() + off, have - off);
                have -= off;
                if (!structure_) break;  // the bare floor reads blocking, once per wake-up
            }
        }
        if (structure_) {
            {
                std::lock_guard<std::mutex> lock(mutex_);
                done_ = true;
            }
            cond_.notify_one();
            stack.join();
        }
        close(fd_);
    }

    std::string payload_;
    bool structure_;
    std::string dir_;
    int listen_ = -1;
    int null_ = -1;
    int fd_ = -1;
    std::atomic<pid_t> tid_[2] = {{0}, {0}};
    std::atomic<int> slot_{0};
    std::mutex mutex_, writeMutex_;
    std::condition_variable cond_;
    std::deque<uint32_t> queue_;
    bool done_ = false;
    std::thread thread_;
};

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::string reqid(int id) {
    imsCommonStruc::Request r;
    r.set_reqid(static_cast<imsCommonStruc::Id>(id));
    return r.SerializePartialAsString();
}

double median(std::vector<double> v) {
    return percentile(std::move(v), 0.5);
}

struct Options {
    int rounds = 3;
    size_t count = 0;
    std::vector<size_t> windows{16};
    int threads = 8;
    std::string records;
    std::string only;     // one request kind of the round trip, for a profiler
    std::string preload;  // a thread-caching allocator for a second velard row
    std::string plotDir;  // where the latency distributions go
};

// ---------------------------------------------------------------------------
// The cost of capturing: velard behind velard-host --capture.

// velard-host capturing to a file, with velard under it in auto mode.
class CapturedDaemon {
public:
    CapturedDaemon() {
        char tmpl[] = "/tmp/velard-bench-XXXXXX";
        if (mkdtemp(tmpl) == nullptr) throw std::runtime_error("mkdtemp");
        dir_ = tmpl;
        pid_ = fork();
        if (pid_ == 0) {
            int null = open("/dev/null", O_WRONLY);
            dup2(null, 2);
            unsetenv("VELAR_SIM_CONTROL");
            unsetenv("VELAR_SIM_SCRIPT");
            execl(VELARD_HOST_BINARY, "velard-host", "--socket", socketPath().c_str(), "--once",
                  "--daemon", VELARD_BINARY, "--capture", capturePath().c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
    }
    ~CapturedDaemon() {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
        unlink(capturePath().c_str());
        rmdir(dir_.c_str());
    }
    std::string socketPath() const { return dir_ + "/velard.sock"; }
    std::string capturePath() const { return dir_ + "/session.pcapng"; }
    // CPU of velard-host and of the daemon it started.
    double cpuNs() const {
        std::ifstream children("/proc/" + std::to_string(pid_) + "/task/" + std::to_string(pid_) +
                               "/children");
        double sum = velard_bench::cpuNs(pid_);
        for (pid_t child; children >> child;) sum += velard_bench::cpuNs(child);
        return sum;
    }

private:
    std::string dir_;
    pid_t pid_ = -1;
};

int captureCost(const Options& o) {
    std::string dir = VELARD_REQUESTS_DIR;
    const std::pair<const char*, std::string> kinds[] = {
        {"103 (small)", reqid(103) + readFile(dir + "/small/requestUaDeletion.bin")},
        {"201 (large)", reqid(201) + readFile(dir + "/large/requestMakeCall.bin")},
    };
    size_t count = o.count ? o.count : 10000;
    std::cout << "Window " << o.windows.front() << " requests, " << count << " per run; "
              << o.rounds
              << " rounds alternating, medians shown. Server CPU: velard, or velard-host and "
                 "velard, per request.\n\n"
              << "| Request | | Throughput (req/s) | p50 | p99 | Server CPU per request | "
                 "Capture bytes per request |\n|---|---|---|---|---|---|---|\n";
    for (const auto& [name, payload] : kinds) {
        std::vector<double> tput[2], p50[2], p99[2], cpu[2], bytes;
        for (int r = 0; r < o.rounds; r++) {
            for (int captured = 0; captured < 2; captured++) {
                std::vector<std::string> payloads{payload};
                RunStats s;
                if (captured) {
                    CapturedDaemon d;
                    int fd = connectTo(d.socketPath(), 5000);
                    pipeline(fd, payloads, 2000, o.windows.front());
                    double before = d.cpuNs();
                    struct stat st;
                    stat(d.capturePath().c_str(), &st);
                    off_t size = st.st_size;
                    s = pipeline(fd, payloads, count, o.windows.front());
                    cpu[1].push_back((d.cpuNs() - before) / static_cast<double>(count));
                    stat(d.capturePath().c_str(), &st);
                    bytes.push_back(static_cast<double>(st.st_size - size) /
                                    static_cast<double>(count));
                    close(fd);
                } else {
                    Daemon d;
                    int fd = d.connectClient();
                    pipeline(fd, payloads, 2000, o.windows.front());
                    double before = cpuNs(d.pid());
                    s = pipeline(fd, payloads, count, o.windows.front());
                    cpu[0].push_back((cpuNs(d.pid()) - before) / static_cast<double>(count));
                }
                tput[captured].push_back(s.throughput());
                p50[captured].push_back(percentile(s.latenciesNs, 0.5));
                p99[captured].push_back(percentile(s.latenciesNs, 0.99));
            }
        }
        for (int captured = 0; captured < 2; captured++)
            std::cout << "| " << (captured ? "" : name) << " | "
                      << (captured ? "captured" : "velard") << " | "
                      << grouped(median(tput[captured])) << " | " << duration(median(p50[captured]))
                      << " | " << duration(median(p99[captured])) << " | "
                      << duration(median(cpu[captured])) << " | "
                      << (captured ? grouped(median(bytes)) : "") << " |\n";
        char buf[200];
        snprintf(buf, sizeof buf, "| | captured / velard | %.2f | %.1f× | %.1f× | %.1f× | |\n",
                 median(tput[1]) / median(tput[0]), median(p50[1]) / median(p50[0]),
                 median(p99[1]) / median(p99[0]), median(cpu[1]) / median(cpu[0]));
        std::cout << buf;
    }
    return 0;
}

// ---------------------------------------------------------------------------

// Who answers in a round trip: the two floors, velard, velard on a
// thread-caching allocator (only with --preload), velard with its log lines
// formatted but not written.
enum Who { kFloor, kStructure, kVelard, kCaching, kUnlogged, kWho };
const char* const kWhoName[kWho] = {"floor", "floor with the daemon's structure", "velard",
                                    "velard, thread-caching allocator",
                                    "velard, log lines not written"};

// The runs of one participant at one size and window.
struct Series {
    std::vector<double> tput, p50, p99, pmax, cpu;
    std::vector<double> pooled;  // every latency of every round
    bool empty() const { return tput.empty(); }
    void add(const RunStats& s, double cpuPerRequest) {
        tput.push_back(s.throughput());
        p50.push_back(percentile(s.latenciesNs, 0.5));
        p99.push_back(percentile(s.latenciesNs, 0.99));
        pmax.push_back(percentile(s.latenciesNs, 1.0));
        cpu.push_back(cpuPerRequest);
        pooled.insert(pooled.end(), s.latenciesNs.begin(), s.latenciesNs.end());
    }
};

// Throughput and p99 of one participant over another: the median of the
// ratios within each round, where the two ran one after the other, so that
// a busy spell of the machine that spans a round cancels out of its ratio.
struct Ratio {
    double tput, p50, p99, cpu;
    Ratio(const Series& num, const Series& den)
        : tput(paired(num.tput, den.tput)),
          p50(paired(num.p50, den.p50)),
          p99(paired(num.p99, den.p99)),
          cpu(paired(num.cpu, den.cpu)) {}
    static double paired(const std::vector<double>& num, const std::vector<double>& den) {
        std::vector<double> r;
        for (size_t i = 0; i < num.size() && i < den.size(); i++) r.push_back(num[i] / den[i]);
        return median(r);
    }
};

// What velard must reach against the floor with the daemon's structure.
constexpr double kTputTarget = 0.9;
constexpr double kP99Target = 1.3;
bool meets(const Ratio& r) {
    return r.tput >= kTputTarget && r.p99 <= kP99Target;
}

std::string fmt(const char* format, double v) {
    char buf[64];
    snprintf(buf, sizeof buf, format, v);
    return buf;
}

std::string tputCell(const Ratio& r) {
    std::string s = fmt("%.2f", r.tput);
    return r.tput >= kTputTarget ? s : "**" + s + "**";
}

std::string p99Cell(const Ratio& r) {
    std::string s = fmt("%.2f×", r.p99);
    return r.p99 <= kP99Target ? s : "**" + s + "**";
}

// One line per quantile: the latency of each participant at it, in µs.
void writeDistribution(const std::string& path, const Series* series) {
    std::ofstream out(path);
    out << "quantile";
    for (int w = 0; w < kWho; w++)
        if (!series[w].empty()) out << "\t\"" << kWhoName[w] << "\"";
    out << "\n";
    std::vector<std::vector<double>> sorted(kWho);
    for (int w = 0; w < kWho; w++) {
        sorted[w] = series[w].pooled;
        std::sort(sorted[w].begin(), sorted[w].end());
    }
    std::vector<double> qs;
    for (int i = 1; i <= 99; i++) qs.push_back(i / 100.0);
    for (double q : {0.995, 0.999, 0.9995, 0.9999}) qs.push_back(q);
    for (double q : qs) {
        out << q;
        for (int w = 0; w < kWho; w++) {
            if (series[w].empty()) continue;
            const auto& v = sorted[w];
            size_t rank =
                std::min(v.size() - 1, static_cast<size_t>(q * static_cast<double>(v.size())));
            out << "\t" << v[rank] / 1000;
        }
        out << "\n";
    }
}

int roundtrip(const Options& o) {
    struct Kind {
        const char* name;
        const char* file;  // of the distribution
        std::string payload;
        size_t count;
    };
    std::string dir = VELARD_REQUESTS_DIR;
    std::vector<Kind> kinds = {
        {"103 (small)", "small", reqid(103) + readFile(dir + "/small/requestUaDeletion.bin"),
         o.count ? o.count : 20000},
        {"201 (large)", "large", reqid(201) + readFile(dir + "/large/requestMakeCall.bin"),
         o.count ? o.count / 4 : 5000},
    };
    struct Result {
        const Kind* kind;
        size_t window;
        size_t requestBytes, responseBytes;
        Series series[kWho];
    };
    std::vector<Result> results;
    for (const Kind& k : kinds) {
        if (!o.only.empty() && std::string(k.name).find(o.only) == std::string::npos) continue;
        Frame answer;
        {
            Daemon d;
            int fd = d.connectClient();
            if (!probe(fd, k.payload, &answer, 2000)) {
                std::cout << "**" << k.name << ": no answer from velard**\n";
                return 1;
            }
        }
        for (size_t window : o.windows) {
            results.push_back(
                Result{&k, window, k.payload.size() + 12, answer.payload.size() + 12, {}});
            Series* series = results.back().series;
            // Rounds interleave the participants, so that a busy spell of the
            // machine falls on all of them alike.
            for (int r = 0; r < o.rounds; r++) {
                for (int who = 0; who < kWho; who++) {
                    if (who == kCaching && o.preload.empty()) continue;
                    std::vector<std::string> payloads{k.payload};
                    if (who == kFloor || who == kStructure) {
                        EchoServer floor(answer.payload, who == kStructure);
                        int fd = connectTo(floor.path(), 2000);
                        pipeline(fd, payloads, 2000, window);  // warm-up
                        double before = floor.cpuNs();
                        RunStats s = pipeline(fd, payloads, k.count, window);
                        series[who].add(s, (floor.cpuNs() - before) / static_cast<double>(k.count));
                        close(fd);
                    } else {
                        Daemon d("", who == kUnlogged ? VELARD_UNLOGGED_BINARY : VELARD_BINARY,
                                 who == kCaching ? o.preload : "");
                        int fd = d.connectClient();
                        pipeline(fd, payloads, 2000, window);
                        // The daemon's threads all live through a run: timed
                        // to the nanosecond, as the floors' threads are.
                        double before = liveThreadsCpuNs(d.pid());
                        RunStats s = pipeline(fd, payloads, k.count, window);
                        series[who].add(
                            s, (liveThreadsCpuNs(d.pid()) - before) / static_cast<double>(k.count));
                    }
                }
            }
            if (!o.plotDir.empty())
                writeDistribution(o.plotDir + "/" + k.file + "-w" + std::to_string(window) + ".dat",
                                  series);
        }
    }

    // The ratios first: velard against the floor with its own structure is
    // what the daemon's code costs; the bare floor is the second reference.
    int status = 0;
    bool caching = !o.preload.empty();
    std::cout << o.rounds << " rounds alternating the floors and the daemon; medians of the "
              << "rounds (ratios: the median of each round's ratio). Targets against the floor "
                 "with the daemon's structure: throughput at "
              << "least " << kTputTarget << ", p99 at most " << kP99Target
              << "× (misses in bold).\n\n";
    std::cout
        << "| Request | Window | velard / structure: throughput | p99 |"
        << (caching ? " thread-caching allocator / structure: throughput | p99 |" : "")
        << " structure / floor: throughput | velard / floor: throughput | p99 |\n|---|---|---|---|"
        << (caching ? "---|---|" : "") << "---|---|---|\n";
    for (const Result& r : results) {
        Ratio v(r.series[kVelard], r.series[kStructure]);
        if (!meets(v)) status = 1;
        Ratio sf(r.series[kStructure], r.series[kFloor]);
        Ratio vf(r.series[kVelard], r.series[kFloor]);
        std::cout << "| " << r.kind->name << " | " << r.window << " | " << tputCell(v) << " | "
                  << p99Cell(v) << " | ";
        if (caching) {
            Ratio c(r.series[kCaching], r.series[kStructure]);
            std::cout << tputCell(c) << " | " << p99Cell(c) << " | ";
        }
        std::cout << fmt("%.2f", sf.tput) << " | " << fmt("%.2f", vf.tput) << " | "
                  << fmt("%.1f×", vf.p99) << " |\n";
    }
    std::cout << "\nServer CPU: what the answering side (the floor's threads, the daemon's "
                 "process) spent per request, user plus system time.\n";
    for (const Result& r : results) {
        std::cout << "\n"
                  << r.kind->name << ", window " << r.window << " (request " << r.requestBytes
                  << " bytes, response " << r.responseBytes << " bytes):\n\n"
                  << "| | Throughput (req/s) | p50 | p99 | max | Server CPU per request |\n"
                     "|---|---|---|---|---|---|\n";
        for (int w = 0; w < kWho; w++) {
            const Series& s = r.series[w];
            if (s.empty()) continue;
            std::cout << "| " << kWhoName[w] << " | " << grouped(median(s.tput)) << " | "
                      << duration(median(s.p50)) << " | " << duration(median(s.p99)) << " | "
                      << duration(median(s.pmax)) << " | " << duration(median(s.cpu)) << " |\n";
        }
    }
    return status;
}

// ---------------------------------------------------------------------------

int burst(const Options& o) {
    int threads = o.threads;
    int count = static_cast<int>(o.count ? o.count : 12500);
    char tmpl[] = "/tmp/velard-burst-XXXXXX";
    if (mkdtemp(tmpl) == nullptr) throw std::runtime_error("mkdtemp");
    std::string controlPath = std::string(tmpl) + "/control.sock";
    int controlListen = listenOn(controlPath);
    Daemon d(controlPath);
    if (!waitReadable(controlListen, 5000)) throw std::runtime_error("the stack never connected");
    int control = accept(controlListen, nullptr, nullptr);
    int client = d.connectClient();

    // The reader checks every frame as it comes: whole, a notification of
    // the burst's value, and no more of a value than were sent.
    std::mutex mutex;
    std::map<uint32_t, long> seen;
    std::map<uint32_t, Clock::time_point> lastAt;
    std::atomic<long> faults{0}, total{0};
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        FrameReader r(client);
        Frame f;
        while (!stop.load()) {
            if (!waitReadable(client, 50)) continue;
            if (!r.fill()) break;
            while (r.next(&f)) {
                imsCommonStruc::Notify n;
                bool whole = f.type == 2 && f.token == 0 && n.ParseFromString(f.payload) &&
                             n.notifyid() == 20002;
                std::lock_guard<std::mutex> lock(mutex);
                if (!whole) {
                    faults++;
                    continue;
                }
                seen[n.cancelalarm().id()]++;
                lastAt[n.cancelalarm().id()] = Clock::now();
                total++;
            }
        }
    });

    std::string controlBuf;
    auto waitDone = [&](int seq) {
        for (;;) {
            size_t nl;
            while ((nl = controlBuf.find('\n')) == std::string::npos) {
                if (!waitReadable(control, 30000))
                    throw std::runtime_error("no done from the stack");
                char chunk[4096];
                ssize_t n = read(control, chunk, sizeof chunk);
                if (n <= 0) throw std::runtime_error("control channel closed");
                controlBuf.append(chunk, static_cast<size_t>(n));
            }
            Json j = Json::parse(controlBuf.substr(0, nl));
            controlBuf.erase(0, nl + 1);
            if (j.value("seq", -1) == seq) {
                if (j.value("type", "") != "done") throw std::runtime_error(j.dump());
                return;
            }
        }
    };

    std::vector<double> rates, cpuPer;
    long expected = static_cast<long>(threads) * count;
    for (int round = 0; round < o.rounds; round++) {
        uint32_t value = 1000 + static_cast<uint32_t>(round);
        Json msg = {
            {"type", "burst"},
            {"record",
             {{"class", "PrimitiveData<int>"}, {"id", 20002}, {"fields", {{"value", value}}}}},
            {"threads", threads},
            {"count", count},
            {"seq", round}};
        double cpu0 = cpuNs(d.pid()) / 1e9;
        auto t0 = Clock::now();
        writeAll(control, msg.dump() + "\n");
        waitDone(round);
        double cpu1 = cpuNs(d.pid()) / 1e9;
        // Every frame is on the socket at "done"; the reader may still be
        // taking them off.
        for (auto deadline = Clock::now() + std::chrono::seconds(10); Clock::now() < deadline;) {
            {
                std::lock_guard<std::mutex> lock(mutex);
                if (seen[value] >= expected) break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::lock_guard<std::mutex> lock(mutex);
        double seconds = std::chrono::duration<double>(lastAt[value] - t0).count();
        rates.push_back(static_cast<double>(expected) / seconds);
        cpuPer.push_back((cpu1 - cpu0) / static_cast<double>(expected) * 1e9);
    }
    // Anything late would be a duplicate.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    stop = true;
    reader.join();
    bool exact = faults == 0 && total == expected * o.rounds;
    for (int round = 0; round < o.rounds; round++) exact = exact && seen[1000u + round] == expected;

    std::cout << "| Stack threads | Notifications per round | Rounds | Notifications/s (median) | "
                 "Daemon CPU per notification (median) | Every frame whole, exactly once |\n"
                 "|---|---|---|---|---|---|\n";
    std::cout << "| " << threads << " | " << grouped(static_cast<double>(expected)) << " | "
              << o.rounds << " | " << grouped(median(rates)) << " | " << duration(median(cpuPer))
              << " | " << (exact ? "yes" : "**no**") << " (" << grouped(static_cast<double>(total))
              << " received, " << faults << " malformed) |\n";
    close(control);
    close(controlListen);
    unlink(controlPath.c_str());
    rmdir(tmpl);
    return exact ? 0 : 1;
}

// ---------------------------------------------------------------------------

int memory(const Options& o) {
    size_t count = o.count ? o.count : 1000000;
    std::vector<std::pair<int, std::string>> candidates;  // id, payload
    std::string requests = o.records + "/requests";
    DIR* dir = opendir(requests.c_str());
    if (dir == nullptr) throw std::runtime_error("no records in " + o.records);
    while (dirent* e = readdir(dir)) {
        int id = 0;
        if (sscanf(e->d_name, "request-%d.bin", &id) == 1) {
            std::string rec = readFile(requests + "/" + e->d_name);
            candidates.emplace_back(id, rec.substr(8));  // without reserved word and token
        }
    }
    closedir(dir);
    std::sort(candidates.begin(), candidates.end());

    Daemon d;
    int fd = d.connectClient();
    // Which requests get an answer: send each once with its index as the
    // token, and see what comes back.
    for (size_t i = 0; i < candidates.size(); i++)
        writeAll(fd, clientRecord(candidates[i].second, static_cast<uint32_t>(i)));
    std::vector<bool> answered(candidates.size());
    FrameReader reader(fd);
    Frame f;
    for (auto deadline = Clock::now() + std::chrono::seconds(2); Clock::now() < deadline;) {
        if (!waitReadable(fd, 50)) continue;
        if (!reader.fill()) throw std::runtime_error("the daemon closed the socket");
        while (reader.next(&f))
            if (f.type == 1 && f.token < answered.size()) answered[f.token] = true;
    }
    std::vector<std::string> mix;
    std::string ids;
    for (size_t i = 0; i < candidates.size(); i++) {
        if (!answered[i]) continue;
        mix.push_back(candidates[i].second);
        ids += (ids.empty() ? "" : ", ") + std::to_string(candidates[i].first);
    }
    if (mix.empty()) throw std::runtime_error("the daemon answers none of the requests");

    pipeline(fd, mix, 50000, o.windows.front());  // warm-up: every buffer at its working size
    long before = residentKiB(d.pid());
    std::vector<long> checkpoints;
    size_t step = count / 4;
    auto start = Clock::now();
    for (size_t done = 0; done < count; done += step) {
        pipeline(fd, mix, std::min(step, count - done), o.windows.front());
        checkpoints.push_back(residentKiB(d.pid()));
    }
    double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    long after = checkpoints.back();
    long growth = after - before;
    std::cout
        << "| Requests | Mix (ids answered in auto mode) | RSS before | RSS at each quarter | "
           "RSS after | Growth |\n|---|---|---|---|---|---|\n";
    std::cout << "| " << grouped(static_cast<double>(count)) << " in "
              << static_cast<int>(seconds + 0.5) << " s | " << ids << " | " << before << " KiB | ";
    for (size_t i = 0; i < checkpoints.size(); i++) std::cout << (i ? ", " : "") << checkpoints[i];
    std::cout << " KiB | " << after << " KiB | " << growth << " KiB"
              << (growth < 1024 ? " (target < 1 MiB)" : " (**over the 1 MiB target**)") << " |\n";
    return growth < 1024 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    signal(SIGPIPE, SIG_IGN);
    if (argc < 2) {
        std::cerr << "usage: socket_bench roundtrip|burst|memory [options]\n";
        return 2;
    }
    std::string mode = argv[1];
    Options o;
    for (int i = 2; i + 1 < argc; i += 2) {
        std::string a = argv[i];
        std::string v = argv[i + 1];
        if (a == "--rounds")
            o.rounds = std::stoi(v);
        else if (a == "--count")
            o.count = std::stoul(v);
        else if (a == "--window") {
            o.windows.clear();
            std::stringstream list(v);
            for (std::string w; std::getline(list, w, ',');) o.windows.push_back(std::stoul(w));
        } else if (a == "--preload")
            o.preload = v;
        else if (a == "--plot-data")
            o.plotDir = v;
        else if (a == "--threads")
            o.threads = std::stoi(v);
        else if (a == "--records")
            o.records = v;
        else if (a == "--only")
            o.only = v;
        else {
            std::cerr << "unknown option " << a << "\n";
            return 2;
        }
    }
    try {
        if (mode == "machine") {
            std::cout << "| | |\n|---|---|\n";
            for (const auto& [k, v] : machineDescription())
                std::cout << "| " << k << " | " << v << " |\n";
            return 0;
        }
        if (mode == "roundtrip") return roundtrip(o);
        if (mode == "capture") return captureCost(o);
        if (mode == "burst") return burst(o);
        if (mode == "memory") return memory(o);
    } catch (const std::exception& e) {
        std::cout << "\n**" << mode << " failed: " << e.what() << "**\n";
        return 1;
    }
    std::cerr << "unknown mode " << mode << "\n";
    return 2;
}
