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

// An entry of a repeated field, or empty when there is none.
std::string at(const google::protobuf::RepeatedPtrField<std::string>& list, int i) {
    return i < list.size() ? list.Get(i) : std::string();
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
    // The translations themselves are checked in process; here each id must
    // reach its own handler and come out as a frame with its own body.
    struct Row {
        const char* record;
        std::function<std::string(const Notify&)> read;
        const char* expected;
    };
    const std::vector<Row> rows = {
        {R"({"class":"RegiStatusData","id":10001,"fields":{"impuList":["sip:a@x","tel:+1"]}})",
         [](const Notify& n) { return at(n.registrationstatus().impulist(), 1); }, "tel:+1"},
        {R"({"class":"RegiStatusData","id":10023,"fields":{"respReason":"pani"}})",
         [](const Notify& n) { return n.registrationstatus().respreason(); }, "pani"},
        {R"({"class":"RegiAuth","id":10002,"fields":{"nonce":"abc","akaResp":"unread"}})",
         [](const Notify& n) { return n.registrationauth().nonce(); }, "abc"},
        {R"({"class":"SipMessageData","id":10003,"fields":{"sipMessage":"BYE"}})",
         [](const Notify& n) { return n.sipmessage().sipmessage(); }, "BYE"},
        {R"({"class":"RegInfoData","id":10007,"fields":{"contacts":[{"uri":"sip:a@x"}]}})",
         [](const Notify& n) {
             return n.reginfochanged().contacts_size() == 1 ? n.reginfochanged().contacts(0).uri()
                                                            : "";
         },
         "sip:a@x"},
        {R"({"class":"SubscribeStatusData","id":10013,"fields":{"respReason":"OK"}})",
         [](const Notify& n) { return n.subscribestatus().respreason(); }, "OK"},
        {R"({"class":"AlarmData","id":20001,"fields":{"id":3,"delay":1500}})",
         [](const Notify& n) { return std::to_string(n.alarmwakeup().delay()); }, "1500"},
        {R"({"class":"PrimitiveData<int>","id":20002,"fields":{"value":3}})",
         [](const Notify& n) { return std::to_string(n.cancelalarm().id()); }, "3"},
        {R"({"class":"X509VerifyData","id":20006,"fields":{"certificates":["leaf","ca"]}})",
         [](const Notify& n) { return at(n.x509certverifyrequest().cert(), 1); }, "ca"},
        {R"({"class":"DnsResponseData","id":20007,"fields":{"hostname":"pcscf"}})",
         [](const Notify& n) { return n.dnsresponse().hostname(); }, "pcscf"},
        {R"({"class":"EcholocateData","id":20009,"fields":{"msgType":1,"nwstate":"LTE"}})",
         [](const Notify& n) { return n.echolocatemsg().echolocatertpdata().nwstate(); }, "LTE"},
        {R"({"class":"DumpMessageData","id":20010,"fields":{"tag":"T"}})",
         [](const Notify& n) { return n.dumpmessage().tag(); }, "T"},
    };

    Daemon d;
    for (const auto& row : rows) {
        Json record = Json::parse(row.record);
        const int id = record["id"].get<int>();
        SCOPED_TRACE(id);
        d.notify(record);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.token, 0u);
        Notify n = f.notify();
        EXPECT_EQ(n.notifyid(), id);
        EXPECT_EQ(row.read(n), row.expected);
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
