// Supplementary services and SMS over the real socket: every request and
// notification id of the two families, each as one row of a table.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/e2e.h"

using namespace velard_test;
using imsCommonStruc::Notify;
using imsCommonStruc::Request;
using imsCommonStruc::Response;

namespace {

// Bytes a C string would cut short, and their JSON (Latin-1) form.
const std::string kBinary("\x00\x41\x00\xff\x80\n", 6);
const Json kBinaryJson = Json::parse(R"("\u0000A\u0000\u00ff\u0080\n")");

using Fill = std::function<void(Request&)>;
using Expect = std::function<void(Response&)>;

Json up(const char* cls, int id, Json fields) {
    return Json{{"class", cls}, {"id", id}, {"fields", std::move(fields)}};
}

// One request: the record the stack receives, the stack's answer, and the
// whole Response the client gets. Rows without an answer take the general one.
struct Row {
    int id;
    Fill fill;
    const char* record;       // as the stack receives it
    Json answer = nullptr;    // null: the general answer below
    Expect expect = nullptr;  // the whole Response, resid included
};

const Json kGeneralFields = {{"handle", 6}, {"result", 1}, {"reason", 4}, {"errorStr", ""}};

void general(Response& r) {
    auto* b = r.mutable_generalresponse();
    b->set_handle(6);
    b->set_result(imsCommonStruc::Result(1));
    b->set_reason(imsCommonStruc::GeneralReason(4));
}

void getInfo(Request::RequestGetSSInfo* b) {
    b->set_sstype(11);
    b->set_mediatype(imsCommonStruc::Media(4));
    b->set_impu("sip:me@x");
}

void barr(Request& r) {
    auto* b = r.mutable_requestsetssbarrinfo();
    b->set_serviceactivation(true);
    b->set_ruleid("r9");
    b->set_cbtype(4);
    b->set_mediatype(imsCommonStruc::Media(2));
    b->set_deleterule(true);
    b->set_allow(true);
    b->set_impu("sip:me@x");
    b->set_sibtarget("sib");
}

const Json kBarrAnswer = {
    {"mServiceActivation", true}, {"mRuleId", "ocb"},     {"mCbType", 2},
    {"mSsStatus", {true}},        {"mMediaType", {1, 0}}, {"mAllow", {false, true, false}},
    {"mSibTarget", "sib-9"},      {"mError", 0}};

void barrBody(Response::ResponseSSbarrInfo* b, bool withSib) {
    b->set_serviceactivation(true);
    b->set_ruleid("ocb");
    b->set_cbtype(2);
    b->add_ssstatus(true);
    for (int m : {1, 0}) b->add_mediatype(imsCommonStruc::Media(m));
    for (bool a : {false, true, false}) b->add_allow(a);
    if (withSib) b->set_sibtarget("sib-9");
    b->set_error(0);
    b->set_errorstr("");
}

const Json kFlagAnswer = {{"mServiceActivation", true}, {"mError", 403}, {"mErrorStr", "no"}};

template <class Body>
void flagBody(Body* b) {
    b->set_serviceactivation(true);
    b->set_error(403);
    b->set_errorstr("no");
}

std::vector<Row> requestRows() {
    return {
        {301, [](Request& r) { getInfo(r.mutable_requestgetssdivinfo()); },
         R"({"class":"SSGetDivInfo","id":301,"args":[11,4,"sip:me@x"]})",
         up("SSDivInfoResult", 301,
            {{"mServiceActivation", true},
             {"mNoReplyTimer", 20},
             {"mRuleId", "cfnr"},
             {"mCfType", 3},
             {"mSsStatus", {true, false, true}},
             {"mFwdElm", {6, 2, 6, 9}},
             {"mTarget", {"tel:+1", "tel:+2"}},
             {"mMediaType", {1}},
             {"mError", 0}}),
         [](Response& r) {
             auto* b = r.mutable_responsessdivinfo();
             b->set_serviceactivation(true);
             b->set_noreplytimer(20);
             b->set_ruleid("cfnr");
             b->set_cftype(3);
             for (bool s : {true, false, true}) b->add_ssstatus(s);
             // 9 is outside the enumeration and passes as it stands.
             for (int f : {6, 2, 6, 9}) b->add_fwdelm(imsCommonStruc::SSForwardTo(f));
             for (const char* t : {"tel:+1", "tel:+2"}) b->add_target(t);
             b->add_mediatype(imsCommonStruc::Media(1));
             b->set_error(0);
             b->set_errorstr("");
         }},
        {302, [](Request& r) { getInfo(r.mutable_requestgetssicbinfo()); },
         R"({"class":"SSGetBarrInfo","id":302,"args":[11,4,"sip:me@x"]})",
         up("SSBarrInfoResult", 302, kBarrAnswer),
         [](Response& r) { barrBody(r.mutable_responsessicbinfo(), true); }},
        {303, [](Request& r) { getInfo(r.mutable_requestgetssocbinfo()); },
         R"({"class":"SSGetBarrInfo","id":303,"args":[11,4,"sip:me@x"]})",
         up("SSBarrInfoResult", 303, kBarrAnswer),
         [](Response& r) { barrBody(r.mutable_responsessocbinfo(), false); }},
        {304, [](Request& r) { r.mutable_requestgetssoipinfo()->set_impu("a"); },
         R"({"class":"SSInfo","id":304,"args":["a"]})", up("SSFlagInfoResult", 304, kFlagAnswer),
         [](Response& r) { flagBody(r.mutable_responsessgetoipinfo()); }},
        {305, [](Request& r) { r.mutable_requestgetssoirinfo()->set_impu("b"); },
         R"({"class":"SSInfo","id":305,"args":["b"]})", up("SSFlagInfoResult", 305, kFlagAnswer),
         [](Response& r) { flagBody(r.mutable_responsessgetoirinfo()); }},
        {310, [](Request& r) { r.mutable_requestgetsscwinfo()->set_impu("c"); },
         R"({"class":"SSInfo","id":310,"args":["c"]})", up("SSFlagInfoResult", 310, kFlagAnswer),
         [](Response& r) { flagBody(r.mutable_responsessgetcwinfo()); }},
        {306,
         [](Request& r) {
             auto* b = r.mutable_requestsetssdivinfo();
             b->set_serviceactivation(true);
             b->set_noreplytimer(25);
             b->set_ruleid("cfb");
             b->set_cftype(1);
             for (int v : {3, 3, 0}) b->add_fwdelm(imsCommonStruc::SSForwardTo(v));
             b->set_target("tel:+100");
             b->set_mediatype(imsCommonStruc::Media(5));
             b->set_deleterule(true);
             b->set_impu("sip:me@x");
         },
         R"({"class":"SSSetDivInfo","id":306,
             "args":[true,25,"cfb",1,[3,3,0],"tel:+100",5,"sip:me@x",true]})"},
        {307, barr,
         R"({"class":"SSSetBarrInfo","id":307,"args":[true,"r9",4,2,true,"sip:me@x","sib"]})"},
        {308, barr,
         R"({"class":"SSSetBarrInfo","id":308,"args":[true,"r9",4,2,true,"sip:me@x","sib"]})"},
        {309,
         [](Request& r) {
             r.mutable_requestsetssoirinfo()->set_serviceactivation(true);
             r.mutable_requestsetssoirinfo()->set_impu("d");
         },
         R"({"class":"SSSetOIRInfo","id":309,"args":[true,"d"]})"},
        {311,
         [](Request& r) {
             r.mutable_requestsetsscwinfo()->set_serviceactivation(true);
             r.mutable_requestsetsscwinfo()->set_impu("e");
         },
         R"({"class":"SSSetCommWaitInfo","id":311,"args":[true,"e"]})"},
        {312, [](Request& r) { r.mutable_requestssupdategbakey()->set_gbakey("k1"); },
         R"({"class":"SSGbaKeyData","id":312,"args":["k1"]})"},
        {313,
         [](Request& r) {
             auto* b = r.mutable_requestssupdatedns();
             for (const char* s : {"10.0.0.2", "10.0.0.1", "10.0.0.2"}) b->add_dnslist(s);
             b->set_iface("rmnet1");
         },
         R"({"class":"SSGetDns","id":313,"args":[["10.0.0.2","10.0.0.1","10.0.0.2"],"rmnet1"]})"},
        {314, [](Request& r) { r.mutable_requestgetsssdinfo()->set_impu("f"); },
         R"({"class":"SSInfo","id":314,"args":["f"]})"},
        {315, [](Request& r) { r.mutable_requestssupdaterouteresult()->set_result(true); },
         R"({"class":"PrimitiveData<bool>","id":315,"args":[true]})"},
        {316, [](Request& r) { r.mutable_requestssresetconfigure()->set_reset(true); },
         R"({"class":"PrimitiveData<bool>","id":316,"args":[true]})"},
        {401,
         [](Request& r) {
             auto* b = r.mutable_requestsendmsg();
             b->set_handle(6);
             b->set_smsc("tel:+4912");
             b->set_localuri("sip:me@x");
             b->set_contenttype("application");
             b->set_contentsubtype("vnd.3gpp.sms");
             b->set_contentlen(6);
             b->set_contentbody(kBinary);
             b->set_inreplyto("");
         },
         R"({"class":"SendMessageData","id":401,"args":[6,"tel:+4912","sip:me@x","application",
             "vnd.3gpp.sms",6,"\u0000A\u0000\u00ff\u0080\n",""]})",
         up("SmsResponseData", 401,
            {{"mHandle", 6}, {"mStatusCode", 503}, {"mCallId", "c1"}, {"mRetryAfter", 30}}),
         [](Response& r) {
             auto* b = r.mutable_sendsmsresp();
             b->set_handle(6);
             b->set_statuscode(503);
             b->set_callid("c1");
             b->set_errstr("");
             b->set_retryafter(30);
         }},
        {402,
         [](Request& r) {
             r.mutable_requestsendrpackresp()->set_handle(6);
             r.mutable_requestsendrpackresp()->set_callid("c2");
         },
         R"({"class":"RpAckResponse","id":402,"args":[6,"c2"]})"},
        {403,
         [](Request& r) {
             r.mutable_requestreceivesmsresp()->set_handle(6);
             r.mutable_requestreceivesmsresp()->set_callid("c3");
             r.mutable_requestreceivesmsresp()->set_status(2);
         },
         R"({"class":"SmsReceiveResponse","id":403,"args":[6,"c3",2]})"},
    };
}

}  // namespace

TEST(SsSmsEndToEnd, EveryRequestReachesTheStackAndItsAnswerTheClient) {
    Daemon d;
    for (const auto& row : requestRows()) {
        Request request;
        request.set_reqid(imsCommonStruc::Id(row.id));
        row.fill(request);
        d.send(request, 1000 + row.id);
        Json got = d.nextStackRequest();
        EXPECT_EQ(got["token"], 1000 + row.id) << row.id;
        EXPECT_EQ(got["record"], Json::parse(row.record)) << row.id;

        d.respond(1000 + row.id, row.answer.is_null()
                                     ? up("GeneralResponseData", row.id, kGeneralFields)
                                     : row.answer);
        Response expected;
        expected.set_resid(imsCommonStruc::Id(row.id));
        (row.expect ? row.expect : general)(expected);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u) << row.id;
        EXPECT_EQ(f.token, 1000u + row.id) << row.id;
        // Whole messages: a field set in the wrong body, or present where it
        // must be absent, changes the bytes.
        EXPECT_EQ(f.payload, expected.SerializeAsString()) << row.id;
    }
}

TEST(SsSmsEndToEnd, EveryNotificationReachesTheClient) {
    struct NotifyRow {
        Json record;
        std::function<void(Notify&)> expect;
    };
    Json ack = {{"mCallId", "c4"},
                {"mAckCode", kBinaryJson},
                {"mAckLen", 6},
                {"mContentType", "application"},
                {"mContentSubType", "vnd.3gpp.sms"}};
    Json sms = {{"mCallId", "c5"},
                {"mContent", kBinaryJson},
                {"mContentType", "application"},
                {"mContentSubType", "vnd.3gpp.sms"},
                {"mLen", 6},
                {"mScUri", "tel:+4912"},
                {"mHandle", 6}};
    const NotifyRow rows[] = {
        {up("XCapMessageData", 10018, {{"mHandle", 6}, {"mDirection", 1}, {"mXcapMessage", "GET"}}),
         [](Notify& n) {
             auto* b = n.mutable_xcapmessage();
             b->set_handle(6);
             b->set_direction(imsCommonStruc::XCapDirection(1));
             b->set_xcapmessage("GET");
         }},
        {up("SSGenKeyData", 10019,
            {{"mGbatype", "gba-me"},
             {"mCk", "ck"},
             {"mIk", "ik"},
             {"mLifetime", "3600"},
             {"mBtid", "b@x"}}),
         [](Notify& n) {
             auto* b = n.mutable_ssgetgbakey();
             b->set_gbatype("gba-me");
             b->set_ck("ck");
             b->set_ik("ik");
             b->set_nonce("");
             b->set_lifetime("3600");
             b->set_btid("b@x");
         }},
        {up("SmsRpAckData", 20003, ack),
         [](Notify& n) {
             auto* b = n.mutable_smsrpack();
             b->set_callid("c4");
             b->set_ackcode(kBinary);
             b->set_acklen(6);
             b->set_contenttype("application");
             b->set_contentsubtype("vnd.3gpp.sms");
         }},
        {up("ReceiveSmsData", 20004, sms),
         [](Notify& n) {
             auto* b = n.mutable_smsnoti();
             b->set_handle(6);
             b->set_callid("c5");
             b->set_content(kBinary);
             b->set_contenttype("application");
             b->set_contentsubtype("vnd.3gpp.sms");
             b->set_len(6);
             b->set_scuri("tel:+4912");
         }},
    };
    Daemon d;
    for (const auto& row : rows) {
        d.notify(row.record);
        Notify expected;
        expected.set_notifyid(imsCommonStruc::Id(row.record["id"].get<int>()));
        row.expect(expected);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.payload, expected.SerializeAsString()) << row.record["id"];
    }
}
