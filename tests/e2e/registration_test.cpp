// Registration, supplementary services and SMS through the real daemon and
// socket: every request to its stack record and back to its response, every
// notification to the client, and the gate that keeps the AKA response out
// of a production log.
#include <gtest/gtest.h>

#include <functional>

#include "tests/handlers/registration/wire.h"
#include "tests/support/e2e.h"

using namespace velard_test;
using imsCommonStruc::Request;

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

Json up(const char* cls, int id, const char* fields) {
    return Json{{"class", cls}, {"id", id}, {"fields", Json::parse(fields)}};
}

// One request, its body as [envelope field number, [[field number, value],
// ...]]; the record the stack receives (keys left out are not compared); the
// stack's answer; and the Response the client gets after its resid, written
// as the body.
struct Row {
    int id;
    const char* request;  // null: no body
    const char* record;
    Json answer = nullptr;  // null: the general answer
    const char* expected = R"([2,[[1,6],[2,1],[3,4],[4,503],[5,"busy"]]])";
};

const char* const kGetInfo = R"([[1,11],[2,4],[3,"sip:me@x"]])";
// deleteRule has no place in the barring record, and must not take allow's.
const char* const kSetBarr =
    R"([57,[[1,true],[2,"r9"],[3,4],[4,2],[5,true],[6,false],[7,"sip:me@x"],[8,"sib"]]])";
const char* const kBarrAnswer = R"({"mServiceActivation":true,"mRuleId":"ocb","mCbType":2,
    "mSsStatus":[true],"mMediaType":[1,0],"mAllow":[false,true,false],"mSibTarget":"sib-9"})";
// Only incoming barring answers with the SIB target (7).
const char* const kIcbFields = R"([[1,true],[2,"ocb"],[3,2],[4,true],[5,1],[5,0],[6,false],
    [6,true],[6,false],[7,"sib-9"],[8,0],[9,""]])";
const char* const kOcbFields = R"([[1,true],[2,"ocb"],[3,2],[4,true],[5,1],[5,0],[6,false],
    [6,true],[6,false],[8,0],[9,""]])";
const char* const kFlagAnswer = R"({"mServiceActivation":true,"mError":403,"mErrorStr":"no"})";
const char* const kFlagFields = R"([[1,true],[2,403],[3,"no"]])";

std::string body(int envelope, const char* fields) {
    return "[" + std::to_string(envelope) + "," + fields + "]";
}

Json sipAnswer(const char* text) {
    Json answer = up("SipDialogResponseData", 1200, R"({"handle":6,"success":true})");
    answer["fields"]["sipmessage"] = text;
    return answer;
}

std::vector<Row> requestRows() {
    static const std::string getDiv = body(50, kGetInfo), getIcb = body(51, kGetInfo),
                             getOcb = body(52, kGetInfo), icb = body(11, kIcbFields),
                             ocb = body(12, kOcbFields), oip = body(14, kFlagFields),
                             oir = body(13, kFlagFields), cw = body(15, kFlagFields);
    return {
        {101, R"([2,[[8,[[1,2]]]]])",
         R"({"class":"ConfigData","id":101,"args":[],"calls":[["SetSrvccConfig",[2]]]})"},
        {102, R"([3,[[37,500],[69,9]]])",
         R"({"class":"UAProfileData","id":102,
             "calls":[["SetTimer",[500,0,0,0,0,0,0,0,0,0,0,0,0,0,9]]]})"},
        {103, R"([4,[[1,6]]])", R"({"class":"PrimitiveData<int>","id":103,"args":[6]})"},
        {104,
         R"([5,[[1,7],[2,"p2"],[2,"p1"],[3,5060],[4,"mmtel"],[5,3600],[6,"sip:a@x"],
              [6,"tel:+1"],[7,3],[7,1],[8,false],[9,"tp"],[10,"token"]]])",
         R"({"class":"RegiSetupData","id":104,"args":[7,["p2","p1"],5060,["mmtel"],3600,
             ["sip:a@x","tel:+1"],[3,1],false,["tp"],"token"]})"},
        // Optional fields absent: isExplicitDeregi is true by default.
        {104, R"([5,[[1,7]]])",
         R"({"class":"RegiSetupData","id":104,"args":[7,[],0,[],0,[],[],true,[],""]})"},
        {105, R"([6,[[1,6],[2,"RES"],[3,1]]])",
         R"({"class":"RegiAuth","id":105,"args":[1,6,"","RES"]})"},
        {106,
         R"([101,[[1,4],[2,"wlan0"],[3,"pcscf.example"],[4,"8.8.8.8"],[4,"1.1.1.1"],
                [5,"NAPTR"],[6,"udp"],[7,"ipv4"]]])",
         R"({"class":"DnsQueryData","id":106,"args":[4,"wlan0","pcscf.example","NAPTR","udp",
             "ipv4"],"members":{"dnsServers":["8.8.8.8","1.1.1.1"]}})"},
        {107, R"([7,[[1,6],[2,"tel:+1"]]])",
         R"({"class":"UpdatePreferredImpu","id":107,"args":[6,"tel:+1"]})"},
        {108, R"([8,[[1,6],[2,true]]])",
         R"({"class":"NetworkSuspended","id":108,"args":[6,true]})"},
        {109, R"([106,[[1,3],[2,4],[2,0],[2,2]]])",
         R"({"class":"PairData<int, std::vector<unsigned int>>","id":109,"args":[3,[4,0,2]]})"},
        {110, R"([300,[[1,6],[2,true]]])",
         R"({"class":"VceConfigData","id":110,"fields":{"handle":6,"vceConfig":true}})"},
        {600, R"([100,[[1,6],[2,"3GPP-E-UTRAN-FDD"]]])",
         R"({"class":"PaniData","id":600,"args":[6,"3GPP-E-UTRAN-FDD",""]})"},
        // Every field but a3, which goes as an empty string.
        {601,
         R"([117,[[1,3],[2,"lat"],[3,"lon"],[4,"alt"],[5,"acc"],[6,"prov"],[7,"ret"],[8,"srs"],
                [9,"uom"],[10,"os"],[11,"dev"],[12,"cc"],[13,"a1"],[15,"a6"],[16,"hno"],
                [17,"pc"],[18,"time"]]])",
         R"({"class":"GeolocationData","id":601,"args":[3,"lat","lon","alt","acc","prov","ret",
             "srs","uom","os","dev","cc","a1","","a6","hno","pc","time"]})"},
        {901, R"([12001,[[1,3]]])", R"({"class":"PrimitiveData<int>","id":901,"args":[3]})"},
        // The client's reason stays behind.
        {902, R"([12002,[[2,"expired"]]])",
         R"({"class":"PrimitiveData<bool>","id":902,"args":[false]})"},
        // The answer's message is left out when empty; handle and success never are.
        {1200, R"([400,[[1,3],[2,"OPTIONS\r\n\u0000A"]]])",
         R"({"class":"SendSipData","id":1200,"args":[3,"OPTIONS\r\n\u0000A"]})",
         sipAnswer("SIP/2.0 200 OK"), R"([90,[[1,6],[2,true],[3,"SIP/2.0 200 OK"]]])"},
        {1200, nullptr, R"({"class":"SendSipData","id":1200,"args":[0,""]})", sipAnswer(""),
         R"([90,[[1,6],[2,true]]])"},
        {1201, nullptr, R"({"class":"PrimitiveData<bool>","id":1201,"args":[false]})"},
        {1300, R"([9,[[1,4294967295]]])",
         R"({"class":"DeleteTcpClientSocket","id":1300,"args":[-1]})"},
        // 9 is outside the enumeration and passes as it stands.
        {301, getDiv.c_str(), R"({"class":"SSGetDivInfo","id":301,"args":[11,4,"sip:me@x"]})",
         up("SSDivInfoResult", 301, R"({"mServiceActivation":true,"mNoReplyTimer":20,
             "mRuleId":"cfnr","mCfType":3,"mSsStatus":[true,false,true],"mFwdElm":[6,2,6,9],
             "mTarget":["tel:+1","tel:+2"],"mMediaType":[1]})"),
         R"([10,[[1,true],[2,20],[3,"cfnr"],[4,3],[5,true],[5,false],[5,true],[6,6],[6,2],[6,6],
              [6,9],[7,"tel:+1"],[7,"tel:+2"],[8,1],[9,0],[10,""]]])"},
        {302, getIcb.c_str(), R"({"class":"SSGetBarrInfo","id":302,"args":[11,4,"sip:me@x"]})",
         up("SSBarrInfoResult", 302, kBarrAnswer), icb.c_str()},
        {303, getOcb.c_str(), R"({"class":"SSGetBarrInfo","id":303,"args":[11,4,"sip:me@x"]})",
         up("SSBarrInfoResult", 303, kBarrAnswer), ocb.c_str()},
        {304, R"([53,[[1,"a"]]])", R"({"class":"SSInfo","id":304,"args":["a"]})",
         up("SSFlagInfoResult", 304, kFlagAnswer), oip.c_str()},
        {305, R"([54,[[1,"b"]]])", R"({"class":"SSInfo","id":305,"args":["b"]})",
         up("SSFlagInfoResult", 305, kFlagAnswer), oir.c_str()},
        {310, R"([55,[[1,"c"]]])", R"({"class":"SSInfo","id":310,"args":["c"]})",
         up("SSFlagInfoResult", 310, kFlagAnswer), cw.c_str()},
        {306,
         R"([56,[[1,true],[2,25],[3,"cfb"],[4,1],[5,3],[5,3],[5,0],[6,"tel:+100"],[7,5],
               [8,true],[9,"sip:me@x"]]])",
         R"({"class":"SSSetDivInfo","id":306,
             "args":[true,25,"cfb",1,[3,3,0],"tel:+100",5,"sip:me@x",true]})"},
        {307, kSetBarr,
         R"({"class":"SSSetBarrInfo","id":307,"args":[true,"r9",4,2,false,"sip:me@x","sib"]})"},
        {308, kSetBarr,
         R"({"class":"SSSetBarrInfo","id":308,"args":[true,"r9",4,2,false,"sip:me@x","sib"]})"},
        {309, R"([58,[[1,true],[2,"d"]]])",
         R"({"class":"SSSetOIRInfo","id":309,"args":[true,"d"]})"},
        {311, R"([59,[[1,true],[2,"e"]]])",
         R"({"class":"SSSetCommWaitInfo","id":311,"args":[true,"e"]})"},
        {312, R"([350,[[1,"k1"]]])", R"({"class":"SSGbaKeyData","id":312,"args":["k1"]})"},
        {313, R"([351,[[1,"10.0.0.2"],[1,"10.0.0.1"],[1,"10.0.0.2"],[2,"rmnet1"]]])",
         R"({"class":"SSGetDns","id":313,"args":[["10.0.0.2","10.0.0.1","10.0.0.2"],"rmnet1"]})"},
        {314, R"([352,[[1,"f"]]])", R"({"class":"SSInfo","id":314,"args":["f"]})"},
        {315, R"([118,[[1,true]]])", R"({"class":"PrimitiveData<bool>","id":315,"args":[true]})"},
        {316, R"([353,[[1,true]]])", R"({"class":"PrimitiveData<bool>","id":316,"args":[true]})"},
        // The body has zero bytes, and contentLen goes as given.
        {401,
         R"([60,[[1,6],[2,"tel:+4912"],[3,"sip:me@x"],[4,"application"],[5,"vnd.3gpp.sms"],
               [6,99],[7,"\u0000A\u0000\n"],[8,""]]])",
         R"({"class":"SendMessageData","id":401,"args":[6,"tel:+4912","sip:me@x","application",
             "vnd.3gpp.sms",99,"\u0000A\u0000\n",""]})",
         up("SmsResponseData", 401,
            R"({"mHandle":6,"mStatusCode":503,"mCallId":"c1","mRetryAfter":30})"),
         R"([40,[[1,6],[2,503],[3,"c1"],[4,""],[5,30]]])"},
        {402, R"([61,[[1,6],[2,"c2"]]])", R"({"class":"RpAckResponse","id":402,"args":[6,"c2"]})"},
        {403, R"([62,[[1,6],[2,"c3"],[3,2]]])",
         R"({"class":"SmsReceiveResponse","id":403,"args":[6,"c3",2]})"},
    };
}

}  // namespace

TEST(RegistrationEndToEnd, EveryRequestReachesTheStackAndItsAnswerTheClient) {
    Daemon d;
    uint32_t token = 0xFFFFFF00u;
    for (const auto& row : requestRows()) {
        SCOPED_TRACE(row.id);
        Json fields = Json::array({{1, row.id}});
        if (row.request) fields.push_back(Json::parse(row.request));
        Request request;
        request.ParsePartialFromString(wire(fields));
        d.send(request, ++token);
        Json seen = d.nextStackRequest();
        EXPECT_EQ(seen["token"], token);
        EXPECT_TRUE(containsJson(seen["record"], Json::parse(row.record))) << seen["record"].dump();

        const Json general = up("GeneralResponseData", row.id,
                                R"({"handle":6,"result":1,"reason":4,"errorStr":"busy",
                                    "sipError":503})");
        d.respond(token, row.answer.is_null() ? general : row.answer);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u);
        EXPECT_EQ(f.token, token);
        // Whole messages: a field set in the wrong body, or present where it
        // must be absent, changes the bytes.
        EXPECT_EQ(f.payload, wire(Json::array({{1, row.id}, Json::parse(row.expected)})));
    }
}

// Each notification and the Notify the client gets after its notifyid, as in
// the request table.
TEST(RegistrationEndToEnd, EveryNotificationReachesTheClient) {
    const struct {
        const char* record;
        const char* expected;
    } rows[] = {
        {R"({"class":"RegiStatusData","id":10001,"fields":{"handle":-2,"serviceList":["mmtel",
            "smsip"],"regiType":1,"impuList":["sip:a@x"],"respCode":403,"respReason":"Forbidden",
            "retryAfter":30,"ecmpMode":2}})",
         R"([2,[[1,-2],[2,1],[3,"mmtel"],[3,"smsip"],[4,"sip:a@x"],[5,403],[6,"Forbidden"],
              [7,30],[8,2]]])"},
        // Optional fields are sent even when 0 or empty.
        {R"({"class":"RegiStatusData","id":10023,"fields":{"handle":5}})",
         R"([2,[[1,5],[2,0],[5,0],[6,""],[7,0],[8,0]]])"},
        // The second string stays behind.
        {R"({"class":"RegiAuth","id":10002,"fields":{"recvMng":2,"handle":7,"nonce":"n",
            "akaResp":"x"}})",
         R"([3,[[1,7],[2,"n"],[3,2]]])"},
        {R"({"class":"SubscribeStatusData","id":10013,"fields":{"handle":4,"respCode":0}})",
         R"([4,[[1,4],[2,0],[3,""]]])"},
        {R"({"class":"RegInfoData","id":10007,"fields":{"handle":3,"contacts":[
            {"uri":"sip:b@x","displayName":"Bee","state":1,"event":3},
            {"uri":"sip:a@x","displayName":"","state":0,"event":0}]}})",
         R"([23,[[1,3],[2,[[1,"sip:b@x"],[2,1],[3,"Bee"],[4,3]]],
                      [2,[[1,"sip:a@x"],[2,0],[3,""],[4,0]]]]])"},
        // Numbers outside the enumerations pass unchanged.
        {R"({"class":"SipMessageData","id":10003,"fields":{"handle":3,"direction":7,
            "origin":-1,"sipMessage":"BYE"}})",
         R"([100,[[1,3],[2,7],[3,-1],[4,"BYE"]]])"},
        // The alarm's own id, not the record's.
        {R"({"class":"AlarmData","id":20001,"fields":{"id":5,"delay":30000}})",
         R"([12001,[[1,5],[2,30000]]])"},
        {R"({"class":"PrimitiveData<int>","id":20002,"fields":{"value":3}})", R"([12002,[[1,3]]])"},
        // The chain in order, bytes whole, a hole kept as an empty entry.
        {R"({"class":"X509VerifyData","id":20006,"fields":{"certificates":[
            "\u0000A\u0000\n","ca1",null,"root"]}})",
         R"([12004,[[1,"\u0000A\u0000\n"],[1,"ca1"],[1,""],[1,"root"]]])"},
        {R"({"class":"DnsResponseData","id":20007,"fields":{"hostname":"pcscf",
            "ipAddrList":["10.0.0.2","10.0.0.1"],"handle":4}})",
         R"([12005,[[1,4],[2,"10.0.0.2"],[2,"10.0.0.1"],[3,0],[4,"pcscf"]]])"},
        // A signal report sends reason and contents even when empty.
        {R"({"class":"EcholocateData","id":20009,"fields":{"handle":3,"msgType":0,"origin":"o",
            "callid":"c","cseq":"1","line1":"INVITE","from":"f","to":"t","id":"rtp","dir":"rtp"}})",
         R"([101,[[1,3],[2,0],[3,[[1,"o"],[2,"INVITE"],[3,"c"],[4,"1"],[5,"t"],[6,"f"],[7,""],
                                  [8,""]]]]])"},
        // Any kind but 0 is an RTP report.
        {R"({"class":"EcholocateData","id":20009,"fields":{"handle":3,"msgType":7,
            "origin":"signal","id":"i","dir":"d","lossrate":"l","delay":"de","jitter":"j",
            "measuredperiod":"m","nwstate":"n"}})",
         R"([101,[[1,3],[2,1],[4,[[1,"d"],[2,"i"],[3,"l"],[4,"de"],[5,"j"],[6,"m"],
                                  [7,"n"]]]]])"},
        {R"({"class":"DumpMessageData","id":20010,"fields":{"tag":"REGI","value":"state=1"}})",
         R"([12007,[[1,"REGI"],[2,"state=1"],[3,false]]])"},
        {R"({"class":"XCapMessageData","id":10018,"fields":{"mHandle":6,"mDirection":1,
            "mXcapMessage":"GET"}})",
         R"([99,[[1,6],[2,1],[3,"GET"]]])"},
        // All six strings are sent, empty or not.
        {R"({"class":"SSGenKeyData","id":10019,"fields":{"mGbatype":"gba-me","mCk":"ck",
            "mIk":"ik","mLifetime":"3600","mBtid":"b@x"}})",
         R"([300,[[1,"gba-me"],[2,"ck"],[3,"ik"],[4,""],[5,"3600"],[6,"b@x"]]])"},
        {R"({"class":"SmsRpAckData","id":20003,"fields":{"mCallId":"c4",
            "mAckCode":"\u0000A\u0000\n","mAckLen":4,"mContentType":"application"}})",
         R"([40,[[1,"c4"],[2,"\u0000A\u0000\n"],[3,4],[4,"application"],[5,""]]])"},
        {R"({"class":"ReceiveSmsData","id":20004,"fields":{"mCallId":"c5",
            "mContent":"\u0000A\u0000\n","mContentSubType":"vnd.3gpp.sms","mLen":4,
            "mScUri":"tel:+4912","mHandle":6}})",
         R"([41,[[1,6],[2,"c5"],[3,"\u0000A\u0000\n"],[4,""],[5,"vnd.3gpp.sms"],[6,4],
              [7,"tel:+4912"]]])"},
    };
    Daemon d;
    for (const auto& row : rows) {
        const Json record = Json::parse(row.record);
        const int id = record["id"].get<int>();
        SCOPED_TRACE(id);
        d.notify(record);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.token, 0u);
        EXPECT_EQ(f.payload, wire(Json::array({{1, id}, Json::parse(row.expected)})));
    }
}

TEST(RegistrationEndToEnd, AkaResponseNeverReachesAProductionLog) {
    const struct {
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
