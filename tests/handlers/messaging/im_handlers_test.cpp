// IM handlers in process: what a message and a session description keep on
// their way up and down, header defaults, the one validating handler, the
// IMDN status and conference blocks, entry lines and null records.
#include <gtest/gtest.h>

#include "core/ims_tables.h"
#include "tests/support/in_process.h"

using namespace velard_test;

namespace {

imsCommonStruc::Request make(int id) {
    imsCommonStruc::Request r;
    r.set_reqid(static_cast<imsCommonStruc::Id>(id));
    return r;
}

Json notifyRecord(const char* cls, int id, Json fields) {
    return Json{{"class", cls}, {"id", id}, {"fields", std::move(fields)}};
}

// The same record with every member at its default.
Json blank(Json j) {
    for (auto& v : j) v = v.is_object() ? blank(v) : Json(v.type());
    return j;
}

}  // namespace

// What goes up whole (a received message, the session of an invitation)
// comes down again as a start or a message: every field keeps its own name,
// and what a request leaves behind never reaches the stack.
TEST(ImHandlers, MessageAndSessionCrossBothWays) {
    const Json message = Json::parse(R"({"sender":"s","userAlias":"ua","body":"a\u0000b",
        "contentType":"c","imdn":{"messageId":"m","datetime":"t","noti":[0,1],
        "recRoute":[{"name":"n","uri":"u"}],"deviceId":"d","originalToHdr":"o"},
        "deviceName":"dn","reliableMessage":"rm","xmsMessage":"x","extraFt":true,
        "isBurnMsg":true,"isPublicAccountMsg":true,"cpimNamespaces":[{"name":"ns","uri":"nu",
        "headers":{"zeta":"1","alpha":"2"}}],"receiver":"r","silenceSupported":true,
        "ccParticipants":["c1","c2"]})");
    const Json session = Json::parse(R"({"sessionHandle":99,"id":"i","isConference":true,
        "sessionUri":"su","userAlias":"ua","receivers":["r1","r2"],"contributionId":"c1",
        "conversationId":"c2","inReplyToContributionId":"c3","preferredLineUri":"pl",
        "sdpContentType":"sdp","serviceId":"sv","sender":"se","subject":"sj","isRejoin":true,
        "isClosed":true,"isInviteforbye":true,"isExtension":true,"acceptTypes":["a"],
        "acceptWrappedTypes":["w"]})");
    auto [rc, up] = notifyJson(
        notifyRecord("ImMessageReceivedData", 11005, {{"handle", 3}, {"message", message}}));
    const auto param = up.immessagereceived().messageparam();
    EXPECT_EQ(param.imdn().recroute(0).uri() + param.cpimnamespaces(0).headers(0).key(), "ualpha");
    std::tie(rc, up) = notifyJson(
        notifyRecord("ImSessionInvitedData", 11004, {{"handle", 5}, {"session", session}}));
    const auto wireSession = up.imsessioninvited().session();
    EXPECT_FALSE(wireSession.has_isrejoin() || wireSession.has_isinviteforbye() ||
                 wireSession.has_isextension() || wireSession.accepttypes_size() ||
                 wireSession.acceptwrappedtypes_size());

    auto send = make(504);
    send.mutable_requestsendimmessage()->mutable_sessiondata()->set_sessionhandle(11);
    send.mutable_requestsendimmessage()->mutable_sessiondata()->set_id("not read");
    *send.mutable_requestsendimmessage()->mutable_messageparam() = param;
    Json kept = message;
    kept.update(Json::parse(R"({"sender":"","userAlias":"","isBurnMsg":false,
        "isPublicAccountMsg":false,"cpimNamespaces":[],"receiver":"","silenceSupported":false})"));
    EXPECT_EQ(dispatchOne(send),
              notifyRecord("RequestSendImMessage", 504, {{"handle", 11}, {"message", kept}}));

    auto start = make(501);
    start.mutable_requeststartimsession()->set_registrationhandle(7);
    auto* down = start.mutable_requeststartimsession()->mutable_session();
    *down = wireSession;
    down->set_isrejoin(true);
    down->set_isinviteforbye(true);
    down->set_isextension(true);
    down->add_accepttypes("a");
    down->add_acceptwrappedtypes("w");
    Json expected = session;
    expected["sessionHandle"] = 5;  // the record's own handle, not the one inside
    // Without messageParam the stack still gets a message, an empty one.
    EXPECT_EQ(dispatchOne(start), (Json{{"class", "ImStartSessionData"},
                                        {"id", 501},
                                        {"args", {7, expected, blank(message)}}}));
    *start.mutable_requeststartimsession()->mutable_messageparam() = param;
    kept.update(Json::parse(R"({"deviceName":"","reliableMessage":"","ccParticipants":[]})"));
    EXPECT_EQ(dispatchOne(start)["args"][2], kept);

    // Empty strings and false flags go up as well, and so does imdn.
    std::tie(rc, up) = notifyJson(notifyRecord("ImMessageReceivedData", 11005, {{"handle", 3}}));
    const auto& bare = up.immessagereceived();
    EXPECT_TRUE(bare.messageparam().has_sender() && bare.messageparam().has_body() &&
                bare.messageparam().has_isburnmsg() && bare.messageparam().has_silencesupported() &&
                bare.messageparam().imdn().has_originaltohdr());
    EXPECT_FALSE(bare.sessiondata().has_id());
}

// Without their headers, a close reaches the stack with reason code 0 and a
// reject with warning code -1.
TEST(ImHandlers, HeaderDefaultsOfCloseAndReject) {
    EXPECT_EQ(dispatchOne(make(503)), Json::parse(R"({"class":"CloseImSessionData","id":503,
        "fields":{"handle":0,"reason":{"code":0,"text":""}}})"));
    EXPECT_EQ(dispatchOne(make(508)), Json::parse(R"({"class":"RequestRejectImSession","id":508,
        "fields":{"handle":0,"sipCode":0,"warning":{"code":-1,"host":"","text":""}}})"));
}

// Numbers outside the enumerations cannot come off the socket (the parser
// keeps them out of the field), so the handler is called with them directly.
TEST(ImHandlers, NotificationStatusOutsideItsValuesReachesNothing) {
    const std::tuple<int, int, const char*> cases[] = {{2, 0, "Unsupported status!"},
                                                       {-1, 9, "Unsupported status!"},
                                                       {0, 3, "Unsupported service type!"},
                                                       {1, -1, "Unsupported service type!"},
                                                       {1, 2, nullptr}};
    for (auto [status, service, error] : cases) {
        auto request = make(506);
        auto* b = request.mutable_requestsendimnotificationstatus();
        b->mutable_status()->set_status(static_cast<imsCommonStruc::NotificationStatus>(status));
        b->set_service(static_cast<imsCommonStruc::ImServiceType>(service));
        StackCapture capture;
        LogCapture log;
        DispatchIMSendNotiStatus(1, request, nullptr);
        EXPECT_EQ(capture.records.size(), error ? 0u : 1u);
        if (error) {
            EXPECT_EQ(log.lines().back(),
                      std::string("E [IMS6.0]: DispatchIMSendNotiStatus: ") + error);
        }
    }
}

TEST(ImHandlers, ImdnCarriesOneStatusAndConferenceUsersTheirBlocks) {
    for (auto [noti, status] : {std::pair{"[0,1]", 1}, {"[5]", 0}, {"[]", -1}}) {
        auto [rc, n] = notifyJson(
            notifyRecord("ImdnReceivedData", 11006, {{"imdn", {{"noti", Json::parse(noti)}}}}));
        const auto& s = n.imnotificationstatusreceived().status();
        EXPECT_EQ(s.has_status() ? s.status() : -1, status) << noti;
    }
    auto [rc, n] = notifyJson(Json::parse(R"({"class":"ImConferenceInfoData","id":19000,
        "fields":{"users":[{"endpoint":{"disconnectMethod":"bye"},"joiningInfo":{"reason":"r",
        "by":"b"},"disconnectionInfo":{"when":"t","reason":"x","by":"b"}},{}]}})"));
    const auto& full = n.imconfinfoupdated().users(0).endpoint();
    const auto& bare = n.imconfinfoupdated().users(1).endpoint();
    EXPECT_EQ(full.disconnectmethod(), "bye");
    EXPECT_EQ(full.joininginfo().ByteSizeLong(), 0u);  // reason and by never go out
    EXPECT_EQ(full.disconnectioninfo().when() + full.disconnectioninfo().reason(), "tx");
    EXPECT_FALSE(full.disconnectioninfo().has_by());
    EXPECT_FALSE(bare.has_disconnectmethod() || bare.disconnectioninfo().has_when() ||
                 bare.disconnectioninfo().has_reason());
    EXPECT_TRUE(bare.has_joininginfo() && bare.has_disconnectioninfo());
}

// Null records: each answer and notification handler names itself at its
// own priority, writes its own error line and returns -1.
TEST(ImHandlers, NullRecordsSendNothing) {
    const std::tuple<int, const char*, const char*> cases[] = {
        {504, "V PrepareResponseIMSendMessage()", "invalid response: NULL"},
        {510, "I ResponseUpdateParticipants()", "invalid stackResponse: NULL"},
        {11001, "V NotifySessionStarted()", "invalid notify: NULL"},
        {11005, "D NotifyMessageReceived()", "invalid response: NULL"},
        {11008, "V PrepareNotifyImMessageReportReceived: ",
         "PrepareNotifyImMessageReportReceived: invalid response: NULL"}};
    StackCapture tables;
    for (const auto& [id, entry, error] : cases) {
        imsCommonStruc::Response r;
        imsCommonStruc::Notify n;
        LogCapture log;
        EXPECT_EQ(id < 10000 ? s_commandMap.at(id).responseFunction(1, r, nullptr)
                             : s_notifyMap.at(id).notifyFunction(n, nullptr),
                  -1);
        EXPECT_EQ(log.lines(),
                  (std::vector<std::string>{std::string(entry, 1) + " [IMS6.0]: " + (entry + 2),
                                            std::string("E [IMS6.0]: ") + error}));
    }
}
