// What the stack's answers and notifications of file transfer, standalone
// messages and group chat become on the wire. Whole messages are compared
// through their encoding, which also shows every presence bit.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "handlers/handlers.h"
#include "tests/support/in_process.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

template <class M>
void expectWire(const M& actual, const M& expected, const std::string& what) {
    EXPECT_EQ(actual.SerializeAsString(), expected.SerializeAsString()) << what;
}

void setError(ims::ImError* e, int type, int code) {
    e->set_errortype(ims::ImError_Type(type));
    e->set_errorcode(code);
}

// Sets logLevel for one scope.
class LogLevel {
public:
    explicit LogLevel(int level) : saved_(logLevel) { logLevel = level; }
    ~LogLevel() { logLevel = saved_; }

private:
    int saved_;
};

}  // namespace

TEST(FtAnswers, StandaloneMessageResponseHeaders) {
    struct Case {
        const char* name;
        int retryTimer;
        int warningCode;
    };
    // Only -1 means "no header"; 0 is a header like any other.
    const Case cases[] = {{"neither", -1, -1},
                          {"both at zero", 0, 0},
                          {"retry only", 30, -1},
                          {"warning only", -1, 399}};
    for (const auto& c : cases) {
        Json record = Json::parse(R"({"class":"SendImSlmMessageRespData","id":520,"fields":{
            "imdnMessageId":"msg-1","error":{"type":1,"code":403},
            "retry":{"contactValue":"sip:retry@x"},"warning":{"host":"h","text":"t"}}})");
        record["fields"]["retry"]["retryTimer"] = c.retryTimer;
        record["fields"]["warning"]["code"] = c.warningCode;
        auto [rc, response] = respondJson(record, 5);
        ASSERT_EQ(rc, 0) << c.name;

        ims::Response expected;
        expected.set_resid(ims::Id(520));
        auto* body = expected.mutable_sendimslmmessageresp();
        body->set_imdnmessageid("msg-1");
        setError(body->mutable_imerror(), 1, 403);
        if (c.retryTimer != -1) {
            body->mutable_retryhdr()->set_retrytimer(c.retryTimer);
            body->mutable_retryhdr()->set_contactvalue("sip:retry@x");
        }
        if (c.warningCode != -1) {
            body->mutable_warninghdr()->set_code(c.warningCode);
            body->mutable_warninghdr()->set_host("h");
            body->mutable_warninghdr()->set_text("t");
        }
        expectWire(response, expected, c.name);
    }
}

TEST(FtAnswers, ProgressHeadersForBothIds) {
    struct Case {
        int id;
        int warningCode;
        int reasonCode;
    };
    const Case cases[] = {
        {12004, -1, -1}, {18003, -1, -1}, {12004, 0, 0}, {18003, 399, -1}, {12004, -1, 200}};
    for (const auto& c : cases) {
        const std::string name = std::to_string(c.id) + " warning " +
                                 std::to_string(c.warningCode) + " reason " +
                                 std::to_string(c.reasonCode);
        Json record = Json::parse(R"({"class":"FtProgressData","fields":{
            "handle":9,"state":3,"error":{"type":2,"code":-5},"total":4294967295,
            "transferred":1024,"warning":{"host":"h","text":"t"},"reason":{"text":"r"}}})");
        record["id"] = c.id;
        record["fields"]["warning"]["code"] = c.warningCode;
        record["fields"]["reason"]["code"] = c.reasonCode;
        auto [rc, message] = notifyJson(record);
        ASSERT_EQ(rc, 0) << name;

        ims::Notify expected;
        expected.set_notifyid(ims::Id(c.id));
        auto* body = expected.mutable_ftprogress();
        body->set_sessionhandle(9);
        body->set_total(0xFFFFFFFFu);
        body->set_transferred(1024);
        body->set_state(3);
        setError(body->mutable_imerror(), 2, -5);
        if (c.warningCode != -1) {
            body->mutable_warninghdr()->set_code(c.warningCode);
            body->mutable_warninghdr()->set_host("h");
            body->mutable_warninghdr()->set_text("t");
        }
        if (c.reasonCode != -1) {
            body->mutable_reasonhdr()->set_code(static_cast<uint32_t>(c.reasonCode));
            body->mutable_reasonhdr()->set_text("r");
        }
        expectWire(message, expected, name);
    }
}

namespace {

// An incoming file as the stack hands it up, every field set.
Json incomingRecord(int id) {
    Json r = Json::parse(R"({"class":"FtIncomingData","fields":{
        "session":{"sessionHandle":77,"id":"fw","isConference":true,"sessionUri":"sip:s@x",
          "userAlias":"Al","receivers":["sip:b@x","sip:a@x"],"contributionId":"c",
          "conversationId":"v","inReplyToContributionId":"irt","preferredLineUri":"sip:l@x",
          "sdpContentType":"sdp","serviceId":"svc"},
        "payload":{
          "fileAttr":{"name":"f.bin","path":"/f","contentType":"application/x","size":8589934592,
            "start":1,"end":2,"timeDuration":3},
          "iconAttr":{"name":"i.png","path":"/i","contentType":"image/png","size":12,"start":4,
            "end":5,"timeDuration":6},
          "imdn":{"messageId":"m","datetime":"d","noti":[1],"recRoute":[],"deviceId":"",
            "originalToHdr":""},
          "deviceName":"dev","reliableMessage":"rel","extraFt":true,"isBurnMsg":true,
          "isPublicAccountMsg":true,"isPush":true,
          "cpimNamespaces":[{"name":"n","uri":"u","headers":{"z":"1","a":"2"}}],
          "sender":"sip:from@x","receiver":"sip:to@x","silenceSupported":true}}})");
    r["id"] = id;
    return r;
}

ims::Notify expectedIncoming(int id, bool withIcon) {
    ims::Notify n;
    n.set_notifyid(ims::Id(id));
    auto* body = n.mutable_ftincomingsession();
    auto* s = body->mutable_session();
    // Neither the service id nor anything the session does not carry.
    s->set_sessionhandle(77);
    s->set_id("fw");
    s->set_isconference(true);
    s->set_sessionuri("sip:s@x");
    s->set_useralias("Al");
    s->add_receivers("sip:b@x");
    s->add_receivers("sip:a@x");
    s->set_contributionid("c");
    s->set_conversationid("v");
    s->set_inreplytocontributionid("irt");
    s->set_preferredlineuri("sip:l@x");
    s->set_sdpcontenttype("sdp");
    auto* p = body->mutable_payload();
    auto* f = p->mutable_fileattr();
    f->set_name("f.bin");
    f->set_path("/f");
    f->set_contenttype("application/x");
    f->set_size(8589934592ull);
    f->set_start(1);
    f->set_end(2);
    f->set_timeduration(3);
    if (withIcon) {
        // Of the icon only where it is and how big.
        p->mutable_iconattr()->set_path("/i");
        p->mutable_iconattr()->set_size(12);
    }
    auto* imdn = p->mutable_imdn();
    imdn->set_messageid("m");
    imdn->set_datetime("d");
    imdn->add_noti(ims::NotificationStatus(1));
    imdn->set_deviceid("");
    imdn->set_originaltohdr("");
    p->set_devicename("dev");
    p->set_reliablemessage("rel");
    p->set_extraft(true);
    p->set_isburnmsg(true);
    p->set_ispush(true);  // but not isPublicAccountMsg
    auto* ns = p->add_cpimnamespaces();
    ns->set_name("n");
    ns->set_uri("u");
    auto* first = ns->add_headers();
    first->set_key("a");
    first->set_value("2");
    auto* second = ns->add_headers();
    second->set_key("z");
    second->set_value("1");
    p->set_sender("sip:from@x");
    p->set_receiver("sip:to@x");
    p->set_silencesupported(true);
    return n;
}

}  // namespace

TEST(FtAnswers, IncomingFileForBothIds) {
    for (int id : {12005, 18001}) {
        auto [rc, message] = notifyJson(incomingRecord(id));
        ASSERT_EQ(rc, 0) << id;
        expectWire(message, expectedIncoming(id, true), std::to_string(id));
    }
    // An icon without a path is no icon, whatever else it names.
    Json noIcon = incomingRecord(12005);
    noIcon["fields"]["payload"]["iconAttr"]["path"] = "";
    auto [rc, message] = notifyJson(noIcon);
    ASSERT_EQ(rc, 0);
    expectWire(message, expectedIncoming(12005, false), "icon without path");
}

TEST(FtAnswers, StandaloneIncomingMessage) {
    auto [rc, message] = notifyJson(Json::parse(R"({"class":"SlmIncomingData","id":18000,
        "fields":{"session":{"sessionHandle":5,"id":"fw","isConference":true,"sessionUri":"sip:s@x",
          "userAlias":"Al","receivers":["sip:a@x"],"contributionId":"c","conversationId":"v",
          "inReplyToContributionId":"irt","preferredLineUri":"sip:l@x","sdpContentType":"sdp",
          "serviceId":"svc"},
        "message":{"sender":"sip:from@x","body":"x\u0000y","contentType":"text/plain",
          "isBurnMsg":true}}})"));
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(message.notifyid(), 18000);
    // Of the session only the handle, line, ids and receivers.
    ims::BaseSessionData session;
    session.set_sessionhandle(5);
    session.add_receivers("sip:a@x");
    session.set_contributionid("c");
    session.set_conversationid("v");
    session.set_preferredlineuri("sip:l@x");
    expectWire(message.slmmessageincoming().sessiondata(), session, "session");
    // The message goes whole, through the shared message translation.
    const auto& msg = message.slmmessageincoming().msg();
    EXPECT_EQ(msg.sender(), "sip:from@x");
    EXPECT_EQ(msg.body(), std::string("x\0y", 3));
    EXPECT_TRUE(msg.isburnmsg());
    EXPECT_TRUE(msg.has_imdn());
}

TEST(FtAnswers, GroupInfoUsers) {
    auto [rc, message] = notifyJson(Json::parse(R"({"class":"GroupInfoUpdateData","id":11011,
        "fields":{"uri":"sip:group@x","sessionId":8,"state":"full","subject":"","maxUserCnt":10,
        "users":[
          {"entity":"sip:u1","state":"active","yourOwn":true,"roles":"chairman",
           "endpoint":{"entity":"sip:e1","status":"connected","disconnectMethod":""},
           "joiningInfo":{"when":"","reason":"r","by":"b"},
           "disconnectionInfo":{"when":"","reason":"r","by":"b"},"userAlias":"U1"},
          {"entity":"sip:u2","state":"gone","yourOwn":false,"roles":"",
           "endpoint":{"entity":"sip:e2","status":"disconnected","disconnectMethod":"booted"},
           "joiningInfo":{"when":"t1","reason":"r","by":"b"},
           "disconnectionInfo":{"when":"t2","reason":"r","by":"b"},"userAlias":""}]}})"));
    ASSERT_EQ(rc, 0);
    ims::Notify expected;
    expected.set_notifyid(ims::Id(11011));
    auto* body = expected.mutable_groupchatinfoupdated();
    body->set_uri("sip:group@x");
    auto* info = body->mutable_info();
    info->set_sessionid(8);
    info->set_state("full");
    info->set_subject("");
    info->set_maxusercnt(10);
    // Empty times leave their blocks present but empty; reasons and authors
    // never go out.
    auto* u1 = info->add_users();
    u1->set_entity("sip:u1");
    u1->set_state("active");
    u1->set_yourown(true);
    u1->set_roles("chairman");
    u1->set_useralias("U1");
    u1->mutable_endpoint()->set_entity("sip:e1");
    u1->mutable_endpoint()->set_status("connected");
    u1->mutable_endpoint()->mutable_joininginfo();
    u1->mutable_endpoint()->mutable_disconnectioninfo();
    auto* u2 = info->add_users();
    u2->set_entity("sip:u2");
    u2->set_state("gone");
    u2->set_yourown(false);
    u2->set_roles("");
    u2->set_useralias("");
    u2->mutable_endpoint()->set_entity("sip:e2");
    u2->mutable_endpoint()->set_status("disconnected");
    u2->mutable_endpoint()->set_disconnectmethod("booted");
    u2->mutable_endpoint()->mutable_joininginfo()->set_when("t1");
    u2->mutable_endpoint()->mutable_disconnectioninfo()->set_when("t2");
    expectWire(message, expected, "11011");

    auto [emptyRc, empty] = notifyJson(Json::parse(
        R"({"class":"GroupInfoUpdateData","id":11011,"fields":{"uri":"","sessionId":0}})"));
    ASSERT_EQ(emptyRc, 0);
    EXPECT_TRUE(empty.groupchatinfoupdated().info().has_maxusercnt());
    EXPECT_TRUE(empty.groupchatinfoupdated().info().has_subject());
    EXPECT_EQ(empty.groupchatinfoupdated().info().users_size(), 0);
}

TEST(FtAnswers, NullRecordsSendNothing) {
    using Notifier = int (*)(ims::Notify&, ImsData*);
    using Responder = int (*)(uint32_t, ims::Response&, ImsData*);
    struct Case {
        const char* name;
        Notifier notifier;
        Responder responder;
        const char* line;
    };
    const Case cases[] = {
        {"NotifyFtProgress", NotifyFtProgress, nullptr, "E [IMS6.0]: invalid response: NULL"},
        {"PrepareNotifyFtIncomingSession", PrepareNotifyFtIncomingSession, nullptr,
         "E [IMS6.0]: PrepareNotifyFtIncomingSession: invalid response: NULL"},
        {"PrepareNotifySlmIncoming", PrepareNotifySlmIncoming, nullptr,
         "E [IMS6.0]: null notification!"},
        {"NotifyGroupChatSubscribeStatus", NotifyGroupChatSubscribeStatus, nullptr,
         "E [IMS6.0]: invalid response: NULL"},
        {"NotifyGroupListUpdate", NotifyGroupListUpdate, nullptr,
         "E [IMS6.0]: invalid response: NULL"},
        {"NotifyGroupInfoUpdate", NotifyGroupInfoUpdate, nullptr,
         "E [IMS6.0]: invalid response: NULL"},
        {"ResponseSendImSlmMessage", nullptr, ResponseSendImSlmMessage,
         "E [IMS6.0]: invalid response: NULL"},
        {"PrepareResponseSlmSendFile", nullptr, PrepareResponseSlmSendFile,
         "E [IMS6.0]: invalid response: NULL"},
    };
    for (const auto& c : cases) {
        LogCapture log;
        ims::Notify n;
        ims::Response r;
        int rc = c.notifier ? c.notifier(n, nullptr) : c.responder(1, r, nullptr);
        EXPECT_EQ(rc, -1) << c.name;
        EXPECT_TRUE(log.contains(c.line)) << c.name;
        EXPECT_FALSE(n.has_notifyid() || r.has_resid()) << c.name;
    }
}

TEST(FtAnswers, LogLevelGatesTheDebugLines) {
    struct Case {
        int level;
        bool shown;
    };
    for (const Case c : {Case{1, false}, Case{2, true}}) {
        LogLevel level(c.level);
        LogCapture log;
        ASSERT_EQ(notifyJson(incomingRecord(18001)).first, 0);
        ASSERT_EQ(
            respondJson(Json::parse(R"({"class":"SendSlmFileRespData","id":521,"fields":{}})"))
                .first,
            0);
        EXPECT_EQ(log.contains("D [IMS6.0]: PrepareNotifyFtIncomingSession: reqId = 18001"),
                  c.shown)
            << c.level;
        EXPECT_EQ(log.contains("D [IMS6.0]: PrepareResponseSlmSendFile: "), c.shown) << c.level;
    }
}
