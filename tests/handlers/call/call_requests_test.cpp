// Call requests as the stack receives them: argument and field order, what
// is left behind, defaults of absent bodies and fields, and the log lines
// around the hand-over.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "handlers/handlers.h"
#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

namespace {

void addPair(imsCommonStruc::ExtraHeader* headers, const char* key, const char* value) {
    auto* pair = headers->add_pair();
    pair->set_key(key);
    pair->set_value(value);
}

struct RequestCase {
    const char* name;
    int reqid;
    std::function<void(Request&)> fill;
    std::string expected;
};

void fillMakeCall(Request& r) {
    auto* b = r.mutable_requestmakecall();
    b->set_handle(3);
    b->set_peeruri("sip:b@x");
    b->set_calltype(imsCommonStruc::CallType(2));
    b->set_codec(imsCommonStruc::CodecType(1));
    b->set_mode(4);
    b->set_direction(5);
    b->set_letteringtext("hello");
    b->set_typeofemergencyservice("police");
    b->add_ecscflist("e1");
    b->add_ecscflist("e2");
    b->set_ecscfport(5060);
    b->mutable_additionalcontents()->set_mimetype("application/pidf+xml");
    b->mutable_additionalcontents()->set_contents("<p/>");
    b->mutable_additionalcontents()->set_rawcontents("RAW");
    b->set_origuri("sip:a@x");
    b->set_dispname("A");
    b->set_dialednumber("112");
    b->set_cli("cli");
    b->set_softphonee911pani("pani");
    addPair(b->mutable_additionalsipheaders(), "P-B", "1");
    addPair(b->mutable_additionalsipheaders(), "P-A", "2");
    addPair(b->mutable_additionalsipheaders(), "P-B", "3");
    b->set_alertinfo("alert");
    b->set_photoring("ring");
}

void fillMakeConfCall(Request& r) {
    auto* b = r.mutable_requestmakeconfcall();
    b->set_handle(5);
    b->set_confuri("sip:conf@x");
    b->set_calltype(imsCommonStruc::CallType(2));
    b->set_conftype(imsCommonStruc::ConfType(1));
    b->set_eventsubscribe("ev");
    b->set_dialogtype("dt");
    b->add_sessionid(7);
    b->add_sessionid(8);
    b->add_participants("p1");
    b->add_participants("p2");
    b->set_origuri("o");
    b->set_referuritype("rt");
    b->set_referuriasserted("ra");
    b->set_useanonymousupdate("true");
    addPair(b->mutable_extraheaders(), "K", "1");
    addPair(b->mutable_extraheaders(), "K", "2");
}

const char* const kConfArgs =
    R"([5,"sip:conf@x",2,1,"ev","dt","o","rt","ra","true",[7,8],["p1","p2"],{"K":"1"}])";

std::string confCall(int id) {
    return R"({"class":"ConfCallSetupData","id":)" + std::to_string(id) + R"(,"args":)" +
           kConfArgs + "}";
}

std::vector<RequestCase> requestCases() {
    return {
        {"201 whole: position 7 empty, lettering and rawContents dropped, first header wins", 201,
         fillMakeCall,
         R"({"class":"CallSetupData","id":201,"args":[3,"sip:b@x","sip:a@x","A","112","",2,1,4,5,
             {"mimeType":"application/pidf+xml","contents":"<p/>"},"cli","pani",
             {"P-A":"2","P-B":"1"},"alert","ring"],
             "members":{"mEcscfList":["e1","e2"],"mEcscfPort":5060}})"},
        {"201 without body: no contents, no port", 201, [](Request&) {},
         R"({"class":"CallSetupData","id":201,"args":[0,"","","","","",0,0,0,0,null,"","",{},"",""],
             "members":{"mEcscfList":[],"mEcscfPort":0}})"},
        {"201 negative port is written", 201,
         [](Request& r) { r.mutable_requestmakecall()->set_ecscfport(-1); },
         R"({"class":"CallSetupData","id":201,"args":[0,"","","","","",0,0,0,0,null,"","",{},"",""],
             "members":{"mEcscfList":[],"mEcscfPort":-1}})"},
        {"202 with reason", 202,
         [](Request& r) {
             auto* b = r.mutable_requestendcall();
             b->set_session(7);
             auto* reason = b->mutable_endreason();
             reason->set_protocol("SIP");
             reason->set_cause(486);
             reason->set_text("Busy");
             reason->add_extension("x1");
             reason->add_extension("x2");
             reason->set_islocalrelease(true);
         },
         R"({"class":"CallEndData","id":202,"fields":{"mSession":7,"mReason":{"mProtocol":"SIP",
             "mCause":486,"mText":"Busy","mExtension":["x1","x2"],"mIsLocalRelease":true}}})"},
        {"202 with empty reason", 202,
         [](Request& r) { r.mutable_requestendcall()->mutable_endreason(); },
         R"({"class":"CallEndData","id":202,"fields":{"mSession":0,"mReason":{"mProtocol":"",
             "mCause":0,"mText":"","mExtension":[],"mIsLocalRelease":false}}})"},
        {"202 without reason", 202, [](Request& r) { r.mutable_requestendcall()->set_session(7); },
         R"({"class":"CallEndData","id":202,"fields":{"mSession":7,"mReason":null}})"},
        {"205", 205,
         [](Request& r) {
             r.mutable_requestacceptcall()->set_session(7);
             r.mutable_requestacceptcall()->set_calltype(imsCommonStruc::CallType(3));
         },
         R"({"class":"CallAcceptData","id":205,"args":[7,3]})"},
        {"214 without code or phrase", 214,
         [](Request& r) { r.mutable_requestrejectcall()->set_session(7); },
         R"({"class":"CallRejectData","id":214,"fields":{"mSession":7,"mStatusCode":0,"mReasonPhrase":""}})"},
        {"214", 214,
         [](Request& r) {
             r.mutable_requestrejectcall()->set_session(7);
             r.mutable_requestrejectcall()->set_statuscode(486);
             r.mutable_requestrejectcall()->set_reasonphrase("Busy Here");
         },
         R"({"class":"CallRejectData","id":214,"fields":{"mSession":7,"mStatusCode":486,
             "mReasonPhrase":"Busy Here"}})"},
        {"218 without headers: no setter call", 218,
         [](Request& r) { r.mutable_requestprogressincomingcall()->set_session(7); },
         R"({"class":"CallSessionId","id":218,"args":[7],"calls":[]})"},
        {"218 with empty headers: one call", 218,
         [](Request& r) { r.mutable_requestprogressincomingcall()->mutable_extraheader(); },
         R"({"class":"CallSessionId","id":218,"args":[0],"calls":[["setExtraHeader",[{}]]]})"},
        {"218 first header wins", 218,
         [](Request& r) {
             auto* b = r.mutable_requestprogressincomingcall();
             b->set_session(7);
             addPair(b->mutable_extraheader(), "X", "first");
             addPair(b->mutable_extraheader(), "", "empty key");
             addPair(b->mutable_extraheader(), "X", "second");
         },
         R"({"class":"CallSessionId","id":218,"args":[7],
             "calls":[["setExtraHeader",[{"":"empty key","X":"first"}]]]})"},
        {"203 leaves the handle behind", 203,
         [](Request& r) {
             r.mutable_requestholdcall()->set_handle(5);
             r.mutable_requestholdcall()->set_session(7);
         },
         R"({"class":"CallSessionId","id":203,"args":[7],"calls":[]})"},
        {"203 session above 2^31 is an int", 203,
         [](Request& r) { r.mutable_requestholdcall()->set_session(0xFFFFFFFFu); },
         R"({"class":"CallSessionId","id":203,"args":[-1],"calls":[]})"},
        {"204", 204, [](Request& r) { r.mutable_requestresumecall()->set_session(7); },
         R"({"class":"CallSessionId","id":204,"args":[7],"calls":[]})"},
        {"219", 219, [](Request& r) { r.mutable_requestholdvideo()->set_session(7); },
         R"({"class":"CallSessionId","id":219,"args":[7],"calls":[]})"},
        {"220", 220, [](Request& r) { r.mutable_requestresumevideo()->set_session(7); },
         R"({"class":"CallSessionId","id":220,"args":[7],"calls":[]})"},
        {"223", 223,
         [](Request& r) {
             auto* b = r.mutable_requeststartcamera();
             b->set_handle(5);
             b->set_session(7);
             b->set_camera(1);
         },
         R"({"class":"StartCamera","id":223,"args":[7,1]})"},
        {"226 names no call", 226, [](Request& r) { r.mutable_requeststopcamera()->set_handle(5); },
         R"({"class":"StopCamera","id":226,"args":[]})"},
        {"206 with only the required fields", 206,
         [](Request& r) {
             r.mutable_requestupdatecall()->set_session(7);
             r.mutable_requestupdatecall()->set_action(
                 imsCommonStruc::Request_RequestUpdateCall::CODEC_CHANGE);
         },
         R"({"class":"CallUpdateData","id":206,"fields":{"mSession":7,"mAction":1,"mCodecType":0,
             "mCause":0,"mReasonText":""}})"},
        {"206", 206,
         [](Request& r) {
             auto* b = r.mutable_requestupdatecall();
             b->set_session(7);
             b->set_codectype(imsCommonStruc::CodecType(2));
             b->set_cause(3);
             b->set_reasontext("why");
         },
         R"({"class":"CallUpdateData","id":206,"fields":{"mSession":7,"mAction":0,"mCodecType":2,
             "mCause":3,"mReasonText":"why"}})"},
        {"216", 216,
         [](Request& r) {
             auto* b = r.mutable_requestmodifycalltype();
             b->set_session(7);
             b->set_oldtype(1);
             b->set_newtype(2);
         },
         R"({"class":"ModifyCallTypeData","id":216,"args":[7,1,2]})"},
        {"217", 217,
         [](Request& r) {
             auto* b = r.mutable_requestreplymodifycalltype();
             b->set_session(7);
             b->set_reqtype(1);
             b->set_curtype(2);
             b->set_reptype(3);
         },
         R"({"class":"ReplyModifyCallType","id":217,"fields":{"mSession":7,"mReqType":1,"mCurType":2,
             "mRepType":3}})"},
        {"221", 221,
         [](Request& r) {
             r.mutable_requestrejectmodifycalltype()->set_session(7);
             r.mutable_requestrejectmodifycalltype()->set_reason(4);
         },
         R"({"class":"RejectModifyCallType","id":221,"fields":{"mSession":7,"mReason":4}})"},
        {"207", 207,
         [](Request& r) {
             auto* b = r.mutable_requestsenddtmf();
             b->set_handle(5);
             b->set_session(7);
             b->set_code(11);
         },
         R"({"class":"CallSendDtmf","id":207,"fields":{"mHandle":5,"mSession":7,"mCode":11}})"},
        {"225 without body", 225, [](Request&) {},
         R"({"class":"AudioInterfaceData","id":225,"fields":{"mHandle":0,"mMode":""}})"},
        {"225", 225,
         [](Request& r) {
             r.mutable_requestupdateaudiointerface()->set_handle(5);
             r.mutable_requestupdateaudiointerface()->set_mode("speaker");
         },
         R"({"class":"AudioInterfaceData","id":225,"fields":{"mHandle":5,"mMode":"speaker"}})"},
        {"229 with contents, rawContents dropped", 229,
         [](Request& r) {
             auto* b = r.mutable_requestsendinfo();
             b->set_handle(5);
             b->set_session(7);
             b->set_calltype(imsCommonStruc::CallType(2));
             b->mutable_additionalcontents()->set_mimetype("application/dtmf-relay");
             b->mutable_additionalcontents()->set_contents("Signal=1");
             b->mutable_additionalcontents()->set_rawcontents("RAW");
         },
         R"({"class":"CallSendInfo","id":229,"args":[5,7,2,
             {"mimeType":"application/dtmf-relay","contents":"Signal=1"}]})"},
        {"229 without contents", 229,
         [](Request& r) { r.mutable_requestsendinfo()->set_session(7); },
         R"({"class":"CallSendInfo","id":229,"args":[0,7,0,null]})"},
        {"228 without expireTime", 228,
         [](Request& r) {
             auto* b = r.mutable_requestpublishdialog();
             b->set_handle(5);
             b->set_origuri("o");
             b->set_dispname("d");
             b->set_xmlbody("<dialog-info/>");
         },
         R"({"class":"CallPublishData","id":228,"fields":{"mHandle":5,"mOrigUri":"o","mDispName":"d",
             "mXmlBody":"<dialog-info/>","mExpireTime":0}})"},
        {"209", 209, fillMakeConfCall, confCall(209)},
        {"222 reads the body of 209", 222, fillMakeConfCall, confCall(222)},
        {"222 with another body only", 222, fillMakeCall,
         R"({"class":"ConfCallSetupData","id":222,"args":[0,"",0,0,"","","","","","",[],[],{}]})"},
        {"215", 215,
         [](Request& r) {
             auto* b = r.mutable_requestupdateconfcall();
             b->set_session(7);
             b->set_cmd(2);
             b->set_participantid(3);
             b->set_participant("sip:p@x");
         },
         R"({"class":"ConfCallUpdateSession","id":215,"args":[7,2,3,"sip:p@x"]})"},
        {"212 leaves replacingSession behind", 212,
         [](Request& r) {
             auto* b = r.mutable_requesttransfercall();
             b->set_handle(5);
             b->set_session(7);
             b->set_targeturi("sip:t@x");
             b->set_replacingsession(9);
         },
         R"({"class":"CallTransferData","id":212,"fields":{"mHandle":5,"mSession":7,"mExtraText":"",
             "mTargetUri":"sip:t@x"}})"},
        {"213 refused without code", 213,
         [](Request& r) {
             r.mutable_requestaccepttransfercall()->set_handle(5);
             r.mutable_requestaccepttransfercall()->set_session(7);
         },
         R"({"class":"AcceptTransferData","id":213,"fields":{"mSession":7,"mAccept":false,
             "mStatusCode":0,"mReasonPhrase":""}})"},
        {"213", 213,
         [](Request& r) {
             auto* b = r.mutable_requestaccepttransfercall();
             b->set_session(7);
             b->set_accept(true);
             b->set_statuscode(202);
             b->set_reasonphrase("Accepted");
         },
         R"({"class":"AcceptTransferData","id":213,"fields":{"mSession":7,"mAccept":true,
             "mStatusCode":202,"mReasonPhrase":"Accepted"}})"},
        {"227", 227,
         [](Request& r) {
             r.mutable_requestcanceltransfercall()->set_handle(5);
             r.mutable_requestcanceltransfercall()->set_session(7);
         },
         R"({"class":"CancelCallTransferData","id":227,"fields":{"mHandle":5,"mSession":7}})"},
        {"224", 224,
         [](Request& r) {
             auto* b = r.mutable_requestpullingcall();
             b->set_handle(5);
             b->set_pullinguri("pu");
             b->set_targeturi("tu");
             b->set_origuri("ou");
             b->set_callid("ci");
             b->set_localtag("lt");
             b->set_remotetag("rt");
             b->set_calltype(imsCommonStruc::CallType(2));
             b->set_codec(imsCommonStruc::CodecType(1));
             b->set_audiodirection(3);
             b->set_videodirection(4);
             b->set_isvideoportzero(true);
             b->set_mdmnextnumber("mx");
         },
         R"({"class":"CallPullingData","id":224,"fields":{"mHandle":5,"mPullingUri":"pu",
             "mTargetUri":"tu","mOrigUri":"ou","mCallType":2,"mCodec":1,"mExtraValue":0,
             "mAudioDirection":3,"mVideoDirection":4,"mIsVideoPortZero":true,"mCallId":"ci",
             "mLocalTag":"lt","mRemoteTag":"rt","mMdmnExtNumber":"mx"}})"},
    };
}

}  // namespace

TEST(CallRequests, ReachTheStackAsTheirRecords) {
    for (const auto& c : requestCases()) {
        Request request;
        request.set_reqid(imsCommonStruc::Id(c.reqid));
        c.fill(request);
        auto records = dispatch(request, 0xFFFFFFFFu);
        ASSERT_EQ(records.size(), 1u) << c.name;
        EXPECT_EQ(records[0].token, 0xFFFFFFFFu) << c.name;
        EXPECT_EQ(records[0].json, Json::parse(c.expected)) << c.name;
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
    struct Case {
        int reqid;
        std::function<void(Request&)> fill;
        const char* line;
    };
    const Case cases[] = {
        {203, [](Request& r) { r.mutable_requestholdcall()->set_session(7); },
         "I [IMS6.0]: DispatchHoldCall() session: 7"},
        {204, [](Request& r) { r.mutable_requestresumecall()->set_session(7); },
         "I [IMS6.0]: DispatchResumeCall() session: 7"},
        {219, [](Request& r) { r.mutable_requestholdvideo()->set_session(7); },
         "I [IMS6.0]: DispatchHoldVideo() session: 7"},
        {220, [](Request& r) { r.mutable_requestresumevideo()->set_session(7); },
         "I [IMS6.0]: DispatchResumeVideo() session: 7"},
        {223, [](Request& r) { r.mutable_requeststartcamera()->set_camera(2); },
         "I [IMS6.0]: DispatchStartCamera() cameraId: 2"},
        {226, [](Request&) {}, "I [IMS6.0]: DispatchStopCamera()"},
    };
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    s_velar = Velar::GetInstance();
    for (const auto& c : cases) {
        Request request;
        request.set_reqid(imsCommonStruc::Id(c.reqid));
        c.fill(request);
        std::vector<std::unique_ptr<ImsData>> taken;
        s_taken = &taken;
        std::vector<std::string> lines;
        {
            LogCapture log;
            velar_sim::setCaptureHook(markingHook, nullptr);
            s_commandMap.at(c.reqid).dispatchFunction(1, request, nullptr);
            velar_sim::setCaptureHook(nullptr, nullptr);
            lines = log.lines();
        }
        const std::vector<std::string> expected = {"I test: stack took " + std::to_string(c.reqid),
                                                   c.line};
        EXPECT_EQ(lines, expected) << c.reqid;
    }
}

TEST(CallRequests, ConferenceSessionsAreLoggedOnlyAboveLevelOne) {
    Request request;
    request.set_reqid(imsCommonStruc::Id(209));
    fillMakeConfCall(request);
    const int saved = logLevel;
    for (int level : {1, 2}) {
        logLevel = level;
        LogCapture log;
        dispatch(request);
        EXPECT_EQ(log.contains("D [IMS6.0]: participants 7"), level > 1) << level;
        EXPECT_EQ(log.contains("D [IMS6.0]: participants 8"), level > 1) << level;
        EXPECT_TRUE(log.contains("I [IMS6.0]: DispatchMakeConfCall()"));
    }
    logLevel = saved;
}
