// IM handlers in process: what a request keeps and leaves behind, header
// defaults and field orders, the one validating handler, the -1 convention
// of answers, what an invitation carries, null records.
#include <gtest/gtest.h>

#include "handlers/handlers.h"
#include "tests/support/in_process.h"

using namespace velard_test;

namespace {

imsCommonStruc::Request make(int id) {
    imsCommonStruc::Request r;
    r.set_reqid(static_cast<imsCommonStruc::Id>(id));
    return r;
}

// Every field of a wire message set, so that what must be left is there.
void fillMessage(imsCommonStruc::ImMessageParam* m) {
    m->set_sender("sip:me");
    m->set_receiver("sip:you");
    m->set_useralias("Me");
    m->set_body(std::string("a\0b", 3));
    m->set_contenttype("text/plain");
    m->mutable_imdn()->set_messageid("mid");
    m->set_devicename("dev");
    m->set_reliablemessage("rel");
    m->set_xmsmessage("xms");
    m->set_extraft(true);
    m->set_isburnmsg(true);
    m->set_ispublicaccountmsg(true);
    m->set_silencesupported(true);
    m->add_cpimnamespaces()->set_name("ns");
    m->add_ccparticipants("sip:cc");
}

Json message(Json kept) {
    Json m = Json::parse(R"({"sender":"","userAlias":"","body":"a\u0000b",
        "contentType":"text/plain","imdn":{"messageId":"mid","datetime":"","noti":[],
        "recRoute":[],"deviceId":"","originalToHdr":""},"deviceName":"","reliableMessage":"",
        "xmsMessage":"xms","extraFt":true,"isBurnMsg":false,"isPublicAccountMsg":false,
        "cpimNamespaces":[],"receiver":"","silenceSupported":false,"ccParticipants":[]})");
    m.update(kept);
    return m;
}

}  // namespace

TEST(ImHandlers, RequestsReachTheStackAsTheirRecords) {
    std::vector<std::pair<imsCommonStruc::Request, Json>> cases;

    auto start = make(501);
    auto* b = start.mutable_requeststartimsession();
    b->set_registrationhandle(7);
    b->mutable_session()->mutable_basesessiondata()->set_isconference(true);
    b->mutable_session()->mutable_basesessiondata()->add_receivers("sip:a");
    b->mutable_session()->add_acceptwrappedtypes("message/cpim");
    fillMessage(b->mutable_messageparam());
    Json record = {{"class", "ImStartSessionData"},
                   {"id", 501},
                   {"args", {7, nullptr, message(Json::object())}}};
    record["args"][1] = Json::parse(R"({"sessionHandle":0,"id":"","isConference":true,
        "sessionUri":"","userAlias":"","receivers":["sip:a"],"contributionId":"",
        "conversationId":"","inReplyToContributionId":"","preferredLineUri":"",
        "sdpContentType":"","serviceId":"","sender":"","subject":"","isRejoin":false,
        "isClosed":false,"isInviteforbye":false,"isExtension":false,"acceptTypes":[],
        "acceptWrappedTypes":["message/cpim"]})");
    cases.emplace_back(start, record);

    auto send = make(504);
    send.mutable_requestsendimmessage()->mutable_sessiondata()->set_sessionhandle(11);
    fillMessage(send.mutable_requestsendimmessage()->mutable_messageparam());
    cases.emplace_back(
        send, Json{{"class", "RequestSendImMessage"},
                   {"id", 504},
                   {"fields",
                    {{"handle", 11},
                     {"message", message({{"deviceName", "dev"},
                                          {"reliableMessage", "rel"},
                                          {"ccParticipants", Json::array({"sip:cc"})}})}}}});

    // A close takes reasonHdr as it stands (code 0); a reject marks an absent
    // warning with -1, and a present one keeps the wire's default code -1.
    cases.emplace_back(make(503), Json::parse(R"({"class":"CloseImSessionData","id":503,
        "fields":{"handle":0,"reason":{"code":0,"text":""}}})"));
    auto reject = make(508);
    reject.mutable_requestrejectimsession()->set_sipcode(603);
    cases.emplace_back(reject, Json::parse(R"({"class":"RequestRejectImSession","id":508,
        "fields":{"handle":0,"sipCode":603,"warning":{"code":-1,"host":"","text":""}}})"));
    reject.mutable_requestrejectimsession()->mutable_warninghdr()->set_host("h");
    cases.emplace_back(reject, Json::parse(R"({"class":"RequestRejectImSession","id":508,
        "fields":{"handle":0,"sipCode":603,"warning":{"code":-1,"host":"h","text":""}}})"));

    auto noti = make(506);
    auto* status = noti.mutable_requestsendimnotificationstatus()->mutable_status();
    status->set_status(imsCommonStruc::NOTIFICATION_STATUS_1);
    status->set_imdnoriginalto("not read");
    for (const char* uri : {"sip:r2", "sip:r1"}) {
        status->add_imdnrecroute()->set_uri(uri);
        status->mutable_imdnrecroute(status->imdnrecroute_size() - 1)->set_name(uri + 4);
    }
    noti.mutable_requestsendimnotificationstatus()->set_originalrecipienturi("sip:o");
    cases.emplace_back(noti, Json::parse(R"({"class":"RequestSendImNotiStatus","id":506,
        "fields":{"handle":0,"imdnMessageId":"","imdnDateTime":"","status":1,
        "imdnRecRoute":[{"name":"r2","uri":"sip:r2"},{"name":"r1","uri":"sip:r1"}],
        "registrationHandle":0,"uri":"","conversationId":"","contributionId":"","service":0,
        "preferredLineUri":"","originalRecipientUri":"sip:o"}})"));

    auto update = make(510);
    update.mutable_requestupdateparticipants()->set_useralias("Me");
    update.mutable_requestupdateparticipants()->set_subject("topic");
    cases.emplace_back(update, Json::parse(R"({"class":"RequestUpdateParticipants","id":510,
        "fields":{"handle":0,"reqType":0,"receivers":[],"subject":"topic","userAlias":"Me"}})"));

    for (auto& [request, expected] : cases) EXPECT_EQ(dispatchOne(request), expected);
}

// Numbers outside the enumerations cannot come off the socket (the parser
// keeps them out of the field), so the handler is called with them directly.
TEST(ImHandlers, NotificationStatusOutsideItsValuesReachesNothing) {
    const std::tuple<int, int, const char*> cases[] = {{2, 0, "Unsupported status!"},
                                                       {-1, 9, "Unsupported status!"},
                                                       {0, 3, "Unsupported service type!"},
                                                       {1, -1, "Unsupported service type!"},
                                                       {1, 2, nullptr}};
    for (auto [status, service, error] : cases) {
        auto request = make(506);
        auto* b = request.mutable_requestsendimnotificationstatus();
        b->mutable_status()->set_status(static_cast<imsCommonStruc::NotificationStatus>(status));
        b->set_service(static_cast<imsCommonStruc::ImServiceType>(service));
        StackCapture capture;
        LogCapture log;
        DispatchIMSendNotiStatus(1, request, nullptr);
        EXPECT_EQ(capture.records.size(), error ? 0u : 1u);
        if (error) {
            EXPECT_EQ(log.lines().back(),
                      std::string("E [IMS6.0]: DispatchIMSendNotiStatus: ") + error);
        }
    }
}

TEST(ImHandlers, OptionalHeadersFollowTheMinusOneConvention) {
    // retry timer, warning code, reason code -> retryHdr, warningHdr, reasonHdr
    for (int v : {-1, 0, 30}) {
        Json h = {{"retry", {{"retryTimer", v}}}, {"warning", {{"code", v}}}};
        auto [rc, started] =
            notifyJson({{"class", "SessionStartedData"}, {"id", 11001}, {"fields", h}});
        EXPECT_EQ(started.sessionstarted().has_retryhdr(), v != -1);
        EXPECT_EQ(started.sessionstarted().has_warninghdr(), v != -1);
        // imError and sessionUri are always there.
        EXPECT_TRUE(started.sessionstarted().has_imerror() &&
                    started.sessionstarted().has_sessionuri());
        auto [rc2, closed] = notifyJson({{"class", "SessionClosedData"},
                                         {"id", 12002},
                                         {"fields", {{"reason", {{"code", v}}}}}});
        EXPECT_EQ(closed.sessionclosed().has_reasonhdr(), v != -1);
        EXPECT_EQ(closed.notifyid(), 12002);
    }
    // The same answer serves file transfer; only resid tells them apart.
    for (int id : {501, 550, 553}) {
        auto [rc, r] = respondJson(
            {{"class", "StartSessionRespData"}, {"id", id}, {"fields", Json::object()}});
        EXPECT_EQ(r.resid(), id);
        EXPECT_TRUE(r.startsessionresp().imerror().has_errortype());
    }
}

TEST(ImHandlers, InvitationCarriesItsOwnHandleAndAFirstMessageOnlyWithAnImdnId) {
    const Json session = Json::parse(R"({"sessionHandle":99,"receivers":["sip:r"],
        "isRejoin":true,"acceptTypes":["a"],"isClosed":true})");
    for (const char* id : {"", "m1"}) {
        Json fields = {
            {"handle", 5},
            {"session", session},
            {"message", {{"body", "hi"}, {"userAlias", "x"}, {"imdn", {{"messageId", id}}}}}};
        auto [rc, n] =
            notifyJson({{"class", "ImSessionInvitedData"}, {"id", 11004}, {"fields", fields}});
        const auto& invited = n.imsessioninvited();
        EXPECT_EQ(invited.session().basesessiondata().sessionhandle(), 5u);
        EXPECT_EQ(invited.session().basesessiondata().receivers(0), "sip:r");
        EXPECT_TRUE(invited.session().isclosed());
        EXPECT_FALSE(invited.session().has_isrejoin());
        EXPECT_EQ(invited.session().accepttypes_size(), 0);
        EXPECT_EQ(invited.has_messageparam(), *id != '\0');
        EXPECT_FALSE(invited.messageparam().has_useralias());
    }
    // Built without session or message, it reads as empty.
    auto [rc, n] = notifyJson(
        Json::parse(R"({"class":"ImSessionInvitedData","id":11004,"fields":{"handle":6}})"));
    EXPECT_EQ(rc, 0);
    EXPECT_FALSE(n.imsessioninvited().has_messageparam());
}

TEST(ImHandlers, ImdnCarriesOneStatusAndConferenceUsersTheirBlocks) {
    for (auto [noti, status] : {std::pair{"[0,1]", 1}, {"[5]", 0}, {"[]", -1}}) {
        auto [rc, n] = notifyJson(Json::parse(
            std::string(R"({"class":"ImdnReceivedData","id":11006,"fields":{"imdn":{"noti":)") +
            noti + "}}}"));
        const auto& s = n.imnotificationstatusreceived().status();
        EXPECT_EQ(s.has_status() ? s.status() : -1, status) << noti;
    }
    auto [rc, n] = notifyJson(Json::parse(R"({"class":"ImConferenceInfoData","id":19000,
        "fields":{"users":[{"endpoint":{"disconnectMethod":"bye"},"joiningInfo":{"reason":"r",
        "by":"b"},"disconnectionInfo":{"when":"t","by":"b"}},{}]}})"));
    const auto& full = n.imconfinfoupdated().users(0).endpoint();
    const auto& bare = n.imconfinfoupdated().users(1).endpoint();
    EXPECT_EQ(full.disconnectmethod(), "bye");
    EXPECT_EQ(full.joininginfo().ByteSizeLong(), 0u);  // reason and by never go out
    EXPECT_EQ(full.disconnectioninfo().when(), "t");
    EXPECT_FALSE(full.disconnectioninfo().has_by());
    EXPECT_FALSE(bare.has_disconnectmethod());
    EXPECT_TRUE(bare.has_joininginfo() && bare.has_disconnectioninfo());
}

TEST(ImHandlers, NullRecordsSendNothing) {
    using Response = int (*)(uint32_t, imsCommonStruc::Response&, ImsData*);
    using Notify = int (*)(imsCommonStruc::Notify&, ImsData*);
    const std::pair<Response, const char*> responses[] = {
        {ResponseStartSession, "invalid response: NULL"},
        {ResponseCloseSession, "invalid response: NULL"},
        {PrepareResponseIMSendMessage, "invalid response: NULL"},
        {ResponseUpdateParticipants, "invalid stackResponse: NULL"}};
    const std::pair<Notify, const char*> notifies[] = {
        {NotifySessionStarted, "invalid notify: NULL"},
        {NotifySessionClosed, "invalid response: NULL"},
        {NotifySessionEstablished, "invalid response: NULL"},
        {NotifyIncomingImChat, "invalid response: NULL"},
        {NotifyMessageReceived, "invalid response: NULL"},
        {NotifyImdnReceived, "invalid response: NULL"},
        {NotifyComposingStatusReceived, "invalid response: NULL"},
        {PrepareNotifyImMessageReportReceived,
         "PrepareNotifyImMessageReportReceived: invalid response: NULL"},
        {NotifyImConferenceInfoUpdate, "invalid response: NULL"}};
    for (auto [handler, error] : responses) {
        imsCommonStruc::Response r;
        LogCapture log;
        EXPECT_EQ(handler(1, r, nullptr), -1);
        EXPECT_EQ(log.lines().back(), std::string("E [IMS6.0]: ") + error);
    }
    for (auto [handler, error] : notifies) {
        imsCommonStruc::Notify n;
        LogCapture log;
        EXPECT_EQ(handler(n, nullptr), -1);
        EXPECT_EQ(log.lines().back(), std::string("E [IMS6.0]: ") + error);
    }
}
