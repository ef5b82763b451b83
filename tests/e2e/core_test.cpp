// The daemon core over the real socket: framing both ways, tokens, the
// record stream's edge cases, concurrency of the stack's callbacks, and the
// end of the process.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <set>
#include <thread>

#include "tests/support/e2e.h"

using namespace velard_test;

namespace {

imsCommonStruc::Request uaDeletion(uint32_t handle) {
    imsCommonStruc::Request r;
    r.set_reqid(imsCommonStruc::Id(103));
    r.mutable_requestuadeletion()->set_handle(handle);
    return r;
}

Json generalResponse(int id, Json fields) {
    return Json{{"class", "GeneralResponseData"}, {"id", id}, {"fields", fields}};
}

Json cancelAlarm(int value) {
    return Json{{"class", "PrimitiveData<int>"}, {"id", 20002}, {"fields", {{"value", value}}}};
}

}  // namespace

TEST(CoreEndToEnd, TokensComeBackUnchangedInWholeFrames) {
    Daemon d;
    for (uint32_t token : {0u, 7u, 0x80000000u, 0xFFFFFFFFu}) {
        d.send(uaDeletion(5), token);
        Json req = d.nextStackRequest();
        EXPECT_EQ(req["token"], token);
        EXPECT_EQ(req["record"], Json::parse(R"({"class":"PrimitiveData<int>","id":103,"args":[5]})"));
        d.respond(token, generalResponse(103, {{"handle", 5}, {"result", 1}, {"reason", 3}}));
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u);
        EXPECT_EQ(f.token, token);
        EXPECT_EQ(f.length, f.payload.size() + 8);
        auto r = f.response();
        EXPECT_EQ(r.resid(), 103);
        EXPECT_EQ(r.generalresponse().handle(), 5u);
        EXPECT_EQ(r.generalresponse().result(), 1);
        EXPECT_EQ(r.generalresponse().reason(), 3);
        // No error text and no SIP error: the fields are absent, not empty.
        EXPECT_FALSE(r.generalresponse().has_errorstr());
        EXPECT_FALSE(r.generalresponse().has_siperror());
    }
}

TEST(CoreEndToEnd, NotifyFrameHasTypeTwoAndTokenZero) {
    Daemon d;
    d.notify(cancelAlarm(9));
    Frame f = d.nextFrame();
    EXPECT_EQ(f.type, 2u);
    EXPECT_EQ(f.token, 0u);
    EXPECT_EQ(f.length, f.payload.size() + 8);
    EXPECT_EQ(f.notify().cancelalarm().id(), 9u);
}

TEST(CoreEndToEnd, SplitAndCoalescedRecordsAreEachDeliveredOnceInOrder) {
    Daemon d;
    std::string a = clientRecord(uaDeletion(1), 11);
    std::string b = clientRecord(uaDeletion(2), 12);
    std::string c = clientRecord(uaDeletion(3), 13);
    // One record in two pieces, the second after a pause.
    d.sendRaw(a.substr(0, 5));
    EXPECT_TRUE(d.expectNoStackRequest(150));
    d.sendRaw(a.substr(5));
    EXPECT_EQ(d.nextStackRequest()["token"], 11);
    // Two records and a half in one write, then the rest.
    std::string all = b + c;
    d.sendRaw(all.substr(0, b.size() + 3));
    EXPECT_EQ(d.nextStackRequest()["token"], 12);
    EXPECT_TRUE(d.expectNoStackRequest(100));
    d.sendRaw(all.substr(b.size() + 3));
    EXPECT_EQ(d.nextStackRequest()["token"], 13);
}

TEST(CoreEndToEnd, RequestsWithoutAHandlerReachNothing) {
    Daemon d;
    struct Case {
        const char* name;
        std::string payload;
    } cases[] = {
        {"id 0", std::string("\x08\x00", 2)},
        {"valid id without a row", std::string("\x08\x64", 2)},         // 100
        {"id outside the enumeration", std::string("\x08\x8f\x4e", 3)},  // 9999
        {"no id at all", std::string()},
        {"bytes that do not parse", std::string("\xff\xff\xff\xff", 4)},
        {"no-operation row", std::string("\x08\xd0\x01", 3)},  // 208
    };
    for (const auto& c : cases) {
        d.sendRaw(clientRecord(c.payload, 1));
        EXPECT_TRUE(d.expectNoStackRequest(100)) << c.name;
        EXPECT_TRUE(d.expectNoFrame(50)) << c.name;
    }
    // A record too short for its two leading words is dropped whole.
    d.sendRaw(std::string("\x00\x00\x00\x04\x01\x02\x03\x04", 8));
    EXPECT_TRUE(d.expectNoStackRequest(100));
    // And the daemon still serves.
    d.send(uaDeletion(4), 99);
    EXPECT_EQ(d.nextStackRequest()["token"], 99);
    std::string log = d.log();
    EXPECT_NE(log.find("unsupported request code 0"), std::string::npos);
    EXPECT_NE(log.find("unsupported request code 100"), std::string::npos);
}

TEST(CoreEndToEnd, AnswersThatCannotBeFramedSendNothing) {
    Daemon d;
    // A record id with no row in the table.
    d.respond(1, generalResponse(9999, Json::object()));
    d.notify(Json{{"class", "PrimitiveData<int>"}, {"id", 10000}, {"fields", {{"value", 1}}}});
    EXPECT_TRUE(d.expectNoFrame(100));
    // Later answers are not affected.
    d.notify(cancelAlarm(3));
    EXPECT_EQ(d.nextFrame().notify().cancelalarm().id(), 3u);
    std::string log = d.log();
    EXPECT_NE(log.find("Response function failure: 9999"), std::string::npos);
    EXPECT_NE(log.find("Response function failure: 10000"), std::string::npos);
}

TEST(CoreEndToEnd, OutgoingFrameLimitIsExact) {
    Daemon d;
    // Find the error text length that makes the whole record exactly 0x80000.
    imsCommonStruc::Response probe;
    probe.set_resid(imsCommonStruc::Id(103));
    auto* body = probe.mutable_generalresponse();
    body->set_handle(0);
    body->set_result(imsCommonStruc::Result(0));
    body->set_reason(imsCommonStruc::GeneralReason(0));
    size_t len = 0x80000 - 12 - 64;
    for (;; len++) {
        body->set_errorstr(std::string(len, 'x'));
        if (probe.ByteSizeLong() + 12 >= 0x80000) break;
    }
    ASSERT_EQ(probe.ByteSizeLong() + 12, 0x80000u);
    // The frame is larger than the socket's buffer, and the simulator's
    // "done" only comes once it is written: read it meanwhile.
    std::thread answer([&] { d.respond(5, generalResponse(103, {{"errorStr", std::string(len, 'x')}})); });
    Frame f = d.nextFrame();
    answer.join();
    EXPECT_EQ(f.payload.size() + 12, 0x80000u);
    EXPECT_EQ(f.response().generalresponse().errorstr().size(), len);
    d.respond(6, generalResponse(103, {{"errorStr", std::string(len + 1, 'x')}}));
    EXPECT_TRUE(d.expectNoFrame(200));
    EXPECT_NE(d.log().find("IMS: packet larger than 524288 (524289)"), std::string::npos);
    // The connection is still good.
    d.notify(cancelAlarm(1));
    EXPECT_EQ(d.nextFrame().type, 2u);
}

TEST(CoreEndToEnd, ConcurrentNotificationsArriveWholeAndExactlyOnce) {
    Daemon d;
    const int threads = 8, count = 250;
    // The burst blocks in the simulator until every frame has been written,
    // so read on another thread while it runs.
    std::multiset<uint32_t> seen;
    std::thread reader([&] {
        for (int i = 0; i < threads * count; i++) {
            Frame f = d.nextFrame(10000);
            ASSERT_EQ(f.type, 2u);
            ASSERT_EQ(f.token, 0u);
            auto n = f.notify();
            ASSERT_EQ(n.notifyid(), 20002);
            seen.insert(n.cancelalarm().id());
        }
    });
    d.burst(cancelAlarm(42), threads, count);
    reader.join();
    EXPECT_EQ(seen.count(42), static_cast<size_t>(threads * count));
    EXPECT_TRUE(d.expectNoFrame(100));
}

TEST(CoreEndToEnd, ASecondClientIsRefusedWithoutDisturbingTheFirst) {
    Daemon d;
    int second = d.connectClient();
    ASSERT_GE(second, 0);
    char byte;
    // The daemon closes the second connection at once.
    EXPECT_EQ(read(second, &byte, 1), 0);
    close(second);
    d.send(uaDeletion(8), 3);
    EXPECT_EQ(d.nextStackRequest()["token"], 3);
    d.respond(3, generalResponse(103, {{"handle", 8}}));
    EXPECT_EQ(d.nextFrame().token, 3u);
}

TEST(CoreEndToEnd, TheLossOfTheClientEndsTheProcessWithMinusOne) {
    struct Case {
        const char* name;
        std::string lastBytes;  // sent before the client goes away
        const char* logLine;
    } cases[] = {
        {"clean close", "", "EOS. Closing command socket"},
        {"close mid-record", std::string("\x00\x00\x00\x20\x01", 5), "EOS. Closing command socket"},
        {"record over the limit", std::string("\x00\x08\x00\x01", 4),
         "Error on reading command socket errno"},
    };
    for (const auto& c : cases) {
        Daemon d;
        if (!c.lastBytes.empty()) d.sendRaw(c.lastBytes);
        if (std::string(c.name) != "record over the limit") d.closeClient();
        EXPECT_EQ(d.waitExit(5000), 255) << c.name;
        std::string log = d.log();
        EXPECT_NE(log.find(c.logLine), std::string::npos) << c.name << "\n" << log;
        EXPECT_NE(log.find("OnCommandsSocketClosed: reset velard"), std::string::npos) << c.name;
    }
}

TEST(CoreEndToEnd, AutoModeAnswersWithTheRequestsHandle) {
    Daemon::Options o;
    o.controlled = false;
    Daemon d(o);
    d.send(uaDeletion(0x1234), 77);
    Frame f = d.nextFrame();
    EXPECT_EQ(f.token, 77u);
    EXPECT_EQ(f.response().generalresponse().handle(), 0x1234u);
    EXPECT_EQ(f.response().generalresponse().result(), 0);
}

TEST(CoreEndToEnd, MissingSocketOrStackEndsStartUp) {
    struct Case {
        const char* name;
        std::vector<std::string> env;
        const char* logLine;
    } cases[] = {
        {"stack cannot reach its controller", {"VELAR_SIM_CONTROL=/nonexistent/ctl"},
         "Ims Stack init failed"},
        {"no socket variable", {"ANDROID_SOCKET_velard"}, "Failed to get socket"},
        {"negative descriptor", {"ANDROID_SOCKET_velard=-3"}, "Failed to get socket"},
        {"descriptor out of range", {"ANDROID_SOCKET_velard=99999999999999999999"},
         "Failed to get socket"},
        // strtol stops at the letter without an error: descriptor 1, which is
        // no socket.
        {"trailing letters", {"ANDROID_SOCKET_velard=1abc"},
         "Failed to listen on control socket '1':"},
    };
    for (const auto& c : cases) {
        Daemon::Options o;
        o.controlled = false;
        o.connect = false;
        o.env = c.env;
        Daemon d(o);
        EXPECT_EQ(d.waitExit(5000), 255) << c.name;
        EXPECT_NE(d.log().find(c.logLine), std::string::npos) << c.name;
    }
}
