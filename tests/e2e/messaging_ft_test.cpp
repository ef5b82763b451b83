// File transfer, standalone messages and group chat through the real daemon:
// every request and notification id of the family, from the client's frame
// to the stack's record and back. The field-by-field translations are
// checked in process; here each row shows that its id takes the right road.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

// True when every member of `part` is in `whole` with the same value;
// objects compare member by member, arrays element by element (of the same
// length), anything else as a whole.
bool containsPart(const Json& whole, const Json& part) {
    if (part.is_object()) {
        if (!whole.is_object()) return false;
        for (auto it = part.begin(); it != part.end(); ++it) {
            auto found = whole.find(it.key());
            if (found == whole.end() || !containsPart(*found, it.value())) return false;
        }
        return true;
    }
    if (part.is_array()) {
        if (!whole.is_array() || whole.size() != part.size()) return false;
        for (size_t i = 0; i < part.size(); i++)
            if (!containsPart(whole[i], part[i])) return false;
        return true;
    }
    return whole == part;
}

struct RequestRow {
    int id;
    std::function<void(ims::Request&)> request;
    const char* stackRecord;  // the part of the stack's record that must match
    const char* answer;       // the stack's answer, without its id
    std::function<void(const ims::Response&)> check;
};

struct NotifyRow {
    int id;
    const char* record;  // the stack's notification, without its id
    std::function<void(const ims::Notify&)> check;
};

}  // namespace

TEST(MessagingFtE2e, EveryRequestGoesDownAndItsAnswerComesBack) {
    const std::vector<RequestRow> rows = {
        {520,
         [](ims::Request& r) {
             auto* b = r.mutable_requestsendimslmmessage();
             b->set_registrationhandle(3);
             b->mutable_messageparam()->set_body(std::string("hi\0there", 8));
             b->mutable_messageparam()->set_isburnmsg(true);
             b->add_participant()->set_uri("sip:bob@x");
         },
         R"({"class":"RequestSendImSlmMessage","fields":{"handle":3,
             "message":{"body":"hi\u0000there","isBurnMsg":true},
             "participants":[{"uri":"sip:bob@x","copyControl":1}]}})",
         R"({"class":"SendImSlmMessageRespData","fields":{"imdnMessageId":"id-1",
             "retry":{"retryTimer":-1},"warning":{"code":0}}})",
         [](const ims::Response& r) {
             EXPECT_EQ(r.sendimslmmessageresp().imdnmessageid(), "id-1");
             EXPECT_FALSE(r.sendimslmmessageresp().has_retryhdr());
             EXPECT_TRUE(r.sendimslmmessageresp().has_warninghdr());
         }},
        {521,
         [](ims::Request& r) {
             auto* b = r.mutable_requestsendslmfile();
             b->set_registrationhandle(3);
             b->mutable_payloadparam()->mutable_fileattr()->set_size(10);
         },
         R"({"class":"RequestSlmSendFile","fields":{"handle":3,
             "payload":{"fileAttr":{"size":10,"start":0,"end":9}}}})",
         R"({"class":"SendSlmFileRespData","fields":{"imdnMessageId":"id-2","handle":90}})",
         [](const ims::Response& r) {
             EXPECT_EQ(r.sendslmfileresp().sessionhandle(), 90u);
             EXPECT_EQ(r.sendslmfileresp().imdnmessageid(), "id-2");
         }},
        {560,
         [](ims::Request& r) {
             auto* b = r.mutable_requestgrouplistsubscribe();
             b->set_handle(2);
             b->set_subscriptionid("list");
             b->set_version(5);
             b->set_isincrease(true);
         },
         R"({"class":"GroupListSubscribeData","fields":{"handle":2,"subscriptionId":"list",
             "version":5,"isIncrease":true}})",
         R"({"class":"GeneralResponseData","fields":{"handle":2}})",
         [](const ims::Response& r) { EXPECT_EQ(r.generalresponse().handle(), 2u); }},
        {561,
         [](ims::Request& r) {
             auto* b = r.mutable_requestgroupinfosubscribe();
             b->set_handle(2);
             b->set_subscriptionid("info");
             b->set_uri("sip:group@x");
         },
         R"({"class":"GroupInfoSubscribeData","fields":{"handle":2,"subscriptionId":"info",
             "uri":"sip:group@x"}})",
         R"({"class":"GeneralResponseData","fields":{"handle":2,"result":1,"sipError":486}})",
         [](const ims::Response& r) { EXPECT_EQ(r.generalresponse().siperror(), 486u); }},
        {550,
         [](ims::Request& r) {
             auto* b = r.mutable_requeststartftsession();
             b->set_registrationhandle(7);
             b->mutable_sessiondata()->add_receivers("sip:bob@x");
             b->mutable_payload()->mutable_fileattr()->set_size(9);
             b->mutable_reportdata()->set_spamfrom("from");
         },
         R"({"class":"FtStartSessionData","args":[7,{"receivers":["sip:bob@x"]},
             {"fileAttr":{"size":9}},{"spamFrom":"from"}]})",
         R"({"class":"StartSessionRespData","fields":{"handle":70,"fwSessionId":"fw-1"}})",
         [](const ims::Response& r) {
             EXPECT_EQ(r.startsessionresp().sessionhandle(), 70u);
             EXPECT_EQ(r.startsessionresp().fwsessionid(), "fw-1");
         }},
        {553,
         [](ims::Request& r) {
             auto* b = r.mutable_requestacceptftsession();
             b->set_sessionhandle(70);
             b->set_end(8);
             b->set_filepath("/in");
         },
         R"({"class":"RequestAcceptFtSession","fields":{"handle":70,"end":8,"filePath":"/in"}})",
         R"({"class":"StartSessionRespData","fields":{"handle":70,"error":{"type":1,"code":488}}})",
         [](const ims::Response& r) {
             EXPECT_EQ(r.startsessionresp().imerror().errortype(), ims::ImError_Type(1));
             EXPECT_EQ(r.startsessionresp().imerror().errorcode(), 488);
         }},
        {522, [](ims::Request& r) { r.mutable_requestcancelftsession()->set_sessionhandle(70); },
         R"({"class":"CancelFtSessionData","fields":{"handle":70,"sipCode":-1,
             "warning":{"code":-1}}})",
         R"({"class":"CloseSessionRespData","fields":{"handle":70}})",
         [](const ims::Response& r) { EXPECT_EQ(r.closesessionresp().sessionhandle(), 70u); }},
        {552,
         [](ims::Request& r) {
             r.mutable_requestcancelftsession()->set_sessionhandle(71);
             r.mutable_requestcancelftsession()->set_sipcode(603);
         },
         R"({"class":"CancelFtSessionData","fields":{"handle":71,"sipCode":603}})",
         R"({"class":"CloseSessionRespData","fields":{"handle":71,"error":{"type":7,"code":0}}})",
         [](const ims::Response& r) {
             EXPECT_EQ(r.closesessionresp().imerror().errortype(), ims::ImError_Type(7));
         }},
    };

    Daemon d;
    uint32_t token = 0xFFFFFF00u;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id);
        ims::Request request;
        request.set_reqid(ims::Id(row.id));
        row.request(request);
        d.send(request, ++token);

        Json down = d.nextStackRequest();
        EXPECT_EQ(down["token"], token);
        EXPECT_EQ(down["record"]["id"], row.id);
        EXPECT_TRUE(containsPart(down["record"], Json::parse(row.stackRecord)))
            << down["record"].dump();

        Json answer = Json::parse(row.answer);
        answer["id"] = row.id;
        d.respond(token, answer);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u);
        EXPECT_EQ(f.token, token);
        ims::Response response = f.response();
        EXPECT_EQ(response.resid(), row.id);
        row.check(response);
    }
}

TEST(MessagingFtE2e, EveryNotificationReachesTheClient) {
    const std::vector<NotifyRow> rows = {
        {12004,
         R"({"class":"FtProgressData","fields":{"handle":70,"total":100,"transferred":50,
             "warning":{"code":-1},"reason":{"code":-1}}})",
         [](const ims::Notify& n) {
             EXPECT_EQ(n.ftprogress().transferred(), 50u);
             EXPECT_FALSE(n.ftprogress().has_warninghdr() || n.ftprogress().has_reasonhdr());
         }},
        {18003,
         R"({"class":"FtProgressData","fields":{"handle":90,"state":5,"warning":{"code":0},
             "reason":{"code":-1}}})",
         [](const ims::Notify& n) {
             EXPECT_EQ(n.ftprogress().state(), 5u);
             EXPECT_TRUE(n.ftprogress().has_warninghdr());
         }},
        {12005,
         R"({"class":"FtIncomingData","fields":{"session":{"sessionHandle":71},
             "payload":{"fileAttr":{"path":"/f","size":3}}}})",
         [](const ims::Notify& n) {
             EXPECT_EQ(n.ftincomingsession().session().sessionhandle(), 71u);
             EXPECT_EQ(n.ftincomingsession().payload().fileattr().path(), "/f");
             EXPECT_FALSE(n.ftincomingsession().payload().has_iconattr());
         }},
        {18001,
         R"({"class":"FtIncomingData","fields":{"session":{"sessionHandle":91},
             "payload":{"iconAttr":{"path":"/i","size":4,"name":"i"}}}})",
         [](const ims::Notify& n) {
             EXPECT_EQ(n.ftincomingsession().payload().iconattr().size(), 4u);
             EXPECT_FALSE(n.ftincomingsession().payload().iconattr().has_name());
         }},
        {18000,
         R"({"class":"SlmIncomingData","fields":{"session":{"sessionHandle":92},
             "message":{"body":"o\u0000k"}}})",
         [](const ims::Notify& n) {
             EXPECT_EQ(n.slmmessageincoming().sessiondata().sessionhandle(), 92u);
             EXPECT_EQ(n.slmmessageincoming().msg().body(), std::string("o\0k", 3));
         }},
        {11009,
         R"({"class":"GroupSubscribeStatusData","fields":{"handle":2,"isSuccess":true,
             "sipErrorCode":200,"sipErrorPhrase":"OK","subscriptionId":"list"}})",
         [](const ims::Notify& n) {
             EXPECT_TRUE(n.groupchatsubscribestatus().issuccess());
             EXPECT_EQ(n.groupchatsubscribestatus().subscriptionid(), "list");
         }},
        {11010,
         R"({"class":"GroupListUpdateData","fields":{"version":6,
             "groups":[{"method":"add","uri":"sip:g@x","conversationId":"c","subject":"s"}]}})",
         [](const ims::Notify& n) {
             EXPECT_EQ(n.groupchatlistupdated().version(), 6u);
             EXPECT_EQ(n.groupchatlistupdated().groupchats(0).uri(), "sip:g@x");
         }},
        {11011,
         R"({"class":"GroupInfoUpdateData","fields":{"uri":"sip:g@x","maxUserCnt":9,
             "users":[{"entity":"sip:u@x","endpoint":{"status":"connected"}}]}})",
         [](const ims::Notify& n) {
             EXPECT_EQ(n.groupchatinfoupdated().info().maxusercnt(), 9u);
             EXPECT_EQ(n.groupchatinfoupdated().info().users(0).endpoint().status(), "connected");
         }},
        // The session notifications of transfers share their wire fields with
        // those of chats; only the id tells them apart.
        {12001, R"({"class":"SessionStartedData","fields":{"handle":70,"sessionUri":"sip:s"}})",
         [](const ims::Notify& n) { EXPECT_EQ(n.sessionstarted().sessionuri(), "sip:s"); }},
        {12002,
         R"({"class":"SessionClosedData","fields":{"handle":70,"reason":{"code":0,"text":"done"}}})",
         [](const ims::Notify& n) { EXPECT_EQ(n.sessionclosed().reasonhdr().text(), "done"); }},
        {12003,
         R"({"class":"SessionEstablishedData","fields":{"handle":70,"acceptContent":["a/b"]}})",
         [](const ims::Notify& n) { EXPECT_EQ(n.sessionestablished().acceptcontent(0), "a/b"); }},
    };

    Daemon d;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id);
        Json record = Json::parse(row.record);
        record["id"] = row.id;
        d.notify(record);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u);
        EXPECT_EQ(f.token, 0u);
        ims::Notify notify = f.notify();
        EXPECT_EQ(notify.notifyid(), row.id);
        row.check(notify);
    }
}
