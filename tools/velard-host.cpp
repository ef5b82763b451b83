// velard-host: does for velard on a development host what init does on a
// device. It owns the daemon's listening socket, hands it to the daemon in
// ANDROID_SOCKET_velard, and starts the daemon again whenever it exits.
//
//   velard-host --socket PATH [--once] [--daemon BIN] [--rc FILE] [-- ENV=VALUE ...]
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
#include <errno.h>
#include <fcntl.h>
#include <libgen.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "rc_file.h"

namespace {

constexpr const char* kSocketEnv = "ANDROID_SOCKET_velard";
constexpr std::chrono::milliseconds kRestartDelay{100};

struct Options {
    std::string socketPath;
    std::string daemon;
    std::string rcFile;
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

[[noreturn]] void Usage(const char* why) {
    if (why) Log("%s", why);
    fprintf(
        why ? stderr : stdout,
        "usage: velard-host --socket PATH [--once] [--daemon BIN] [--rc FILE] [-- ENV=VALUE ...]\n"
        "  --socket PATH  where to create the daemon's listening socket\n"
        "  --once         do not restart the daemon; exit with its status\n"
        "  --daemon BIN   the daemon to run (default: velard next to velard-host)\n"
        "  --rc FILE      take the socket's name (ANDROID_SOCKET_<name>) and the\n"
        "                 environment (setenv) from the one service of an init .rc\n"
        "                 file; path, mode 0666 and owner stay the host's\n"
        "  ENV=VALUE      extra environment for the daemon (after the .rc file's)\n");
    exit(why ? 2 : 0);
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

bool CreateSocket(const std::string& path, OwnedSocket* out) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof addr.sun_path) {
        Log("socket path too long (%zu bytes, at most %zu): %s", path.size(),
            sizeof addr.sun_path - 1, path.c_str());
        return false;
    }
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);

    // A socket left by an earlier run goes; anything else at the path is not
    // ours to delete.
    struct stat st;
    if (lstat(path.c_str(), &st) == 0) {
        if (!S_ISSOCK(st.st_mode)) {
            Log("%s exists and is not a socket", path.c_str());
            return false;
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

// Starts the daemon. Returns its pid, or -1 if it could not be started at
// all (fork failed, or the binary could not be executed: restarting would
// not help then).
pid_t StartDaemon(const std::string& daemon, const sigset_t& originalMask) {
    // Reports an exec failure from the child; closes by itself on success.
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) {
        Log("pipe: %s", strerror(errno));
        return -1;
    }
    pid_t pid = fork();
    if (pid < 0) {
        Log("fork: %s", strerror(errno));
        close(report[0]);
        close(report[1]);
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
        char* const argv[] = {const_cast<char*>(daemon.c_str()), nullptr};
        execvp(argv[0], argv);
        int err = errno;
        ssize_t ignored = write(report[1], &err, sizeof err);
        (void)ignored;
        _exit(127);
    }
    close(report[1]);
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

}  // namespace

int main(int argc, char** argv) {
    Options opt = ParseArgs(argc, argv);
    velard_rc::HostLaunch launch{"", kSocketEnv, {}};
    std::string rcError;
    if (!opt.rcFile.empty() && !velard_rc::HostLaunchFromFile(opt.rcFile, &launch, &rcError)) {
        Log("%s", rcError.c_str());
        return 2;
    }

    // Every signal of interest is blocked and taken synchronously with
    // sigwaitinfo/sigtimedwait. SIGCHLD gets a handler all the same, so that
    // no setting of its disposition can make the kernel discard it.
    sigset_t waitSet, originalMask;
    sigemptyset(&waitSet);
    for (int s : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) sigaddset(&waitSet, s);
    sigprocmask(SIG_BLOCK, &waitSet, &originalMask);
    struct sigaction sa {};
    sa.sa_handler = OnSignal;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGCHLD, &sa, nullptr);
    signal(SIGPIPE, SIG_IGN);

    OwnedSocket sock;
    if (!CreateSocket(opt.socketPath, &sock)) return 1;

    setenv(launch.socketVariable.c_str(), std::to_string(sock.fd).c_str(), 1);
    launch.env.insert(launch.env.end(), opt.env.begin(), opt.env.end());
    for (const std::string& kv : launch.env) {
        size_t eq = kv.find('=');
        setenv(kv.substr(0, eq).c_str(), kv.substr(eq + 1).c_str(), 1);
    }

    int stopSignal = 0;  // set once SIGINT/SIGTERM/SIGHUP has arrived
    int exitCode = 0;
    for (;;) {
        pid_t child = StartDaemon(opt.daemon, originalMask);
        if (child < 0) {
            exitCode = 127;
            break;
        }

        // Wait for the daemon to end, passing stop signals on to it. A second
        // stop signal means the daemon ignored the first: it gets SIGKILL.
        int status = 0;
        bool exited = false;
        while (!exited) {
            siginfo_t info;
            int sig = sigwaitinfo(&waitSet, &info);
            if (sig < 0) continue;  // EINTR
            if (sig == SIGCHLD) {
                pid_t r;
                while ((r = waitpid(-1, &status, WNOHANG)) > 0 || (r < 0 && errno == EINTR)) {
                    if (r == child) exited = true;
                }
                if (exited) break;
                continue;
            }
            kill(child, stopSignal ? SIGKILL : sig);
            if (!stopSignal) stopSignal = sig;
        }

        if (stopSignal) {
            Log("daemon stopped (%s)", DescribeStatus(status).c_str());
            exitCode = opt.once ? MapStatus(status) : 0;
            break;
        }
        if (opt.once) {
            exitCode = MapStatus(status);
            break;
        }

        Log("daemon ended (%s); restarting", DescribeStatus(status).c_str());
        // The back-off keeps a daemon that fails at once from spinning; a stop
        // signal during it ends velard-host straight away.
        auto until = std::chrono::steady_clock::now() + kRestartDelay;
        for (;;) {
            auto left = until - std::chrono::steady_clock::now();
            if (left <= std::chrono::nanoseconds::zero()) break;
            timespec ts{0, static_cast<long>(
                               std::chrono::duration_cast<std::chrono::nanoseconds>(left).count())};
            int sig = sigtimedwait(&waitSet, nullptr, &ts);
            if (sig < 0 && errno != EINTR) break;  // EAGAIN: the delay is over
            if (sig > 0 && sig != SIGCHLD) {
                Log("stopping (signal %d) while the daemon is down", sig);
                stopSignal = sig;
                break;
            }
        }
        if (stopSignal) break;
    }

    sock.Remove();
    close(sock.fd);
    return exitCode;
}
