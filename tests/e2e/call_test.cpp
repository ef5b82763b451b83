// The call family over the real socket: every request id to its stack record
// and its answer back to the client, every notification id to its frame.
// The fields of a row hold values of their own, so that a value copied to
// the wrong place, or a field dropped or added, shows in the whole-record
// comparison.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/e2e.h"
#include "tests/support/wire.h"

using namespace velard_test;
using imsCommonStruc::Notify;
using imsCommonStruc::Request;

namespace {

void setContents(imsCommonStruc::AdditionalContents* c, const char* mime, const char* text) {
    c->set_mimetype(mime);
    c->set_contents(text);
}

using Fill = std::function<void(Request&)>;

// Bodies of a handle and a session only; the records of most leave the
// handle behind.
template <class Body>
Fill handleSession(Body* (Request::*body)(), unsigned handle, unsigned session) {
    return [=](Request& r) {
        (r.*body)()->set_handle(handle);
        (r.*body)()->set_session(session);
    };
}

// clang-format off
void fillMakeConfCall(Request& r) {
    auto* b = r.mutable_requestmakeconfcall();
    b->set_handle(5); b->set_confuri("sip:conf@x"); b->set_calltype(imsCommonStruc::CallType(2));
    b->set_conftype(imsCommonStruc::ConfType(1)); b->set_eventsubscribe("ev");
    b->set_dialogtype("dt"); b->add_sessionid(7); b->add_sessionid(8);
    b->add_participants("p1"); b->add_participants("p2"); b->set_origuri("o");
    b->set_referuritype("rt"); b->set_referuriasserted("ra"); b->set_useanonymousupdate("true");
    addPair(b->mutable_extraheaders(), "K", "1");
    addPair(b->mutable_extraheaders(), "K", "2");
}
#define CONF_RECORD(id)                                                                  \
    R"({"class":"ConfCallSetupData","id":)" #id R"(,"args":[5,"sip:conf@x",2,1,"ev","dt","o",)" \
    R"("rt","ra","true",[7,8],["p1","p2"],{"K":"1"}]})"
// clang-format on

struct RequestRow {
    int id;
    Fill fill;
    const char* record;  // as the stack receives it
    bool callLevel;      // answered through CallResponseData, else GeneralResponseData
};

// clang-format off
const std::vector<RequestRow>& requestRows() {
    using namespace imsCommonStruc;
    static const std::vector<RequestRow> rows = {
        // Position 7 stays empty; lettering, emergency service type and
        // rawContents stay behind; the first header of a name wins.
        {201, [](Request& r) {
             auto* b = r.mutable_requestmakecall();
             b->set_handle(3); b->set_peeruri("sip:b@x"); b->set_calltype(CallType(2));
             b->set_codec(CodecType(1)); b->set_mode(4); b->set_direction(5);
             b->set_letteringtext("hello"); b->set_typeofemergencyservice("police");
             b->add_ecscflist("e1"); b->add_ecscflist("e2"); b->set_ecscfport(5062);
             setContents(b->mutable_additionalcontents(), "application/pidf+xml", "<p/>");
             b->mutable_additionalcontents()->set_rawcontents("RAW");
             b->set_origuri("sip:a@x"); b->set_dispname("A"); b->set_dialednumber("112");
             b->set_cli("cli"); b->set_softphonee911pani("pani");
             addPair(b->mutable_additionalsipheaders(), "P-B", "1");
             addPair(b->mutable_additionalsipheaders(), "P-A", "2");
             addPair(b->mutable_additionalsipheaders(), "P-B", "3");
             b->set_alertinfo("alert"); b->set_photoring("ring"); },
         R"({"class":"CallSetupData","id":201,"args":[3,"sip:b@x","sip:a@x","A","112","",2,1,4,5,
             {"mimeType":"application/pidf+xml","contents":"<p/>"},"cli","pani",
             {"P-A":"2","P-B":"1"},"alert","ring"],
             "members":{"mEcscfList":["e1","e2"],"mEcscfPort":5062}})", true},
        {202, [](Request& r) {
             r.mutable_requestendcall()->set_session(7);
             auto* reason = r.mutable_requestendcall()->mutable_endreason();
             reason->set_protocol("SIP"); reason->set_cause(486); reason->set_text("Busy");
             reason->add_extension("x1"); reason->add_extension("x2");
             reason->set_islocalrelease(true); },
         R"({"class":"CallEndData","id":202,"fields":{"mSession":7,"mReason":{"mProtocol":"SIP",
             "mCause":486,"mText":"Busy","mExtension":["x1","x2"],"mIsLocalRelease":true}}})",
         true},
        {203, handleSession(&Request::mutable_requestholdcall, 5, 7),
         R"({"class":"CallSessionId","id":203,"args":[7],"calls":[]})", true},
        {204, handleSession(&Request::mutable_requestresumecall, 5, 8),
         R"({"class":"CallSessionId","id":204,"args":[8],"calls":[]})", true},
        {205, [](Request& r) { auto* b = r.mutable_requestacceptcall();
             b->set_session(7); b->set_calltype(CallType(3)); },
         R"({"class":"CallAcceptData","id":205,"args":[7,3]})", true},
        {206, [](Request& r) { auto* b = r.mutable_requestupdatecall();
             b->set_session(7); b->set_action(Request_RequestUpdateCall::CODEC_CHANGE);
             b->set_codectype(CodecType(2)); b->set_cause(3); b->set_reasontext("why"); },
         R"({"class":"CallUpdateData","id":206,"fields":{"mSession":7,"mAction":1,"mCodecType":2,
             "mCause":3,"mReasonText":"why"}})", true},
        {207, [](Request& r) { handleSession(&Request::mutable_requestsenddtmf, 5, 7)(r);
             r.mutable_requestsenddtmf()->set_code(11); },
         R"({"class":"CallSendDtmf","id":207,"fields":{"mHandle":5,"mSession":7,"mCode":11}})",
         false},
        {209, fillMakeConfCall, CONF_RECORD(209), true},
        // replacingSession stays behind.
        {212, [](Request& r) { handleSession(&Request::mutable_requesttransfercall, 5, 7)(r);
             auto* b = r.mutable_requesttransfercall();
             b->set_targeturi("sip:t@x"); b->set_replacingsession(9); },
         R"({"class":"CallTransferData","id":212,"fields":{"mHandle":5,"mSession":7,
             "mExtraText":"","mTargetUri":"sip:t@x"}})", false},
        {213, [](Request& r) { handleSession(&Request::mutable_requestaccepttransfercall, 5, 7)(r);
             auto* b = r.mutable_requestaccepttransfercall();
             b->set_accept(true); b->set_statuscode(202); b->set_reasonphrase("Accepted"); },
         R"({"class":"AcceptTransferData","id":213,"fields":{"mSession":7,"mAccept":true,
             "mStatusCode":202,"mReasonPhrase":"Accepted"}})", false},
        {214, [](Request& r) { auto* b = r.mutable_requestrejectcall();
             b->set_session(7); b->set_statuscode(486); b->set_reasonphrase("Busy Here"); },
         R"({"class":"CallRejectData","id":214,"fields":{"mSession":7,"mStatusCode":486,
             "mReasonPhrase":"Busy Here"}})", true},
        {215, [](Request& r) { auto* b = r.mutable_requestupdateconfcall();
             b->set_session(7); b->set_cmd(2); b->set_participantid(3);
             b->set_participant("sip:p@x"); },
         R"({"class":"ConfCallUpdateSession","id":215,"args":[7,2,3,"sip:p@x"]})", false},
        {216, [](Request& r) { auto* b = r.mutable_requestmodifycalltype();
             b->set_session(7); b->set_oldtype(1); b->set_newtype(2); },
         R"({"class":"ModifyCallTypeData","id":216,"args":[7,1,2]})", true},
        {217, [](Request& r) { auto* b = r.mutable_requestreplymodifycalltype();
             b->set_session(7); b->set_reqtype(1); b->set_curtype(2); b->set_reptype(3); },
         R"({"class":"ReplyModifyCallType","id":217,"fields":{"mSession":7,"mReqType":1,
             "mCurType":2,"mRepType":3}})", true},
        {218, [](Request& r) { auto* b = r.mutable_requestprogressincomingcall();
             b->set_session(7); addPair(b->mutable_extraheader(), "P-Early-Media", "supported"); },
         R"({"class":"CallSessionId","id":218,"args":[7],
             "calls":[["setExtraHeader",[{"P-Early-Media":"supported"}]]]})", true},
        {219, handleSession(&Request::mutable_requestholdvideo, 5, 9),
         R"({"class":"CallSessionId","id":219,"args":[9],"calls":[]})", true},
        {220, handleSession(&Request::mutable_requestresumevideo, 5, 10),
         R"({"class":"CallSessionId","id":220,"args":[10],"calls":[]})", true},
        {221, [](Request& r) { auto* b = r.mutable_requestrejectmodifycalltype();
             b->set_session(7); b->set_reason(4); },
         R"({"class":"RejectModifyCallType","id":221,"fields":{"mSession":7,"mReason":4}})", true},
        // Extending to a conference reads the body of 209.
        {222, fillMakeConfCall, CONF_RECORD(222), true},
        {223, [](Request& r) { handleSession(&Request::mutable_requeststartcamera, 5, 7)(r);
             r.mutable_requeststartcamera()->set_camera(1); },
         R"({"class":"StartCamera","id":223,"args":[7,1]})", false},
        {224, [](Request& r) { auto* b = r.mutable_requestpullingcall();
             b->set_handle(5); b->set_pullinguri("pu"); b->set_targeturi("tu");
             b->set_origuri("ou");
             b->set_callid("ci"); b->set_localtag("lt"); b->set_remotetag("rt");
             b->set_calltype(CallType(2)); b->set_codec(CodecType(1)); b->set_audiodirection(3);
             b->set_videodirection(4); b->set_isvideoportzero(true); b->set_mdmnextnumber("mx"); },
         R"({"class":"CallPullingData","id":224,"fields":{"mHandle":5,"mPullingUri":"pu",
             "mTargetUri":"tu","mOrigUri":"ou","mCallType":2,"mCodec":1,"mExtraValue":0,
             "mAudioDirection":3,"mVideoDirection":4,"mIsVideoPortZero":true,"mCallId":"ci",
             "mLocalTag":"lt","mRemoteTag":"rt","mMdmnExtNumber":"mx"}})", true},
        {225, [](Request& r) { auto* b = r.mutable_requestupdateaudiointerface();
             b->set_handle(5); b->set_mode("speaker"); },
         R"({"class":"AudioInterfaceData","id":225,"fields":{"mHandle":5,"mMode":"speaker"}})",
         false},
        // Stopping the camera names no call at all.
        {226, [](Request& r) { r.mutable_requeststopcamera()->set_handle(5); },
         R"({"class":"StopCamera","id":226,"args":[]})", false},
        {227, handleSession(&Request::mutable_requestcanceltransfercall, 5, 7),
         R"({"class":"CancelCallTransferData","id":227,"fields":{"mHandle":5,"mSession":7}})",
         false},
        {228, [](Request& r) { auto* b = r.mutable_requestpublishdialog();
             b->set_handle(5); b->set_origuri("o"); b->set_dispname("d");
             b->set_xmlbody("<dialog-info/>"); b->set_expiretime(3600); },
         R"({"class":"CallPublishData","id":228,"fields":{"mHandle":5,"mOrigUri":"o",
             "mDispName":"d","mXmlBody":"<dialog-info/>","mExpireTime":3600}})", false},
        // rawContents stays behind.
        {229, [](Request& r) { handleSession(&Request::mutable_requestsendinfo, 5, 7)(r);
             r.mutable_requestsendinfo()->set_calltype(CallType(2));
             auto* c = r.mutable_requestsendinfo()->mutable_additionalcontents();
             setContents(c, "application/dtmf-relay", "Signal=1"); c->set_rawcontents("RAW"); },
         R"({"class":"CallSendInfo","id":229,"args":[5,7,2,
             {"mimeType":"application/dtmf-relay","contents":"Signal=1"}]})", false},
    };
    return rows;
}
// clang-format on

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
        d.send(requestOf(row), ++token);
        Json req = d.nextStackRequest();
        EXPECT_EQ(req["token"], token) << row.id;
        EXPECT_EQ(req["record"], Json::parse(row.record)) << row.id;

        Json answer = Json::parse(
            row.callLevel ? R"({"class":"CallResponseData","fields":{"mHandle":10,"mSession":7,
                                "mResult":1,"mReason":1,"mSipCallId":"c"}})"
                          : R"({"class":"GeneralResponseData","fields":{"handle":10,"reason":2}})");
        answer["id"] = row.id;
        imsCommonStruc::Response expected;
        expected.set_resid(imsCommonStruc::Id(row.id));
        // clang-format off
        if (row.callLevel) {
            auto* b = expected.mutable_callresponse();
            b->set_handle(10); b->set_session(7); b->set_result(imsCommonStruc::Result(1));
            b->set_reason(imsCommonStruc::CallReason(1)); b->set_sipcallid("c");
        } else {
            auto* b = expected.mutable_generalresponse();
            b->set_handle(10); b->set_result(imsCommonStruc::Result(0));
            b->set_reason(imsCommonStruc::GeneralReason(2));
        }
        // clang-format on
        d.respond(token, answer);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u) << row.id;
        EXPECT_EQ(f.token, token) << row.id;
        EXPECT_EQ(f.payload, expected.SerializeAsString()) << row.id;
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

// The simulated stack answers each request with the record that its row's
// response handler reads.
TEST(CallEndToEnd, AutoModeAnswersCallRequestsAtCallLevel) {
    Daemon::Options o;
    o.controlled = false;
    Daemon d(o);
    uint32_t token = 0;
    for (const auto& row : requestRows()) {
        d.send(requestOf(row), ++token);
        auto response = d.nextFrame().response();
        EXPECT_EQ(response.resid(), row.id);
        EXPECT_EQ(response.has_callresponse(), row.callLevel) << row.id;
        EXPECT_EQ(response.has_generalresponse(), !row.callLevel) << row.id;
    }
}

namespace {

struct NotifyRow {
    std::string record;
    std::function<void(Notify&)> expected;  // all but notifyid
};

// clang-format off
std::vector<NotifyRow> notifyRows() {
    using namespace imsCommonStruc;
    return {
        // State 17 doubles the body into rawContents.
        {R"({"class":"CallStatusData","id":10004,"fields":{"mHandle":1,"mSession":2,"mCallType":3,
            "mState":17,"mStatusCode":180,"mReasonPhrase":"Ringing","mRemoteVideoCapa":true,
            "mRemoteMmtelCapa":false,"mAudioCodecName":"AMR-WB","mWidth":640,"mHeight":480,
            "mConferenceSupport":"yes","mIsFocus":true,"mLocalVideoRtpPort":5000,
            "mLocalVideoRtcpPort":5001,"mRemoteVideoRtpPort":6000,"mRemoteVideoRtcpPort":6001,
            "mServiceUrn":"urn:service:sos","mRetryAfter":30,"mLocalHoldTone":false,
            "mHistoryInfo":"hi","mCvoEnabled":true,"mAlertInfo":"ai",
            "mAdditionalContents":{"mimeType":"application/sdp","contents":"v=0"}}})",
         [](Notify& n) { auto* b = n.mutable_callstatus();
             b->set_handle(1); b->set_session(2); b->set_calltype(CallType(3));
             b->set_state(CallState(17)); b->set_statuscode(180); b->set_reasonphrase("Ringing");
             b->set_remotevideocapa(true); b->set_remotemmtelcapa(false);
             b->set_audiocodecname("AMR-WB"); b->set_width(640); b->set_height(480);
             b->set_conferencesupport("yes"); b->set_isfocus(true);
             b->set_localvideortpport(5000); b->set_localvideortcpport(5001);
             b->set_remotevideortpport(6000); b->set_remotevideortcpport(6001);
             b->set_serviceurn("urn:service:sos"); b->set_retryafter(30);
             b->set_localholdtone(false); b->set_historyinfo("hi"); b->set_cvoenabled(true);
             b->set_alertinfo("ai");
             setContents(b->mutable_additionalcontents(), "application/sdp", "v=0");
             b->mutable_additionalcontents()->set_rawcontents("v=0"); }},
        {R"({"class":"IncomingCallData","id":10005,"fields":{"mHandle":1,"mSession":2,"mCallType":3,
            "mPeerUri":"sip:a@x","mDisplayName":"A","mReferredBy":"sip:r@x","mSipCallId":"cid",
            "mTerminatingId":"tid","mNumberPlus":"+1","mRawSipmsg":"INVITE","mReplaces":"rep",
            "mAlertInfo":"ai","mPhotoRing":"pr","mHistoryInfo":"hi"}})",
         [](Notify& n) { auto* b = n.mutable_incomingcall();
             b->set_handle(1); b->set_session(2); b->set_calltype(CallType(3));
             b->set_peeruri("sip:a@x"); b->set_displayname("A"); b->set_referredby("sip:r@x");
             b->set_sipcallid("cid"); b->set_terminatingid("tid"); b->set_numberplus("+1");
             b->set_rawsipmsg("INVITE"); b->set_replaces("rep"); b->set_alertinfo("ai");
             b->set_photoring("pr"); b->set_historyinfo("hi"); }},
        {R"({"class":"ConfCallChangedData","id":10006,"fields":{"mSession":2,"mEvent":1,
            "mParticipants":[{"mParticipantId":11,"mUri":"sip:p1@x","mStatus":2,"mSessionId":21},
            {"mParticipantId":12,"mUri":"sip:p2@x","mStatus":6,"mSessionId":22}]}})",
         [](Notify& n) { auto* b = n.mutable_confcallchanged();
             b->set_session(2); b->set_event(Notify_ConfCallChanged_ConfEvent(1));
             for (unsigned i : {1u, 2u}) {
                 auto* p = b->add_participants();
                 p->set_uri("sip:p" + std::to_string(i) + "@x");
                 p->set_status(Notify_ConfCallChanged_participantstatus(i == 1 ? 2 : 6));
                 p->set_participantid(10 + i); p->set_sessionid(20 + i);
             } }},
        {R"({"class":"ReferReceivedData","id":10008,"fields":{"mHandle":1,"mSession":2,
            "mReferorUri":"sip:r@x","mTargetUri":"sip:t@x"}})",
         [](Notify& n) { auto* b = n.mutable_referreceived();
             b->set_handle(1); b->set_session(2); b->set_referoruri("sip:r@x");
             b->set_targeturi("sip:t@x"); }},
        {R"({"class":"ReferStatusData","id":10009,"fields":{"mSession":2,"mStatusCode":202}})",
         [](Notify& n) { auto* b = n.mutable_referstatus();
             b->set_session(2); b->set_statuscode(202); }},
        {R"({"class":"RouteTableData","id":10010,"fields":{"mHandle":1,"mOperation":2,
            "mAddress":"10.0.0.1"}})",
         [](Notify& n) { auto* b = n.mutable_updateroutetable();
             b->set_handle(1); b->set_operation(Notify_UpdateRouteTable_Operation(2));
             b->set_address("10.0.0.1"); }},
        {R"({"class":"ModifyCallData","id":10011,"fields":{"mSession":2,"mOldType":1,
            "mNewType":3}})",
         [](Notify& n) { auto* b = n.mutable_modifycalldata();
             b->set_session(2); b->set_oldtype(1); b->set_newtype(3); }},
        {R"({"class":"CdpnInfoData","id":10012,"fields":{"mCalledParyNumber":"+123"}})",
         [](Notify& n) { n.mutable_cdpninfo()->set_calledpartynumber("+123"); }},
        {R"({"class":"ModifyVideoData","id":10014,"fields":{"mSession":2,"mDirection":3,
            "mIsHeldCall":true}})",
         [](Notify& n) { auto* b = n.mutable_modifyvideodata();
             b->set_session(2); b->set_direction(3); b->set_isheldcall(true); }},
        {R"({"class":"VideoEventData","id":10015,"fields":{"mSession":2,"mEvent":4}})",
         [](Notify& n) { auto* b = n.mutable_notifyvideoeventdata();
             b->set_session(2); b->set_event(4); }},
        {R"({"class":"DedicatedBearerData","id":10016,"fields":{"mHandle":1,"mSession":2,"mQci":5,
            "mBearerState":3}})",
         [](Notify& n) { auto* b = n.mutable_dedicatedbearerevent();
             b->set_handle(1); b->set_session(2); b->set_qci(5);
             b->set_bearerstate(Notify_BearerState(3)); }},
        {R"({"class":"RrcConnectionData","id":10017,"fields":{"mEvent":2}})",
         [](Notify& n) { n.mutable_rrcconnectionevent()->set_event(Notify_RrcEvent(2)); }},
        {R"({"class":"DtmfEventData","id":10021,"fields":{"mEvent":5,"mVolume":10,"mDuration":160,
            "mEndbit":1}})",
         [](Notify& n) { auto* b = n.mutable_dtmfparamdata();
             b->set_event(5); b->set_volume(10); b->set_duration(160); b->set_endbit(1); }},
        // Floats pass unconverted.
        {R"({"class":"RtpLossRateData","id":10022,"fields":{"mInterval":5,"mLossRate":0.125,
            "mJitter":12.5}})",
         [](Notify& n) { auto* b = n.mutable_rtplossratenoti();
             b->set_interval(5); b->set_lossrate(0.125f); b->set_jitter(12.5f); }},
        // The dialog document goes without a raw form.
        {R"({"class":"DialogEventData","id":20005,"fields":{"mHandle":1,
            "mContents":{"mimeType":"application/dialog-info+xml","contents":"<d/>"}}})",
         [](Notify& n) { n.mutable_dialogevent()->set_handle(1);
             setContents(n.mutable_dialogevent()->mutable_additionalcontents(),
                         "application/dialog-info+xml", "<d/>"); }},
        {R"({"class":"DialogSubscribeStatusData","id":20008,"fields":{"mHandle":1,"mStatusCode":489,
            "mReasonPhrase":"Bad Event"}})",
         [](Notify& n) { auto* b = n.mutable_dialogsubscribestatus();
             b->set_handle(1); b->set_statuscode(489); b->set_reasonphrase("Bad Event"); }},
    };
}
// clang-format on

}  // namespace

TEST(CallEndToEnd, NotificationsReachTheClient) {
    Daemon d;
    for (const auto& row : notifyRows()) {
        Json record = Json::parse(row.record);
        d.notify(record);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.token, 0u);
        Notify expected;
        expected.set_notifyid(imsCommonStruc::Id(record["id"].get<int>()));
        row.expected(expected);
        EXPECT_EQ(f.payload, expected.SerializeAsString()) << record["id"];
    }
    // The publication status goes out as an empty message, not as a failure.
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
