// What the stack hands up for this family, as the client receives it.
#include <gtest/gtest.h>

#include <functional>

#include "handlers/handlers.h"
#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Notify;

namespace {

struct Case {
    const char* name;
    const char* record;
    std::function<void(Notify&)> expected;
};

struct LogLevel {
    explicit LogLevel(int level) : saved(logLevel) { logLevel = level; }
    ~LogLevel() { logLevel = saved; }
    int saved;
};

// Byte for byte: also tells a field sent empty from a field left out.
void expectSame(const google::protobuf::MessageLite& actual,
                const google::protobuf::MessageLite& expected, const char* name) {
    EXPECT_EQ(actual.SerializePartialAsString(), expected.SerializePartialAsString()) << name;
}

void regiStatus(Notify& n, int id, int regiType) {
    n.set_notifyid(imsCommonStruc::Id(id));
    auto* b = n.mutable_registrationstatus();
    b->set_handle(-2);
    b->set_regitype(imsCommonStruc::RegiType(regiType));
    b->add_servicelist("mmtel");
    b->add_servicelist("smsip");
    b->add_impulist("sip:a@x");
    b->set_respcode(403);
    b->set_respreason("Forbidden");
    b->set_retryafter(30);
    b->set_ecmpmode(2);
}

constexpr const char* kRegiStatusFields =
    R"({"handle":-2,"serviceList":["mmtel","smsip"],"regiType":1,"impuList":["sip:a@x"],
        "respCode":403,"respReason":"Forbidden","retryAfter":30,"ecmpMode":2})";

Json record(const char* cls, int id, const char* fields) {
    Json j = Json::object();
    j["class"] = cls;
    j["id"] = id;
    j["fields"] = Json::parse(fields);
    return j;
}

}  // namespace

TEST(RegistrationNotifications, ReachTheClientAsTheirMessages) {
    const std::vector<Case> cases = {
        {"10001 zero and empty optionals are sent",
         R"({"class":"RegiStatusData","id":10001,"fields":{"handle":5}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::NOTI_REGI_STATUS);
             auto* b = n.mutable_registrationstatus();
             b->set_handle(5);
             b->set_regitype(imsCommonStruc::RegiType(0));
             b->set_respcode(0);
             b->set_respreason("");
             b->set_retryafter(0);
             b->set_ecmpmode(0);
         }},
        {"10002 second string stays behind",
         R"({"class":"RegiAuth","id":10002,"fields":{"recvMng":2,"handle":7,"nonce":"bm9uY2U=","akaResp":"unread"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::NOTI_REGI_AUTH);
             auto* b = n.mutable_registrationauth();
             b->set_handle(7);
             b->set_nonce("bm9uY2U=");
             b->set_recvmng(2);
         }},
        {"10013",
         R"({"class":"SubscribeStatusData","id":10013,"fields":{"handle":4294967295,"respCode":489,"respReason":"Bad Event"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::NOTI_SUBSCRIBE_STATUS);
             auto* b = n.mutable_subscribestatus();
             b->set_handle(0xFFFFFFFFu);
             b->set_respcode(489);
             b->set_respreason("Bad Event");
         }},
        {"10007 contacts in order, every field set",
         R"({"class":"RegInfoData","id":10007,"fields":{"handle":3,"contacts":[
             {"uri":"sip:b@x","displayName":"Bee","state":1,"event":3},
             {"uri":"sip:a@x","displayName":"","state":0,"event":0}]}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::NOTI_REG_INFO_CHANGED);
             auto* b = n.mutable_reginfochanged();
             b->set_handle(3);
             auto* c = b->add_contacts();
             c->set_uri("sip:b@x");
             c->set_state(imsCommonStruc::Notify_RegInfoChanged_State_ACTIVE);
             c->set_displayname("Bee");
             c->set_event(imsCommonStruc::Notify_RegInfoChanged_Event_SHORTENED);
             c = b->add_contacts();
             c->set_uri("sip:a@x");
             c->set_state(imsCommonStruc::Notify_RegInfoChanged_State_INIT);
             c->set_displayname("");
             c->set_event(imsCommonStruc::Notify_RegInfoChanged_Event_REGISTERED);
         }},
        {"10007 no contact", R"({"class":"RegInfoData","id":10007,"fields":{"handle":3}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::NOTI_REG_INFO_CHANGED);
             n.mutable_reginfochanged()->set_handle(3);
         }},
        {"10003",
         R"({"class":"SipMessageData","id":10003,"fields":{"handle":3,"direction":1,"origin":0,"sipMessage":"SIP/2.0 200 OK\r\n\r\n"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::NOTI_SIP_MESSAGE);
             auto* b = n.mutable_sipmessage();
             b->set_handle(3);
             b->set_direction(imsCommonStruc::SipDirection(1));
             b->set_origin(imsCommonStruc::SipOrigin(0));
             b->set_sipmessage("SIP/2.0 200 OK\r\n\r\n");
         }},
        {"10003 numbers outside the enumerations pass unchanged",
         R"({"class":"SipMessageData","id":10003,"fields":{"direction":7,"origin":-1}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::NOTI_SIP_MESSAGE);
             auto* b = n.mutable_sipmessage();
             b->set_handle(0);
             b->set_direction(imsCommonStruc::SipDirection(7));
             b->set_origin(imsCommonStruc::SipOrigin(-1));
             b->set_sipmessage("");
         }},
        {"20001", R"({"class":"AlarmData","id":20001,"fields":{"id":5,"delay":30000}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20001));
             n.mutable_alarmwakeup()->set_id(5);
             n.mutable_alarmwakeup()->set_delay(30000);
         }},
        {"20006 chain in order, bytes whole",
         R"({"class":"X509VerifyData","id":20006,"fields":{"certificates":["leaf\u0000\u00ff","ca1",null,"root"]}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20006));
             auto* b = n.mutable_x509certverifyrequest();
             b->add_cert(std::string("leaf") + '\0' + "\xff");
             b->add_cert("ca1");
             b->add_cert("");
             b->add_cert("root");
         }},
        {"20007 empty address list",
         R"({"class":"DnsResponseData","id":20007,"fields":{"hostname":"pcscf.example","port":5060,"handle":4}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20007));
             auto* b = n.mutable_dnsresponse();
             b->set_handle(4);
             b->set_port(5060);
             b->set_hostname("pcscf.example");
         }},
        {"20007 addresses in order",
         R"({"class":"DnsResponseData","id":20007,"fields":{"hostname":"h","ipAddrList":["10.0.0.2","10.0.0.1"],"port":0,"handle":4}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20007));
             auto* b = n.mutable_dnsresponse();
             b->set_handle(4);
             b->add_ipaddrlist("10.0.0.2");
             b->add_ipaddrlist("10.0.0.1");
             b->set_port(0);
             b->set_hostname("h");
         }},
        {"20009 signal report, empty reason and contents sent",
         R"({"class":"EcholocateData","id":20009,"fields":{"handle":3,"msgType":0,"origin":"o",
             "callid":"c","cseq":"1 INVITE","line1":"INVITE sip:x SIP/2.0","from":"f","to":"t",
             "id":"rtp-only","dir":"rtp-only"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20009));
             auto* b = n.mutable_echolocatemsg();
             b->set_handle(3);
             b->set_msgtype(imsCommonStruc::ECHOLOCATE_TYPE_SIGNAL);
             auto* s = b->mutable_echolocatesignaldata();
             s->set_origin("o");
             s->set_line1("INVITE sip:x SIP/2.0");
             s->set_callid("c");
             s->set_cseq("1 INVITE");
             s->set_to("t");
             s->set_from("f");
             s->set_reason("");
             s->set_contents("");
         }},
        {"20009 any kind but 0 is an RTP report",
         R"({"class":"EcholocateData","id":20009,"fields":{"handle":3,"msgType":7,"origin":"signal-only",
             "id":"i","dir":"d","lossrate":"l","delay":"de","jitter":"j","measuredperiod":"m","nwstate":"n"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20009));
             auto* b = n.mutable_echolocatemsg();
             b->set_handle(3);
             b->set_msgtype(imsCommonStruc::ECHOLOCATE_TYPE_RTP);
             auto* r = b->mutable_echolocatertpdata();
             r->set_dir("d");
             r->set_id("i");
             r->set_lossrate("l");
             r->set_delay("de");
             r->set_jitter("j");
             r->set_measuredperiod("m");
             r->set_nwstate("n");
         }},
        {"20010 secure false is sent",
         R"({"class":"DumpMessageData","id":20010,"fields":{"tag":"REGI","value":"state=1"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20010));
             auto* b = n.mutable_dumpmessage();
             b->set_tag("REGI");
             b->set_value("state=1");
             b->set_secure(false);
         }},
    };
    for (const auto& c : cases) {
        auto [rc, message] = notifyJson(Json::parse(c.record));
        ASSERT_EQ(rc, 0) << c.name;
        Notify expected;
        c.expected(expected);
        expectSame(message, expected, c.name);
    }
}

TEST(RegistrationNotifications, StatusAndPaniUpdateShareTheirTranslation) {
    for (int id : {10001, 10023}) {
        LogLevel level(2);
        LogCapture log;
        auto [rc, message] = notifyJson(record("RegiStatusData", id, kRegiStatusFields));
        ASSERT_EQ(rc, 0);
        Notify expected;
        regiStatus(expected, id, 1);
        expectSame(message, expected, std::to_string(id).c_str());
        const char* name = id == 10001 ? "NotifyRegiStatus" : "NotifyStackUpdatePaniNoti";
        EXPECT_TRUE(log.contains(std::string("V [IMS6.0]: ") + name + "() size:1")) << id;
    }
}

TEST(RegistrationNotifications, NonceIsLoggedOnlyAboveLogLevelOne) {
    for (int level : {1, 2}) {
        LogLevel set(level);
        LogCapture log;
        notifyJson(Json::parse(R"({"class":"RegiAuth","id":10002,"fields":{"nonce":"n0nce"}})"));
        EXPECT_EQ(log.contains("D [IMS6.0]: nonce n0nce"), level > 1) << level;
    }
}

TEST(SendSipResponse, MessageOnlyWhenNotEmpty) {
    for (const char* text : {"", "SIP/2.0 200 OK\r\n\r\n"}) {
        Json r = Json::parse(R"({"class":"SipDialogResponseData","id":1200})");
        r["fields"] = {{"handle", 9}, {"sipmessage", text}, {"success", true}};
        auto [rc, response] = respondJson(r);
        ASSERT_EQ(rc, 0);
        imsCommonStruc::Response expected;
        expected.set_resid(imsCommonStruc::REQ_SIP_DIALOG_SEND_SIP);
        auto* b = expected.mutable_sipdialoggeneralresponse();
        b->set_handle(9);
        b->set_success(true);
        if (*text) b->set_sipmessage(text);
        expectSame(response, expected, text);
    }
}

TEST(RegistrationNotifications, NullRecordSendsNothing) {
    using NotifyHandler = int (*)(Notify&, ImsData*);
    for (NotifyHandler handler :
         {NotifyRegiStatus, NotifyRegiAuth, NotifyDnsResponse, NotifySubscribeStatus,
          NotifyRegInfoChanged, NotifySipMessage, NotifyAlarmWakeUp, NotifyCancelAlarm,
          NotifyEcholocateMsg, NotifyDumpMessage, NotifyStackUpdatePaniNoti,
          NotifyX509CertVerifyRequest}) {
        Notify n;
        EXPECT_EQ(handler(n, nullptr), -1);
    }
    imsCommonStruc::Response response;
    EXPECT_EQ(ResponseSendSipResponse(1, response, nullptr), -1);
}
