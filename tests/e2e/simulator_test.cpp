// The simulated stack as the daemon meets it: a controller's record of
// another class than the daemon's handler reads never reaches the daemon, and
// a controller that goes away never takes the daemon down.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/e2e.h"

using namespace velard_test;

namespace {

Json record(const char* cls, int id, Json fields) {
    return Json{{"class", cls}, {"id", id}, {"fields", fields}};
}

size_t count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) n++;
    return n;
}

}  // namespace

TEST(SimulatorEndToEnd, RecordsOfAnotherClassThanTheHandlerReadsAreRefused) {
    Daemon d;
    d.send(uaDeletionRequest(5), 9);
    d.nextStackRequest();
    const Json wrongAnswer = record("PrimitiveData<int>", 103, {{"value", 1}});
    const Json wrongNotification = record("GeneralResponseData", 10004, {{"handle", 1}});
    struct Case {
        const char* name;
        Json message;
        const char* expected;  // the class the refusal names
    } cases[] = {
        {"answer",
         {{"type", "response"}, {"token", 9}, {"record", wrongAnswer}},
         "GeneralResponseData"},
        {"notification", {{"type", "notify"}, {"record", wrongNotification}}, "CallStatusData"},
        {"burst",
         {{"type", "burst"}, {"record", wrongNotification}, {"threads", 2}},
         "CallStatusData"},
        {"answer in a burst",
         {{"type", "burst"},
          {"record", cancelAlarmRecord(1)},
          {"count", 0},
          {"responses", Json::array({{{"token", 9}, {"record", wrongAnswer}}})}},
         "GeneralResponseData"},
    };
    for (const auto& c : cases) {
        Json answer = d.control(c.message);
        EXPECT_EQ(answer.value("type", ""), "error") << c.name << ": " << answer.dump();
        EXPECT_NE(answer.value("message", "").find(c.expected), std::string::npos)
            << c.name << ": " << answer.dump();
        EXPECT_TRUE(d.expectNoFrame(100)) << c.name;
    }
    // The daemon is still there and takes the right class.
    d.respond(9, record("GeneralResponseData", 103, {{"handle", 5}}));
    EXPECT_EQ(d.nextFrame().response().generalresponse().handle(), 5u);
}

// Requests that reach a stack without its controller stay there unanswered;
// only the loss of the client ends the daemon, as ever.
TEST(SimulatorEndToEnd, AControllerThatGoesAwayLeavesTheDaemonToItsClient) {
    Daemon d;
    d.closeController();
    for (uint32_t token : {1u, 2u, 3u}) d.send(uaDeletionRequest(token), token);
    EXPECT_TRUE(d.expectNoFrame(200));
    d.closeClient();
    EXPECT_EQ(d.waitExit(), 255);
    std::string log = d.log();
    EXPECT_EQ(count(log, "DispatchUADeletion()"), 3u) << log;
    EXPECT_EQ(count(log, "velar-sim: control channel closed"), 1u) << log;
    EXPECT_NE(log.find("EOS. Closing command socket"), std::string::npos) << log;
}
