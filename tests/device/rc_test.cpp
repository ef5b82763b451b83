// velard.rc against what it describes: the socket the daemon reads, the
// place Android.bp installs the daemon, and the start-up's change of
// identity. Each check also runs on copies of velard.rc with one fault
// planted, and must catch it.
#include <fcntl.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "rc_file.h"
#include "tests/support/child_process.h"

using namespace std::chrono_literals;
using velard_test::Child;
using velard_test::ReadFile;
using velard_test::TempDir;
using velard_test::WaitFor;

namespace {

const std::string kSource = VELARD_SOURCE_DIR;

velard_rc::Service OneService(const std::string& rcText) {
    std::vector<velard_rc::Service> s;
    std::string error;
    EXPECT_TRUE(velard_rc::Parse(rcText, "velard.rc", &s, &error)) << error;
    EXPECT_EQ(s.size(), 1u);
    return s.empty() ? velard_rc::Service{} : s[0];
}

// --- Android.bp, as far as the install path of a binary goes ---------------

struct BpValue {
    enum Kind { kString, kBool, kOther, kList, kMap } kind = kOther;
    std::string text;
    std::vector<BpValue> items;
    std::map<std::string, BpValue> fields;
};

struct BpModule {
    std::string type;
    std::map<std::string, BpValue> props;
};

// Blueprint's syntax: modules `type { name: value, ... }`, variables
// `name = value` and `name += value`, values strings, booleans, integers,
// lists, maps and their concatenation with '+'. Throws on a syntax error.
class BpParser {
public:
    explicit BpParser(const std::string& text) : mText(text) {}

    std::vector<BpModule> Modules() {
        std::vector<BpModule> modules;
        while (Peek() != "") {
            std::string ident = Next();
            if (Peek() == "{") {
                Next();
                modules.push_back({ident, Props("}")});
            } else if (Peek() == "=" || Peek() == "+") {
                bool append = Next() == "+";
                if (append) Expect("=");
                BpValue v = Value();
                mVars[ident] = append ? Concat(mVars[ident], v) : v;
            } else {
                throw std::runtime_error("unexpected '" + Peek() + "' after " + ident);
            }
        }
        return modules;
    }

private:
    std::map<std::string, BpValue> Props(const char* close) {
        std::map<std::string, BpValue> props;
        while (Peek() != close) {
            std::string key = Next();
            Expect(":");
            props[key] = Value();
            if (Peek() == ",") Next();
        }
        Next();
        return props;
    }

    BpValue Value() {
        BpValue v = Primary();
        while (Peek() == "+") {
            Next();
            v = Concat(v, Primary());
        }
        return v;
    }

    BpValue Primary() {
        std::string t = Next();
        BpValue v;
        if (t == "[") {
            v.kind = BpValue::kList;
            while (Peek() != "]") {
                v.items.push_back(Value());
                if (Peek() == ",") Next();
            }
            Next();
        } else if (t == "{") {
            v.kind = BpValue::kMap;
            v.fields = Props("}");
        } else if (t[0] == '"') {
            v.kind = BpValue::kString;
            v.text = t.substr(1);
        } else if (t == "true" || t == "false") {
            v.kind = BpValue::kBool;
            v.text = t;
        } else if (mVars.count(t)) {
            v = mVars[t];
        } else {
            v.text = t;  // an integer, or a variable defined elsewhere
        }
        return v;
    }

    static BpValue Concat(BpValue a, const BpValue& b) {
        if (a.kind == BpValue::kList)
            a.items.insert(a.items.end(), b.items.begin(), b.items.end());
        else
            a.text += b.text;
        if (a.kind == BpValue::kOther) a = b;
        return a;
    }

    void Expect(const std::string& t) {
        if (Next() != t) throw std::runtime_error("expected '" + t + "'");
    }

    std::string Peek() {
        size_t save = mPos;
        std::string t = Next();
        mPos = save;
        return t;
    }

    // The next token: punctuation, an identifier or number, or a string
    // returned as '"' and its unescaped text; "" at the end.
    std::string Next() {
        for (;;) {
            while (mPos < mText.size() && isspace(static_cast<unsigned char>(mText[mPos]))) ++mPos;
            if (mText.compare(mPos, 2, "//") == 0) {
                mPos = mText.find('\n', mPos);
                if (mPos == std::string::npos) mPos = mText.size();
            } else if (mText.compare(mPos, 2, "/*") == 0) {
                size_t end = mText.find("*/", mPos + 2);
                if (end == std::string::npos) throw std::runtime_error("unterminated comment");
                mPos = end + 2;
            } else {
                break;
            }
        }
        if (mPos >= mText.size()) return "";
        char c = mText[mPos];
        if (c == '"') {
            std::string s = "\"";
            for (++mPos; mPos < mText.size() && mText[mPos] != '"'; ++mPos) {
                if (mText[mPos] == '\\') ++mPos;
                if (mPos < mText.size()) s += mText[mPos];
            }
            if (mPos >= mText.size()) throw std::runtime_error("unterminated string");
            ++mPos;
            return s;
        }
        if (strchr("{}[]:,=+", c)) return std::string(1, mText[mPos++]);
        size_t start = mPos;
        while (mPos < mText.size() &&
               (isalnum(static_cast<unsigned char>(mText[mPos])) || strchr("_.-", mText[mPos])))
            ++mPos;
        if (mPos == start) throw std::runtime_error(std::string("unexpected character ") + c);
        return mText.substr(start, mPos - start);
    }

    const std::string& mText;
    size_t mPos = 0;
    std::map<std::string, BpValue> mVars;
};

const BpModule* FindModule(const std::vector<BpModule>& modules, const std::string& name) {
    for (const BpModule& m : modules) {
        auto it = m.props.find("name");
        if (it != m.props.end() && it->second.text == name) return &m;
    }
    return nullptr;
}

// A property of a module, or of the first of its defaults that sets it.
const BpValue* Property(const std::vector<BpModule>& modules, const BpModule& m,
                        const std::string& key) {
    if (auto it = m.props.find(key); it != m.props.end()) return &it->second;
    if (auto d = m.props.find("defaults"); d != m.props.end()) {
        for (const BpValue& name : d->second.items)
            if (const BpModule* def = FindModule(modules, name.text))
                if (const BpValue* v = Property(modules, *def, key)) return v;
    }
    return nullptr;
}

// Where the platform build installs a binary module, e.g. /system_ext/bin/velard.
std::string InstallPath(const std::string& bpText, const std::string& name) {
    std::vector<BpModule> modules = BpParser(bpText).Modules();
    const BpModule* m = FindModule(modules, name);
    if (m == nullptr) return "no module " + name;
    auto flag = [&](const char* key) {
        const BpValue* v = Property(modules, *m, key);
        return v != nullptr && v->text == "true";
    };
    std::string partition = "system";
    if (flag("vendor") || flag("proprietary") || flag("soc_specific"))
        partition = "vendor";
    else if (flag("device_specific"))
        partition = "odm";
    else if (flag("product_specific"))
        partition = "product";
    else if (flag("system_ext_specific"))
        partition = "system_ext";
    std::string dir = "/" + partition + "/bin/";
    if (const BpValue* rel = Property(modules, *m, "relative_install_path")) dir += rel->text + "/";
    const BpValue* stem = Property(modules, *m, "stem");
    return dir + (stem ? stem->text : name);
}

TEST(DeviceBuild, InstallPathFollowsThePartitionOfTheModuleOrItsDefaults) {
    struct Case {
        const char* name;
        const char* bp;
        const char* path;
    } const cases[] = {
        {"vendor through defaults",
         R"(// comment
            cc_defaults { name: "d", vendor: true, cflags: ["-a", /* x */ "-b"] }
            cc_binary { name: "velard", defaults: ["d"], srcs: ["a.cpp"] + common })",
         "/vendor/bin/velard"},
        {"proprietary", R"(cc_binary { name: "velard", proprietary: true, })",
         "/vendor/bin/velard"},
        {"odm", R"(cc_binary { name: "velard", device_specific: true })", "/odm/bin/velard"},
        {"product", R"(cc_binary { name: "velard", product_specific: true })",
         "/product/bin/velard"},
        {"system_ext", R"(cc_binary { name: "velard", system_ext_specific: true })",
         "/system_ext/bin/velard"},
        {"no partition", R"(cc_binary { name: "velard" })", "/system/bin/velard"},
        {"the module overrides its defaults",
         R"(cc_defaults { name: "d", vendor: true }
            cc_binary { name: "velard", defaults: ["d"], vendor: false })",
         "/system/bin/velard"},
        {"variables, sub-directory and stem",
         R"(part = true
            tools = ["x"]
            tools += ["y"]
            cc_binary { name: "other", product_specific: true }
            cc_binary { name: "velard", vendor: part, relative_install_path: "hw", stem: "v2",
                        arch: { arm64: { cflags: ["-c"] } } })",
         "/vendor/bin/hw/v2"},
    };
    for (const Case& c : cases) EXPECT_EQ(InstallPath(c.bp, "velard"), c.path) << c.name;
    EXPECT_THROW(InstallPath(R"(cc_binary { name: "velard" )", "velard"), std::runtime_error);
}

// --- The checks of velard.rc ----------------------------------------------

// The binary is where Android.bp installs velard, and the module installs
// this file, so that init finds the service at all.
std::string InstallProblem(const std::string& rcText, const std::string& bpText) {
    velard_rc::Service s = OneService(rcText);
    std::string path = InstallPath(bpText, "velard");
    if (s.argv.empty() || s.argv[0] != path)
        return "service runs " + (s.argv.empty() ? "nothing" : s.argv[0]) +
               ", Android.bp installs " + path;
    std::vector<BpModule> modules = BpParser(bpText).Modules();
    const BpValue* rc = Property(modules, *FindModule(modules, "velard"), "init_rc");
    bool listed = false;
    for (const BpValue& v : rc ? rc->items : std::vector<BpValue>{})
        listed |= v.text == "velard.rc";
    return listed ? "" : "the velard module does not install velard.rc (init_rc)";
}

// The capabilities velard keeps after its start-up, by their names in an .rc.
const std::map<std::string, int> kCapabilityBits = {
    {"CHOWN", CAP_CHOWN},
    {"DAC_OVERRIDE", CAP_DAC_OVERRIDE},
    {"DAC_READ_SEARCH", CAP_DAC_READ_SEARCH},
    {"SETUID", CAP_SETUID},
    {"SETGID", CAP_SETGID},
    {"SETPCAP", CAP_SETPCAP},
    {"NET_ADMIN", CAP_NET_ADMIN},
    {"NET_RAW", CAP_NET_RAW},
    {"SYS_ADMIN", CAP_SYS_ADMIN},
    {"SYS_MODULE", CAP_SYS_MODULE},
};
constexpr unsigned long long kKeptCapabilities = 0x203087;

// Whether the service's user and capabilities let the start-up work: setuid
// to another uid needs CAP_SETUID, and capset can keep only capabilities the
// process holds. Root holds all, unless a capabilities line limits it; any
// other user holds only those of its capabilities line.
std::string IdentityProblem(const std::string& rcText) {
    velard_rc::Service s = OneService(rcText);
    const unsigned long long all = ~0ull;
    unsigned long long held = s.capabilitiesGiven ? 0 : s.user == "root" || s.user == "0" ? all : 0;
    for (const std::string& name : s.capabilities) {
        auto it = kCapabilityBits.find(name);
        if (it == kCapabilityBits.end())
            return "capability " + name + " is not one this check knows";
        held |= 1ull << it->second;
    }
    if (!(held >> CAP_SETUID & 1))
        return "user " + s.user + " without CAP_SETUID cannot change to velard's uid";
    if ((held & kKeptCapabilities) != kKeptCapabilities)
        return "user " + s.user + " lacks capabilities that velard keeps";
    if (held != all && held != kKeptCapabilities) return "capabilities beyond those velard keeps";
    return "";
}

// Starts velard through velard-host from this description and has imsctl
// send it one request: the socket the .rc names must be the one the daemon
// takes, or nothing answers.
std::string ServeProblem(const std::string& rcText) {
    TempDir dir;
    std::string rc = dir.path() / "velard.rc", sock = dir.path() / "sock";
    std::ofstream(rc) << rcText;
    Child host(dir,
               {VELARD_HOST_BIN, "--rc", rc, "--socket", sock, "--once", "--daemon", VELARD_BIN});
    WaitFor([&] { return access(sock.c_str(), F_OK) == 0; });
    Child client(dir, {IMSCTL_BIN, "--socket", sock, "--wait-ms", "300", "--connect-ms", "10000"},
                 R"({"reqid":"REQ_UA_DELETION","requestUaDeletion":{"handle":5}})"
                 "\n");
    // The client's leaving ends the daemon and velard-host with it. A daemon
    // that found no socket has already ended, and so has velard-host: the
    // client, still trying to connect, has nobody to wait for.
    while (!client.Done()) {
        if (host.Done()) client.Signal(SIGKILL);
        std::this_thread::sleep_for(10ms);
    }
    host.Wait(20s);  // killed on leaving if it has not ended by then
    std::string out = client.Out();
    if (out.find(R"("frame":"response")") != std::string::npos) return "";
    return "velard did not answer through its socket\nimsctl: " + out + client.Err() +
           "\nvelard-host: " + host.Out() + host.Err();
}

// The policy labels the binary and the socket that the service names, so
// that init starts velard in its domain and the framework may connect.
// A file_contexts path is a regular expression over the whole path, and the
// last entry that matches gives the label.
std::string LabelProblem(const std::string& rcText) {
    velard_rc::Service s = OneService(rcText);
    std::vector<std::pair<std::regex, std::string>> entries;
    std::istringstream in(ReadFile(kSource + "/sepolicy/file_contexts"));
    for (std::string path, context; in >> path >> context;) entries.emplace_back(path, context);
    auto label = [&](const std::string& path) {
        std::string context;
        for (const auto& [pattern, c] : entries)
            if (std::regex_match(path, pattern)) context = c;
        return context;
    };
    std::pair<std::string, std::string> wanted[] = {
        {s.argv.empty() ? "" : s.argv[0], "u:object_r:velard_exec:s0"},
        {"/dev/socket/" + (s.sockets.empty() ? "" : s.sockets[0].name),
         "u:object_r:velard_socket:s0"},
    };
    for (const auto& [path, context] : wanted)
        if (label(path) != context) return "file_contexts does not label " + path + " " + context;
    return "";
}

// What the daemon became: "<uid> <CapEff in hex>", from /proc.
std::string Identity(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/status");
    std::string uid, caps;
    for (std::string line; std::getline(in, line);) {
        std::istringstream fields(line);
        std::string key, value;
        fields >> key >> value;
        if (key == "Uid:") uid = value;
        if (key == "CapEff:") caps = std::to_string(std::stoull(value, nullptr, 16));
    }
    return uid + " " + caps;
}

pid_t ChildOf(pid_t parent) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stat(entry.path() / "stat");
        std::string pid, comm, state, ppid;
        // comm may hold spaces, but not ours: velard.
        if (stat >> pid >> comm >> state >> ppid && ppid == std::to_string(parent))
            return std::stoi(pid);
    }
    return -1;
}

// Runs velard as init would from this description, as far as a host can: as
// root, with the bounding set cut down to the service's capabilities, and
// reports what the daemon became once it listens.
std::string StartUpIdentity(const std::string& rcText) {
    velard_rc::Service s = OneService(rcText);
    unsigned long long keep = ~0ull;
    if (s.capabilitiesGiven) {
        keep = 0;
        for (const std::string& name : s.capabilities) keep |= 1ull << kCapabilityBits.at(name);
    }
    char tmpl[] = "/tmp/velard-rc-XXXXXX";
    std::string dir = mkdtemp(tmpl);
    std::string rc = dir + "/velard.rc", sock = dir + "/sock";
    std::ofstream(rc) << rcText;
    std::string args[] = {VELARD_HOST_BIN, "--rc",     rc,        "--socket", sock,
                          "--once",        "--daemon", VELARD_BIN};
    char* argv[] = {args[0].data(), args[1].data(), args[2].data(), args[3].data(), args[4].data(),
                    args[5].data(), args[6].data(), args[7].data(), nullptr};
    int last = std::stoi(ReadFile("/proc/sys/kernel/cap_last_cap"));
    pid_t host = fork();
    if (host == 0) {
        setpgid(0, 0);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, 2);
        for (int cap = 0; cap <= last; ++cap)
            if (!(keep >> cap & 1)) prctl(PR_CAPBSET_DROP, cap, 0, 0, 0);
        execv(argv[0], argv);
        _exit(127);
    }
    // The daemon listens only after its start-up.
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    strncpy(addr.sun_path, sock.c_str(), sizeof addr.sun_path - 1);
    bool connected = false;
    for (int i = 0; i < 1000 && !connected; ++i) {
        connected = connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
        if (!connected) std::this_thread::sleep_for(10ms);
    }
    pid_t daemon = ChildOf(host);
    std::string identity = connected && daemon > 0 ? Identity(daemon) : "never listened";
    close(fd);  // velard ends, and velard-host with it
    if (!WaitFor([&] { return waitpid(host, nullptr, WNOHANG) == host; }, 20s)) {
        kill(host, SIGKILL);
        waitpid(host, nullptr, 0);
    }
    std::filesystem::remove_all(dir);
    return identity;
}

std::string RcText() {
    return ReadFile(kSource + "/velard.rc");
}

std::string BpText() {
    std::string bp = ReadFile(kSource + "/Android.bp");
    if (bp.empty()) ADD_FAILURE() << "no Android.bp at " << kSource;
    return bp;
}

TEST(VelardRc, ServesThroughTheSocketItNamesFromWhereAndroidBpInstallsItWithItsIdentity) {
    std::string rc = RcText();
    EXPECT_EQ(ServeProblem(rc), "");
    EXPECT_EQ(InstallProblem(rc, BpText()), "");
    EXPECT_EQ(IdentityProblem(rc), "");
    EXPECT_EQ(LabelProblem(rc), "");
    velard_rc::Service s = OneService(rc);
    EXPECT_EQ(s.name, "velard");
    // Brought back after every exit, and never a reason to reboot.
    EXPECT_FALSE(s.HasOption("oneshot"));
    EXPECT_FALSE(s.HasOption("critical"));
}

TEST(VelardRc, StartUpTakesItsIdentityWithinTheServicesCapabilities) {
    if (geteuid() != 0) GTEST_SKIP() << "velard changes identity only when started as root";
    std::string status = ReadFile("/proc/self/status");
    std::string bounding = status.substr(status.find("CapBnd:") + 8, 16);
    if ((std::stoull(bounding, nullptr, 16) & kKeptCapabilities) != kKeptCapabilities)
        GTEST_SKIP() << "this host's bounding set " << bounding << " lacks some of velard's";
    const std::string rc = RcText();
    // No CAP_SETPCAP among them: capset lowering its own sets does not need it.
    EXPECT_EQ(StartUpIdentity(rc), "1000 " + std::to_string(kKeptCapabilities));
    // Planted: without CAP_SETUID velard stays root, and goes on as it stands.
    std::string noSetuid = rc;
    noSetuid.replace(noSetuid.find("DAC_READ_SEARCH SETUID "), 23, "DAC_READ_SEARCH ");
    EXPECT_EQ(StartUpIdentity(noSetuid).substr(0, 2), "0 ");
}

TEST(VelardRc, EachCheckCatchesItsPlantedFault) {
    using Check = std::string (*)(const std::string&);
    Check install = [](const std::string& rc) { return InstallProblem(rc, BpText()); };
    Check notInstalled = [](const std::string& rc) {
        const std::string line = "init_rc: [\"velard.rc\"],";
        std::string bp = BpText();
        size_t at = bp.find(line);
        return at == std::string::npos ? "no " + line + " to remove"
                                       : InstallProblem(rc, bp.erase(at, line.size()));
    };
    struct Case {
        const char* fault;
        Check check;
        std::vector<std::pair<const char*, const char*>> edits;  // first occurrence of each
        const char* problem;
    } const cases[] = {
        {"socket renamed",
         ServeProblem,
         {{"socket velard ", "socket velard2 "}},
         "Failed to get socket"},
        {"Android.bp without the service", notInstalled, {}, "does not install velard.rc"},
        {"binary on the system partition",
         install,
         {{"service velard /system_ext/bin/velard", "service velard /system/bin/velard"}},
         "Android.bp installs /system_ext/bin/velard"},
        {"a user other than root without capabilities",
         IdentityProblem,
         {{"user root", "user system"}, {"    capabilities", "    # capabilities"}},
         "without CAP_SETUID"},
        {"capabilities without SETUID",
         IdentityProblem,
         {{"DAC_READ_SEARCH SETUID ", "DAC_READ_SEARCH "}},
         "without CAP_SETUID"},
        {"socket the policy does not label",
         LabelProblem,
         {{"socket velard ", "socket velard2 "}},
         "does not label /dev/socket/velard2"},
        {"binary the policy does not label",
         LabelProblem,
         {{"service velard /system_ext/bin/velard", "service velard /system_ext/bin/velard2"}},
         "does not label /system_ext/bin/velard2"},
        {"a capability velard keeps left out", IdentityProblem, {{" NET_RAW ", " "}}, "lacks"},
        {"a capability beyond velard's",
         IdentityProblem,
         {{" SYS_ADMIN", " SYS_ADMIN SYS_MODULE"}},
         "beyond"},
        // Not faults: a user other than root with the capabilities line, and
        // root without it (then it holds them all, and keeps the seven).
        {"", IdentityProblem, {{"user root", "user system"}}, nullptr},
        {"", IdentityProblem, {{"    capabilities", "    # capabilities"}}, nullptr},
        // Nor is the binary's real path on a device without a system_ext
        // partition, where /system_ext links to /system/system_ext.
        {"",
         LabelProblem,
         {{"service velard /system_ext/bin/velard",
           "service velard /system/system_ext/bin/velard"}},
         nullptr},
    };
    const std::string rc = RcText();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fault);
        std::string changed = rc;
        for (auto [from, to] : c.edits) {
            size_t at = changed.find(from);
            ASSERT_NE(at, std::string::npos) << "cannot plant the fault: no '" << from << "'";
            changed.replace(at, strlen(from), to);
        }
        std::string problem = c.check(changed);
        if (c.problem == nullptr)
            EXPECT_EQ(problem, "");
        else
            EXPECT_NE(problem.find(c.problem), std::string::npos) << problem;
    }
}

}  // namespace
