// Chat over the real socket: every IM request id reaches the stack as its
// record and its answer comes back to the client under the same token; every
// IM notification id reaches the client as its wire message.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/e2e.h"

using namespace velard_test;
using Response = imsCommonStruc::Response;
using Notify = imsCommonStruc::Notify;

namespace {

Json record(const char* cls, int id, Json fields) {
    return Json{{"class", cls}, {"id", id}, {"fields", std::move(fields)}};
}

}  // namespace

TEST(MessagingEndToEnd, EveryIdOfAChatCrossesTheSocket) {
    struct Row {
        std::function<void(imsCommonStruc::Request&)> fill;
        std::vector<std::pair<const char*, Json>> stack;  // JSON pointers into the record
        Json answer;
        std::function<void(const Response&)> check;
    };
    const Row rows[] = {
        {[](auto& r) {
             auto* b = r.mutable_requeststartimsession();
             b->set_registrationhandle(1);
             b->mutable_session()->set_subject("hi");
             b->mutable_messageparam()->set_body(std::string("x\0y", 3));
         },
         {{"/class", "ImStartSessionData"},
          {"/args/0", 1},
          {"/args/1/subject", "hi"},
          {"/args/2/body", std::string("x\0y", 3)}},
         record("StartSessionRespData", 501, {{"handle", 40}, {"fwSessionId", "fw"}}),
         [](const Response& r) { EXPECT_EQ(r.startsessionresp().fwsessionid(), "fw"); }},
        {[](auto& r) { r.mutable_requestacceptimsession()->set_useralias("Me"); },
         {{"/class", "RequestAcceptImSession"}, {"/args/1", "Me"}},
         record("StartSessionRespData", 502, {{"error", {{"type", 1}, {"code", 488}}}}),
         [](const Response& r) { EXPECT_EQ(r.startsessionresp().imerror().errorcode(), 488); }},
        {[](auto& r) { r.mutable_requestcloseimsession()->mutable_reasonhdr()->set_code(200); },
         {{"/class", "CloseImSessionData"}, {"/fields/reason/code", 200}},
         record("CloseSessionRespData", 503, {{"handle", 42}}),
         [](const Response& r) { EXPECT_EQ(r.closesessionresp().sessionhandle(), 42u); }},
        {[](auto& r) { r.mutable_requestrejectimsession()->set_sipcode(486); },
         {{"/class", "RequestRejectImSession"}, {"/fields/warning/code", -1}},
         record("CloseSessionRespData", 508, {{"handle", 43}}),
         [](const Response& r) { EXPECT_EQ(r.closesessionresp().sessionhandle(), 43u); }},
        {[](auto& r) {
             r.mutable_requestsendimmessage()->mutable_sessiondata()->set_sessionhandle(44);
             r.mutable_requestsendimmessage()->mutable_messageparam()->set_sender("sip:me");
         },
         {{"/class", "RequestSendImMessage"},
          {"/fields/handle", 44},
          {"/fields/message/sender", ""}},
         record("SendImMessageRespData", 504, {{"handle", 44}, {"imdnMessageId", "m"}}),
         [](const Response& r) { EXPECT_EQ(r.sendimmessageresp().imdnmessageid(), "m"); }},
        {[](auto& r) {
             r.mutable_requestsendimcomposingstatus()->mutable_status()->set_interval(30);
         },
         {{"/class", "RequestSendImComposingStatus"}, {"/fields/status/interval", 30}},
         record("SendImMessageRespData", 505, {{"handle", 45}}),
         [](const Response& r) { EXPECT_EQ(r.sendimmessageresp().sessionid(), 45u); }},
        {[](auto& r) {
             auto* b = r.mutable_requestsendimnotificationstatus();
             b->mutable_status()->set_status(imsCommonStruc::NOTIFICATION_STATUS_1);
             b->set_service(imsCommonStruc::IM_SERVICE_TYPE_1);
         },
         {{"/class", "RequestSendImNotiStatus"}, {"/fields/status", 1}, {"/fields/service", 1}},
         record("SendImMessageRespData", 506, {{"imdnMessageId", "x"}}),
         [](const Response& r) { EXPECT_EQ(r.sendimmessageresp().imdnmessageid(), "x"); }},
        {[](auto& r) { r.mutable_requestupdateparticipants()->add_receiver("sip:carol"); },
         {{"/class", "RequestUpdateParticipants"}, {"/fields/receivers/0", "sip:carol"}},
         record("UpdateParticipantsRespData", 510, {{"error", {{"type", 5}}}}),
         [](const Response& r) {
             EXPECT_EQ(r.updateparticipantsresp().imerror().errortype(),
                       imsCommonStruc::ImError_Type_NETWORK_ERROR);
         }},
    };
    Daemon d;
    uint32_t token = 500;
    for (const auto& row : rows) {
        const int id = row.answer["id"];
        SCOPED_TRACE(id);
        imsCommonStruc::Request request;
        request.set_reqid(static_cast<imsCommonStruc::Id>(id));
        row.fill(request);
        d.send(request, ++token);
        Json got = d.nextStackRequest();
        EXPECT_EQ(got["token"], token);
        EXPECT_EQ(got["record"]["id"], id);
        for (const auto& [path, value] : row.stack)
            EXPECT_EQ(got["record"].value(Json::json_pointer(path), Json()), value) << path;
        d.respond(token, row.answer);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u);
        EXPECT_EQ(f.token, token);
        EXPECT_EQ(f.response().resid(), id);
        row.check(f.response());
    }

    const std::pair<Json, std::function<void(const Notify&)>> notifications[] = {
        {record("SessionStartedData", 11001, {{"retry", {{"retryTimer", 5}}}}),
         [](const Notify& n) {
             EXPECT_EQ(n.sessionstarted().retryhdr().retrytimer(), 5);
             EXPECT_FALSE(n.sessionstarted().has_warninghdr());
         }},
        {record("SessionClosedData", 11002, {{"reason", {{"code", 410}}}}),
         [](const Notify& n) { EXPECT_EQ(n.sessionclosed().reasonhdr().code(), 410u); }},
        {record("SessionEstablishedData", 11003, {{"acceptContent", Json::array({"text/plain"})}}),
         [](const Notify& n) { EXPECT_EQ(n.sessionestablished().acceptcontent(0), "text/plain"); }},
        {record("ImSessionInvitedData", 11004,
                {{"handle", 4},
                 {"session", {{"sessionHandle", 77}}},
                 {"message", {{"body", "first"}, {"imdn", {{"messageId", "m-4"}}}}}}),
         [](const Notify& n) {
             EXPECT_EQ(n.imsessioninvited().session().basesessiondata().sessionhandle(), 4u);
             EXPECT_EQ(n.imsessioninvited().messageparam().body(), "first");
         }},
        {record("ImMessageReceivedData", 11005, {{"message", {{"body", std::string("a\0b", 3)}}}}),
         [](const Notify& n) {
             EXPECT_EQ(n.immessagereceived().messageparam().body(), std::string("a\0b", 3));
         }},
        {record("ImdnReceivedData", 11006, {{"imdn", {{"noti", Json::array({0, 1})}}}}),
         [](const Notify& n) { EXPECT_EQ(n.imnotificationstatusreceived().status().status(), 1); }},
        {record("ImComposingReceivedData", 11007, {{"status", {{"interval", 15}}}}),
         [](const Notify& n) {
             EXPECT_EQ(n.imcomposingstatusreceived().status().interval(), 15u);
         }},
        {record("ImMessageReportData", 11008, {{"isChat", true}, {"error", {{"type", 3}}}}),
         [](const Notify& n) {
             EXPECT_TRUE(n.immessagereportreceived().ischat());
             EXPECT_EQ(n.immessagereportreceived().imerror().errortype(),
                       imsCommonStruc::ImError_Type_ENGINE_ERROR);
         }},
        {record("ImConferenceInfoData", 19000,
                {{"users", Json::array({Json{{"entity", "sip:a"}}})}}),
         [](const Notify& n) { EXPECT_EQ(n.imconfinfoupdated().users(0).entity(), "sip:a"); }},
    };
    for (const auto& [rec, check] : notifications) {
        SCOPED_TRACE(rec["id"].get<int>());
        d.notify(rec);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.notify().notifyid(), rec["id"].get<int>());
        check(f.notify());
    }
}
