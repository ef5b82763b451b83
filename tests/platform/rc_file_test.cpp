// The reader of init's .rc files that velard-host and the checks of
// velard.rc share.
#include "rc_file.h"

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace velard_rc;

namespace {

TEST(RcFile, ReadsServicesWithInitsTokenRulesAndSkipsActions) {
    const std::string text = R"(import /vendor/etc/init/other.rc
on boot
    setprop a b
    chmod 0660 /dev/x
# a comment with an odd " quote and a trailing backslash \
service d /vendor/bin/d --flag "two words" a\ b \
        joined
    class main # the rest is a comment
    user root
    group system inet
    capabilities SETUID NET_RAW
    socket d stream 0660 root radio
    socket e seqpacket 0600
    setenv A "x y"
    setenv B 1
service bare /bin/bare
    capabilities
)";
    std::vector<Service> s;
    std::string error;
    ASSERT_TRUE(Parse(text, "t.rc", &s, &error)) << error;
    ASSERT_EQ(s.size(), 2u);

    EXPECT_EQ(s[0].name, "d");
    EXPECT_EQ(s[0].line, 6);
    EXPECT_EQ(s[0].argv,
              (std::vector<std::string>{"/vendor/bin/d", "--flag", "two words", "a b", "joined"}));
    EXPECT_EQ(s[0].user, "root");
    EXPECT_EQ(s[0].groups, (std::vector<std::string>{"system", "inet"}));
    EXPECT_TRUE(s[0].capabilitiesGiven);
    EXPECT_EQ(s[0].capabilities, (std::vector<std::string>{"SETUID", "NET_RAW"}));
    ASSERT_EQ(s[0].sockets.size(), 2u);
    const Socket& d = s[0].sockets[0];
    EXPECT_EQ(d.name + d.type + d.perm + d.user + d.group, "dstream0660rootradio");
    EXPECT_EQ(d.line, 12);
    EXPECT_EQ(s[0].sockets[1].user, "");
    EXPECT_EQ(s[0].env,
              (std::vector<std::pair<std::string, std::string>>{{"A", "x y"}, {"B", "1"}}));
    EXPECT_TRUE(s[0].HasOption("class"));
    EXPECT_FALSE(s[0].HasOption("oneshot"));

    // Defaults: root, and an empty capabilities line means none at all.
    EXPECT_EQ(s[1].user, "root");
    EXPECT_TRUE(s[1].capabilitiesGiven);
    EXPECT_TRUE(s[1].capabilities.empty());
}

TEST(RcFile, RejectsWhatInitWouldNotTake) {
    struct Case {
        const char* text;
        const char* error;
    } const cases[] = {
        {"    user root\n", "t.rc:1: 'user' outside a service or action"},
        {"service x\n", "t.rc:1: a service needs a name and a path"},
        {"service x /x\n    onshot\n", "t.rc:2: unknown service option 'onshot'"},
        {"service x /x\n    socket x stream\n", "t.rc:2: wrong number of arguments for 'socket'"},
        {"service x /x\n    setenv A\n", "t.rc:2: wrong number of arguments for 'setenv'"},
        {"service x /x\n    oneshot now\n", "t.rc:2: wrong number of arguments for 'oneshot'"},
        {"service x /x\nservice x /y\n", "t.rc:2: service x named twice"},
        // An option after an import belongs to no section.
        {"service x /x\nimport y.rc\n    user root\n", "t.rc:3: 'user' outside"},
    };
    for (const Case& c : cases) {
        std::vector<Service> s;
        std::string error;
        EXPECT_FALSE(Parse(c.text, "t.rc", &s, &error)) << c.text;
        EXPECT_EQ(error.rfind(c.error, 0), 0u) << c.text << "\n" << error;
    }
}

TEST(RcFile, HostLaunchTakesTheSocketsVariableAndTheEnvironment) {
    struct Case {
        const char* text;
        const char* variable;  // null: refused
        std::vector<std::string> envOrError;
    } const cases[] = {
        {"service v /v\n  socket velard stream 0660 root radio\n  setenv A 1\n  setenv B \"2 3\"\n",
         "ANDROID_SOCKET_velard",
         {"A=1", "B=2 3"}},
        {"service v /v\n  socket ims-cmd.0 stream 0600\n", "ANDROID_SOCKET_ims_cmd_0", {}},
        {"on boot\n  start v\n", nullptr, {"0 services"}},
        {"service v /v\n  socket a stream 0600\nservice w /w\n", nullptr, {"2 services"}},
        {"service v /v\n", nullptr, {"has 0 sockets"}},
        {"service v /v\n  socket a stream 0600\n  socket b stream 0600\n",
         nullptr,
         {"has 2 sockets"}},
        {"service v /v\n  socket a seqpacket 0600\n", nullptr, {":2: socket type 'seqpacket'"}},
        {"service v /v\n  socket a stream+passcred 0600\n", nullptr, {"socket type"}},
        {"service v /v\n  bogus\n", nullptr, {"unknown service option"}},
    };
    char dir[] = "/tmp/velard-rc-XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    std::string path = std::string(dir) + "/t.rc";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        std::ofstream(path) << c.text;
        HostLaunch launch;
        std::string error;
        bool ok = HostLaunchFromFile(path, &launch, &error);
        ASSERT_EQ(ok, c.variable != nullptr) << error;
        if (ok) {
            EXPECT_EQ(launch.socketVariable, c.variable);
            EXPECT_EQ(launch.env, c.envOrError);
        } else {
            EXPECT_NE(error.find(c.envOrError[0]), std::string::npos) << error;
        }
    }
    HostLaunch launch;
    std::string error;
    EXPECT_FALSE(HostLaunchFromFile(std::string(dir) + "/absent.rc", &launch, &error));
    EXPECT_EQ(error, "cannot read " + std::string(dir) + "/absent.rc");
    unlink(path.c_str());
    rmdir(dir);
}

}  // namespace
