// Session capture end to end: velard-host --capture in front of the real
// daemon on the simulated stack, the file read back, and the Wireshark
// dissector run over it with tshark.
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "pcapng.h"
#include "tests/support/child_process.h"
#include "tests/support/e2e.h"
#include "tests/support/stderr_capture.h"

namespace fs = std::filesystem;
namespace vp = velard_pcapng;
namespace ims = imsCommonStruc;
using velard_test::clientRecord;

namespace {

constexpr uint32_t kCallToken = 0x101, kNoRowToken = 0x102, kBadToken = 0x103,
                   kSecondRunToken = 0x201;

// velard-host capturing to a file in a directory of its own.
class Host {
public:
    Host()
        : child_(dir_, {VELARD_HOST_BIN, "--socket", socket(), "--capture", capture(), "--",
                        "VELAR_SIM_SCRIPT=" + Script(dir_)}) {}

    std::string socket() const { return (dir_.path() / "velard.sock").string(); }
    std::string capture() const { return (dir_.path() / "session.pcapng").string(); }

    // A client connection, once the socket is there.
    int Connect() {
        int fd = -1;
        velard_test::WaitFor([&] {
            fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
            sockaddr_un addr{};
            addr.sun_family = AF_UNIX;
            snprintf(addr.sun_path, sizeof addr.sun_path, "%s", socket().c_str());
            if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) return true;
            close(fd);
            fd = -1;
            return false;
        });
        EXPECT_GE(fd, 0) << "no socket at " << socket();
        return fd;
    }

    // Waits until velard-host has logged a line containing text.
    void AwaitLog(const std::string& text) {
        EXPECT_TRUE(velard_test::WaitFor([&] {
            return child_.Err().find(text) != std::string::npos;
        })) << "velard-host never logged "
            << text;
    }

    void Stop(int sig) {
        child_.Signal(sig);
        child_.Wait();
    }

    vp::Capture Read() const {
        vp::Capture c;
        std::string why;
        EXPECT_TRUE(vp::ReadFile(capture(), &c, &why)) << why;
        return c;
    }

private:
    // A notification follows every call the stack answers.
    static std::string Script(const velard_test::TempDir& dir) {
        fs::path p = dir.path() / "script";
        std::ofstream(p) << R"({"after":201,"record":)" << velard_test::cancelAlarmRecord(4).dump()
                         << "}\n";
        return p.string();
    }

    velard_test::TempDir dir_;
    velard_test::Child child_;
};

// Reads frames from fd until one with the token arrives (or the stream ends).
bool AwaitToken(int fd, velard_framing::DaemonFrameReader* reader, uint32_t token) {
    for (;;) {
        velard_framing::DaemonFrame f;
        while (reader->Next(&f) == velard_framing::ReadResult::kFrame)
            if (f.token == token) return true;
        char buf[4096];
        ssize_t n = read(fd, buf, sizeof buf);
        if (n <= 0) return false;
        reader->Append(buf, static_cast<size_t>(n));
    }
}

ims::Request MakeCall() {
    ims::Request r;
    r.set_reqid(ims::REQ_MAKE_CALL);
    auto* call = r.mutable_requestmakecall();
    call->set_handle(5);
    call->set_peeruri("sip:bob@example.org");
    call->set_calltype(ims::CALL_TYPE_2);
    call->set_codec(ims::CODEC_TYPE_1);
    return r;
}

// Runs one scripted session: a call (answered, then a notification), a
// request whose id has no row (never answered), a frame whose body is cut
// short; the client leaves, the daemon restarts and serves a second client
// (a request without a notification after it), while a third is turned away.
void RunSession(Host& host) {
    int fd = host.Connect();
    velard_framing::DaemonFrameReader reader;
    ASSERT_TRUE(velard_framing::WriteAll(fd, clientRecord(MakeCall(), kCallToken)));
    ASSERT_TRUE(AwaitToken(fd, &reader, kCallToken));
    ASSERT_TRUE(AwaitToken(fd, &reader, 0));  // the notification
    ims::Request noRow;
    noRow.set_reqid(ims::ID_RESERVED_900);
    ASSERT_TRUE(velard_framing::WriteAll(fd, clientRecord(noRow, kNoRowToken)));
    ASSERT_TRUE(velard_framing::WriteAll(fd, clientRecord(std::string("\x08\xC9", 2), kBadToken)));
    close(fd);

    // A client that came before the first daemon had seen its client leave
    // would be refused by it, with or without the relay.
    host.AwaitLog("restarting");
    fd = host.Connect();
    ASSERT_TRUE(velard_framing::WriteAll(
        fd, clientRecord(velard_test::uaDeletionRequest(5), kSecondRunToken)));
    velard_framing::DaemonFrameReader second;
    ASSERT_TRUE(AwaitToken(fd, &second, kSecondRunToken));
    int third = host.Connect();
    char c;
    EXPECT_EQ(read(third, &c, 1), 0) << "the daemon serves one client; a second is closed";
    close(third);
    close(fd);
}

uint32_t Word(const std::string& b, size_t at) {
    uint32_t v;
    memcpy(&v, b.data() + at, 4);
    return v;
}

// Where each kind of packet of a token sits in the capture.
struct Places {
    std::map<std::string, std::vector<size_t>> at;
};

std::map<uint32_t, Places> Index(const vp::Capture& c) {
    std::map<uint32_t, Places> out;
    for (size_t i = 0; i < c.packets.size(); ++i) {
        const vp::Packet& p = c.packets[i];
        if (p.interface == vp::kInterfaceFrames) {
            if (p.bytes.size() < 12) continue;
            bool in = p.flags == vp::kInbound;
            std::string kind = in                      ? "request frame"
                               : Word(p.bytes, 4) == 1 ? "response frame"
                                                       : "notify frame";
            out[Word(p.bytes, 8)].at[kind].push_back(i);
        } else {
            auto j = velard_test::Json::parse(p.bytes);
            EXPECT_EQ(p.flags, j["type"] == "request" ? vp::kOutbound : vp::kInbound) << p.bytes;
            out[j.value("token", 0u)].at[j["type"].get<std::string>() + " record"].push_back(i);
        }
    }
    return out;
}

TEST(Capture, EveryFrameAndRecordInCausalOrder) {
    Host host;
    RunSession(host);
    host.Stop(SIGTERM);
    vp::Capture c = host.Read();
    EXPECT_EQ(c.stopped, "");
    auto index = Index(c);

    // token -> the packets it must have, in the order they must appear.
    const std::map<uint32_t, std::vector<std::string>> expected = {
        {kCallToken, {"request frame", "request record", "response record", "response frame"}},
        {kSecondRunToken, {"request frame", "request record", "response record", "response frame"}},
        {kNoRowToken, {"request frame"}},
        {kBadToken, {"request frame"}},
        {0, {"notify record", "notify frame"}},
    };
    for (const auto& [token, order] : expected) {
        SCOPED_TRACE("token " + std::to_string(token));
        const auto& places = index[token].at;
        EXPECT_EQ(places.size(), order.size());
        size_t last = 0;
        for (const std::string& kind : order) {
            auto it = places.find(kind);
            ASSERT_NE(it, places.end()) << kind;
            ASSERT_EQ(it->second.size(), 1u) << kind;
            EXPECT_GE(it->second[0], last) << kind;
            last = it->second[0];
        }
    }
    // Both runs of the daemon are in the one file, each marked.
    std::vector<std::string> comments;
    for (const auto& p : c.packets)
        if (!p.comment.empty()) comments.push_back(p.comment);
    EXPECT_EQ(comments, (std::vector<std::string>{"connection 1", "connection 2"}));
}

TEST(Capture, KilledHostLeavesReadableFile) {
    Host host;
    int fd = host.Connect();
    velard_framing::DaemonFrameReader reader;
    ASSERT_TRUE(velard_framing::WriteAll(fd, clientRecord(MakeCall(), kCallToken)));
    ASSERT_TRUE(AwaitToken(fd, &reader, kCallToken));
    host.Stop(SIGKILL);
    close(fd);
    vp::Capture c = host.Read();
    EXPECT_EQ(c.stopped, "");
    EXPECT_GE(c.packets.size(), 4u);
}

// Runs tshark with the dissector; its standard output.
std::string Tshark(const std::string& capture, const std::string& args) {
    std::string cmd = std::string(TSHARK) + " -X lua_script:" + DISSECTOR + " -2 -r " + capture +
                      " " + args + " 2>/dev/null";
    std::string out;
    FILE* p = popen(cmd.c_str(), "r");
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    EXPECT_EQ(pclose(p), 0) << cmd;
    return out;
}

TEST(Capture, DissectorDecodesPairsAndFlags) {
    if (std::string(TSHARK).empty()) GTEST_SKIP() << "tshark is not installed";
    Host host;
    RunSession(host);
    host.Stop(SIGTERM);

    // Display filter -> the tokens of the packets it must select, in order.
    const std::vector<std::pair<std::string, std::string>> filters = {
        {"velard.message == \"Request\"", "257,258,259,513"},
        {"velard.message == \"Response\" && velard.request_in && velard.time", "257,513"},
        {"velard.response_in", "257,513"},
        {"velard.unanswered", "258,259"},
        {"velard.malformed", "259"},
        {"velard.id == 201 && velard.Request.RequestMakeCall.callType == 2", "257"},
        {"velard.Request.RequestMakeCall.peeruri == \"sip:bob@example.org\"", "257"},
        {"velard.message == \"Notify\" && velard.id == 20002", "0"},
        {"velarstack.type == \"request\" && velarstack.class", "257,513"},
        {"velarstack.type == \"notify\" && velarstack.id == 20002", "-"},
    };
    for (const auto& [filter, tokens] : filters) {
        std::string got = Tshark(host.capture(), "-Y '" + filter +
                                                     "' -T fields -E separator=, "
                                                     "-e velard.token -e velarstack.token");
        std::string joined;
        for (const std::string& line : velard_test::splitLines(got)) {
            std::string t = line.substr(0, line.find(','));
            if (t.empty()) t = line.substr(line.find(',') + 1);
            if (t.empty()) t = "-";
            joined += (joined.empty() ? "" : ",") + t;
        }
        EXPECT_EQ(joined, tokens) << filter;
    }

    // Field names and values as a reader sees them.
    std::string text = Tshark(host.capture(), "-Y 'velard.token == 257' -V");
    for (const char* line :
         {"Token: 257", "reqid: REQ_MAKE_CALL (201)", "requestMakeCall", "handle: 5",
          "peeruri: sip:bob@example.org", "callType: CALL_TYPE_2 (2)", "codec: CODEC_TYPE_1 (1)",
          "Frame type: Response (1)", "resid: REQ_MAKE_CALL (201)", "Time since request:"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    // A script error shows in the tree instead of the decoding; none may.
    EXPECT_EQ(Tshark(host.capture(), "-V").find("Lua Error"), std::string::npos);
}

}  // namespace
