// The stack's call answer and call notifications on the wire: which fields
// are always present, which only when filled, the state 17 body and the
// debug lines with their gate.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "handlers/handlers.h"
#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Notify;

namespace {

struct NotifyCase {
    const char* name;
    std::string record;
    std::function<void(Notify&)> expected;
};

void contents(imsCommonStruc::AdditionalContents* c, const char* mime, const char* text) {
    c->set_mimetype(mime);
    c->set_contents(text);
}

// A call status with every field filled, in the record's own order.
std::string callStatus(int state, const char* contents) {
    return std::string(R"({"class":"CallStatusData","id":10004,"fields":{"mHandle":1,"mSession":2,
        "mCallType":3,"mState":)") +
           std::to_string(state) + R"(,"mStatusCode":180,"mReasonPhrase":"Ringing",
        "mRemoteVideoCapa":true,"mRemoteMmtelCapa":true,"mAudioCodecName":"AMR-WB","mWidth":640,
        "mHeight":480,"mConferenceSupport":"yes","mIsFocus":true,"mLocalVideoRtpPort":5000,
        "mLocalVideoRtcpPort":5001,"mRemoteVideoRtpPort":6000,"mRemoteVideoRtcpPort":6001,
        "mServiceUrn":"urn:service:sos","mRetryAfter":30,"mLocalHoldTone":true,
        "mHistoryInfo":"hi","mCvoEnabled":true,"mAlertInfo":"ai","mAdditionalContents":)" +
           contents + "}}";
}

void expectCallStatus(Notify& n, int state) {
    n.set_notifyid(imsCommonStruc::Id(10004));
    auto* b = n.mutable_callstatus();
    b->set_handle(1);
    b->set_session(2);
    b->set_calltype(imsCommonStruc::CallType(3));
    b->set_state(imsCommonStruc::CallState(state));
    b->set_statuscode(180);
    b->set_reasonphrase("Ringing");
    b->set_remotevideocapa(true);
    b->set_remotemmtelcapa(true);
    b->set_audiocodecname("AMR-WB");
    b->set_width(640);
    b->set_height(480);
    b->set_conferencesupport("yes");
    b->set_isfocus(true);
    b->set_localvideortpport(5000);
    b->set_localvideortcpport(5001);
    b->set_remotevideortpport(6000);
    b->set_remotevideortcpport(6001);
    b->set_serviceurn("urn:service:sos");
    b->set_retryafter(30);
    b->set_localholdtone(true);
    b->set_historyinfo("hi");
    b->set_cvoenabled(true);
    b->set_alertinfo("ai");
}

const char* const kBody = R"({"mimeType":"application/sdp","contents":"v=0"})";

std::vector<NotifyCase> notifyCases() {
    return {
        {"10004 without contents", callStatus(17, "null"),
         [](Notify& n) { expectCallStatus(n, 17); }},
        {"10004 state 17 doubles the body", callStatus(17, kBody),
         [](Notify& n) {
             expectCallStatus(n, 17);
             auto* c = n.mutable_callstatus()->mutable_additionalcontents();
             contents(c, "application/sdp", "v=0");
             c->set_rawcontents("v=0");
         }},
        {"10004 state 16 keeps the text form", callStatus(16, kBody),
         [](Notify& n) {
             expectCallStatus(n, 16);
             contents(n.mutable_callstatus()->mutable_additionalcontents(), "application/sdp",
                      "v=0");
         }},
        {"10004 state 18 keeps the text form", callStatus(18, kBody),
         [](Notify& n) {
             expectCallStatus(n, 18);
             contents(n.mutable_callstatus()->mutable_additionalcontents(), "application/sdp",
                      "v=0");
         }},
        {"10004 empty: strings present and empty, unknown state passed on",
         R"({"class":"CallStatusData","id":10004,"fields":{"mState":99}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10004));
             auto* b = n.mutable_callstatus();
             b->set_handle(0);
             b->set_session(0);
             b->set_calltype(imsCommonStruc::CallType(0));
             b->set_state(imsCommonStruc::CallState(99));
             b->set_statuscode(0);
             b->set_reasonphrase("");
             b->set_remotevideocapa(false);
             b->set_remotemmtelcapa(false);
             b->set_audiocodecname("");
             b->set_width(0);
             b->set_height(0);
             b->set_conferencesupport("");
             b->set_isfocus(false);
             b->set_localvideortpport(0);
             b->set_localvideortcpport(0);
             b->set_remotevideortpport(0);
             b->set_remotevideortcpport(0);
             b->set_serviceurn("");
             b->set_retryafter(0);
             b->set_localholdtone(false);
             b->set_historyinfo("");
             b->set_cvoenabled(false);
             b->set_alertinfo("");
         }},
        {"10005 whole",
         R"({"class":"IncomingCallData","id":10005,"fields":{"mHandle":1,"mSession":2,"mCallType":3,
             "mPeerUri":"sip:a@x","mDisplayName":"A","mReferredBy":"sip:r@x","mSipCallId":"cid",
             "mTerminatingId":"tid","mNumberPlus":"+1","mRawSipmsg":"INVITE","mReplaces":"rep",
             "mAlertInfo":"ai","mPhotoRing":"pr","mHistoryInfo":"hi"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10005));
             auto* b = n.mutable_incomingcall();
             b->set_handle(1);
             b->set_session(2);
             b->set_calltype(imsCommonStruc::CallType(3));
             b->set_peeruri("sip:a@x");
             b->set_displayname("A");
             b->set_referredby("sip:r@x");
             b->set_sipcallid("cid");
             b->set_terminatingid("tid");
             b->set_numberplus("+1");
             b->set_rawsipmsg("INVITE");
             b->set_replaces("rep");
             b->set_alertinfo("ai");
             b->set_photoring("pr");
             b->set_historyinfo("hi");
         }},
        {"10005 empty: only replaces of the optional strings",
         R"({"class":"IncomingCallData","id":10005,"fields":{}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10005));
             auto* b = n.mutable_incomingcall();
             b->set_handle(0);
             b->set_session(0);
             b->set_calltype(imsCommonStruc::CallType(0));
             b->set_peeruri("");
             b->set_displayname("");
             b->set_replaces("");
         }},
        {"10006 participants in order",
         R"({"class":"ConfCallChangedData","id":10006,"fields":{"mSession":2,"mEvent":1,
             "mParticipants":[{"mParticipantId":11,"mUri":"sip:p1@x","mStatus":2,"mSessionId":21},
                              {"mParticipantId":12,"mUri":"sip:p2@x","mStatus":6,"mSessionId":22}]}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10006));
             auto* b = n.mutable_confcallchanged();
             b->set_session(2);
             b->set_event(imsCommonStruc::Notify_ConfCallChanged_ConfEvent(1));
             for (unsigned i : {1u, 2u}) {
                 auto* p = b->add_participants();
                 p->set_uri("sip:p" + std::to_string(i) + "@x");
                 p->set_status(
                     imsCommonStruc::Notify_ConfCallChanged_participantstatus(i == 1 ? 2 : 6));
                 p->set_participantid(10 + i);
                 p->set_sessionid(20 + i);
             }
         }},
        {"10006 without participants",
         R"({"class":"ConfCallChangedData","id":10006,"fields":{"mSession":2,"mEvent":0}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10006));
             n.mutable_confcallchanged()->set_session(2);
             n.mutable_confcallchanged()->set_event(
                 imsCommonStruc::Notify_ConfCallChanged_ConfEvent(0));
         }},
        {"10008",
         R"({"class":"ReferReceivedData","id":10008,"fields":{"mHandle":1,"mSession":2,
             "mReferorUri":"sip:r@x","mTargetUri":"sip:t@x"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10008));
             auto* b = n.mutable_referreceived();
             b->set_handle(1);
             b->set_session(2);
             b->set_referoruri("sip:r@x");
             b->set_targeturi("sip:t@x");
         }},
        {"10009",
         R"({"class":"ReferStatusData","id":10009,"fields":{"mSession":2,"mStatusCode":202}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10009));
             n.mutable_referstatus()->set_session(2);
             n.mutable_referstatus()->set_statuscode(202);
         }},
        {"10010 empty address still present",
         R"({"class":"RouteTableData","id":10010,"fields":{"mHandle":1,"mOperation":2}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10010));
             auto* b = n.mutable_updateroutetable();
             b->set_operation(imsCommonStruc::Notify_UpdateRouteTable_Operation(2));
             b->set_handle(1);
             b->set_address("");
         }},
        {"10011 types after the unread word",
         R"({"class":"ModifyCallData","id":10011,"fields":{"mSession":2,"mOldType":1,"mNewType":3}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10011));
             n.mutable_modifycalldata()->set_session(2);
             n.mutable_modifycalldata()->set_oldtype(1);
             n.mutable_modifycalldata()->set_newtype(3);
         }},
        {"10012", R"({"class":"CdpnInfoData","id":10012,"fields":{"mCalledParyNumber":"+123"}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10012));
             n.mutable_cdpninfo()->set_calledpartynumber("+123");
         }},
        {"10014 held flag false still present",
         R"({"class":"ModifyVideoData","id":10014,"fields":{"mSession":2,"mDirection":3}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10014));
             n.mutable_modifyvideodata()->set_session(2);
             n.mutable_modifyvideodata()->set_direction(3);
             n.mutable_modifyvideodata()->set_isheldcall(false);
         }},
        {"10015", R"({"class":"VideoEventData","id":10015,"fields":{"mSession":2,"mEvent":4}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10015));
             n.mutable_notifyvideoeventdata()->set_session(2);
             n.mutable_notifyvideoeventdata()->set_event(4);
         }},
        {"10016",
         R"({"class":"DedicatedBearerData","id":10016,"fields":{"mHandle":1,"mSession":2,"mQci":1,
             "mBearerState":3}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10016));
             auto* b = n.mutable_dedicatedbearerevent();
             b->set_handle(1);
             b->set_session(2);
             b->set_qci(1);
             b->set_bearerstate(imsCommonStruc::Notify_BearerState(3));
         }},
        {"10017 event 0 is outside the enum and passes on",
         R"({"class":"RrcConnectionData","id":10017,"fields":{"mEvent":0}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10017));
             n.mutable_rrcconnectionevent()->set_event(imsCommonStruc::Notify_RrcEvent(0));
         }},
        {"10021",
         R"({"class":"DtmfEventData","id":10021,"fields":{"mEvent":5,"mVolume":10,"mDuration":160,
             "mEndbit":1}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10021));
             auto* b = n.mutable_dtmfparamdata();
             b->set_event(5);
             b->set_volume(10);
             b->set_duration(160);
             b->set_endbit(1);
         }},
        {"10022 floats unconverted",
         R"({"class":"RtpLossRateData","id":10022,"fields":{"mInterval":5,"mLossRate":0.125,
             "mJitter":12.5}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(10022));
             auto* b = n.mutable_rtplossratenoti();
             b->set_interval(5);
             b->set_lossrate(0.125f);
             b->set_jitter(12.5f);
         }},
        {"20005 body without raw form",
         R"({"class":"DialogEventData","id":20005,"fields":{"mHandle":1,
             "mContents":{"mimeType":"application/dialog-info+xml","contents":"<d/>"}}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20005));
             n.mutable_dialogevent()->set_handle(1);
             contents(n.mutable_dialogevent()->mutable_additionalcontents(),
                      "application/dialog-info+xml", "<d/>");
         }},
        {"20005 without body: empty strings, still parseable",
         R"({"class":"DialogEventData","id":20005,"fields":{"mHandle":1}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20005));
             n.mutable_dialogevent()->set_handle(1);
             contents(n.mutable_dialogevent()->mutable_additionalcontents(), "", "");
         }},
        {"20008",
         R"({"class":"DialogSubscribeStatusData","id":20008,"fields":{"mHandle":1,"mStatusCode":403}})",
         [](Notify& n) {
             n.set_notifyid(imsCommonStruc::Id(20008));
             auto* b = n.mutable_dialogsubscribestatus();
             b->set_handle(1);
             b->set_statuscode(403);
             b->set_reasonphrase("");
         }},
        {"10020 is sent empty", R"({"class":"PrimitiveData<int>","id":10020,"fields":{"value":1}})",
         [](Notify&) {}},
    };
}

}  // namespace

TEST(CallNotifications, CarryTheirRecords) {
    for (const auto& c : notifyCases()) {
        auto [rc, actual] = notifyJson(Json::parse(c.record));
        EXPECT_EQ(rc, 0) << c.name;
        Notify expected;
        c.expected(expected);
        // Byte equality also tells a present empty field from an absent one.
        EXPECT_EQ(actual.SerializePartialAsString(), expected.SerializePartialAsString()) << c.name;
    }
}

TEST(CallNotifications, DebugLinesOnlyAboveLevelOne) {
    struct Case {
        const char* record;
        const char* line;
    };
    const Case cases[] = {
        {R"({"class":"CallStatusData","id":10004,"fields":{"mState":17}})",
         "D [IMS6.0]: imsCallStatus 17"},
        {R"({"class":"IncomingCallData","id":10005,"fields":{"mHandle":1,"mSession":2,"mCallType":3,
            "mPeerUri":"sip:a@x","mReferredBy":"sip:r@x","mSipCallId":"cid","mAlertInfo":"ai",
            "mPhotoRing":"pr","mHistoryInfo":"hi"}})",
         "D [IMS6.0]: incoming call profile(1) session(2) type(3) peeruri(sip:a@x) "
         "referred-by(sip:r@x) call-id(cid) mAlertInfo(ai) mPhotoRing(pr) mHistoryInfo(hi)"},
        {R"({"class":"CdpnInfoData","id":10012,"fields":{"mCalledParyNumber":"+123"}})",
         "D [IMS6.0]: cdpnInfo mCalledParyNumber(+123)"},
        {R"({"class":"DedicatedBearerData","id":10016,"fields":{"mHandle":1,"mSession":2,"mQci":5,
            "mBearerState":3}})",
         "D [IMS6.0]: NotifyDedicatedBearerEvent 1,2,5,3"},
        {R"({"class":"RrcConnectionData","id":10017,"fields":{"mEvent":2}})",
         "D [IMS6.0]: NotifyRrcConnectionEvent 2"},
        {R"({"class":"DtmfEventData","id":10021,"fields":{"mEvent":11}})",
         "D [IMS6.0]: NotifyDtmfEvent 11"},
        {R"({"class":"RtpLossRateData","id":10022,"fields":{"mInterval":5}})",
         "D [IMS6.0]: NotifyRtpLossRateNoti Interval : 5"},
    };
    const int saved = logLevel;
    for (const auto& c : cases) {
        for (int level : {1, 2}) {
            logLevel = level;
            LogCapture log;
            notifyJson(Json::parse(c.record));
            EXPECT_EQ(log.contains(c.line), level > 1) << c.line << " at " << level;
        }
    }
    logLevel = saved;
}

TEST(CallNotifications, NameLineAtItsPriority) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"class":"CallStatusData","id":10004})", "V [IMS6.0]: NotifyCallStatus()"},
        {R"({"class":"PrimitiveData<int>","id":10020})", "V [IMS6.0]: NotifyCallPublishStatus()"},
        {R"({"class":"DialogSubscribeStatusData","id":20008})",
         "D [IMS6.0]: NotifyDialogSubscribeStatus()"},
    };
    for (const auto& [record, line] : cases) {
        LogCapture log;
        notifyJson(Json::parse(record));
        EXPECT_TRUE(log.contains(line)) << line;
    }
}

TEST(CallAnswers, NullRecordsSendNothing) {
    if (s_notifyMap.empty()) ImsFillDispatchMaps();
    for (int id : {10004, 10005, 10006, 10008, 10009, 10010, 10011, 10012, 10014, 10015, 10016,
                   10017, 10020, 10021, 10022, 20005, 20008}) {
        Notify n;
        LogCapture log;
        EXPECT_EQ(s_notifyMap.at(id).notifyFunction(n, nullptr), -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
    imsCommonStruc::Response response;
    EXPECT_EQ(s_commandMap.at(201).responseFunction(1, response, nullptr), -1);
}

TEST(CallAnswers, CallResponse) {
    struct Case {
        const char* name;
        const char* record;
        bool hasSipCallId;
    };
    const Case cases[] = {
        {"with call id",
         R"({"class":"CallResponseData","id":201,"fields":{"mHandle":10,"mSession":7,"mResult":1,
             "mReason":1,"mSipCallId":"abc@x"}})",
         true},
        {"empty call id left out",
         R"({"class":"CallResponseData","id":224,"fields":{"mHandle":10,"mSession":7,"mResult":1,
             "mReason":1}})",
         false},
    };
    for (const auto& c : cases) {
        LogCapture log;
        auto [rc, response] = respondJson(Json::parse(c.record));
        ASSERT_EQ(rc, 0) << c.name;
        EXPECT_EQ(response.resid(), Json::parse(c.record)["id"].get<int>()) << c.name;
        const auto& body = response.callresponse();
        EXPECT_EQ(body.handle(), 10);
        EXPECT_EQ(body.session(), 7);
        EXPECT_EQ(body.result(), 1);
        EXPECT_EQ(body.reason(), 1);
        EXPECT_EQ(body.has_sipcallid(), c.hasSipCallId) << c.name;
        if (c.hasSipCallId) {
            EXPECT_EQ(body.sipcallid(), "abc@x");
        }
        EXPECT_TRUE(log.contains("I [IMS6.0]: ResponseCallResponse() handle:a session:7"))
            << c.name;
    }
    // Numbers outside the enumerations pass on as the stack gave them, and
    // zeros are still written.
    auto [rc, response] = respondJson(Json::parse(
        R"({"class":"CallResponseData","id":202,"fields":{"mResult":5,"mReason":-3}})"));
    ASSERT_EQ(rc, 0);
    EXPECT_TRUE(response.callresponse().has_handle());
    EXPECT_TRUE(response.callresponse().has_session());
    EXPECT_EQ(response.callresponse().result(), 5);
    EXPECT_EQ(response.callresponse().reason(), -3);
}
