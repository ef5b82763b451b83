// Identity and secrecy as a running daemon shows them: the user and the
// capabilities it ends up with, and what its log lets out.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>

#include "tests/support/e2e.h"

using namespace velard_test;

namespace {

constexpr unsigned long long kCapabilities = 0x203087;

// A line "Name:\t..." of /proc/<pid>/status.
std::string statusField(pid_t pid, const std::string& name) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(in, line);) {
        if (line.rfind(name + ":", 0) == 0) {
            size_t start = line.find_first_not_of(" \t", name.size() + 1);
            return start == std::string::npos ? "" : line.substr(start);
        }
    }
    return "";
}

unsigned long long hexField(pid_t pid, const std::string& name) {
    return std::stoull(statusField(pid, name), nullptr, 16);
}

}  // namespace

TEST(Privilege, DaemonRunsAsTheSelectedUserWithExactlyItsCapabilities) {
    if (geteuid() != 0) GTEST_SKIP() << "velard changes identity only when started as root";
    // capset cannot grant what the bounding set took away: on such a host
    // the daemon keeps whatever it had, and there is nothing to check.
    unsigned long long bounding = hexField(getpid(), "CapBnd");
    if ((bounding & kCapabilities) != kCapabilities)
        GTEST_SKIP() << "this host's capability bounding set " << std::hex << bounding
                     << " lacks some of " << kCapabilities;

    struct Case {
        const char* name;
        std::vector<std::string> env;
        unsigned uid;
    } cases[] = {
        {"property unset: user 0", {}, 1000},
        {"user 0", {"VELARD_PROP_sys_ims_current_uid=0"}, 1000},
        {"user 10", {"VELARD_PROP_sys_ims_current_uid=10"}, 1001000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Daemon::Options o;
        o.env = c.env;
        // Started as root, it reached its controller and opened its socket:
        // identity changes before either, so it is settled by now.
        Daemon d(o);
        std::string uid = std::to_string(c.uid);
        // Real, effective, saved and file-system user.
        EXPECT_EQ(statusField(d.pid(), "Uid"), uid + "\t" + uid + "\t" + uid + "\t" + uid);
        EXPECT_EQ(hexField(d.pid(), "CapEff"), kCapabilities);
        EXPECT_EQ(hexField(d.pid(), "CapPrm"), kCapabilities);
        EXPECT_EQ(hexField(d.pid(), "CapInh"), 0u);
        // And it still serves under its new identity.
        d.send(uaDeletionRequest(1), 4);
        EXPECT_EQ(d.nextStackRequest()["token"], 4);
    }
}

// Secrets reach the stack but not the log: a ship build at log level 1 logs
// none; a development build at log level 2 logs the AKA responses and GBA
// keys (its debug lines), never passwords. The second build also shows that
// the log checked is the one the handlers write to.
TEST(Secrecy, OnlyDevelopmentBuildsLogKeysAndAkaResponsesAndNeverPasswords) {
    using Set = std::function<void(imsCommonStruc::Request&, const std::string&)>;
    struct Secret {
        int id;
        const char* secret;
        bool loggedInDevelopment;
        Set set;
    } const secrets[] = {
        {105, "aka-resp-5f1e09c2", true,
         [](auto& r, auto& s) { r.mutable_requestupdateakaresp()->set_akaresp(s); }},
        {802, "xdm-aka-resp-77ad3b", true,
         [](auto& r, auto& s) { r.mutable_requestxdmupdateakaresp()->set_akaresp(s); }},
        {312, "ss-gba-key-c0ffee11", true,
         [](auto& r, auto& s) { r.mutable_requestssupdategbakey()->set_gbakey(s); }},
        {803, "xdm-gba-key-9a8b7c", true,
         [](auto& r, auto& s) { r.mutable_requestxdmupdategbakey()->set_gbakey(s); }},
        {101, "http-passwd-4d2c1b", false,
         [](auto& r, auto& s) {
             r.mutable_requestupdatecommonconfig()->mutable_xdmconfig()->set_httppasswd(s);
         }},
        {102, "ua-password-e3f4a5", false,
         [](auto& r, auto& s) { r.mutable_requestuacreation()->set_password(s); }},
    };
    for (bool development : {false, true}) {
        SCOPED_TRACE(development ? "development build, log level 2" : "ship build, log level 1");
        Daemon::Options o;
        o.env = {development ? "VELAR_SIM_SHIP_BUILD=0" : "VELAR_SIM_SHIP_BUILD=1",
                 development ? "VELAR_SIM_LOGLEVEL=2" : "VELAR_SIM_LOGLEVEL=1"};
        Daemon d(o);
        uint32_t token = 100;
        for (const Secret& s : secrets) {
            imsCommonStruc::Request r;
            r.set_reqid(imsCommonStruc::Id(s.id));
            s.set(r, s.secret);
            d.send(r, ++token);
            Json req = d.nextStackRequest();
            EXPECT_EQ(req["token"], token);
            EXPECT_NE(req["record"].dump().find(s.secret), std::string::npos)
                << s.id << ": the secret must reach the stack";
        }
        std::string log = d.log();
        for (const Secret& s : secrets)
            EXPECT_EQ(log.find(s.secret) != std::string::npos, development && s.loggedInDevelopment)
                << s.id << "\n"
                << log;
    }
}
