// The daemon core over the real socket: framing both ways, tokens, the
// record stream's edge cases, the dispatch rules, and the end of the
// process. Concurrency of the stack's callbacks: stress_test.cpp.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "tests/support/e2e.h"

using namespace velard_test;

namespace {

Json generalResponse(int id, Json fields) {
    return Json{{"class", "GeneralResponseData"}, {"id", id}, {"fields", fields}};
}

std::string varint(uint64_t v) {
    std::string s;
    for (; v >= 0x80; v >>= 7) s += static_cast<char>(v | 0x80);
    return s + static_cast<char>(v);
}

}  // namespace

TEST(CoreEndToEnd, TokensComeBackUnchangedInWholeFrames) {
    Daemon d;
    for (uint32_t token : {0u, 7u, 0x80000000u, 0xFFFFFFFFu}) {
        d.send(uaDeletionRequest(5), token);
        Json req = d.nextStackRequest();
        EXPECT_EQ(req["token"], token);
        EXPECT_EQ(req["record"],
                  Json::parse(R"({"class":"PrimitiveData<int>","id":103,"args":[5]})"));
        d.respond(token, generalResponse(103, {{"handle", 5}, {"result", 1}, {"reason", 3}}));
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u);
        EXPECT_EQ(f.token, token);
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

// Each record is handled once whole, however the writes cut the stream:
// every record one read brings is handled before the loop waits again.
TEST(CoreEndToEnd, SplitAndCoalescedRecordsAreEachDeliveredOnceInOrder) {
    Daemon d;
    std::string a = clientRecord(uaDeletionRequest(1), 11);
    d.sendRaw(a.substr(0, 5));
    EXPECT_TRUE(d.expectNoStackRequest(150));
    d.sendRaw(a.substr(5) + clientRecord(uaDeletionRequest(2), 12) +
              clientRecord(uaDeletionRequest(3), 13));
    for (int token : {11, 12, 13}) EXPECT_EQ(d.nextStackRequest()["token"], token);
}

TEST(CoreEndToEnd, RequestsWithoutAHandlerReachNothing) {
    Daemon d;
    struct Case {
        const char* name;
        std::string payload;
    } cases[] = {
        {"id 0", std::string("\x08\x00", 2)},
        {"valid id without a row", std::string("\x08\x64", 2)},          // 100
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
    // And the daemon still serves.
    d.send(uaDeletionRequest(4), 99);
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
    d.notify(cancelAlarmRecord(3));
    EXPECT_EQ(d.nextFrame().notify().cancelalarm().id(), 3u);
    std::string log = d.log();
    EXPECT_NE(log.find("Response function failure: 9999"), std::string::npos);
    EXPECT_NE(log.find("Response function failure: 10000"), std::string::npos);
}

// Both directions take records of exactly 0x80000 bytes; one byte more out
// is dropped, one byte more in ends the connection once the buffer is full
// (see the loss of the client below).
TEST(CoreEndToEnd, RecordLimitsAreExact) {
    Daemon d;
    // In: the request padded with an unknown field (tag and length 3 bytes each).
    std::string payload = uaDeletionRequest(6).SerializeAsString();
    size_t pad = 0x80000 - 8 - payload.size() - 6;
    payload += varint((9999 << 3) | 2) + varint(pad) + std::string(pad, 'p');
    ASSERT_EQ(clientRecord(payload, 21).size(), 0x80000u + 4);
    d.sendRaw(clientRecord(payload, 21));
    EXPECT_EQ(d.nextStackRequest()["record"]["args"][0], 6);

    // Out: the error text length that makes the whole frame exactly 0x80000.
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
    std::thread answer([&] {
        d.respond(5, generalResponse(103, {{"errorStr", std::string(len, 'x')}}));
    });
    Frame f = d.nextFrame();
    answer.join();
    EXPECT_EQ(f.payload.size() + 12, 0x80000u);
    EXPECT_EQ(f.response().generalresponse().errorstr().size(), len);
    d.respond(6, generalResponse(103, {{"errorStr", std::string(len + 1, 'x')}}));
    EXPECT_TRUE(d.expectNoFrame(200));
    EXPECT_NE(d.log().find("IMS: packet larger than 524288 (524289)"), std::string::npos);
    // The connection is still good.
    d.notify(cancelAlarmRecord(1));
    EXPECT_EQ(d.nextFrame().type, 2u);
}

TEST(CoreEndToEnd, ASecondClientIsRefusedWithoutDisturbingTheFirst) {
    Daemon d;
    int second = d.connectClient();
    ASSERT_GE(second, 0);
    char byte;
    // The daemon closes the second connection at once.
    EXPECT_EQ(read(second, &byte, 1), 0);
    close(second);
    d.send(uaDeletionRequest(8), 3);
    EXPECT_EQ(d.nextStackRequest()["token"], 3);
    d.respond(3, generalResponse(103, {{"handle", 8}}));
    EXPECT_EQ(d.nextFrame().token, 3u);
}

TEST(CoreEndToEnd, TheLossOfTheClientEndsTheProcessWithMinusOne) {
    struct Case {
        const char* name;
        std::string lastBytes;  // sent before the client goes away
        bool close;             // else the daemon gives up on the client itself
        const char* logLine;
    } cases[] = {
        {"clean close", "", true, "EOS. Closing command socket"},
        {"close mid-record", std::string("\x00\x00\x00\x20\x01", 5), true,
         "EOS. Closing command socket"},
        // The length word is not checked on its own: the stream gives up on
        // the first wake-up after its buffer (the limit and the length word)
        // is full without a whole record, so one byte more than fits.
        {"record over the limit", std::string("\x00\x08\x00\x01", 4) + std::string(0x80001, 'p'),
         false, "Error on reading command socket errno: 27"},
    };
    for (const auto& c : cases) {
        Daemon d;
        if (!c.lastBytes.empty()) d.sendRaw(c.lastBytes);
        if (c.close) d.closeClient();
        EXPECT_EQ(d.waitExit(20000), 255) << c.name;
        std::string log = d.log();
        EXPECT_NE(log.find(c.logLine), std::string::npos) << c.name << "\n" << log;
        EXPECT_NE(log.find("OnCommandsSocketClosed: reset velard"), std::string::npos) << c.name;
    }
}

TEST(CoreEndToEnd, AutoModeAnswersWithTheRequestsHandle) {
    Daemon::Options o;
    o.controlled = false;
    Daemon d(o);
    d.send(uaDeletionRequest(0x1234), 77);
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
        {"stack cannot reach its controller",
         {"VELAR_SIM_CONTROL=/nonexistent/ctl"},
         "Ims Stack init failed"},
        {"no socket variable", {"ANDROID_SOCKET_velard"}, "Failed to get socket"},
        {"negative descriptor", {"ANDROID_SOCKET_velard=-3"}, "Failed to get socket"},
        {"descriptor out of range",
         {"ANDROID_SOCKET_velard=99999999999999999999"},
         "Failed to get socket"},
        // strtol stops at the letter without an error: descriptor 1, which is
        // no socket.
        {"trailing letters",
         {"ANDROID_SOCKET_velard=1abc"},
         "Failed to listen on control socket '1':"},
    };
    for (const auto& c : cases) {
        Daemon::Options o;
        o.controlled = false;
        o.connect = false;
        o.env = c.env;
        Daemon d(o);
        EXPECT_EQ(d.waitExit(20000), 255) << c.name;
        EXPECT_NE(d.log().find(c.logLine), std::string::npos) << c.name;
    }
}
