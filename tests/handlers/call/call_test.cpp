// The call family at its edges, in process: absent bodies and fields, the
// presence rules of requests and notifications, the state 17 body, the log
// lines with their order and gates, and null records. The end-to-end table
// holds one whole request or record of every id.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "core/ims_tables.h"
#include "tests/support/in_process.h"
#include "tests/support/wire.h"

using namespace velard_test;
using imsCommonStruc::Notify;
using imsCommonStruc::Request;

namespace {

Request requestOf(int reqid, const std::function<void(Request&)>& fill) {
    Request request;
    request.set_reqid(imsCommonStruc::Id(reqid));
    fill(request);
    return request;
}

#define EMPTY_CALL_ARGS R"([0,"","","","","",0,0,0,0,null,"","",{},"",""])"

const char* const kSdp = R"({"mimeType":"application/sdp","contents":"v=0"})";

std::string callStatus(int state, const char* contents) {
    return R"({"class":"CallStatusData","id":10004,"fields":{"mState":)" + std::to_string(state) +
           R"(,"mAdditionalContents":)" + contents + "}}";
}

}  // namespace

TEST(CallRequests, EdgesReachTheStackAsTheirRecords) {
    struct Case {
        int reqid;
        std::function<void(Request&)> fill;
        const char* expected;
    };
    const Case cases[] = {
        // A port of 0 leaves the library's own (0 in this one); any other
        // port is written over it.
        {201, [](Request&) {},
         R"({"class":"CallSetupData","id":201,"args":)" EMPTY_CALL_ARGS
         R"(,"members":{"mEcscfList":[],"mEcscfPort":0}})"},
        {201, [](Request& r) { r.mutable_requestmakecall()->set_ecscfport(-1); },
         R"({"class":"CallSetupData","id":201,"args":)" EMPTY_CALL_ARGS
         R"(,"members":{"mEcscfList":[],"mEcscfPort":-1}})"},
        {202, [](Request& r) { r.mutable_requestendcall()->set_session(7); },
         R"({"class":"CallEndData","id":202,"fields":{"mSession":7,"mReason":null}})"},
        {202, [](Request& r) { r.mutable_requestendcall()->mutable_endreason(); },
         R"({"class":"CallEndData","id":202,"fields":{"mSession":0,"mReason":{"mProtocol":"",
             "mCause":0,"mText":"","mExtension":[],"mIsLocalRelease":false}}})"},
        // setExtraHeader is called only for a header list that is present,
        // even an empty one, and the first pair of a name wins.
        {218, [](Request& r) { r.mutable_requestprogressincomingcall()->set_session(7); },
         R"({"class":"CallSessionId","id":218,"args":[7],"calls":[]})"},
        {218, [](Request& r) { r.mutable_requestprogressincomingcall()->mutable_extraheader(); },
         R"({"class":"CallSessionId","id":218,"args":[0],"calls":[["setExtraHeader",[{}]]]})"},
        {218,
         [](Request& r) {
             auto* headers = r.mutable_requestprogressincomingcall()->mutable_extraheader();
             addPair(headers, "X", "first");
             addPair(headers, "", "empty key");
             addPair(headers, "X", "second");
         },
         R"({"class":"CallSessionId","id":218,"args":[0],
             "calls":[["setExtraHeader",[{"":"empty key","X":"first"}]]]})"},
        {203, [](Request& r) { r.mutable_requestholdcall()->set_session(0xFFFFFFFFu); },
         R"({"class":"CallSessionId","id":203,"args":[-1],"calls":[]})"},
        // Read in place on the envelope: an absent body reads as defaults.
        {225, [](Request&) {},
         R"({"class":"AudioInterfaceData","id":225,"fields":{"mHandle":0,"mMode":""}})"},
        {229, [](Request& r) { r.mutable_requestsendinfo()->set_session(7); },
         R"({"class":"CallSendInfo","id":229,"args":[0,7,0,null]})"},
        {222, [](Request& r) { r.mutable_requestmakecall()->set_handle(3); },
         R"({"class":"ConfCallSetupData","id":222,"args":[0,"",0,0,"","","","","","",[],[],{}]})"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(dispatchOne(requestOf(c.reqid, c.fill)), Json::parse(c.expected)) << c.expected;
    }
}

// Lines marked to follow the hand-over are written after OnRequest has
// returned; the hook below writes its own line from inside OnRequest.
namespace {
std::vector<std::unique_ptr<ImsData>>* s_taken = nullptr;
void markingHook(unsigned int, ImsData* record, void*) {
    __android_log_print(ANDROID_LOG_INFO, "test", "stack took %d", record->GetId());
    s_taken->emplace_back(record);
}
}  // namespace

TEST(CallRequests, LinesAfterTheHandOver) {
    const std::pair<int, const char*> cases[] = {
        {203, "DispatchHoldCall() session: 7"},     {204, "DispatchResumeCall() session: 7"},
        {219, "DispatchHoldVideo() session: 7"},    {220, "DispatchResumeVideo() session: 7"},
        {223, "DispatchStartCamera() cameraId: 2"}, {226, "DispatchStopCamera()"},
    };
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    s_velar = Velar::GetInstance();
    for (const auto& [reqid, line] : cases) {
        Request request = requestOf(reqid, [](Request& r) {
            // The handle differs from the session, so that a line printing it shows.
            const auto handleSession = [](auto* b) {
                b->set_handle(5);
                b->set_session(7);
            };
            handleSession(r.mutable_requestholdcall());
            handleSession(r.mutable_requestresumecall());
            handleSession(r.mutable_requestholdvideo());
            handleSession(r.mutable_requestresumevideo());
            r.mutable_requeststartcamera()->set_session(7);
            r.mutable_requeststartcamera()->set_camera(2);
        });
        std::vector<std::unique_ptr<ImsData>> taken;
        s_taken = &taken;
        LogCapture log;
        velar_sim::setCaptureHook(markingHook, nullptr);
        s_commandMap.at(reqid).dispatchFunction(1, request, nullptr);
        velar_sim::setCaptureHook(nullptr, nullptr);
        const std::vector<std::string> expected = {"I test: stack took " + std::to_string(reqid),
                                                   std::string("I [IMS6.0]: ") + line};
        EXPECT_EQ(log.lines(), expected) << reqid;
    }
}

TEST(CallRequests, ConferenceSessionsAreLoggedOnlyAboveLevelOne) {
    const Request request = requestOf(209, [](Request& r) {
        r.mutable_requestmakeconfcall()->add_sessionid(7);
        r.mutable_requestmakeconfcall()->add_sessionid(8);
    });
    const int saved = logLevel;
    for (int level : {1, 2}) {
        logLevel = level;
        LogCapture log;
        dispatch(request);
        const std::vector<std::string> quiet = {"I [IMS6.0]: DispatchMakeConfCall()"};
        const std::vector<std::string> verbose = {quiet[0], "D [IMS6.0]: participants 7",
                                                  "D [IMS6.0]: participants 8"};
        EXPECT_EQ(log.lines(), level > 1 ? verbose : quiet) << level;
    }
    logLevel = saved;
}

TEST(CallNotifications, PresenceRules) {
    struct Case {
        std::string record;
        std::function<void(Notify&)> expected;  // all but notifyid
    };
    using namespace imsCommonStruc;
    // An empty call status: every field but the body is present, strings
    // empty.
    // clang-format off
    const auto emptyStatus = [](Notify& n, int state) {
        auto* b = n.mutable_callstatus();
        b->set_handle(0); b->set_session(0); b->set_calltype(CallType(0));
        b->set_state(CallState(state)); b->set_statuscode(0); b->set_reasonphrase("");
        b->set_remotevideocapa(false); b->set_remotemmtelcapa(false); b->set_audiocodecname("");
        b->set_width(0); b->set_height(0); b->set_conferencesupport(""); b->set_isfocus(false);
        b->set_localvideortpport(0); b->set_localvideortcpport(0); b->set_remotevideortpport(0);
        b->set_remotevideortcpport(0); b->set_serviceurn(""); b->set_retryafter(0);
        b->set_localholdtone(false); b->set_historyinfo(""); b->set_cvoenabled(false);
        b->set_alertinfo("");
    };
    // clang-format on
    const auto withSdp = [&](int state) {
        return [=](Notify& n) {
            emptyStatus(n, state);
            n.mutable_callstatus()->mutable_additionalcontents()->set_mimetype("application/sdp");
            n.mutable_callstatus()->mutable_additionalcontents()->set_contents("v=0");
        };
    };
    const Case cases[] = {
        {callStatus(17, "null"), [&](Notify& n) { emptyStatus(n, 17); }},
        // Only state 17 doubles the body into rawContents.
        {callStatus(16, kSdp), withSdp(16)},
        {callStatus(18, kSdp), withSdp(18)},
        // Of the strings set only when filled, replaces is always set.
        {R"({"class":"IncomingCallData","id":10005,"fields":{}})",
         [](Notify& n) {
             auto* b = n.mutable_incomingcall();
             b->set_handle(0);
             b->set_session(0);
             b->set_calltype(CallType(0));
             b->set_peeruri("");
             b->set_displayname("");
             b->set_replaces("");
         }},
        {R"({"class":"ConfCallChangedData","id":10006,"fields":{"mSession":2,"mEvent":0}})",
         [](Notify& n) {
             n.mutable_confcallchanged()->set_session(2);
             n.mutable_confcallchanged()->set_event(Notify_ConfCallChanged_ConfEvent(0));
         }},
        // The stack always attaches the dialog document; without one the
        // message still parses.
        {R"({"class":"DialogEventData","id":20005,"fields":{"mHandle":1}})",
         [](Notify& n) {
             n.mutable_dialogevent()->set_handle(1);
             n.mutable_dialogevent()->mutable_additionalcontents()->set_mimetype("");
             n.mutable_dialogevent()->mutable_additionalcontents()->set_contents("");
         }},
        {R"({"class":"RrcConnectionData","id":10017,"fields":{"mEvent":0}})",
         [](Notify& n) { n.mutable_rrcconnectionevent()->set_event(Notify_RrcEvent(0)); }},
    };
    for (const auto& c : cases) {
        const Json record = Json::parse(c.record);
        auto [rc, actual] = notifyJson(record);
        EXPECT_EQ(rc, 0) << c.record;
        Notify expected;
        expected.set_notifyid(Id(record["id"].get<int>()));
        c.expected(expected);
        // Byte equality also tells a present empty field from an absent one.
        EXPECT_EQ(actual.SerializePartialAsString(), expected.SerializePartialAsString())
            << c.record;
    }
}

TEST(CallNotifications, DebugLinesOnlyAboveLevelOne) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"class":"CallStatusData","id":10004,"fields":{"mState":17}})", "imsCallStatus 17"},
        {R"({"class":"IncomingCallData","id":10005,"fields":{"mHandle":1,"mSession":2,"mCallType":3,
            "mPeerUri":"sip:a@x","mReferredBy":"sip:r@x","mSipCallId":"cid","mAlertInfo":"ai",
            "mPhotoRing":"pr","mHistoryInfo":"hi"}})",
         "incoming call profile(1) session(2) type(3) peeruri(sip:a@x) referred-by(sip:r@x) "
         "call-id(cid) mAlertInfo(ai) mPhotoRing(pr) mHistoryInfo(hi)"},
        {R"({"class":"CdpnInfoData","id":10012,"fields":{"mCalledParyNumber":"+123"}})",
         "cdpnInfo mCalledParyNumber(+123)"},
        {R"({"class":"DedicatedBearerData","id":10016,"fields":{"mHandle":1,"mSession":2,"mQci":5,
            "mBearerState":3}})",
         "NotifyDedicatedBearerEvent 1,2,5,3"},
        {R"({"class":"RrcConnectionData","id":10017,"fields":{"mEvent":2}})",
         "NotifyRrcConnectionEvent 2"},
        {R"({"class":"DtmfEventData","id":10021,"fields":{"mEvent":11}})", "NotifyDtmfEvent 11"},
        {R"({"class":"RtpLossRateData","id":10022,"fields":{"mInterval":5}})",
         "NotifyRtpLossRateNoti Interval : 5"},
    };
    const int saved = logLevel;
    for (const auto& [record, line] : cases) {
        for (int level : {1, 2}) {
            logLevel = level;
            LogCapture log;
            notifyJson(Json::parse(record));
            EXPECT_EQ(log.contains(std::string("D [IMS6.0]: ") + line), level > 1)
                << line << " at " << level;
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
    LogCapture log;
    EXPECT_EQ(s_commandMap.at(201).responseFunction(1, response, nullptr), -1);
    EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL"));
}

// An empty call id stays off the wire; numbers outside the enumerations pass
// as the stack gave them, and zeros are still written.
TEST(CallAnswers, CallResponseWithoutCallId) {
    LogCapture log;
    auto [rc, response] = respondJson(Json::parse(
        R"({"class":"CallResponseData","id":224,"fields":{"mHandle":10,"mResult":5,
            "mReason":-3}})"));
    ASSERT_EQ(rc, 0);
    imsCommonStruc::Response expected;
    expected.set_resid(imsCommonStruc::Id(224));
    auto* b = expected.mutable_callresponse();
    b->set_handle(10);
    b->set_session(0);
    b->set_result(imsCommonStruc::Result(5));
    b->set_reason(imsCommonStruc::CallReason(-3));
    EXPECT_EQ(response.SerializePartialAsString(), expected.SerializePartialAsString());
    EXPECT_TRUE(log.contains("I [IMS6.0]: ResponseCallResponse() handle:a session:0"));
}
