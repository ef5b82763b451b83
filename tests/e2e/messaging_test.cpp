// Chat over the real socket: every IM request and notification id, one row
// each at least. Records without a message or session are compared whole.
#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "tests/support/e2e.h"

using namespace velard_test;
using imsCommonStruc::Notify;
using imsCommonStruc::Request;
using imsCommonStruc::Response;

namespace {

Json record(const char* cls, int id, Json fields) {
    return Json{{"class", cls}, {"id", id}, {"fields", std::move(fields)}};
}

}  // namespace

TEST(MessagingEndToEnd, EveryIdOfAChatCrossesTheSocket) {
    struct Row {
        std::function<void(Request&)> fill;
        const char* at;  // where in the stack's record to compare ("" for all of it)
        const char* expected;
        Json answer;
        std::function<bool(const Response&)> check;
    };
    const Row rows[] = {
        {[](Request& r) { r.mutable_requeststartimsession()->set_registrationhandle(2); },
         "/args/0", "2", record("StartSessionRespData", 501, {{"fwSessionId", "fw"}}),
         [](const Response& r) { return r.startsessionresp().fwsessionid() == "fw"; }},
        {[](Request& r) {
             r.mutable_requestacceptimsession()->set_sessionid(8);
             r.mutable_requestacceptimsession()->set_useralias("Me");
         },
         "", R"({"class":"RequestAcceptImSession","id":502,"args":[8,"Me"]})",
         record("StartSessionRespData", 502, {{"error", {{"type", 1}, {"code", 488}}}}),
         [](const Response& r) { return r.startsessionresp().imerror().errorcode() == 488; }},
        {[](Request& r) {
             r.mutable_requestcloseimsession()->set_sessionid(9);
             r.mutable_requestcloseimsession()->mutable_reasonhdr()->set_code(200);
             r.mutable_requestcloseimsession()->mutable_reasonhdr()->set_text("bye");
         },
         "", R"({"class":"CloseImSessionData","id":503,
                 "fields":{"handle":9,"reason":{"code":200,"text":"bye"}}})",
         record("CloseSessionRespData", 503, {{"handle", 42}}),
         [](const Response& r) { return r.closesessionresp().sessionhandle() == 42; }},
        {[](Request& r) {
             r.mutable_requestrejectimsession()->set_sessionhandle(10);
             r.mutable_requestrejectimsession()->set_sipcode(486);
             auto* w = r.mutable_requestrejectimsession()->mutable_warninghdr();
             w->set_code(399);
             w->set_host("h");
             w->set_text("t");
         },
         "", R"({"class":"RequestRejectImSession","id":508,"fields":{"handle":10,"sipCode":486,
                 "warning":{"code":399,"host":"h","text":"t"}}})",
         record("CloseSessionRespData", 508, {{"error", {{"type", 9}}}}),
         [](const Response& r) { return r.closesessionresp().imerror().errortype() == 9; }},
        {[](Request& r) {
             r.mutable_requestsendimmessage()->mutable_sessiondata()->set_sessionhandle(44);
         },
         "/fields/handle", "44", record("SendImMessageRespData", 504, {{"imdnMessageId", "m"}}),
         [](const Response& r) { return r.sendimmessageresp().imdnmessageid() == "m"; }},
        {[](Request& r) {
             r.mutable_requestsendimcomposingstatus()->mutable_status()->set_interval(30);
         },
         "/fields/status", R"({"contentType":"","interval":30,"isActive":false})",
         record("SendImMessageRespData", 505, {{"handle", 45}}),
         [](const Response& r) { return r.sendimmessageresp().sessionid() == 45; }},
        {[](Request& r) {
             auto* b = r.mutable_requestsendimnotificationstatus();
             b->set_sessionid(13);
             b->mutable_status()->set_imdnmessageid("m");
             b->mutable_status()->set_imdndatetime("t");
             b->mutable_status()->set_status(imsCommonStruc::NOTIFICATION_STATUS_1);
             b->mutable_status()->set_imdnoriginalto("not read");
             b->mutable_status()->add_imdnrecroute()->set_uri("sip:r2");
             b->mutable_status()->add_imdnrecroute()->set_uri("sip:r1");
             b->mutable_status()->mutable_imdnrecroute(1)->set_name("r1");
             b->set_registrationhandle(4);
             b->set_uri("u");
             b->set_conversationid("cv");
             b->set_contributionid("ct");
             b->set_service(imsCommonStruc::IM_SERVICE_TYPE_2);
             b->set_preferredlineuri("pl");
             b->set_originalrecipienturi("or");
         },
         "", R"({"class":"RequestSendImNotiStatus","id":506,"fields":{"handle":13,
                 "imdnMessageId":"m","imdnDateTime":"t","status":1,
                 "imdnRecRoute":[{"name":"","uri":"sip:r2"},{"name":"r1","uri":"sip:r1"}],
                 "registrationHandle":4,"uri":"u","conversationId":"cv","contributionId":"ct",
                 "service":2,"preferredLineUri":"pl","originalRecipientUri":"or"}})",
         record("SendImMessageRespData", 506, Json::object()),
         [](const Response& r) { return r.sendimmessageresp().has_imdnmessageid(); }},
        {[](Request& r) {
             auto* b = r.mutable_requestupdateparticipants();
             b->set_sessionhandle(14);
             b->set_reqtype(imsCommonStruc::GC_REQ_TYPE_4);
             b->add_receiver("sip:b");
             b->add_receiver("sip:a");
             b->set_useralias("Me");
             b->set_subject("topic");
         },
         "", R"({"class":"RequestUpdateParticipants","id":510,"fields":{"handle":14,
                 "reqType":4,"receivers":["sip:b","sip:a"],"subject":"topic","userAlias":"Me"}})",
         record("UpdateParticipantsRespData", 510, {{"error", {{"type", 5}}}}),
         [](const Response& r) { return r.updateparticipantsresp().imerror().errortype() == 5; }},
    };
    Daemon d;
    uint32_t token = 500;
    for (const auto& row : rows) {
        const int id = row.answer["id"];
        SCOPED_TRACE(id);
        Request request;
        request.set_reqid(static_cast<imsCommonStruc::Id>(id));
        row.fill(request);
        d.send(request, ++token);
        Json got = d.nextStackRequest();
        EXPECT_EQ(got["token"], token);
        EXPECT_EQ(got["record"]["id"], id);
        EXPECT_EQ(got["record"].value(Json::json_pointer(row.at), Json()),
                  Json::parse(row.expected));
        d.respond(token, row.answer);
        Frame f = d.nextFrame();
        EXPECT_EQ(std::tuple(f.type, f.token, int(f.response().resid())),
                  std::tuple(1u, token, id));
        EXPECT_TRUE(row.check(f.response()));
    }

    const std::pair<Json, std::function<bool(const Notify&)>> notifications[] = {
        // The three headers go out unless their code (timer) is -1, with every
        // field, empty ones too; imError and sessionUri always.
        {record("SessionStartedData", 11001, Json::object()),
         [](const Notify& n) {
             const auto& s = n.sessionstarted();
             return !s.has_retryhdr() && !s.has_warninghdr() && s.has_sessionuri() &&
                    s.has_imerror();
         }},
        {record("SessionStartedData", 11001,
                {{"retry", {{"retryTimer", 0}}}, {"warning", {{"code", 0}}}}),
         [](const Notify& n) {
             const auto& s = n.sessionstarted();
             return s.retryhdr().has_contactvalue() && s.warninghdr().has_text();
         }},
        {record("SessionClosedData", 11002, Json::object()),
         [](const Notify& n) { return !n.sessionclosed().has_reasonhdr(); }},
        {record("SessionClosedData", 11002, {{"reason", {{"code", 0}}}}),
         [](const Notify& n) { return n.sessionclosed().reasonhdr().has_text(); }},
        {record("SessionEstablishedData", 11003, {{"acceptContent", Json::array({"text/plain"})}}),
         [](const Notify& n) { return n.sessionestablished().acceptcontent(0) == "text/plain"; }},
        // A first message goes with an invitation only when it has an IMDN id.
        {record("ImSessionInvitedData", 11004, {{"message", {{"body", "b"}}}}),
         [](const Notify& n) { return !n.imsessioninvited().has_messageparam(); }},
        {Json::parse(R"({"class":"ImSessionInvitedData","id":11004,"fields":{"message":{
             "sender":"s","userAlias":"x","body":"b","contentType":"c","reliableMessage":"r",
             "extraFt":true,"imdn":{"messageId":"m"}}}})"),
         [](const Notify& n) {
             const auto& m = n.imsessioninvited().messageparam();
             const std::string kept = m.sender() + m.body() + m.contenttype() +
                                      m.reliablemessage() + m.imdn().messageid();
             return kept == "sbcrm" && m.extraft() && m.imdn().has_datetime() && !m.has_useralias();
         }},
        {record("ImMessageReceivedData", 11005, {{"handle", 3}, {"message", {{"body", "b"}}}}),
         [](const Notify& n) { return n.immessagereceived().messageparam().body() == "b"; }},
        {record("ImdnReceivedData", 11006, {{"imdn", {{"messageId", "m"}}}}),
         [](const Notify& n) {
             return n.imnotificationstatusreceived().status().imdnmessageid() == "m";
         }},
        {record("ImComposingReceivedData", 11007,
                {{"uri", "u"}, {"status", {{"interval", 15}}}, {"userAlias", "a"}}),
         [](const Notify& n) {
             const auto& c = n.imcomposingstatusreceived();
             return c.uri() + c.useralias() == "ua" && c.status().interval() == 15;
         }},
        {record("ImMessageReportData", 11008, {{"error", {{"type", 3}}}, {"isChat", true}}),
         [](const Notify& n) {
             const auto& r = n.immessagereportreceived();
             return r.ischat() &&
                    r.imerror().errortype() == imsCommonStruc::ImError_Type_ENGINE_ERROR;
         }},
        {record("ImConferenceInfoData", 19000,
                {{"users", Json::array({Json{{"entity", "sip:a"}}})}}),
         [](const Notify& n) { return n.imconfinfoupdated().users(0).entity() == "sip:a"; }},
    };
    for (const auto& [rec, check] : notifications) {
        SCOPED_TRACE(rec["id"].get<int>());
        d.notify(rec);
        Frame f = d.nextFrame();
        EXPECT_EQ(std::pair(f.type, int(f.notify().notifyid())),
                  std::pair(2u, rec["id"].get<int>()));
        EXPECT_TRUE(check(f.notify()));
    }
}
