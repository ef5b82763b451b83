// The family's smaller requests: what reaches the stack, in which order,
// with which defaults, and what stays behind.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

namespace {

struct Case {
    const char* name;
    int reqid;
    std::function<void(Request&)> fill;
    const char* expected;
};

// Restores the stack's log level when a test changes it.
struct LogLevel {
    explicit LogLevel(int level) : saved(logLevel) { logLevel = level; }
    ~LogLevel() { logLevel = saved; }
    int saved;
};

}  // namespace

TEST(RegistrationRequests, ReachTheStackAsTheirRecords) {
    const std::vector<Case> cases = {
        {"104 every field", 104,
         [](Request& r) {
             auto* b = r.mutable_requestregistration();
             b->set_handle(7);
             b->add_pcscfaddrlist("p2");
             b->add_pcscfaddrlist("p1");
             b->set_pcscfport(5060);
             b->add_servicelist("mmtel");
             b->set_regexp(3600);
             b->add_impulist("sip:a@x");
             b->add_impulist("tel:+1");
             b->add_featuretaglist(imsCommonStruc::FeatureTag(3));
             b->add_featuretaglist(imsCommonStruc::FeatureTag(1));
             b->set_isexplicitderegi(false);
             b->add_thirdpartyfeaturelist("tp");
             b->set_accesstoken("token");
         },
         R"({"class":"RegiSetupData","id":104,"args":[7,["p2","p1"],5060,["mmtel"],3600,
             ["sip:a@x","tel:+1"],[3,1],false,["tp"],"token"]})"},
        {"104 optional fields absent", 104,
         [](Request& r) { r.mutable_requestregistration()->set_handle(7); },
         R"({"class":"RegiSetupData","id":104,"args":[7,[],0,[],0,[],[],true,[],""]})"},
        {"104 no body", 104, [](Request&) {},
         R"({"class":"RegiSetupData","id":104,"args":[0,[],0,[],0,[],[],true,[],""]})"},
        {"105", 105,
         [](Request& r) {
             auto* b = r.mutable_requestupdateakaresp();
             b->set_handle(7);
             b->set_akaresp("RES");
             b->set_recvmng(2);
         },
         R"({"class":"RegiAuth","id":105,"args":[2,7,"","RES"]})"},
        {"107", 107,
         [](Request& r) {
             r.mutable_requestsetpreferredimpu()->set_handle(3);
             r.mutable_requestsetpreferredimpu()->set_impu("sip:pref@x");
         },
         R"({"class":"UpdatePreferredImpu","id":107,"args":[3,"sip:pref@x"]})"},
        {"108", 108,
         [](Request& r) {
             r.mutable_requestnetworksuspended()->set_handle(3);
             r.mutable_requestnetworksuspended()->set_state(true);
         },
         R"({"class":"NetworkSuspended","id":108,"args":[3,true]})"},
        {"109 tags in wire order", 109,
         [](Request& r) {
             auto* b = r.mutable_requestupdatefeaturetag();
             b->set_handle(3);
             for (int t : {4, 0, 2}) b->add_featuretaglist(imsCommonStruc::FeatureTag(t));
         },
         R"({"class":"PairData<int, std::vector<unsigned int>>","id":109,"args":[3,[4,0,2]]})"},
        {"106 servers in wire order", 106,
         [](Request& r) {
             auto* b = r.mutable_requestdnsquery();
             b->set_handle(4);
             b->set_interface("wlan0");
             b->set_hostname("pcscf.example");
             b->add_dnsserverlist("8.8.8.8");
             b->add_dnsserverlist("1.1.1.1");
             b->set_type("NAPTR");
             b->set_transport("udp");
             b->set_family("ipv4");
         },
         R"({"class":"DnsQueryData","id":106,"args":[4,"wlan0","pcscf.example","NAPTR","udp","ipv4"],
             "members":{"dnsServers":["8.8.8.8","1.1.1.1"]}})"},
        {"110", 110,
         [](Request& r) {
             r.mutable_requestupdatevceconfig()->set_handle(3);
             r.mutable_requestupdatevceconfig()->set_vceconfig(true);
         },
         R"({"class":"VceConfigData","id":110,"fields":{"handle":3,"vceConfig":true}})"},
        {"600 without lastPani", 600,
         [](Request& r) {
             r.mutable_requestupdatepani()->set_handle(3);
             r.mutable_requestupdatepani()->set_pani("3GPP-E-UTRAN");
         },
         R"({"class":"PaniData","id":600,"args":[3,"3GPP-E-UTRAN",""]})"},
        {"600 with lastPani", 600,
         [](Request& r) {
             r.mutable_requestupdatepani()->set_handle(3);
             r.mutable_requestupdatepani()->set_pani("now");
             r.mutable_requestupdatepani()->set_lastpani("before");
         },
         R"({"class":"PaniData","id":600,"args":[3,"now","before"]})"},
        {"601 handle and latitude only", 601,
         [](Request& r) {
             r.mutable_requestupdategeolocation()->set_handle(3);
             r.mutable_requestupdategeolocation()->set_latitude("51.5");
         },
         R"({"class":"GeolocationData","id":601,
             "args":[3,"51.5","","","","","","","","","","","","","","","",""]})"},
        {"601 every field", 601,
         [](Request& r) {
             auto* b = r.mutable_requestupdategeolocation();
             b->set_handle(3);
             b->set_latitude("lat");
             b->set_longitude("lon");
             b->set_altitude("alt");
             b->set_accuracy("acc");
             b->set_providertype("prov");
             b->set_retentionexpires("ret");
             b->set_srsname("srs");
             b->set_radiusuom("uom");
             b->set_os("os");
             b->set_deviceid("dev");
             b->set_country("cc");
             b->set_a1("a1");
             b->set_a3("a3");
             b->set_a6("a6");
             b->set_hno("hno");
             b->set_pc("pc");
             b->set_locationtime("time");
         },
         R"({"class":"GeolocationData","id":601,"args":[3,"lat","lon","alt","acc","prov","ret",
             "srs","uom","os","dev","cc","a1","a3","a6","hno","pc","time"]})"},
        {"901", 901, [](Request& r) { r.mutable_requestalarmwakeup()->set_id(12); },
         R"({"class":"PrimitiveData<int>","id":901,"args":[12]})"},
        {"902 false, reason stays behind", 902,
         [](Request& r) {
             r.mutable_requestx509certverifyresult()->set_result(false);
             r.mutable_requestx509certverifyresult()->set_reason("expired");
         },
         R"({"class":"PrimitiveData<bool>","id":902,"args":[false]})"},
        {"1200", 1200,
         [](Request& r) {
             r.mutable_requestsendsip()->set_handle(3);
             r.mutable_requestsendsip()->set_sipmessage(std::string("OPTIONS sip:x SIP/2.0\r\n") +
                                                        '\0' + "\xff");
         },
         R"({"class":"SendSipData","id":1200,"args":[3,"OPTIONS sip:x SIP/2.0\r\n\u0000\u00ff"]})"},
        {"1201 no body", 1201, [](Request&) {},
         R"({"class":"PrimitiveData<bool>","id":1201,"args":[false]})"},
        {"1300", 1300,
         [](Request& r) { r.mutable_requestdeletetcpclientsocket()->set_handle(0xFFFFFFFFu); },
         R"({"class":"DeleteTcpClientSocket","id":1300,"args":[-1]})"},
    };
    for (const auto& c : cases) {
        Request r;
        r.set_reqid(imsCommonStruc::Id(c.reqid));
        c.fill(r);
        EXPECT_EQ(dispatchOne(r, 0xFFFFFFFFu), Json::parse(c.expected)) << c.name;
    }
}

TEST(RegistrationRequests, AkaResponseIsLoggedOnlyFromLogLevelTwo) {
    // The production-build side of this gate runs end to end, where the
    // simulated stack's build flag can be switched.
    for (int level : {0, 1, 2, 3}) {
        LogLevel set(level);
        Request r;
        r.set_reqid(imsCommonStruc::REQ_UPDATE_AKA_RESP);
        r.mutable_requestupdateakaresp()->set_akaresp("aka-res-1234");
        LogCapture log;
        ASSERT_FALSE(dispatchOne(r).is_null());
        EXPECT_EQ(log.contains("D [IMS6.0]: DispatchUpdateAkaResp() aka-res-1234"),
                  level >= 2 && !IsShipBuild())
            << "logLevel " << level;
    }
}

TEST(RegistrationRequests, CertificateVerdictIsLoggedWithTheName) {
    for (bool result : {false, true}) {
        Request r;
        r.set_reqid(imsCommonStruc::REQ_X509_CERT_VERIFY_RESULT);
        r.mutable_requestx509certverifyresult()->set_result(result);
        LogCapture log;
        dispatchOne(r);
        EXPECT_TRUE(log.contains(std::string("I [IMS6.0]: DispatchX509CertVerifyResult() result ") +
                                 (result ? "1" : "0")));
    }
}
