// The registration family through the real daemon and socket: every request
// to its stack record and back to its response, every notification to the
// client, and the log gates that protect the user's secrets.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/e2e.h"

using namespace velard_test;
using imsCommonStruc::Notify;
using imsCommonStruc::Request;
using imsCommonStruc::Response;

namespace {

// Every key of `expected` is in `actual` with the same value; arrays and
// scalars compare whole.
bool containsJson(const Json& actual, const Json& expected) {
    if (!expected.is_object()) return actual == expected;
    if (!actual.is_object()) return false;
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        auto found = actual.find(it.key());
        if (found == actual.end() || !containsJson(*found, it.value())) return false;
    }
    return true;
}

std::string bytes(const google::protobuf::MessageLite& m) {
    return m.SerializePartialAsString();
}

// A failure answer that uses every field of the general response.
Json generalAnswer(int id) {
    return Json{
        {"class", "GeneralResponseData"},
        {"id", id},
        {"fields",
         {{"handle", 6}, {"result", 1}, {"reason", 4}, {"errorStr", "busy"}, {"sipError", 503}}}};
}

Response generalExpected(int id) {
    Response r;
    r.set_resid(imsCommonStruc::Id(id));
    auto* b = r.mutable_generalresponse();
    b->set_handle(6);
    b->set_result(imsCommonStruc::Result(1));
    b->set_reason(imsCommonStruc::GeneralReason(4));
    b->set_errorstr("busy");
    b->set_siperror(503);
    return r;
}

struct RequestRow {
    int id;
    std::function<void(Request&)> fill;
    const char* stackRecord;  // what the stack receives (keys that must match)
};

}  // namespace

TEST(RegistrationEndToEnd, EveryRequestReachesTheStackAndItsAnswerTheClient) {
    const std::vector<RequestRow> rows = {
        {101,
         [](Request& r) {
             r.mutable_requestupdatecommonconfig()->mutable_srvccconfig()->set_version(2);
         },
         R"({"class":"ConfigData","id":101,"args":[],"calls":[["SetSrvccConfig",[2]]]})"},
        {102,
         [](Request& r) {
             auto* b = r.mutable_requestuacreation();
             b->set_profileid(1);
             b->set_timer1(500);
             b->set_timerts(9);
         },
         R"({"class":"UAProfileData","id":102,
             "calls":[["SetTimer",[500,0,0,0,0,0,0,0,0,0,0,0,0,0,9]]]})"},
        {103, [](Request& r) { r.mutable_requestuadeletion()->set_handle(6); },
         R"({"class":"PrimitiveData<int>","id":103,"args":[6]})"},
        {104,
         [](Request& r) {
             auto* b = r.mutable_requestregistration();
             b->set_handle(6);
             b->add_pcscfaddrlist("10.0.0.10");
             b->set_pcscfport(5060);
             b->set_regexp(600000);
         },
         R"({"class":"RegiSetupData","id":104,"args":[6,["10.0.0.10"],5060,[],600000,[],[],true,[],""]})"},
        {105,
         [](Request& r) {
             r.mutable_requestupdateakaresp()->set_handle(6);
             r.mutable_requestupdateakaresp()->set_akaresp("RES");
             r.mutable_requestupdateakaresp()->set_recvmng(1);
         },
         R"({"class":"RegiAuth","id":105,"args":[1,6,"","RES"]})"},
        {106,
         [](Request& r) {
             r.mutable_requestdnsquery()->set_handle(6);
             r.mutable_requestdnsquery()->set_hostname("pcscf");
             r.mutable_requestdnsquery()->add_dnsserverlist("9.9.9.9");
         },
         R"({"class":"DnsQueryData","id":106,"args":[6,"","pcscf","","",""],
             "members":{"dnsServers":["9.9.9.9"]}})"},
        {107,
         [](Request& r) {
             r.mutable_requestsetpreferredimpu()->set_handle(6);
             r.mutable_requestsetpreferredimpu()->set_impu("tel:+1");
         },
         R"({"class":"UpdatePreferredImpu","id":107,"args":[6,"tel:+1"]})"},
        {108, [](Request& r) { r.mutable_requestnetworksuspended()->set_handle(6); },
         R"({"class":"NetworkSuspended","id":108,"args":[6,false]})"},
        {109,
         [](Request& r) {
             r.mutable_requestupdatefeaturetag()->set_handle(6);
             r.mutable_requestupdatefeaturetag()->add_featuretaglist(imsCommonStruc::FeatureTag(7));
         },
         R"({"class":"PairData<int, std::vector<unsigned int>>","id":109,"args":[6,[7]]})"},
        {110,
         [](Request& r) {
             r.mutable_requestupdatevceconfig()->set_handle(6);
             r.mutable_requestupdatevceconfig()->set_vceconfig(true);
         },
         R"({"class":"VceConfigData","id":110,"fields":{"handle":6,"vceConfig":true}})"},
        {600,
         [](Request& r) {
             r.mutable_requestupdatepani()->set_handle(6);
             r.mutable_requestupdatepani()->set_pani("3GPP-E-UTRAN-FDD");
         },
         R"({"class":"PaniData","id":600,"args":[6,"3GPP-E-UTRAN-FDD",""]})"},
        {601,
         [](Request& r) {
             r.mutable_requestupdategeolocation()->set_handle(6);
             r.mutable_requestupdategeolocation()->set_locationtime("t");
         },
         R"({"class":"GeolocationData","id":601,
             "args":[6,"","","","","","","","","","","","","","","","","t"]})"},
        {901, [](Request& r) { r.mutable_requestalarmwakeup()->set_id(3); },
         R"({"class":"PrimitiveData<int>","id":901,"args":[3]})"},
        {902,
         [](Request& r) {
             r.mutable_requestx509certverifyresult()->set_result(true);
             r.mutable_requestx509certverifyresult()->set_reason("fine");
         },
         R"({"class":"PrimitiveData<bool>","id":902,"args":[true]})"},
        {1200,
         [](Request& r) {
             r.mutable_requestsendsip()->set_handle(6);
             r.mutable_requestsendsip()->set_sipmessage("MESSAGE sip:x SIP/2.0");
         },
         R"({"class":"SendSipData","id":1200,"args":[6,"MESSAGE sip:x SIP/2.0"]})"},
        {1201, [](Request& r) { r.mutable_requestopensipdialog()->set_isrequired(true); },
         R"({"class":"PrimitiveData<bool>","id":1201,"args":[true]})"},
        {1300, [](Request& r) { r.mutable_requestdeletetcpclientsocket()->set_handle(6); },
         R"({"class":"DeleteTcpClientSocket","id":1300,"args":[6]})"},
    };

    Daemon d;
    uint32_t token = 0x10000;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id);
        Request request;
        request.set_reqid(imsCommonStruc::Id(row.id));
        row.fill(request);
        d.send(request, ++token);
        Json seen = d.nextStackRequest();
        EXPECT_EQ(seen["token"], token);
        EXPECT_TRUE(containsJson(seen["record"], Json::parse(row.stackRecord)))
            << seen["record"].dump();

        Response expected;
        if (row.id == 1200) {
            d.respond(token, Json::parse(R"({"class":"SipDialogResponseData","id":1200,
                                             "fields":{"handle":6,"sipmessage":"SIP/2.0 200 OK","success":true}})"));
            expected.set_resid(imsCommonStruc::Id(1200));
            auto* b = expected.mutable_sipdialoggeneralresponse();
            b->set_handle(6);
            b->set_success(true);
            b->set_sipmessage("SIP/2.0 200 OK");
        } else {
            d.respond(token, generalAnswer(row.id));
            expected = generalExpected(row.id);
        }
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u);
        EXPECT_EQ(f.token, token);
        EXPECT_EQ(bytes(f.response()), bytes(expected));
    }
}

TEST(RegistrationEndToEnd, EveryNotificationReachesTheClient) {
    struct Row {
        const char* record;
        std::function<void(Notify&)> expected;
    };
    const std::vector<Row> rows = {
        {R"({"class":"RegiStatusData","id":10001,"fields":{"handle":6,"serviceList":["mmtel"],
            "regiType":1,"impuList":["sip:a@x","tel:+1"],"respCode":200,"respReason":"OK"}})",
         [](Notify& n) {
             auto* b = n.mutable_registrationstatus();
             b->set_handle(6);
             b->set_regitype(imsCommonStruc::RegiType(1));
             b->add_servicelist("mmtel");
             b->add_impulist("sip:a@x");
             b->add_impulist("tel:+1");
             b->set_respcode(200);
             b->set_respreason("OK");
             b->set_retryafter(0);
             b->set_ecmpmode(0);
         }},
        {R"({"class":"RegiStatusData","id":10023,"fields":{"handle":6,"respCode":0}})",
         [](Notify& n) {
             auto* b = n.mutable_registrationstatus();
             b->set_handle(6);
             b->set_regitype(imsCommonStruc::RegiType(0));
             b->set_respcode(0);
             b->set_respreason("");
             b->set_retryafter(0);
             b->set_ecmpmode(0);
         }},
        {R"({"class":"RegiAuth","id":10002,"fields":{"recvMng":1,"handle":6,"nonce":"abc"}})",
         [](Notify& n) {
             auto* b = n.mutable_registrationauth();
             b->set_handle(6);
             b->set_nonce("abc");
             b->set_recvmng(1);
         }},
        {R"({"class":"SipMessageData","id":10003,"fields":{"handle":6,"direction":1,"origin":1,"sipMessage":"BYE"}})",
         [](Notify& n) {
             auto* b = n.mutable_sipmessage();
             b->set_handle(6);
             b->set_direction(imsCommonStruc::SipDirection(1));
             b->set_origin(imsCommonStruc::SipOrigin(1));
             b->set_sipmessage("BYE");
         }},
        {R"({"class":"RegInfoData","id":10007,"fields":{"handle":6,"contacts":[
            {"uri":"sip:a@x","displayName":"A","state":2,"event":5}]}})",
         [](Notify& n) {
             auto* b = n.mutable_reginfochanged();
             b->set_handle(6);
             auto* c = b->add_contacts();
             c->set_uri("sip:a@x");
             c->set_state(imsCommonStruc::Notify_RegInfoChanged_State_TERMINATED);
             c->set_displayname("A");
             c->set_event(imsCommonStruc::Notify_RegInfoChanged_Event_DEACTIVATED);
         }},
        {R"({"class":"SubscribeStatusData","id":10013,"fields":{"handle":6,"respCode":200,"respReason":"OK"}})",
         [](Notify& n) {
             auto* b = n.mutable_subscribestatus();
             b->set_handle(6);
             b->set_respcode(200);
             b->set_respreason("OK");
         }},
        {R"({"class":"AlarmData","id":20001,"fields":{"id":3,"delay":1500}})",
         [](Notify& n) {
             n.mutable_alarmwakeup()->set_id(3);
             n.mutable_alarmwakeup()->set_delay(1500);
         }},
        {R"({"class":"PrimitiveData<int>","id":20002,"fields":{"value":3}})",
         [](Notify& n) { n.mutable_cancelalarm()->set_id(3); }},
        {R"({"class":"X509VerifyData","id":20006,"fields":{"certificates":["\u0030\u0082\u0001\u0000","ca"]}})",
         [](Notify& n) {
             n.mutable_x509certverifyrequest()->add_cert(std::string("\x30\x82\x01\x00", 4));
             n.mutable_x509certverifyrequest()->add_cert("ca");
         }},
        {R"({"class":"DnsResponseData","id":20007,"fields":{"hostname":"pcscf","ipAddrList":["10.0.0.10"],"port":5060,"handle":6}})",
         [](Notify& n) {
             auto* b = n.mutable_dnsresponse();
             b->set_handle(6);
             b->add_ipaddrlist("10.0.0.10");
             b->set_port(5060);
             b->set_hostname("pcscf");
         }},
        {R"({"class":"EcholocateData","id":20009,"fields":{"handle":6,"msgType":1,"id":"7","dir":"UL",
            "lossrate":"0.1","delay":"20","jitter":"3","measuredperiod":"5","nwstate":"LTE"}})",
         [](Notify& n) {
             auto* b = n.mutable_echolocatemsg();
             b->set_handle(6);
             b->set_msgtype(imsCommonStruc::ECHOLOCATE_TYPE_RTP);
             auto* r = b->mutable_echolocatertpdata();
             r->set_dir("UL");
             r->set_id("7");
             r->set_lossrate("0.1");
             r->set_delay("20");
             r->set_jitter("3");
             r->set_measuredperiod("5");
             r->set_nwstate("LTE");
         }},
        {R"({"class":"DumpMessageData","id":20010,"fields":{"tag":"T","value":"V","secure":true}})",
         [](Notify& n) {
             n.mutable_dumpmessage()->set_tag("T");
             n.mutable_dumpmessage()->set_value("V");
             n.mutable_dumpmessage()->set_secure(true);
         }},
    };

    Daemon d;
    for (const auto& row : rows) {
        Json record = Json::parse(row.record);
        SCOPED_TRACE(record["id"].get<int>());
        d.notify(record);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.token, 0u);
        Notify expected;
        expected.set_notifyid(imsCommonStruc::Id(record["id"].get<int>()));
        row.expected(expected);
        EXPECT_EQ(bytes(f.notify()), bytes(expected));
    }
}

TEST(RegistrationEndToEnd, AkaResponseNeverReachesAProductionLog) {
    struct Case {
        bool shipBuild;
        int logLevel;
        bool logged;
    } cases[] = {{false, 1, false}, {false, 2, true}, {true, 2, false}, {true, 5, false}};
    Daemon d;
    int n = 0;
    for (const auto& c : cases) {
        d.config({{"logLevel", c.logLevel}, {"shipBuild", c.shipBuild}});
        std::string secret = "aka-res-" + std::to_string(++n);
        Request r;
        r.set_reqid(imsCommonStruc::REQ_UPDATE_AKA_RESP);
        r.mutable_requestupdateakaresp()->set_akaresp(secret);
        d.send(r, 1);
        // The record carries the response whatever the log does.
        EXPECT_EQ(d.nextStackRequest()["record"]["args"][3], secret);
        EXPECT_EQ(d.log().find(secret) != std::string::npos, c.logged)
            << "shipBuild " << c.shipBuild << " logLevel " << c.logLevel;
    }
}
