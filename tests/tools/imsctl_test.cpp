// imsctl against the real daemon on the simulated stack, under velard-host:
// what a new user gets wrong, decoding frames by hand, and replaying the
// captured demo session.
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "imsCommonStruc.pb.h"
#include "pcapng.h"
#include "tests/support/child_process.h"
#include "tests/support/stderr_capture.h"

namespace fs = std::filesystem;
namespace cap = velard_pcapng;
using namespace velard_test;
using Json = nlohmann::json;

namespace {

const fs::path kDemoCapture = fs::path(SOURCE_DIR) / "tests/data/demo-session.pcapng";

// The demo's scripted notifications, which the capture was made with.
std::string DemoScript(const TempDir& dir) {
    fs::path script = dir.path() / "script.jsonl";
    std::ofstream out(script);
    std::vector<fs::path> parts;
    for (const auto& e : fs::directory_iterator(fs::path(SOURCE_DIR) / "demo/script.d"))
        parts.push_back(e.path());
    std::sort(parts.begin(), parts.end());
    for (const auto& p : parts) out << ReadFile(p);
    return "VELAR_SIM_SCRIPT=" + script.string();
}

// velard-host running the real daemon, stopped when the test ends.
struct Host {
    Host(const TempDir& dir, const std::vector<std::string>& env)
        : sock(dir.path() / "velard"), child(dir, Argv(sock, env)) {}
    ~Host() {
        child.Signal(SIGTERM);
        child.Wait();
    }
    static std::vector<std::string> Argv(const fs::path& sock,
                                         const std::vector<std::string>& env) {
        std::vector<std::string> argv = {VELARD_HOST_BIN, "--socket", sock,
                                         "--daemon",      VELARD_BIN, "--"};
        argv.insert(argv.end(), env.begin(), env.end());
        return argv;
    }
    fs::path sock;
    Child child;
};

std::vector<std::string> Imsctl(std::vector<std::string> args) {
    args.insert(args.begin(), IMSCTL_BIN);
    return args;
}

// ------------------------------------------------------------- rough edges

// Each line alone, as a new user would write it: what imsctl says, what it
// prints and how it exits. Requests the daemon never answers must not be
// waited for: the long timeout would make those cases outlast the test's
// limit.
TEST(Imsctl, TellsWhatWentWrong) {
    struct Case {
        std::vector<std::string> args;
        const char* input;
        int code;
        const char* stderrHas;         // "" for nothing on stderr
        std::vector<const char*> out;  // regexes, one per stdout line
    };
    const char* uaDeletion = R"({"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":5}})";
    const Case cases[] = {
        {{},
         R"({"reqId":"REQ_UA_DELETION"})",
         1,
         R"(line 1: bad Request: unknown field "reqId" in imsCommonStruc.Request; did you mean "reqid"?)",
         {}},
        {{},
         R"({"reqid":"REQ_MAKE_CALL","requestMakeCall":{"handle":1,"peerUrl":"x"}})",
         1,
         R"(unknown field "peerUrl" in requestMakeCall (imsCommonStruc.Request.RequestMakeCall); did you mean "peeruri"?)",
         {}},
        {{},
         R"({"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":5,"zzzzzzzz":1}})",
         1,
         R"(unknown field "zzzzzzzz" in requestUaDeletion (imsCommonStruc.Request.RequestUADeletion))",
         {}},
        {{}, "not json\n{\"token\":-1,\"reqid\":103}", 1, "2 input line(s) rejected", {}},
        {{},
         R"({"reqid":"REQ_UA_DELETION","requestEndCall":{"session":1}})",
         0,
         "line 1: warning: requestEndCall is not the body of REQ_UA_DELETION (its handler reads "
         "requestUaDeletion); sent as it is",
         {R"(\{"frame":"request","token":1,.*"requestEndCall".*)",
          R"(\{"frame":"response","token":1,.*)"}},
        {{"--timeout-ms", "60000"},
         R"({"reqid":"REQ_NO_OPERATION_208"})",
         0,
         "",
         {R"(\{"frame":"request","token":1,"message":\{"reqid":"REQ_NO_OPERATION_208"\}\})"}},
        {{"--timeout-ms", "60000"},
         R"({"reqid":9999})",
         0,
         "warning: the daemon has no handler for 9999",
         {R"(\{"frame":"request","token":1,"message":\{"reqid":9999\}\})"}},
        {{"--only", "response", "--compact"},
         uaDeletion,
         0,
         "",
         {R"(response 1 REQ_UA_DELETION generalResponse=\{"handle":5,.*)"}},
        {{"--only", "request,notify"}, uaDeletion, 0, "", {R"(\{"frame":"request",.*)"}},
        {{"--only", "answers"}, "", 2, "--only takes request, response or notify", {}},
        {{"--frobnicate"},
         "",
         2,
         "unknown argument: --frobnicate\nusage: imsctl --socket PATH",
         {}},
        {{"--timeout-ms"}, "", 2, "usage: imsctl --socket PATH", {}},
        {{"--timeout-ms", "soon"}, "", 2, "--timeout-ms wants milliseconds: soon", {}},
    };
    for (const Case& c : cases) {
        // A daemon of its own each: a daemon still ending with its last
        // client may take the next connection and drop it.
        TempDir dir;
        Host host(dir, {});
        std::vector<std::string> args = {"--socket", host.sock};
        args.insert(args.end(), c.args.begin(), c.args.end());
        Child ctl(dir, Imsctl(args), c.input);
        SCOPED_TRACE(c.input);
        EXPECT_TRUE(ExitedWith(ctl.Wait(), c.code)) << ctl.Err();
        if (*c.stderrHas == '\0')
            EXPECT_EQ(ctl.Err(), "");
        else
            EXPECT_NE(ctl.Err().find(c.stderrHas), std::string::npos) << ctl.Err();
        auto out = splitLines(ctl.Out());
        ASSERT_EQ(out.size(), c.out.size()) << ctl.Out();
        for (size_t i = 0; i < out.size(); ++i)
            EXPECT_TRUE(std::regex_match(out[i], std::regex(c.out[i]))) << out[i];
    }
}

// Every option that a usage line names has a line of its own in the help.
TEST(Imsctl, HelpListsEveryOption) {
    TempDir dir;
    for (std::vector<std::string> args :
         {std::vector<std::string>{"--help"}, {"decode", "--help"}, {"replay", "--help"}}) {
        Child ctl(dir, Imsctl(args));
        ASSERT_TRUE(ExitedWith(ctl.Wait(), 0));
        const std::string help = ctl.Out();
        // The usage is the lead lines, up to the first that starts a sentence.
        std::string usage;
        for (const std::string& line : splitLines(help)) {
            if (!line.empty() && line[0] != ' ' && line.rfind("usage:", 0) != 0) break;
            usage += line + "\n";
        }
        std::smatch m;
        int options = 0;
        for (std::string rest = usage; std::regex_search(rest, m, std::regex("--[a-z-]+"));
             rest = m.suffix()) {
            ++options;
            EXPECT_TRUE(std::regex_search(help, std::regex("\n  (-h, )?" + m.str() + "\\b")))
                << m.str() << "\n"
                << help;
        }
        EXPECT_GT(options, 2) << help;
    }
}

// ------------------------------------------------------------------ decode

// A Response {resid: REQ_UA_DELETION, generalResponse {handle: 5, result: 0}}
// to token 7, and a request record for REQ_UA_DELETION with handle 5, token 1,
// written as people paste them.
TEST(ImsctlDecode, ReadsFramesAsTheyArePasted) {
    const std::string response =
        R"({"frame":"response","token":7,"message":{"resid":"REQ_UA_DELETION","generalResponse":{"handle":5,"result":"RESULT_SUCCESS"}}})";
    const std::string request =
        R"({"frame":"request","token":1,"message":{"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":5}}})";
    struct Case {
        std::vector<std::string> args;
        std::string input;  // stdin
        int code;
        std::vector<std::string> out;
    };
    const Case cases[] = {
        {{"1000000001000000070000000867120408051000"}, "", 0, {response}},
        {{}, "10 00 00 00 01 00 00 00\n07 00 00 00 08 67 12 04\n08 05 10 00\n", 0, {response}},
        {{},
         "0x10, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, 0x00,\n"
         "0x08, 0x67, 0x12, 0x04, 0x08, 0x05, 0x10, 0x00",
         0,
         {response}},
        {{},
         "00000000  10 00 00 00 01 00 00 00  07 00 00 00 08 67 12 04  |.............g..|\n"
         "00000010  08 05 10 00                                       |....|\n",
         0,
         {response}},
        {{},
         "00000000: 1000 0000 0100 0000 0700 0000 0867 1204  .............g..\n"
         "00000010: 0805 1000                                ....\n",
         0,
         {response}},
        // The client's direction, then the daemon's, in one stream.
        {{"0000000e 00000000 01000000 0867 2202 0805", "1000000001000000070000000867120408051000"},
         "",
         0,
         {request, response}},
        {{"--as", "response", "0867120408051000"},
         "",
         0,
         {R"({"frame":"response","token":0,"message":{"resid":"REQ_UA_DELETION","generalResponse":{"handle":5,"result":"RESULT_SUCCESS"}}})"}},
        {{"--compact", "1000000001000000070000000867120408051000"},
         "",
         0,
         {R"(response 7 REQ_UA_DELETION generalResponse={"handle":5,"result":"RESULT_SUCCESS"})"}},
        {{"10000000010000000700"}, "", 1, {}},            // cut short
        {{"1000000001000000070000000867zz"}, "", 1, {}},  // not hex
        {{"0867120408051000"}, "", 1, {}},                // bare, without --as
        {{"0c000000010000000700000008ff0fff"},
         "",
         1,  // not a Response
         {R"({"frame":"response","token":7,"error":"payload is not a valid imsCommonStruc.Response","payload":"08ff0fff"})"}},
    };
    TempDir dir;
    for (const Case& c : cases) {
        std::vector<std::string> args = {"decode"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        Child ctl(dir, Imsctl(args), c.input);
        SCOPED_TRACE(c.input + (c.args.empty() ? "" : c.args.back()));
        EXPECT_TRUE(ExitedWith(ctl.Wait(), c.code)) << ctl.Err();
        EXPECT_EQ(splitLines(ctl.Out()), c.out);
    }
}

// A capture prints one line per packet, frames decoded and stack records as
// they are.
TEST(ImsctlDecode, ReadsACapture) {
    std::string why;
    cap::Capture capture;
    ASSERT_TRUE(cap::ReadFile(kDemoCapture, &capture, &why)) << why;
    TempDir dir;
    Child ctl(dir, Imsctl({"decode", kDemoCapture}));
    ASSERT_TRUE(ExitedWith(ctl.Wait(), 0)) << ctl.Err();
    auto lines = splitLines(ctl.Out());
    ASSERT_EQ(lines.size(), capture.packets.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        if (capture.packets[i].interface == cap::kInterfaceStack)
            EXPECT_EQ(lines[i], capture.packets[i].bytes);
        else
            EXPECT_EQ(lines[i].rfind("{\"frame\":", 0), 0u) << lines[i];
    }
}

// ------------------------------------------------------------------ replay

// The demo session replays without a difference, against the stack the
// capture was made with (auto mode with the demo's script) and with imsctl
// playing the stack from the captured records.
TEST(ImsctlReplay, DemoSessionReplaysClean) {
    for (bool control : {false, true}) {
        SCOPED_TRACE(control ? "controlled stack" : "auto stack");
        TempDir dir;
        fs::path ctlPath = dir.path() / "control";
        std::vector<std::string> args = {"replay", kDemoCapture, "--socket",
                                         (dir.path() / "velard").string()};
        if (control) {
            args.insert(args.end(), {"--control", ctlPath.string()});
        }
        Child replay(dir, Imsctl(args));
        if (control) {
            ASSERT_TRUE(WaitFor([&] { return fs::exists(ctlPath); })) << replay.Err();
        }
        Host host(dir, {control ? "VELAR_SIM_CONTROL=" + ctlPath.string() : DemoScript(dir)});
        EXPECT_TRUE(ExitedWith(replay.Wait(), 0))
            << replay.Out() << replay.Err()
            << "If the daemon or the simulated stack was meant to change this, "
               "bash scripts/capture-demo.sh captures the demo session again.";
    }
}

// A capture changed in one place: the replay names the place and fails.
TEST(ImsctlReplay, ReportsEachDifference) {
    struct Case {
        const char* change;
        // Changes the packets; returns false when it found nothing to change.
        std::function<bool(std::vector<cap::Packet>&)> apply;
        const char* reported;
    };
    auto firstResponse = [](std::vector<cap::Packet>& ps) -> cap::Packet* {
        for (auto& p : ps)
            if (p.interface == cap::kInterfaceFrames && p.flags == cap::kOutbound &&
                p.bytes[4] == 1)
                return &p;
        return nullptr;
    };
    auto stackLine = [](std::vector<cap::Packet>& ps, const char* type) -> cap::Packet* {
        for (auto& p : ps)
            if (p.interface == cap::kInterfaceStack && Json::parse(p.bytes)["type"] == type)
                return &p;
        return nullptr;
    };
    const Case cases[] = {
        {"a captured response names another id",
         [&](auto& ps) {
             cap::Packet* p = firstResponse(ps);
             if (p == nullptr) return false;
             imsCommonStruc::Response r;
             r.ParsePartialFromString(p->bytes.substr(12));
             r.set_resid(imsCommonStruc::REQ_SEND_DTMF);
             std::string payload = r.SerializePartialAsString();
             uint32_t len = static_cast<uint32_t>(payload.size() + 8);
             p->bytes =
                 std::string(reinterpret_cast<char*>(&len), 4) + p->bytes.substr(4, 8) + payload;
             return true;
         },
         "modified: resid: REQ_SEND_DTMF -> "},
        {"a captured notification is missing",
         [](auto& ps) {
             for (auto it = ps.begin(); it != ps.end(); ++it) {
                 if (it->interface == cap::kInterfaceFrames && it->bytes[4] == 2) {
                     ps.erase(it);
                     return true;
                 }
             }
             return false;
         },
         "not in the capture"},
        {"the daemon handed the stack another record",
         [&](auto& ps) {
             cap::Packet* p = stackLine(ps, "request");
             if (p == nullptr) return false;
             Json j = Json::parse(p->bytes);
             j["record"]["id"] = 1;
             p->bytes = j.dump();
             return true;
         },
         "modified: .record.id: 1 -> "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.change);
        TempDir dir;
        cap::Capture capture;
        std::string why;
        ASSERT_TRUE(cap::ReadFile(kDemoCapture, &capture, &why)) << why;
        ASSERT_TRUE(c.apply(capture.packets));
        fs::path changed = dir.path() / "changed.pcapng";
        {
            std::ofstream out(changed, std::ios::binary);
            out << cap::HeaderBlocks();
            for (const auto& p : capture.packets)
                out << cap::PacketBlock(p.interface, p.timestampUs, p.flags, p.bytes);
        }
        fs::path ctlPath = dir.path() / "control";
        Child replay(dir, Imsctl({"replay", changed, "--socket", dir.path() / "velard", "--control",
                                  ctlPath}));
        ASSERT_TRUE(WaitFor([&] { return fs::exists(ctlPath); })) << replay.Err();
        Host host(dir, {"VELAR_SIM_CONTROL=" + ctlPath.string()});
        EXPECT_TRUE(ExitedWith(replay.Wait(), 1)) << replay.Out() << replay.Err();
        EXPECT_NE(replay.Out().find(c.reported), std::string::npos) << replay.Out();
    }
}

}  // namespace
