// The host tools run as separate processes: velard-host with small shell
// daemons and a fake daemon, imsctl against a daemon played by the test.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "framing.h"
#include "tests/support/child_process.h"
#include "tests/support/stderr_capture.h"

namespace fs = std::filesystem;
namespace vf = velard_framing;
using namespace std::chrono_literals;

namespace {

using namespace velard_test;

std::string Bytes(std::initializer_list<int> b) {
    std::string s;
    for (int c : b) s.push_back(static_cast<char>(c));
    return s;
}

// A wire Response {resid: 103, generalResponse {handle: 5, result: RESULT_SUCCESS}}.
const std::string kGeneralResponse = Bytes({0x08, 103, 0x12, 0x04, 0x08, 0x05, 0x10, 0x00});
const char kGeneralResponseJson[] =
    R"({"resid":"REQ_UA_DELETION","generalResponse":{"handle":5,"result":"RESULT_SUCCESS"}})";

// A UNIX stream socket bound at path, not listening.
int BoundSocket(const fs::path& path) {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
    EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0) << path;
    return fd;
}

// A client connection to path, retried while nobody listens there yet; -1
// if nobody does within the limit.
int Connect(const fs::path& path, std::chrono::milliseconds limit = 10000ms) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, path.c_str(), sizeof addr.sun_path - 1);
    int fd = -1;
    WaitFor(
        [&] {
            fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
            if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) return true;
            close(fd);
            fd = -1;
            return false;
        },
        limit);
    return fd;
}

// The next daemon frame on fd; type 0 if the connection ends or nothing
// whole arrives within the limit.
vf::DaemonFrame ReadFrame(int fd, std::chrono::milliseconds limit = 10000ms) {
    vf::DaemonFrameReader reader;
    vf::DaemonFrame frame;
    auto until = std::chrono::steady_clock::now() + limit;
    while (reader.Next(&frame) != vf::ReadResult::kFrame) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            until - std::chrono::steady_clock::now());
        pollfd pfd{fd, POLLIN, 0};
        char buf[4096];
        ssize_t n;
        if (left.count() <= 0 || poll(&pfd, 1, static_cast<int>(left.count())) <= 0 ||
            (n = read(fd, buf, sizeof buf)) <= 0)
            return {};
        reader.Append(buf, static_cast<size_t>(n));
    }
    return frame;
}

size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) n++;
    return n;
}

// The real daemon, which the build puts next to velard-host.
const fs::path kVelard = fs::path(VELARD_HOST_BIN).parent_path() / "velard";

// A wire Request {reqid: 103, requestUaDeletion {handle: h}}.
std::string UaDeletion(int handle) {
    return Bytes({0x08, 103, 0x22, 0x02, 0x08, handle});
}

// ---------------------------------------------------------------- velard-host

// What the daemon finds when it starts: the socket in ANDROID_SOCKET_velard,
// open to everyone, not yet listening, the extra variables, a session of its
// own; a stale socket at the path has been replaced. Each failed check has
// its own exit code.
TEST(VelardHost, DaemonInheritsSocketAndEnvironment) {
    TempDir dir;
    fs::path sock = dir.path() / "velard.sock";
    ASSERT_EQ(close(BoundSocket(sock)), 0);
    fs::path daemon = dir.Script("daemon", R"sh(
fd="$ANDROID_SOCKET_velard"
[ -n "$fd" ] || exit 10
[ -S "/proc/self/fd/$fd" ] || exit 11
ino=$(stat -L -c %i "/proc/self/fd/$fd")
# Bound at the path, and not listening yet (flags 00010000 would say so).
[ "$(awk -v ino="$ino" '$7 == ino { print $4, $8 }' /proc/net/unix)" = "00000000 $SOCK" ] || exit 12
[ "$(stat -c %a "$SOCK")" = 666 ] || exit 13
[ "$EXTRA" = "a=b c" ] || exit 14
[ "$(cut -d' ' -f6 /proc/$$/stat)" -eq $$ ] || exit 15
exit 3)sh");
    Child host(dir, {VELARD_HOST_BIN, "--socket", sock, "--once", "--daemon", daemon, "--",
                     "EXTRA=a=b c", "SOCK=" + sock.string()});
    EXPECT_TRUE(ExitedWith(host.Wait(), 3)) << host.Err();
    EXPECT_FALSE(fs::exists(sock));
}

TEST(VelardHost, OnceExitsWithDaemonStatus) {
    struct Case {
        const char* daemon;
        int code;
    };
    const Case cases[] = {
        {"exit 0", 0},
        {"exit 7", 7},
        {"exit 255", 255},
        {"kill -TERM $$", 128 + SIGTERM},
        // The daemon's last resort on a fatal error; it reaches only its own
        // process group, never velard-host.
        {"kill -KILL 0", 128 + SIGKILL},
    };
    for (const Case& c : cases) {
        TempDir dir;
        Child host(dir, {VELARD_HOST_BIN, "--socket", dir.path() / "s", "--once", "--daemon",
                         dir.Script("d", c.daemon)});
        EXPECT_TRUE(ExitedWith(host.Wait(), c.code)) << c.daemon << "\n" << host.Err();
    }
}

// Something else at the socket path is left alone; a daemon that cannot be
// run is not restarted over and over.
TEST(VelardHost, RefusesToStart) {
    TempDir dir;
    fs::path file = dir.path() / "file";
    std::ofstream(file) << "keep me";
    Child onFile(dir, {VELARD_HOST_BIN, "--socket", file, "--daemon", dir.Script("d", "exit 0")});
    EXPECT_TRUE(ExitedWith(onFile.Wait(), 1)) << onFile.Err();
    EXPECT_EQ(ReadFile(file), "keep me");

    Child noDaemon(dir, {VELARD_HOST_BIN, "--socket", dir.path() / "s", "--daemon", "/none"});
    EXPECT_TRUE(ExitedWith(noDaemon.Wait(), 127));
    EXPECT_FALSE(fs::exists(dir.path() / "s"));
}

// A daemon that ends is started again on the same socket until velard-host
// is told to stop; the stop signal reaches the daemon, velard-host waits for
// it to finish and removes the socket.
TEST(VelardHost, RestartsDaemonUntilStopped) {
    TempDir dir;
    fs::path sock = dir.path() / "s", starts = dir.path() / "starts", mark = dir.path() / "mark";
    // Each start sets its trap before it counts itself; the third one stays.
    fs::path daemon = dir.Script("d", "trap 'sleep 0.2; touch " + mark.string() +
                                          "; exit 0' TERM\n"
                                          "stat -L -c %i /proc/self/fd/$ANDROID_SOCKET_velard >> " +
                                          starts.string() + "\n[ $(wc -l < " + starts.string() +
                                          ") -lt 3 ] && exit 1\nwhile :; do sleep 0.05; done");
    Child host(dir, {VELARD_HOST_BIN, "--socket", sock, "--daemon", daemon});
    ASSERT_TRUE(WaitFor([&] { return splitLines(ReadFile(starts)).size() == 3; })) << host.Err();
    EXPECT_TRUE(fs::is_socket(sock));
    host.Signal(SIGTERM);
    EXPECT_TRUE(ExitedWith(host.Wait(), 0)) << host.Err();
    EXPECT_TRUE(fs::exists(mark));
    EXPECT_FALSE(fs::exists(sock));

    auto inodes = splitLines(ReadFile(starts));
    EXPECT_EQ(inodes, std::vector<std::string>(3, inodes[0]));
    EXPECT_NE(host.Err().find("daemon ended (exit status 1); restarting"), std::string::npos)
        << host.Err();
}

// A wrong argument gets the usage line and status 2; --help explains how the
// daemon is meant to be run.
TEST(VelardHost, UsageAndHelp) {
    struct Case {
        std::vector<std::string> args;
        int code;
        const char* says;  // on stdout for status 0, else on stderr
    };
    const Case cases[] = {
        {{"--help"}, 0, "Failed to get socket"},
        {{"--bogus"}, 2, "unknown or incomplete argument: --bogus"},
        {{"--socket"}, 2, "unknown or incomplete argument: --socket"},
        {{"--socket", "/tmp/x", "--", "NOEQUALS"}, 2, "not ENV=VALUE: NOEQUALS"},
        {{}, 2, "--socket is required"},
    };
    for (const Case& c : cases) {
        TempDir dir;
        std::vector<std::string> argv{VELARD_HOST_BIN};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        Child host(dir, argv);
        EXPECT_TRUE(ExitedWith(host.Wait(), c.code)) << c.says;
        std::string text = c.code == 0 ? host.Out() : host.Err();
        EXPECT_NE(text.find(c.says), std::string::npos) << text;
        EXPECT_NE(text.find("usage: velard-host --socket PATH"), std::string::npos) << text;
    }
}

// A second velard-host on a path where a daemon is listening refuses to start
// and leaves the socket alone; the first goes on serving.
TEST(VelardHost, RefusesASocketSomebodyListensOn) {
    TempDir dir;
    fs::path sock = dir.path() / "velard";
    Child first(dir, {VELARD_HOST_BIN, "--socket", sock});
    close(Connect(sock));  // listening now

    Child second(dir, {VELARD_HOST_BIN, "--socket", sock});
    EXPECT_TRUE(ExitedWith(second.Wait(), 1)) << second.Err();
    EXPECT_NE(second.Err().find("is in use: another process is listening on it"), std::string::npos)
        << second.Err();

    int client = Connect(sock);
    ASSERT_TRUE(vf::WriteAll(client, vf::EncodeClientRecord(3, UaDeletion(8))));
    EXPECT_EQ(ReadFrame(client).token, 3u) << first.Err();
    close(client);
    first.Signal(SIGTERM);
    EXPECT_TRUE(ExitedWith(first.Wait(), 0)) << first.Err();
}

// Daemons that end before serving a client (here: the stack cannot reach its
// controller) are restarted after growing delays, and velard-host says so
// once, with the daemon's last line. A daemon that serves a client is
// replaced at once and ends the run: the next failure is reported anew.
TEST(VelardHost, BacksOffDaemonsThatCannotServe) {
    TempDir dir;
    fs::path sock = dir.path() / "velard", starts = dir.path() / "starts",
             serve = dir.path() / "serve";
    // Each start notes its time; while the file serve exists, one start runs
    // in auto mode, which can serve.
    fs::path daemon = dir.Script(
        "d", "date +%s%N >> " + starts.string() + "\nif [ -e " + serve.string() + " ]; then rm " +
                 serve.string() + "; unset VELAR_SIM_CONTROL; fi\nexec " + kVelard.string());
    Child host(dir, {VELARD_HOST_BIN, "--socket", sock, "--daemon", daemon, "--",
                     "VELAR_SIM_CONTROL=" + (dir.path() / "nobody").string()});
    auto times = [&] {
        std::vector<long long> t;
        for (const auto& l : splitLines(ReadFile(starts))) t.push_back(std::stoll(l) / 1000000);
        return t;
    };
    const std::string cannotConnect = "E velar-sim: control channel: cannot connect";
    ASSERT_TRUE(WaitFor([&] { return Count(host.Err(), cannotConnect) >= 4; }, 20000ms))
        << host.Err();
    auto t = times();
    // Lower bounds only: a busy machine makes the gaps longer, never shorter.
    for (size_t i = 1; i < 4; i++) EXPECT_GE(t[i] - t[i - 1], 100LL << (i - 1)) << i;
    // The daemon's own lines pass through; velard-host adds its account once.
    const std::string told =
        "restarting with a delay growing from 100 ms to 5 s while daemons "
        "end before serving a client; its last line: \"E [IMS6.0]: Ims "
        "Stack init failed\"";
    std::string err = host.Err();
    EXPECT_EQ(Count(err, told), 1u) << err;

    std::ofstream(serve).close();
    ASSERT_TRUE(WaitFor([&] { return !fs::exists(serve); }, 20000ms)) << host.Err();
    int client = Connect(sock);
    ASSERT_GE(client, 0);
    ASSERT_TRUE(vf::WriteAll(client, vf::EncodeClientRecord(1, UaDeletion(5))));
    EXPECT_EQ(ReadFrame(client).token, 1u);
    close(client);
    ASSERT_TRUE(WaitFor([&] { return Count(host.Err(), told) == 2; })) << host.Err();
    err = host.Err();
    EXPECT_LT(err.find("daemon ended (exit status 255); restarting\n"), err.rfind(told)) << err;
    host.Signal(SIGTERM);
    EXPECT_TRUE(ExitedWith(host.Wait(), 0)) << host.Err();
}

// --------------------------------------------------------------------- imsctl

// Frames from the daemon arrive in pieces and out of the ordinary; each
// prints as it is, and one that cannot be read does not stop the ones after.
TEST(Imsctl, PrintsWhateverTheDaemonSends) {
    TempDir dir;
    int listenFd = BoundSocket(dir.path() / "s");
    ASSERT_EQ(listen(listenFd, 1), 0);
    std::thread daemon([listenFd] {
        int fd = accept(listenFd, nullptr, nullptr);
        std::string bytes =
            vf::EncodeDaemonFrame(vf::kTypeNotify, 0, Bytes({0x08, 0xa2, 0x9c, 0x01})) +
            vf::EncodeDaemonFrame(vf::kTypeResponse, 9, Bytes({0x08, 0x8f, 0x4e})) +  // resid 9999
            vf::EncodeDaemonFrame(vf::kTypeResponse, 10, Bytes({0xff, 0xff})) +
            vf::EncodeDaemonFrame(5, 11, "ab") +
            vf::EncodeDaemonFrame(vf::kTypeResponse, 12, kGeneralResponse);
        for (char c : bytes) {
            EXPECT_EQ(write(fd, &c, 1), 1);
            std::this_thread::sleep_for(1ms);
        }
        char buf[64];
        while (read(fd, buf, sizeof buf) > 0) {
        }
        close(fd);
    });
    Child ctl(dir, {IMSCTL_BIN, "--socket", dir.path() / "s", "--wait-ms", "800"});
    EXPECT_TRUE(ExitedWith(ctl.Wait(), 0)) << ctl.Err();
    daemon.join();
    close(listenFd);
    const std::vector<std::string> expected = {
        R"({"frame":"notify","token":0,"message":{"notifyid":"NOTI_CANCEL_ALARM"}})",
        R"({"frame":"response","token":9,"message":{"resid":9999}})",
        R"({"frame":"response","token":10,"error":"payload is not a valid imsCommonStruc.Response","payload":"ffff"})",
        R"({"frame":"unknown","type":5,"token":11,"error":"unknown frame type","payload":"6162"})",
        std::string(R"({"frame":"response","token":12,"message":)") + kGeneralResponseJson + "}",
    };
    EXPECT_EQ(splitLines(ctl.Out()), expected);
    EXPECT_EQ(splitLines(ctl.Err()).size(), 3u) << ctl.Err();
}

// A socket nobody listens on yet is retried for a while, then given up.
TEST(Imsctl, FailsWithoutDaemon) {
    TempDir dir;
    int fd = BoundSocket(dir.path() / "idle");
    Child ctl(dir, {IMSCTL_BIN, "--socket", dir.path() / "idle", "--connect-ms", "100"});
    EXPECT_TRUE(ExitedWith(ctl.Wait(), 1));
    EXPECT_NE(ctl.Err().find("cannot connect"), std::string::npos) << ctl.Err();
    close(fd);
}

// ------------------------------------------------------------------- together

// velard-host runs a daemon that listens on the socket it is given. A
// scripted imsctl session with good and bad lines is served; the daemon ends
// with its client, velard-host starts it again, and a second session is
// served too.
TEST(HostTools, SessionsAcrossDaemonRestart) {
    TempDir dir;
    fs::path sock = dir.path() / "velard", log = dir.path() / "log";
    Child host(dir, {VELARD_HOST_BIN, "--socket", sock, "--daemon", FAKE_VELARD_BIN, "--",
                     "FAKE_LOG=" + log.string()});
    // Line n of the session is lines[n - 1].
    const char* lines[] = {
        R"({"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":5}})",
        "",
        "   # a comment",
        "not json",
        R"({"reqid":103,"bogus":1})",
        R"({"token":4294967295,"reqid":103,"requestUaDeletion":{"handle":6}})",
        R"({"token":-1,"reqid":103})",
        R"({"token":4294967296,"reqid":103})",
        R"({"token":"7","reqid":103})",
        "[103]",
        R"({"requestUaDeletion":{"handle":5}})",
        R"({"reqid":"NO_SUCH_ID"})",
        R"({"sleep_ms":20})",
        R"({"sleep_ms":-5})",
        R"({"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":7}})"
        "\r",
    };
    std::string input;
    for (const char* l : lines) input += l + std::string("\n");
    Child first(dir, {IMSCTL_BIN, "--socket", sock, "--wait-ms", "200"}, input);
    EXPECT_TRUE(ExitedWith(first.Wait(), 1)) << first.Err() << host.Err();
    Child second(dir, {IMSCTL_BIN, "--socket", sock, "--wait-ms", "200"},
                 R"({"token":3,"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":8}})");
    EXPECT_TRUE(ExitedWith(second.Wait(), 0)) << second.Err() << host.Err();

    // Requests without a token number themselves from 1, skipping the lines
    // that were refused; each is echoed, and its answer printed after it.
    EXPECT_EQ(splitLines(ReadFile(log)),
              (std::vector<std::string>{"1 0 086722020805", "4294967295 0 086722020806",
                                        "2 0 086722020807", "3 0 086722020808"}));
    auto out = splitLines(first.Out() + second.Out());
    ASSERT_EQ(out.size(), 8u) << first.Out() << second.Out();
    const std::pair<const char*, int> sent[] = {{"1", 5}, {"4294967295", 6}, {"2", 7}, {"3", 8}};
    for (const auto& [token, handle] : sent) {
        auto request = std::find(
            out.begin(), out.end(),
            std::string(R"({"frame":"request","token":)") + token +
                R"(,"message":{"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":)" +
                std::to_string(handle) + "}}}");
        auto response = std::find(out.begin(), out.end(),
                                  std::string(R"({"frame":"response","token":)") + token +
                                      ",\"message\":" + kGeneralResponseJson + "}");
        EXPECT_LT(request, response) << token;
        EXPECT_NE(response, out.end()) << token;
    }
    std::vector<int> errorLines;
    auto errors = splitLines(first.Err());
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.back(), "imsctl: 9 input line(s) rejected");
    errors.pop_back();
    for (const auto& e : errors) {
        int n = 0;
        ASSERT_EQ(sscanf(e.c_str(), "imsctl: line %d:", &n), 1) << e;
        errorLines.push_back(n);
    }
    EXPECT_EQ(errorLines, (std::vector<int>{4, 5, 7, 8, 9, 10, 11, 12, 14})) << first.Err();

    ASSERT_TRUE(WaitFor([&] { return host.Err().find("exit status 255") != std::string::npos; }));
    host.Signal(SIGTERM);
    EXPECT_TRUE(ExitedWith(host.Wait(), 0)) << host.Err();
    EXPECT_FALSE(fs::exists(sock));
}

// A client that connects the moment the previous one has left is served by
// the next daemon, not refused by the one that is ending; a second client
// while the first is live is still refused.
TEST(HostTools, ReconnectsAreServedByTheNextDaemon) {
    TempDir dir;
    fs::path sock = dir.path() / "velard";
    Child host(dir, {VELARD_HOST_BIN, "--socket", sock});
    for (int i = 1; i <= 30; i++) {
        int client = Connect(sock);
        ASSERT_GE(client, 0) << i;
        ASSERT_TRUE(vf::WriteAll(client, vf::EncodeClientRecord(i, UaDeletion(i))));
        vf::DaemonFrame answer = ReadFrame(client);
        ASSERT_EQ(answer.token, static_cast<uint32_t>(i)) << "cycle " << i << "\n" << host.Err();
        if (i % 10 == 0) {
            // Closed unanswered (counted below by the daemon's log line).
            int second = Connect(sock);
            EXPECT_EQ(ReadFrame(second).type, 0u) << i;
            close(second);
        }
        close(client);
    }
    // The daemon's lines reach velard-host's stderr through velard-host.
    const std::string refused = "Refusing connection: a client is already connected";
    WaitFor([&] { return Count(host.Err(), refused) >= 3; });
    EXPECT_EQ(Count(host.Err(), refused), 3u) << host.Err();
    host.Signal(SIGTERM);
    EXPECT_TRUE(ExitedWith(host.Wait(), 0)) << host.Err();
}

}  // namespace
