// Common configuration (101) and user agent creation (102): the two requests
// whose records are built by many positional arguments and setters.
#include <gtest/gtest.h>

#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Request configRequest() {
    Request r;
    r.set_reqid(imsCommonStruc::REQ_UPDATE_COMMON_CONFIG);
    r.mutable_requestupdatecommonconfig();
    return r;
}

}  // namespace

TEST(CommonConfig, SectionsReachTheStackInTheirOwnOrderAndOnlyWhenSent) {
    struct Case {
        const char* name;
        Request request;
        const char* expected;
    };
    std::vector<Case> cases;

    cases.push_back({"no section at all", configRequest(),
                     R"({"class":"ConfigData","id":101,"args":[],"calls":[]})"});

    {
        Request r = configRequest();
        auto* body = r.mutable_requestupdatecommonconfig();
        // Filled in wire order; the stack wants XDM before Regi, Srvcc before Rcs.
        auto* regi = body->mutable_regiconfig();
        regi->set_imei("imei");
        regi->set_supported("supported");
        regi->set_privacy("privacy");
        auto* xdm = body->mutable_xdmconfig();
        xdm->set_enabled(true);
        xdm->set_httpusername("user");
        xdm->set_httppasswd("pw");
        xdm->set_xcaprooturi("root");
        xdm->set_authproxyserver("proxy");
        xdm->set_authproxyport(8080);
        xdm->set_bsfserver("bsf");
        xdm->set_bsfserverport(8443);
        xdm->set_useragent("ua");
        xdm->set_mno(imsCommonStruc::MNO(2));
        xdm->set_impu("impu");
        xdm->set_impi("impi");
        xdm->set_enablegba(false);
        auto* ss = body->mutable_ssconfig();
        ss->set_callwaiting(false);
        ss->set_supporttls(true);
        ss->set_ssmode(false);
        ss->set_sscbmode(true);
        ss->set_mediatype(5);
        ss->set_ipversion(6);
        ss->set_supportmultidns(true);
        ss->set_supportretry(false);
        ss->set_supportcpelement(true);
        ss->set_supportsselement(false);
        ss->set_supportsimservsretry(true);
        for (const auto& [k, v] : Pairs{{"b", "2"}, {"a", "1"}, {"b", "again"}}) {
            auto* p = ss->add_ruleid();
            p->set_key(k);
            p->set_value(v);
        }
        body->mutable_callconfig()->set_ttysessionrequired(true);
        auto* rcs = body->mutable_rcsconfig();
        rcs->set_rcsftchunksize(1);
        rcs->set_rcsishchunksize(2);
        rcs->set_confuri("conf");
        rcs->set_ismsrpcema(true);
        rcs->set_downloadspath("dl");
        rcs->set_isconfsubscribeenabled(false);
        rcs->set_isclosedgroupchat(true);
        rcs->set_exploderuri("exploder");
        rcs->set_pagermodesizelimit(9);
        for (const auto& [k, v] : Pairs{{"x", "first"}, {"", "empty key"}, {"x", "second"}}) {
            auto* p = body->mutable_featureconfig()->add_trellfeature();
            p->set_key(k);
            p->set_value(v);
        }
        body->mutable_srvccconfig()->set_version(3);
        cases.push_back({"every section, repeated keys", r, R"({
            "class":"ConfigData","id":101,"args":[],"calls":[
              ["SetXDMConfig",[true,"user","pw","root","proxy",8080,"bsf",8443,"ua",2,"impu","impi",false]],
              ["SetRegiConfig",["imei","supported","privacy"]],
              ["SetSSConfig",[false,true,false,true,5,6,true,false,true,false,true,{"a":"1","b":"2"}]],
              ["SetCallConfig",[true]],
              ["SetSrvccConfig",[3]],
              ["SetRcsConfig",[{"rcsFtChunkSize":1,"rcsIshChunkSize":2,"confUri":"conf",
                "isMsrpCema":true,"downloadsPath":"dl","isConfSubscribeEnabled":false,
                "isClosedGroupChat":true,"exploderUri":"exploder","pagerModeSizeLimit":9}]],
              ["SetFeatureConfig",[{"":"empty key","x":"first"}]]]})"});
    }

    {
        // Sections sent empty: every field reads as its schema default, two
        // of which are true.
        Request r = configRequest();
        auto* body = r.mutable_requestupdatecommonconfig();
        body->mutable_ssconfig();
        body->mutable_rcsconfig();
        body->mutable_featureconfig();
        cases.push_back({"empty sections", r, R"({
            "class":"ConfigData","id":101,"args":[],"calls":[
              ["SetSSConfig",[true,false,false,false,0,0,false,false,false,false,false,{}]],
              ["SetRcsConfig",[{"rcsFtChunkSize":0,"rcsIshChunkSize":0,"confUri":"",
                "isMsrpCema":false,"downloadsPath":"","isConfSubscribeEnabled":true,
                "isClosedGroupChat":false,"exploderUri":"","pagerModeSizeLimit":0}]],
              ["SetFeatureConfig",[{}]]]})"});
    }

    {
        Request r = configRequest();
        r.mutable_requestupdatecommonconfig()->mutable_xdmconfig()->set_authproxyport(0xFFFFFFFFu);
        r.mutable_requestupdatecommonconfig()->mutable_callconfig();
        cases.push_back({"port above 2^31 goes as an int", r, R"({
            "class":"ConfigData","id":101,"args":[],"calls":[
              ["SetXDMConfig",[false,"","","","",-1,"",0,"",0,"","",false]],
              ["SetCallConfig",[false]]]})"});
    }

    for (auto& c : cases) EXPECT_EQ(dispatchOne(c.request), Json::parse(c.expected)) << c.name;
}

TEST(CommonConfig, PasswordIsNotLogged) {
    Request r = configRequest();
    r.mutable_requestupdatecommonconfig()->mutable_xdmconfig()->set_httppasswd("s3cr3t-pw");
    LogCapture log;
    ASSERT_FALSE(dispatchOne(r).is_null());
    EXPECT_TRUE(log.contains("DispatchUpdateCommonConfig()"));
    EXPECT_FALSE(log.contains("s3cr3t-pw"));
}

namespace {

// Every field of the request set to a value that names it: strings their
// own name, numbers their field number, flags alternating along the
// stack's order, and the fields the stack does not take set as well.
Request fullCreation() {
    Request r;
    r.set_reqid(imsCommonStruc::REQ_UA_CREATION);
    auto* b = r.mutable_requestuacreation();
    b->set_interface("interface");
    b->set_pdn("pdn");
    b->set_impu("impu");
    b->set_impi("impi");
    b->set_domain("domain");
    b->set_issipoutbound(true);
    b->set_qparam(0xFFFFFFFFu);
    b->set_transtype("transType");
    b->set_isemergencysupport(false);
    b->set_isipsec(true);
    b->set_registeralgo("registerAlgo");
    b->set_prefid("prefId");
    b->set_remoteuritype("remoteUriType");
    b->set_authname("authName");
    b->set_password("password");
    b->set_encralg("encrAlg");
    b->set_authalg("authAlg");
    b->set_regdomain("regdomain");
    b->set_realm("realm");
    b->set_issipcompactheader(false);
    b->set_issigcomp(true);
    b->set_secureclientport(22);
    b->set_secureserverport(23);
    b->set_selfport(24);
    b->set_issubscriberegevent(true);
    b->set_useragent("userAgent");
    b->set_iskeepalive(true);
    b->set_isprecondenabled(false);
    b->set_isprecondinitialsendrecv(true);
    b->set_sessionexpires(-30);
    b->set_sessionrefresher("sessionRefresher");
    b->set_mno(imsCommonStruc::MNO(3));
    b->set_displayname("displayName");
    b->set_contactdisplayname("contactDisplayName");
    b->set_instanceid("instanceId");
    b->set_immsgtech("imMsgTech");
    b->set_timer1(37);
    b->set_timer2(38);
    b->set_timer4(39);
    b->set_timera(40);
    b->set_timerb(41);
    b->set_timerc(42);
    b->set_timerd(43);
    b->set_timere(44);
    b->set_timerf(45);
    b->set_timerg(46);
    b->set_timerh(47);
    b->set_timeri(48);
    b->set_timerj(49);
    b->set_timerk(50);
    b->set_issoftphoneenabled(false);
    b->set_msssize(52);
    b->set_sipmobility(53);
    b->set_minse(54);
    b->set_ringbacktimer(55);
    b->set_ringingtimer(56);
    b->set_isenablegruu(true);
    b->set_audioenginetype(59);
    b->set_curpani("curPani");
    b->set_netid(61);
    b->set_isvceconfigenabled(true);
    b->set_isgcfconfigenabled(false);
    b->add_servicelist("svc1");
    b->add_servicelist("svc2");
    b->add_featuretaglist(imsCommonStruc::FeatureTag(2));
    b->add_featuretaglist(imsCommonStruc::FeatureTag(0));
    b->add_featuretaglist(imsCommonStruc::FeatureTag(5));
    b->set_isnsdsserviceenabled(true);
    b->set_profileid(67);
    b->set_wifipreconditionenabled(false);
    b->set_timerts(0xFFFFFFFFu);
    b->set_ismsrpbearerused(true);
    b->set_subscribertimer(71);
    b->set_issubscribereg(true);
    b->set_usekeepalive(false);
    b->set_msrptranstype("msrpTransType");
    b->set_hostname("hostname");

    auto* m = b->mutable_mediaconfig();
    m->set_audioport(0xFFFFFFFFu);
    m->set_isamroctecalign(true);
    m->set_audiocodec("audioCodec");
    m->set_dtmfmode(4);
    m->set_audioas("audioAs");
    m->set_audiors("audioRs");
    m->set_audiorr("audioRr");
    m->set_amrmodechangecapability("amrModeChangeCapability");
    m->set_amrmaxred("amrMaxRed");
    m->set_amrmode("amrMode");
    m->set_amrwbmode("amrWbMode");
    m->set_amrpayload(12);
    m->set_amrbepayload(13);
    m->set_amrwbpayload(14);
    m->set_amrbewbpayload(15);
    m->set_dtmfpayload(16);
    m->set_dtmfwbpayload(17);
    m->set_ptime(20);
    m->set_maxtime(21);
    m->set_videocodec("videoCodec");
    m->set_videoport(23);
    m->set_framerate(24);
    m->set_displayformat("displayFormat");
    m->set_packetizationmode("packetizationMode");
    m->set_h264vgapayload(27);
    m->set_h264vgalpayload(28);
    m->set_h264qvgapayload(29);
    m->set_h264qvgalpayload(30);
    m->set_videoas(31);
    m->set_videors(32);
    m->set_videorr(33);
    m->set_localsendstrengthtag(imsCommonStruc::StrengthTag(1));
    m->set_localreceivedstrengthtag(imsCommonStruc::StrengthTag(1));
    m->set_remotesendstrengthtag(imsCommonStruc::StrengthTag(1));
    m->set_remotereceivedstrengthtag(imsCommonStruc::StrengthTag(1));
    m->set_audioavpf(true);
    m->set_audiosrtp(false);
    m->set_videoavpf(true);
    m->set_videosrtp(false);
    m->set_videocapabilities(true);
    m->set_enablescr(false);
    m->set_rtptimeout(0xFFFFFFFFu);
    m->set_rtcptimeout(45);
    m->set_h263qcifpayload(46);
    m->set_audiortcpxr(true);
    m->set_videortcpxr(false);
    m->set_enableevscodec(true);
    m->set_evsdiscontinuoustransmission("evsDiscontinuousTransmission");
    m->set_evsdtxrecv("evsDtxRecv");
    m->set_evsheaderfull("evsHeaderFull");
    m->set_evsmodeswitch("evsModeSwitch");
    m->set_evschannelsend("evsChannelSend");
    m->set_evschannelrecv("evsChannelRecv");
    m->set_evschannelawarereceive("evsChannelAwareReceive");
    m->set_evscodecmoderequest("evsCodecModeRequest");
    m->set_evsbitratesend("evsBitRateSend");
    m->set_evsbitratereceive("evsBitRateReceive");
    m->set_evsbandwidthsend("evsBandwidthSend");
    m->set_evsbandwidthreceive("evsBandwidthReceive");
    m->set_evspayload(62);
    m->set_evsdefaultbandwidth("evsDefaultBandwidth");
    m->set_evsdefaultbitrate("evsDefaultBitrate");
    m->set_h264cifpayload(65);
    m->set_h264ciflpayload(66);
    m->set_enablertcponactivecall(false);
    m->set_amropenpayload(68);
    m->set_enableavsync(true);
    return r;
}

// The stack's order. Numbers above 2^31 show the argument's type: an int
// argument turns them negative, an unsigned one keeps them.
const char* const kFullProfileArgs = R"([
    67, "interface", 61, "pdn", "impu", "impi", "password", "domain", true, -1,
    "transType", false, true, false, "encrAlg", "authAlg", "registerAlgo", "prefId",
    "remoteUriType", false, true, -30, 54, "sessionRefresher", 3, "userAgent", "displayName",
    "contactDisplayName", "instanceId", "realm", "imMsgTech", false, 52, 55, 56, 53, true, 59,
    "curPani", true, false, true, false, true, 71, true, false, "msrpTransType", "hostname",
    ["svc1", "svc2"], [2, 0, 5]])";
const char* const kFullTimers =
    R"(["SetTimer", [37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 4294967295]])";
const char* const kFullMedia = R"(["SetMediaConfig", [
    4294967295, true, "audioCodec", 4, "audioAs", "audioRs", "audioRr",
    "amrModeChangeCapability", "amrMaxRed", "amrMode", "amrWbMode",
    12, 13, 14, 15, 68, 16, 17, 20, 21,
    "videoCodec", 23, 24, "displayFormat", "packetizationMode",
    27, 28, 29, 30, 65, 66, 46, 31, 32, 33,
    true, false, true, false, true, false,
    -1, 45,
    true, false, true,
    "evsDiscontinuousTransmission", "evsDtxRecv", "evsHeaderFull", "evsModeSwitch",
    "evsChannelSend", "evsChannelRecv", "evsChannelAwareReceive", "evsCodecModeRequest",
    "evsBitRateSend", "evsBitRateReceive", "evsBandwidthSend", "evsBandwidthReceive",
    62, "evsDefaultBandwidth", "evsDefaultBitrate", false, true]])";

Json profile(const char* args, std::vector<const char*> calls) {
    Json j = Json::object();
    j["class"] = "UAProfileData";
    j["id"] = 102;
    j["args"] = Json::parse(args);
    j["calls"] = Json::array();
    for (const char* c : calls) j["calls"].push_back(Json::parse(c));
    return j;
}

}  // namespace

TEST(UACreation, EveryFieldLandsInItsPlace) {
    EXPECT_EQ(dispatchOne(fullCreation()), profile(kFullProfileArgs, {kFullTimers, kFullMedia}));
}

TEST(UACreation, MediaSettingsOnlyWhenSentAndTimersAlways) {
    Request noMedia = fullCreation();
    noMedia.mutable_requestuacreation()->clear_mediaconfig();
    EXPECT_EQ(dispatchOne(noMedia), profile(kFullProfileArgs, {kFullTimers}));

    // An empty media section is still a media section.
    Request emptyMedia = noMedia;
    emptyMedia.mutable_requestuacreation()->mutable_mediaconfig();
    Json record = dispatchOne(emptyMedia);
    ASSERT_EQ(record["calls"].size(), 2u);
    EXPECT_EQ(record["calls"][1][0], "SetMediaConfig");
    EXPECT_EQ(record["calls"][1][1].size(), 63u);
}

TEST(UACreation, AbsentFieldsTakeTheSchemaDefaults) {
    Request r;
    r.set_reqid(imsCommonStruc::REQ_UA_CREATION);
    Json record = dispatchOne(r);
    ASSERT_FALSE(record.is_null());
    const Json& args = record["args"];
    ASSERT_EQ(args.size(), 51u);
    EXPECT_EQ(args[19], true) << "isPrecondEnabled";
    EXPECT_EQ(args[21], -1) << "sessionExpires";
    EXPECT_EQ(args[22], 90) << "minse";
    EXPECT_EQ(args[49], Json::array()) << "serviceList";
    EXPECT_EQ(record["calls"], Json::parse(R"([["SetTimer",[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]]])"));
}
