// The call family over the real socket: every request id to its stack record
// and back as a framed response, every notification id to its Notify frame.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

using namespace velard_test;
using imsCommonStruc::Notify;
using imsCommonStruc::Request;

namespace {

struct RequestRow {
    int id;
    std::function<void(Request&)> fill;
    const char* record;  // as the stack receives it
    bool callResponse;   // answered with CallResponseData, else GeneralResponseData
};

const std::vector<RequestRow>& requestRows() {
    static const std::vector<RequestRow> rows = {
        {201,
         [](Request& r) {
             auto* b = r.mutable_requestmakecall();
             b->set_handle(10);
             b->set_peeruri("sip:b@x");
             b->add_ecscflist("e1");
             b->set_ecscfport(5060);
         },
         R"({"class":"CallSetupData","id":201,"args":[10,"sip:b@x","","","","",0,0,0,0,null,"","",
             {},"",""],"members":{"mEcscfList":["e1"],"mEcscfPort":5060}})",
         true},
        {202, [](Request& r) { r.mutable_requestendcall()->set_session(7); },
         R"({"class":"CallEndData","id":202,"fields":{"mSession":7,"mReason":null}})", true},
        {203, [](Request& r) { r.mutable_requestholdcall()->set_session(7); },
         R"({"class":"CallSessionId","id":203,"args":[7],"calls":[]})", true},
        {204, [](Request& r) { r.mutable_requestresumecall()->set_session(7); },
         R"({"class":"CallSessionId","id":204,"args":[7],"calls":[]})", true},
        {205, [](Request& r) { r.mutable_requestacceptcall()->set_session(7); },
         R"({"class":"CallAcceptData","id":205,"args":[7,0]})", true},
        {206, [](Request& r) { r.mutable_requestupdatecall()->set_session(7); },
         R"({"class":"CallUpdateData","id":206,"fields":{"mSession":7,"mAction":0,"mCodecType":0,
             "mCause":0,"mReasonText":""}})",
         true},
        {207, [](Request& r) { r.mutable_requestsenddtmf()->set_code(1); },
         R"({"class":"CallSendDtmf","id":207,"fields":{"mHandle":0,"mSession":0,"mCode":1}})",
         false},
        {209, [](Request& r) { r.mutable_requestmakeconfcall()->add_participants("sip:p@x"); },
         R"({"class":"ConfCallSetupData","id":209,"args":[0,"",0,0,"","","","","","",[],["sip:p@x"],
             {}]})",
         true},
        {212, [](Request& r) { r.mutable_requesttransfercall()->set_targeturi("sip:t@x"); },
         R"({"class":"CallTransferData","id":212,"fields":{"mHandle":0,"mSession":0,"mExtraText":"",
             "mTargetUri":"sip:t@x"}})",
         false},
        {213, [](Request& r) { r.mutable_requestaccepttransfercall()->set_accept(true); },
         R"({"class":"AcceptTransferData","id":213,"fields":{"mSession":0,"mAccept":true,
             "mStatusCode":0,"mReasonPhrase":""}})",
         false},
        {214, [](Request& r) { r.mutable_requestrejectcall()->set_statuscode(603); },
         R"({"class":"CallRejectData","id":214,"fields":{"mSession":0,"mStatusCode":603,
             "mReasonPhrase":""}})",
         true},
        {215, [](Request& r) { r.mutable_requestupdateconfcall()->set_participant("sip:p@x"); },
         R"({"class":"ConfCallUpdateSession","id":215,"args":[0,0,0,"sip:p@x"]})", false},
        {216, [](Request& r) { r.mutable_requestmodifycalltype()->set_newtype(2); },
         R"({"class":"ModifyCallTypeData","id":216,"args":[0,0,2]})", true},
        {217, [](Request& r) { r.mutable_requestreplymodifycalltype()->set_reptype(2); },
         R"({"class":"ReplyModifyCallType","id":217,"fields":{"mSession":0,"mReqType":0,
             "mCurType":0,"mRepType":2}})",
         true},
        {218,
         [](Request& r) {
             auto* pair =
                 r.mutable_requestprogressincomingcall()->mutable_extraheader()->add_pair();
             pair->set_key("P-Early-Media");
             pair->set_value("supported");
         },
         R"({"class":"CallSessionId","id":218,"args":[0],
             "calls":[["setExtraHeader",[{"P-Early-Media":"supported"}]]]})",
         true},
        {219, [](Request& r) { r.mutable_requestholdvideo()->set_session(7); },
         R"({"class":"CallSessionId","id":219,"args":[7],"calls":[]})", true},
        {220, [](Request& r) { r.mutable_requestresumevideo()->set_session(7); },
         R"({"class":"CallSessionId","id":220,"args":[7],"calls":[]})", true},
        {221, [](Request& r) { r.mutable_requestrejectmodifycalltype()->set_reason(3); },
         R"({"class":"RejectModifyCallType","id":221,"fields":{"mSession":0,"mReason":3}})", true},
        {222, [](Request& r) { r.mutable_requestmakeconfcall()->set_confuri("sip:c@x"); },
         R"({"class":"ConfCallSetupData","id":222,"args":[0,"sip:c@x",0,0,"","","","","","",[],[],
             {}]})",
         true},
        {223, [](Request& r) { r.mutable_requeststartcamera()->set_camera(1); },
         R"({"class":"StartCamera","id":223,"args":[0,1]})", false},
        {224, [](Request& r) { r.mutable_requestpullingcall()->set_callid("cid"); },
         R"({"class":"CallPullingData","id":224,"fields":{"mHandle":0,"mPullingUri":"",
             "mTargetUri":"","mOrigUri":"","mCallType":0,"mCodec":0,"mExtraValue":0,
             "mAudioDirection":0,"mVideoDirection":0,"mIsVideoPortZero":false,"mCallId":"cid",
             "mLocalTag":"","mRemoteTag":"","mMdmnExtNumber":""}})",
         true},
        {225, [](Request& r) { r.mutable_requestupdateaudiointerface()->set_mode("earpiece"); },
         R"({"class":"AudioInterfaceData","id":225,"fields":{"mHandle":0,"mMode":"earpiece"}})",
         false},
        {226, [](Request&) {}, R"({"class":"StopCamera","id":226,"args":[]})", false},
        {227, [](Request& r) { r.mutable_requestcanceltransfercall()->set_session(7); },
         R"({"class":"CancelCallTransferData","id":227,"fields":{"mHandle":0,"mSession":7}})",
         false},
        {228, [](Request& r) { r.mutable_requestpublishdialog()->set_expiretime(3600); },
         R"({"class":"CallPublishData","id":228,"fields":{"mHandle":0,"mOrigUri":"","mDispName":"",
             "mXmlBody":"","mExpireTime":3600}})",
         false},
        {229,
         [](Request& r) {
             auto* c = r.mutable_requestsendinfo()->mutable_additionalcontents();
             c->set_mimetype("application/dtmf-relay");
             c->set_contents("Signal=5");
         },
         R"({"class":"CallSendInfo","id":229,"args":[0,0,0,
             {"mimeType":"application/dtmf-relay","contents":"Signal=5"}]})",
         false},
    };
    return rows;
}

Request requestOf(const RequestRow& row) {
    Request r;
    r.set_reqid(imsCommonStruc::Id(row.id));
    row.fill(r);
    return r;
}

}  // namespace

TEST(CallEndToEnd, RequestsReachTheStackAndTheirAnswersTheClient) {
    Daemon d;
    uint32_t token = 0x80000000u;
    for (const auto& row : requestRows()) {
        token++;
        d.send(requestOf(row), token);
        Json req = d.nextStackRequest();
        EXPECT_EQ(req["token"], token) << row.id;
        EXPECT_EQ(req["record"], Json::parse(row.record)) << row.id;

        Json answer = row.callResponse
                          ? Json{{"class", "CallResponseData"},
                                 {"id", row.id},
                                 {"fields",
                                  {{"mHandle", 10},
                                   {"mSession", 7},
                                   {"mResult", 1},
                                   {"mReason", 1},
                                   {"mSipCallId", "call-" + std::to_string(row.id)}}}}
                          : Json{{"class", "GeneralResponseData"},
                                 {"id", row.id},
                                 {"fields", {{"handle", 10}, {"result", 1}, {"reason", 2}}}};
        d.respond(token, answer);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u) << row.id;
        EXPECT_EQ(f.token, token) << row.id;
        auto response = f.response();
        EXPECT_EQ(response.resid(), row.id);
        if (row.callResponse) {
            ASSERT_TRUE(response.has_callresponse()) << row.id;
            EXPECT_EQ(response.callresponse().handle(), 10) << row.id;
            EXPECT_EQ(response.callresponse().session(), 7) << row.id;
            EXPECT_EQ(response.callresponse().result(), 1) << row.id;
            EXPECT_EQ(response.callresponse().reason(), 1) << row.id;
            EXPECT_EQ(response.callresponse().sipcallid(), "call-" + std::to_string(row.id));
        } else {
            ASSERT_TRUE(response.has_generalresponse()) << row.id;
            EXPECT_EQ(response.generalresponse().handle(), 10u) << row.id;
            EXPECT_EQ(response.generalresponse().reason(), 2) << row.id;
        }
    }
    // The rows without a handler body reach neither the stack nor the client.
    for (int id : {208, 210, 211}) {
        Request r;
        r.set_reqid(imsCommonStruc::Id(id));
        d.send(r, 1);
    }
    EXPECT_TRUE(d.expectNoStackRequest(100));
    EXPECT_TRUE(d.expectNoFrame(50));
}

TEST(CallEndToEnd, AutoModeAnswersCallRequestsAtCallLevel) {
    Daemon::Options o;
    o.controlled = false;
    Daemon d(o);
    uint32_t token = 0;
    for (const auto& row : requestRows()) {
        Request r = requestOf(row);
        d.send(r, ++token);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.token, token) << row.id;
        auto response = f.response();
        EXPECT_EQ(response.resid(), row.id);
        EXPECT_EQ(response.has_callresponse(), row.callResponse) << row.id;
        EXPECT_EQ(response.has_generalresponse(), !row.callResponse) << row.id;
        if (row.callResponse) {
            EXPECT_EQ(response.callresponse().result(), 0) << row.id;
            EXPECT_FALSE(response.callresponse().has_sipcallid()) << row.id;
        }
        // The answer names the user agent and the call of its request.
        if (row.id == 201) {
            EXPECT_EQ(response.callresponse().handle(), 10);
        }
        if (row.id == 202 || row.id == 203) {
            EXPECT_EQ(response.callresponse().session(), 7);
        }
    }
}

namespace {

struct NotifyRow {
    std::string record;
    std::function<void(const Notify&)> check;
};

const char* const kDialogBody = R"({"mimeType":"application/dialog-info+xml","contents":"<d/>"})";

std::vector<NotifyRow> notifyRows() {
    return {
        {R"({"class":"CallStatusData","id":10004,"fields":{"mSession":2,"mState":17,
            "mAdditionalContents":{"mimeType":"application/sdp","contents":"v=0"}}})",
         [](const Notify& n) {
             EXPECT_EQ(n.callstatus().session(), 2u);
             EXPECT_EQ(n.callstatus().state(), 17);
             EXPECT_TRUE(n.callstatus().has_reasonphrase());
             EXPECT_EQ(n.callstatus().additionalcontents().rawcontents(), "v=0");
         }},
        {R"({"class":"IncomingCallData","id":10005,"fields":{"mSession":2,"mPeerUri":"sip:a@x"}})",
         [](const Notify& n) {
             EXPECT_EQ(n.incomingcall().peeruri(), "sip:a@x");
             EXPECT_TRUE(n.incomingcall().has_replaces());
             EXPECT_FALSE(n.incomingcall().has_referredby());
             EXPECT_FALSE(n.incomingcall().has_replacingsession());
         }},
        {R"({"class":"ConfCallChangedData","id":10006,"fields":{"mSession":2,"mEvent":2,
            "mParticipants":[{"mParticipantId":1,"mUri":"sip:p@x","mStatus":5,"mSessionId":3}]}})",
         [](const Notify& n) {
             ASSERT_EQ(n.confcallchanged().participants_size(), 1);
             const auto& p = n.confcallchanged().participants(0);
             EXPECT_EQ(p.uri(), "sip:p@x");
             EXPECT_EQ(p.status(), 5);
             EXPECT_EQ(p.participantid(), 1u);
             EXPECT_EQ(p.sessionid(), 3u);
             EXPECT_FALSE(p.has_aor());
         }},
        {R"({"class":"ReferReceivedData","id":10008,"fields":{"mHandle":1,"mReferorUri":"sip:r@x",
            "mTargetUri":"sip:t@x"}})",
         [](const Notify& n) {
             EXPECT_EQ(n.referreceived().referoruri(), "sip:r@x");
             EXPECT_EQ(n.referreceived().targeturi(), "sip:t@x");
         }},
        {R"({"class":"ReferStatusData","id":10009,"fields":{"mSession":2,"mStatusCode":200}})",
         [](const Notify& n) { EXPECT_EQ(n.referstatus().statuscode(), 200u); }},
        {R"({"class":"RouteTableData","id":10010,"fields":{"mHandle":1,"mOperation":1,
            "mAddress":"10.0.0.1"}})",
         [](const Notify& n) {
             EXPECT_EQ(n.updateroutetable().operation(), 1);
             EXPECT_EQ(n.updateroutetable().address(), "10.0.0.1");
         }},
        {R"({"class":"ModifyCallData","id":10011,"fields":{"mSession":2,"mOldType":1,"mNewType":2}})",
         [](const Notify& n) {
             EXPECT_EQ(n.modifycalldata().oldtype(), 1u);
             EXPECT_EQ(n.modifycalldata().newtype(), 2u);
         }},
        {R"({"class":"CdpnInfoData","id":10012,"fields":{"mCalledParyNumber":"+1555"}})",
         [](const Notify& n) { EXPECT_EQ(n.cdpninfo().calledpartynumber(), "+1555"); }},
        {R"({"class":"ModifyVideoData","id":10014,"fields":{"mSession":2,"mDirection":3,
            "mIsHeldCall":true}})",
         [](const Notify& n) { EXPECT_TRUE(n.modifyvideodata().isheldcall()); }},
        {R"({"class":"VideoEventData","id":10015,"fields":{"mSession":2,"mEvent":4}})",
         [](const Notify& n) { EXPECT_EQ(n.notifyvideoeventdata().event(), 4u); }},
        {R"({"class":"DedicatedBearerData","id":10016,"fields":{"mQci":1,"mBearerState":2}})",
         [](const Notify& n) {
             EXPECT_EQ(n.dedicatedbearerevent().qci(), 1u);
             EXPECT_EQ(n.dedicatedbearerevent().bearerstate(), 2);
         }},
        {R"({"class":"RrcConnectionData","id":10017,"fields":{"mEvent":2}})",
         [](const Notify& n) { EXPECT_EQ(n.rrcconnectionevent().event(), 2); }},
        {R"({"class":"DtmfEventData","id":10021,"fields":{"mEvent":9,"mDuration":100}})",
         [](const Notify& n) {
             EXPECT_EQ(n.dtmfparamdata().event(), 9u);
             EXPECT_EQ(n.dtmfparamdata().duration(), 100u);
         }},
        {R"({"class":"RtpLossRateData","id":10022,"fields":{"mInterval":5,"mLossRate":0.5,
            "mJitter":20.25}})",
         [](const Notify& n) {
             EXPECT_EQ(n.rtplossratenoti().lossrate(), 0.5f);
             EXPECT_EQ(n.rtplossratenoti().jitter(), 20.25f);
         }},
        {std::string(
             R"({"class":"DialogEventData","id":20005,"fields":{"mHandle":1,"mContents":)") +
             kDialogBody + "}}",
         [](const Notify& n) {
             EXPECT_EQ(n.dialogevent().additionalcontents().contents(), "<d/>");
             EXPECT_FALSE(n.dialogevent().additionalcontents().has_rawcontents());
         }},
        {R"({"class":"DialogSubscribeStatusData","id":20008,"fields":{"mHandle":1,
            "mStatusCode":489,"mReasonPhrase":"Bad Event"}})",
         [](const Notify& n) { EXPECT_EQ(n.dialogsubscribestatus().reasonphrase(), "Bad Event"); }},
    };
}

}  // namespace

TEST(CallEndToEnd, NotificationsReachTheClient) {
    Daemon d;
    for (const auto& row : notifyRows()) {
        Json record = Json::parse(row.record);
        d.notify(record);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.token, 0u);
        Notify n = f.notify();
        EXPECT_EQ(n.notifyid(), record["id"].get<int>());
        row.check(n);
    }
    // The publication status goes out as an empty message, and nothing is
    // logged as a failure.
    d.notify(Json::parse(R"({"class":"PrimitiveData<int>","id":10020})"));
    Frame f = d.nextFrame();
    EXPECT_EQ(f.type, 2u);
    EXPECT_TRUE(f.payload.empty());
    EXPECT_EQ(d.log().find("Response function failure: 10020"), std::string::npos);
}

TEST(CallEndToEnd, IncomingCallLogMasksAddressesOnAShipBuild) {
    Daemon d;
    d.config({{"logLevel", 2}, {"shipBuild", true}});
    d.notify(Json::parse(R"({"class":"IncomingCallData","id":10005,"fields":{"mHandle":1,
        "mSession":2,"mPeerUri":"sip:alice@x","mReferredBy":"sip:bob@x","mSipCallId":"cid"}})"));
    Notify n = d.nextFrame().notify();
    // The wire always carries the plain values.
    EXPECT_EQ(n.incomingcall().peeruri(), "sip:alice@x");
    EXPECT_EQ(n.incomingcall().referredby(), "sip:bob@x");
    std::string log = d.log();
    EXPECT_NE(log.find("peeruri(****) referred-by(****) call-id(cid)"), std::string::npos) << log;
    EXPECT_EQ(log.find("alice"), std::string::npos);
}
