// Common configuration (101) and user agent creation (102): the requests
// whose records are built by many positional arguments and setters.
#include <gtest/gtest.h>

#include "tests/handlers/registration/wire.h"
#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

namespace {

Request commonConfig(const char* sections) {
    Request r;
    r.set_reqid(imsCommonStruc::REQ_UPDATE_COMMON_CONFIG);
    fillWire(r.mutable_requestupdatecommonconfig(), sections);
    return r;
}

}  // namespace

TEST(CommonConfig, SectionsReachTheStackInTheirOwnOrderAndOnlyWhenSent) {
    const struct {
        const char* name;
        const char* sections;
        const char* expected;
    } cases[] = {
        {"no section at all", "[]", R"({"class":"ConfigData","id":101,"args":[],"calls":[]})"},
        // Wire order regi, xdm, ss, call, rcs, feature, srvcc; the stack's
        // is xdm, regi, ss, call, srvcc, rcs, feature. Repeated keys keep
        // their first value; a port above 2^31 goes as a negative int.
        {"every section", R"([
            [1,[[1,"imei"],[2,"supported"],[3,"privacy"]]],
            [2,[[1,true],[2,"user"],[3,"s3cr3t-pw"],[4,"root"],[5,"proxy"],[6,4294967295],
                [7,"bsf"],[8,8443],[9,"ua"],[10,2],[11,"impu"],[12,"impi"],[13,false]]],
            [4,[[1,false],[2,true],[3,false],[4,true],[5,5],[6,6],[7,true],[8,false],[9,true],
                [10,false],[11,true],[12,[[1,"b"],[2,"2"]]],[12,[[1,"a"],[2,"1"]]],
                [12,[[1,"b"],[2,"again"]]]]],
            [5,[[1,true]]],
            [6,[[1,1],[2,2],[3,"conf"],[4,true],[5,"dl"],[6,false],[7,true],[8,"exploder"],[9,9]]],
            [7,[[1,[[1,"x"],[2,"first"]]],[1,[[2,"no key"]]],[1,[[1,"x"],[2,"second"]]]]],
            [8,[[1,3]]]])",
         R"({"class":"ConfigData","id":101,"args":[],"calls":[
              ["SetXDMConfig",[true,"user","s3cr3t-pw","root","proxy",-1,"bsf",8443,"ua",2,
                "impu","impi",false]],
              ["SetRegiConfig",["imei","supported","privacy"]],
              ["SetSSConfig",[false,true,false,true,5,6,true,false,true,false,true,
                {"a":"1","b":"2"}]],
              ["SetCallConfig",[true]],
              ["SetSrvccConfig",[3]],
              ["SetRcsConfig",[{"rcsFtChunkSize":1,"rcsIshChunkSize":2,"confUri":"conf",
                "isMsrpCema":true,"downloadsPath":"dl","isConfSubscribeEnabled":false,
                "isClosedGroupChat":true,"exploderUri":"exploder","pagerModeSizeLimit":9}]],
              ["SetFeatureConfig",[{"":"no key","x":"first"}]]]})"},
        // Sections sent empty: every field reads as its schema default, two
        // of which are true.
        {"empty sections", "[[4,[]],[6,[]],[7,[]]]",
         R"({"class":"ConfigData","id":101,"args":[],"calls":[
              ["SetSSConfig",[true,false,false,false,0,0,false,false,false,false,false,{}]],
              ["SetRcsConfig",[{"rcsFtChunkSize":0,"rcsIshChunkSize":0,"confUri":"",
                "isMsrpCema":false,"downloadsPath":"","isConfSubscribeEnabled":true,
                "isClosedGroupChat":false,"exploderUri":"","pagerModeSizeLimit":0}]],
              ["SetFeatureConfig",[{}]]]})"},
    };
    for (const auto& c : cases) {
        LogCapture log;
        EXPECT_EQ(dispatchOne(commonConfig(c.sections)), Json::parse(c.expected)) << c.name;
        EXPECT_FALSE(log.contains("s3cr3t-pw")) << "the XCAP password in the log";
    }
}

namespace {

// Every field of the request set, those the stack does not take as well:
// strings to their field's name, numbers mostly to their field number,
// flags alternating along the stack's order. Numbers above 2^31 show the
// argument's type: an int argument turns them negative.
const char* const kCreation = R"([
    [1,"interface"],[2,"pdn"],[3,"impu"],[4,"impi"],[5,"domain"],[6,true],[7,4294967295],
    [8,"transType"],[9,false],[10,true],[11,"registerAlgo"],[12,"prefId"],[13,"remoteUriType"],
    [14,"authName"],[15,"password"],[16,"encrAlg"],[17,"authAlg"],[18,"regdomain"],[19,"realm"],
    [20,false],[21,true],[22,22],[23,23],[24,24],[25,true],[26,"userAgent"],[27,true],[28,false],
    [29,true],[31,"sessionRefresher"],[32,3],[33,"displayName"],[34,"contactDisplayName"],
    [35,"instanceId"],[36,"imMsgTech"],[37,37],[38,38],[39,39],[40,40],[41,41],[42,42],[43,43],
    [44,44],[45,45],[46,46],[47,47],[48,48],[49,49],[50,50],[51,false],[52,52],[53,53],[54,54],
    [55,55],[56,56],[57,true],[59,59],[60,"curPani"],[61,61],[62,true],[63,false],[64,"svc1"],
    [64,"svc2"],[65,2],[65,0],[65,5],[66,true],[67,67],[68,false],[69,4294967295],[70,true],
    [71,71],[72,true],[73,false],[74,"msrpTransType"],[75,"hostname"]])";
const char* const kMedia = R"([
    [1,4294967295],[2,true],[3,"audioCodec"],[4,4],[5,"audioAs"],[6,"audioRs"],[7,"audioRr"],
    [8,"amrModeChangeCapability"],[9,"amrMaxRed"],[10,"amrMode"],[11,"amrWbMode"],[12,12],
    [13,13],[14,14],[15,15],[16,16],[17,17],[20,20],[21,21],[22,"videoCodec"],[23,23],[24,24],
    [25,"displayFormat"],[26,"packetizationMode"],[27,27],[28,28],[29,29],[30,30],[31,31],
    [32,32],[33,33],[34,1],[35,1],[36,1],[37,1],[38,true],[39,false],[40,true],[41,false],
    [42,true],[43,false],[44,4294967295],[45,45],[46,46],[47,true],[48,false],[49,true],
    [50,"evsDiscontinuousTransmission"],[51,"evsDtxRecv"],[52,"evsHeaderFull"],
    [53,"evsModeSwitch"],[54,"evsChannelSend"],[55,"evsChannelRecv"],
    [56,"evsChannelAwareReceive"],[57,"evsCodecModeRequest"],[58,"evsBitRateSend"],
    [59,"evsBitRateReceive"],[60,"evsBandwidthSend"],[61,"evsBandwidthReceive"],[62,62],
    [63,"evsDefaultBandwidth"],[64,"evsDefaultBitrate"],[65,65],[66,66],[67,false],[68,68],
    [69,true]])";

// What the stack receives from kCreation, in its order.
const char* const kProfileArgs = R"([
    67, "interface", 61, "pdn", "impu", "impi", "password", "domain", true, -1,
    "transType", false, true, false, "encrAlg", "authAlg", "registerAlgo", "prefId",
    "remoteUriType", false, true, -30, 54, "sessionRefresher", 3, "userAgent", "displayName",
    "contactDisplayName", "instanceId", "realm", "imMsgTech", false, 52, 55, 56, 53, true, 59,
    "curPani", true, false, true, false, true, 71, true, false, "msrpTransType", "hostname",
    ["svc1", "svc2"], [2, 0, 5]])";
const char* const kTimers =
    R"(["SetTimer", [37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 4294967295]])";
const char* const kMediaCall = R"(["SetMediaConfig", [
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

Request creation(const char* media) {
    Request r;
    r.set_reqid(imsCommonStruc::REQ_UA_CREATION);
    auto* b = r.mutable_requestuacreation();
    fillWire(b, kCreation);
    b->set_sessionexpires(-30);
    if (media) fillWire(b->mutable_mediaconfig(), media);
    return r;
}

Json profile(const char* args, std::vector<const char*> calls) {
    Json j = {{"class", "UAProfileData"}, {"id", 102}, {"args", Json::parse(args)}};
    j["calls"] = Json::array();
    for (const char* c : calls) j["calls"].push_back(Json::parse(c));
    return j;
}

}  // namespace

TEST(UACreation, EveryFieldLandsInItsPlaceAndMediaOnlyWhenSent) {
    EXPECT_EQ(dispatchOne(creation(kMedia)), profile(kProfileArgs, {kTimers, kMediaCall}));
    EXPECT_EQ(dispatchOne(creation(nullptr)), profile(kProfileArgs, {kTimers}));
    // An empty media section is still a media section.
    Json record = dispatchOne(creation("[]"));
    ASSERT_EQ(record["calls"].size(), 2u);
    EXPECT_EQ(record["calls"][1][1].size(), 63u);
}

TEST(UACreation, AbsentFieldsTakeTheSchemaDefaults) {
    Request r;
    r.set_reqid(imsCommonStruc::REQ_UA_CREATION);
    // isPrecondEnabled true, sessionExpires -1, minse 90.
    EXPECT_EQ(dispatchOne(r), profile(R"([0,"",0,"","","","","",false,0,"",false,false,false,"",
        "","","","",true,false,-1,90,"",0,"","","","","","",false,0,0,0,0,false,0,"",false,false,
        false,false,false,0,false,false,"","",[],[]])",
                                      {"[\"SetTimer\",[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]]"}));
}
