// velard-host: does for velard on a development host what init does on a
// device. It owns the daemon's listening socket, hands it to the daemon in
// ANDROID_SOCKET_velard, and starts the daemon again whenever it exits.
//
//   velard-host --socket PATH [--once] [--daemon BIN] [--rc FILE] [--capture FILE|-]
//               [-- ENV=VALUE ...]
//
// With --rc the socket's name and the daemon's environment come from the
// service that FILE describes to init, so that host and device start the
// daemon from one description.
//
// The socket is created and bound here but not put into listening state:
// that is the daemon's job, as on the device. Once the daemon has called
// listen the socket stays listening across restarts (this process keeps it
// open), so a client that connects while the daemon restarts waits in the
// backlog instead of being refused.
//
// The daemon's stderr passes through this process unchanged, so that when
// daemons keep ending before they serve anyone velard-host can say why, with
// the last line the daemon logged.
#include <errno.h>
#include <fcntl.h>
#include <libgen.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "capture_relay.h"
#include "rc_file.h"

namespace {

constexpr const char* kSocketEnv = "ANDROID_SOCKET_velard";
constexpr std::chrono::milliseconds kFirstRestartDelay{100};
constexpr std::chrono::milliseconds kMaxRestartDelay{5000};
// velard logs this line when it has accepted its client.
constexpr const char kAcceptedLine[] = "[IMS6.0]: new connection";

struct Options {
    std::string socketPath;
    std::string daemon;
    std::string rcFile;
    std::string capture;  // empty: no capture, and no relay at all
    bool once = false;
    std::vector<std::string> env;
};

void Log(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
void Log(const char* fmt, ...) {
    char line[1024];
    int n = snprintf(line, sizeof line, "velard-host: ");
    va_list ap;
    va_start(ap, fmt);
    int m = vsnprintf(line + n, sizeof line - static_cast<size_t>(n) - 1, fmt, ap);
    va_end(ap);
    size_t len = static_cast<size_t>(n) +
                 (m < 0 ? 0
                        : std::min<size_t>(static_cast<size_t>(m),
                                           sizeof line - static_cast<size_t>(n) - 2));
    line[len++] = '\n';
    ssize_t w;
    do {
        w = write(STDERR_FILENO, line, len);
    } while (w < 0 && errno == EINTR);
}

constexpr const char kUsageLine[] =
    "usage: velard-host --socket PATH [--once] [--daemon BIN] [--rc FILE] [--capture FILE|-]\n"
    "                   [-- ENV=VALUE ...]\n";

// A wrong argument gets the usage line; --help the whole story.
[[noreturn]] void Usage(const char* why) {
    if (why) {
        Log("%s", why);
        fprintf(stderr, "%s(velard-host --help explains)\n", kUsageLine);
        exit(2);
    }
    printf("%s", kUsageLine);
    printf(
        "  --socket PATH  where to create the daemon's listening socket\n"
        "  --once         do not restart the daemon; exit with its status\n"
        "  --daemon BIN   the daemon to run (default: velard next to velard-host)\n"
        "  --rc FILE      take the socket's name (ANDROID_SOCKET_<name>) and the\n"
        "                 environment (setenv) from the one service of an init .rc\n"
        "                 file, e.g. velard.rc; path, mode 0666 and owner stay the\n"
        "                 host's\n"
        "  --capture FILE record every frame and stack record in FILE (pcapng; -\n"
        "                 streams it to stdout, e.g. into wireshark -k -i -)\n"
        "  ENV=VALUE      extra environment for the daemon (after the .rc file's)\n");
    printf(
        "\n"
        "velard is not started by hand: like init on a device, velard-host\n"
        "creates its socket and passes it in ANDROID_SOCKET_velard (velard run\n"
        "without it logs \"Failed to get socket\" and exits). The daemon serves\n"
        "one client and ends when that client leaves; velard-host starts it\n"
        "again, at once when it has served a client, otherwise after a delay\n"
        "that grows to %lld s. Its log goes to stderr. For example:\n"
        "  velard-host --socket /tmp/velard.sock &\n"
        "  echo '{\"reqid\":\"REQ_UA_DELETION\",\"requestUaDeletion\":{\"handle\":7}}' |\n"
        "      imsctl --socket /tmp/velard.sock\n"
        "With VELAR_SIM_CONTROL=PATH among the ENV=VALUE pairs the simulated\n"
        "stack connects to a controller listening at PATH instead of answering\n"
        "by itself.\n",
        static_cast<long long>(kMaxRestartDelay.count() / 1000));
    exit(0);
}

std::string DefaultDaemon() {
    char self[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) return "velard";
    self[n] = '\0';
    return std::string(dirname(self)) + "/velard";
}

Options ParseArgs(int argc, char** argv) {
    Options o;
    int i = 1;
    for (; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--") {
            ++i;
            break;
        } else if (a == "--socket" && i + 1 < argc) {
            o.socketPath = argv[++i];
        } else if (a == "--daemon" && i + 1 < argc) {
            o.daemon = argv[++i];
        } else if (a == "--rc" && i + 1 < argc) {
            o.rcFile = argv[++i];
        } else if (a == "--capture" && i + 1 < argc) {
            o.capture = argv[++i];
        } else if (a == "--once") {
            o.once = true;
        } else if (a == "-h" || a == "--help") {
            Usage(nullptr);
        } else {
            Usage(("unknown or incomplete argument: " + a).c_str());
        }
    }
    for (; i < argc; ++i) {
        const char* eq = strchr(argv[i], '=');
        if (eq == nullptr || eq == argv[i])
            Usage((std::string("not ENV=VALUE: ") + argv[i]).c_str());
        o.env.emplace_back(argv[i]);
    }
    if (o.socketPath.empty()) Usage("--socket is required");
    if (o.daemon.empty()) o.daemon = DefaultDaemon();
    return o;
}

// The socket this process made, so that it removes its own file and not one
// that somebody else has put at the same path since.
struct OwnedSocket {
    int fd = -1;
    std::string path;
    dev_t dev = 0;
    ino_t ino = 0;

    void Remove() const {
        struct stat st;
        if (lstat(path.c_str(), &st) == 0 && st.st_dev == dev && st.st_ino == ino)
            unlink(path.c_str());
    }
};

// Whether a process listens on the socket at addr. A socket file that
// refuses connections is left over from a run that ended. The probe is a
// connection that ends at once: a daemon there without a client takes it
// for its client and ends, and its own init starts it again.
enum class Probe { kStale, kLive, kFailed };
Probe ProbeSocket(const sockaddr_un& addr) {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        Log("socket: %s", strerror(errno));
        return Probe::kFailed;
    }
    int rc = connect(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof addr);
    int err = errno;
    close(fd);
    // EAGAIN: the listener's backlog is full, which only a live one has.
    if (rc == 0 || err == EAGAIN) return Probe::kLive;
    if (err == ECONNREFUSED || err == ENOENT) return Probe::kStale;
    Log("cannot tell whether %s is in use: %s", addr.sun_path, strerror(err));
    return Probe::kFailed;
}

bool CreateSocket(const std::string& path, OwnedSocket* out) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof addr.sun_path) {
        Log("socket path too long (%zu bytes, at most %zu): %s", path.size(),
            sizeof addr.sun_path - 1, path.c_str());
        return false;
    }
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);

    // A socket left by an earlier run goes; a live one, or anything else at
    // the path, is not ours to delete.
    struct stat st;
    if (lstat(path.c_str(), &st) == 0) {
        if (!S_ISSOCK(st.st_mode)) {
            Log("%s exists and is not a socket", path.c_str());
            return false;
        }
        switch (ProbeSocket(addr)) {
            case Probe::kLive:
                Log("%s is in use: another process is listening on it (another velard-host?); "
                    "stop that one or choose another --socket",
                    path.c_str());
                return false;
            case Probe::kFailed:
                return false;
            case Probe::kStale:
                break;
        }
        if (unlink(path.c_str()) != 0) {
            Log("cannot remove stale socket %s: %s", path.c_str(), strerror(errno));
            return false;
        }
    }

    // No SOCK_CLOEXEC: the descriptor is meant to be inherited by the daemon.
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0) {
        Log("socket: %s", strerror(errno));
        return false;
    }
    if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
        Log("bind %s: %s", path.c_str(), strerror(errno));
        close(fd);
        return false;
    }
    // The daemon drops root, and its client may run as anyone.
    if (chmod(path.c_str(), 0666) != 0 || lstat(path.c_str(), &st) != 0) {
        Log("chmod %s: %s", path.c_str(), strerror(errno));
        unlink(path.c_str());
        close(fd);
        return false;
    }
    int flags = fcntl(fd, F_GETFD);
    if (flags < 0 || fcntl(fd, F_SETFD, flags & ~FD_CLOEXEC) != 0) {
        Log("fcntl: %s", strerror(errno));
        unlink(path.c_str());
        close(fd);
        return false;
    }
    out->fd = fd;
    out->path = path;
    out->dev = st.st_dev;
    out->ino = st.st_ino;
    return true;
}

void OnSignal(int) {}

// The daemon's stderr, read from a pipe and passed on unchanged. What
// velard-host keeps of it: the last line, to say why a daemon ended, and
// whether the daemon took a client.
struct DaemonOutput {
    int fd = -1;
    std::string partial;
    std::string lastLine;
    bool acceptedClient = false;

    ~DaemonOutput() {
        if (fd >= 0) close(fd);
    }

    void TakeLine(std::string line) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) return;
        size_t n = sizeof kAcceptedLine - 1;
        if (line.size() >= n && line.compare(line.size() - n, n, kAcceptedLine) == 0)
            acceptedClient = true;
        lastLine = std::move(line);
    }

    // Passes on what can be read now. At the end of the stream (the daemon
    // and everything it started have gone) the pipe is closed.
    void Pump() {
        char buf[4096];
        for (;;) {
            ssize_t n = read(fd, buf, sizeof buf);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 && errno == EAGAIN) return;
            if (n <= 0) break;
            for (ssize_t done = 0; done < n;) {
                ssize_t w = write(STDERR_FILENO, buf + done, static_cast<size_t>(n - done));
                if (w < 0 && errno == EINTR) continue;
                if (w <= 0) break;  // nobody reads our stderr: the copy goes, the rest stays
                done += w;
            }
            partial.append(buf, static_cast<size_t>(n));
            size_t start = 0;
            for (size_t nl; (nl = partial.find('\n', start)) != std::string::npos; start = nl + 1)
                TakeLine(partial.substr(start, nl - start));
            partial.erase(0, start);
        }
        TakeLine(std::move(partial));
        partial.clear();
        close(fd);
        fd = -1;
    }
};

// Starts the daemon with its stderr into out. Returns its pid, or -1 if it
// could not be started at all (fork failed, or the binary could not be
// executed: restarting would not help then).
pid_t StartDaemon(const std::string& daemon, const sigset_t& originalMask, DaemonOutput* out) {
    // Reports an exec failure from the child; closes by itself on success.
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) {
        Log("pipe: %s", strerror(errno));
        return -1;
    }
    int output[2];
    if (pipe2(output, O_CLOEXEC) != 0) {
        Log("pipe: %s", strerror(errno));
        close(report[0]);
        close(report[1]);
        return -1;
    }
    pid_t pid = fork();
    if (pid < 0) {
        Log("fork: %s", strerror(errno));
        for (int fd : {report[0], report[1], output[0], output[1]}) close(fd);
        return -1;
    }
    if (pid == 0) {
        // A service runs in a session of its own, as under init: the daemon's
        // kill(0, SIGKILL) on a fatal error must not reach this process.
        setsid();
        struct sigaction dfl {};
        dfl.sa_handler = SIG_DFL;
        for (int s : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGPIPE}) sigaction(s, &dfl, nullptr);
        sigprocmask(SIG_SETMASK, &originalMask, nullptr);
        dup2(output[1], STDERR_FILENO);
        char* const argv[] = {const_cast<char*>(daemon.c_str()), nullptr};
        execvp(argv[0], argv);
        int err = errno;
        ssize_t ignored = write(report[1], &err, sizeof err);
        (void)ignored;
        _exit(127);
    }
    close(report[1]);
    close(output[1]);
    out->fd = output[0];
    fcntl(out->fd, F_SETFL, O_NONBLOCK);
    int err = 0;
    ssize_t n;
    do {
        n = read(report[0], &err, sizeof err);
    } while (n < 0 && errno == EINTR);
    close(report[0]);
    if (n == static_cast<ssize_t>(sizeof err)) {
        Log("cannot run %s: %s", daemon.c_str(), strerror(err));
        int status;
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        return -1;
    }
    return pid;
}

// The shell's convention: the exit code, or 128 + the signal that ended it.
int MapStatus(int status) {
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return 1;
}

std::string DescribeStatus(int status) {
    char buf[96];
    if (WIFEXITED(status)) {
        snprintf(buf, sizeof buf, "exit status %d", WEXITSTATUS(status));
    } else if (WIFSIGNALED(status)) {
        snprintf(buf, sizeof buf, "signal %d (%s)%s", WTERMSIG(status), strsignal(WTERMSIG(status)),
                 WCOREDUMP(status) ? ", core dumped" : "");
    } else {
        snprintf(buf, sizeof buf, "status 0x%x", status);
    }
    return buf;
}

// Signals arrive through a descriptor, so that one poll waits for them and
// for the daemon's output together.
struct Signals {
    int fd = -1;
    int stopSignal = 0;  // set once SIGINT/SIGTERM/SIGHUP has arrived

    // Waits up to timeoutMs (-1: no limit) for a signal or for output from
    // out (null: none). Returns the signal taken, or 0.
    int Wait(DaemonOutput* out, int timeoutMs) {
        pollfd fds[2] = {{fd, POLLIN, 0}, {out ? out->fd : -1, POLLIN, 0}};
        int n = poll(fds, out && out->fd >= 0 ? 2 : 1, timeoutMs);
        if (n <= 0) return 0;
        if (out != nullptr && fds[1].revents != 0) out->Pump();
        if ((fds[0].revents & POLLIN) == 0) return 0;
        signalfd_siginfo info;
        if (read(fd, &info, sizeof info) != static_cast<ssize_t>(sizeof info)) return 0;
        return static_cast<int>(info.ssi_signo);
    }
};

// Waits for the daemon to end, passing its output on and stop signals to
// it. A second stop signal means the daemon ignored the first: it gets
// SIGKILL. Returns its wait status.
int WaitDaemon(pid_t child, Signals* signals, DaemonOutput* out) {
    for (;;) {
        int sig = signals->Wait(out, -1);
        if (sig == SIGCHLD) {
            int status = 0;
            pid_t r;
            while ((r = waitpid(-1, &status, WNOHANG)) > 0 || (r < 0 && errno == EINTR)) {
                if (r == child) {
                    // Whatever it wrote before it ended is in the pipe by now.
                    if (out->fd >= 0) out->Pump();
                    return status;
                }
            }
        } else if (sig != 0) {
            kill(child, signals->stopSignal ? SIGKILL : sig);
            if (!signals->stopSignal) signals->stopSignal = sig;
        }
    }
}

// True when a client waits in the listening socket's backlog: a pending
// connection makes a listening socket readable. (A socket that nobody has
// put into listening state yet reports only a hang-up.)
bool ClientWaiting(int listenFd) {
    pollfd pfd{listenFd, POLLIN, 0};
    return poll(&pfd, 1, 0) > 0 && (pfd.revents & POLLIN) != 0;
}

// When the next daemon starts. One that served a client is replaced at once.
// One that ended before serving anyone (a stack that cannot start, a bad
// environment) is replaced after a delay that doubles up to a cap, so that a
// broken set-up does not spin; a client waiting in the backlog hurries only
// the first of these, since a second daemon in a row that cannot serve would
// keep it waiting all the same and the two would spin together.
class RestartPolicy {
public:
    std::chrono::milliseconds AfterExit(bool served, bool clientWaiting) {
        if (served) {
            mFailures = 0;
            return std::chrono::milliseconds::zero();
        }
        ++mFailures;
        if (clientWaiting && mFailures == 1) return std::chrono::milliseconds::zero();
        std::chrono::milliseconds delay = kFirstRestartDelay * (1 << std::min(mFailures - 1, 16));
        return std::min(delay, kMaxRestartDelay);
    }
    // The daemon that just ended is the first of a run that did not serve.
    bool FirstFailure() const { return mFailures == 1; }

private:
    int mFailures = 0;
};

// Sleeps for the delay unless a stop signal comes first; false then.
bool Delay(std::chrono::milliseconds delay, Signals* signals) {
    auto until = std::chrono::steady_clock::now() + delay;
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            until - std::chrono::steady_clock::now());
        if (left <= std::chrono::milliseconds::zero()) return true;
        int sig = signals->Wait(nullptr, static_cast<int>(left.count()) + 1);
        if (sig > 0 && sig != SIGCHLD) {
            Log("stopping (signal %d) while the daemon is down", sig);
            signals->stopSignal = sig;
            return false;
        }
    }
}

// Runs daemons on the socket until told to stop (or, with --once, until the
// first one ends). Returns velard-host's exit code.
int Supervise(const Options& opt, int listenFd, Signals* signals, const sigset_t& originalMask) {
    RestartPolicy policy;
    for (;;) {
        DaemonOutput out;
        pid_t child = StartDaemon(opt.daemon, originalMask, &out);
        if (child < 0) return 127;
        int status = WaitDaemon(child, signals, &out);

        if (signals->stopSignal) {
            Log("daemon stopped (%s)", DescribeStatus(status).c_str());
            return opt.once ? MapStatus(status) : 0;
        }
        if (opt.once) return MapStatus(status);

        auto delay = policy.AfterExit(out.acceptedClient, ClientWaiting(listenFd));
        if (out.acceptedClient) {
            Log("daemon ended (%s); restarting", DescribeStatus(status).c_str());
        } else if (policy.FirstFailure()) {
            // Said once for a run of daemons that cannot serve, not for each.
            Log("daemon ended (%s); restarting with a delay growing from %lld ms to %lld s "
                "while daemons end before serving a client; its last line: %s",
                DescribeStatus(status).c_str(), static_cast<long long>(kFirstRestartDelay.count()),
                static_cast<long long>(kMaxRestartDelay.count() / 1000),
                out.lastLine.empty() ? "(none)" : ("\"" + out.lastLine + "\"").c_str());
        }
        if (!Delay(delay, signals)) return 0;
    }
}

}  // namespace

int main(int argc, char** argv) {
    Options opt = ParseArgs(argc, argv);
    velard_rc::HostLaunch launch{"", kSocketEnv, {}};
    std::string rcError;
    if (!opt.rcFile.empty() && !velard_rc::HostLaunchFromFile(opt.rcFile, &launch, &rcError)) {
        Log("%s", rcError.c_str());
        return 2;
    }

    // Every signal of interest is blocked and read from a signalfd. SIGCHLD
    // gets a handler all the same, so that no setting of its disposition can
    // make the kernel discard it.
    sigset_t waitSet, originalMask;
    sigemptyset(&waitSet);
    for (int s : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) sigaddset(&waitSet, s);
    sigprocmask(SIG_BLOCK, &waitSet, &originalMask);
    struct sigaction sa {};
    sa.sa_handler = OnSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGCHLD, &sa, nullptr);
    signal(SIGPIPE, SIG_IGN);
    Signals signals;
    signals.fd = signalfd(-1, &waitSet, SFD_CLOEXEC);
    if (signals.fd < 0) {
        Log("signalfd: %s", strerror(errno));
        return 1;
    }

    OwnedSocket sock;
    if (!CreateSocket(opt.socketPath, &sock)) return 1;

    // Capturing puts a relay between the socket and the daemon, which then
    // listens on a private socket of the relay's instead.
    int daemonListenFd = sock.fd;
    velard_capture::RelayHandle relay;
    if (!opt.capture.empty()) {
        velard_capture::RelayFds fds;
        std::string why;
        relay = velard_capture::StartRelay(opt.capture, sock.fd, &fds, &why);
        if (!relay) {
            Log("capture: %s", why.c_str());
            sock.Remove();
            return 1;
        }
        daemonListenFd = fds.daemonListen;
        setenv(velard_capture::kRecordFdEnv, std::to_string(fds.recordChannel).c_str(), 1);
    }
    setenv(launch.socketVariable.c_str(), std::to_string(daemonListenFd).c_str(), 1);
    launch.env.insert(launch.env.end(), opt.env.begin(), opt.env.end());
    for (const std::string& kv : launch.env) {
        size_t eq = kv.find('=');
        setenv(kv.substr(0, eq).c_str(), kv.substr(eq + 1).c_str(), 1);
    }

    int exitCode = Supervise(opt, daemonListenFd, &signals, originalMask);
    relay.reset();
    sock.Remove();
    close(sock.fd);
    return exitCode;
}
