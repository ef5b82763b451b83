// File transfer, standalone messages and group chat through the real daemon:
// every request and notification id of the family, from the client's frame
// to the stack's record and back.
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

void setError(ims::ImError* e, int type, int code) {
    e->set_errortype(ims::ImError_Type(type));
    e->set_errorcode(code);
}

void setEmptyImdn(ims::ImdnParams* imdn) {
    imdn->set_messageid("");
    imdn->set_datetime("");
    imdn->set_deviceid("");
    imdn->set_originaltohdr("");
}

// An incoming file whose stack record held nothing but the session handle:
// every field the handler always sets is present and empty.
ims::FtPayloadParam* emptyIncoming(ims::Notify& n, uint32_t handle) {
    auto* body = n.mutable_ftincomingsession();
    auto* s = body->mutable_session();
    s->set_sessionhandle(handle);
    s->set_sessionuri("");
    s->set_preferredlineuri("");
    s->set_sdpcontenttype("");
    s->set_isconference(false);
    s->set_contributionid("");
    s->set_useralias("");
    s->set_conversationid("");
    s->set_inreplytocontributionid("");
    s->set_id("");
    auto* p = body->mutable_payload();
    auto* f = p->mutable_fileattr();
    f->set_name("");
    f->set_path("");
    f->set_contenttype("");
    f->set_size(0);
    f->set_start(0);
    f->set_end(0);
    f->set_timeduration(0);
    p->set_devicename("");
    p->set_reliablemessage("");
    p->set_extraft(false);
    p->set_isburnmsg(false);
    p->set_ispush(false);
    setEmptyImdn(p->mutable_imdn());
    p->set_sender("");
    p->set_receiver("");
    p->set_silencesupported(false);
    return p;
}

struct RequestRow {
    int id;
    std::function<void(ims::Request&)> request;
    const char* stackRecord;                       // the part of the stack's record that must match
    const char* answer;                            // the stack's answer, without its id
    std::function<void(ims::Response&)> response;  // the expected response, without resid
};

struct NotifyRow {
    int id;
    const char* record;                        // the stack's notification, without its id
    std::function<void(ims::Notify&)> notify;  // the expected notification, without notifyid
};

}  // namespace

TEST(MessagingFtE2e, EveryRequestGoesDownAndItsAnswerComesBack) {
    const std::vector<RequestRow> rows = {
        {550,
         [](ims::Request& r) {
             auto* b = r.mutable_requeststartftsession();
             b->set_registrationhandle(7);
             b->mutable_sessiondata()->add_receivers("sip:bob@x");
             b->mutable_payload()->mutable_fileattr()->set_path("/f");
             b->mutable_payload()->mutable_fileattr()->set_size(9);
             b->mutable_reportdata()->set_spamfrom("from");
         },
         R"({"class":"FtStartSessionData","args":[7,{"receivers":["sip:bob@x"]},
             {"fileAttr":{"path":"/f","size":9}},{"spamFrom":"from"}]})",
         R"({"class":"StartSessionRespData","fields":{"handle":70,"error":{"type":0,"code":0},
             "fwSessionId":"fw-1"}})",
         [](ims::Response& r) {
             auto* b = r.mutable_startsessionresp();
             b->set_sessionhandle(70);
             b->set_fwsessionid("fw-1");
             setError(b->mutable_imerror(), 0, 0);
         }},
        {553,
         [](ims::Request& r) {
             auto* b = r.mutable_requestacceptftsession();
             b->set_sessionhandle(70);
             b->set_start(0);
             b->set_end(8);
             b->set_filepath("/in");
             b->set_useralias("Al");
         },
         R"({"class":"RequestAcceptFtSession","fields":{"handle":70,"start":0,"end":8,
             "filePath":"/in","userAlias":"Al"}})",
         R"({"class":"StartSessionRespData","fields":{"handle":70,"error":{"type":1,"code":488},
             "fwSessionId":""}})",
         [](ims::Response& r) {
             auto* b = r.mutable_startsessionresp();
             b->set_sessionhandle(70);
             b->set_fwsessionid("");
             setError(b->mutable_imerror(), 1, 488);
         }},
        {522, [](ims::Request& r) { r.mutable_requestcancelftsession()->set_sessionhandle(70); },
         R"({"class":"CancelFtSessionData","fields":{"handle":70,"sipCode":-1,
             "warning":{"code":-1}}})",
         R"({"class":"CloseSessionRespData","fields":{"handle":70,"error":{"type":0,"code":0}}})",
         [](ims::Response& r) {
             auto* b = r.mutable_closesessionresp();
             b->set_sessionhandle(70);
             setError(b->mutable_imerror(), 0, 0);
         }},
        {552,
         [](ims::Request& r) {
             r.mutable_requestcancelftsession()->set_sessionhandle(71);
             r.mutable_requestcancelftsession()->set_sipcode(603);
         },
         R"({"class":"CancelFtSessionData","fields":{"handle":71,"sipCode":603}})",
         R"({"class":"CloseSessionRespData","fields":{"handle":71,"error":{"type":7,"code":0}}})",
         [](ims::Response& r) {
             auto* b = r.mutable_closesessionresp();
             b->set_sessionhandle(71);
             setError(b->mutable_imerror(), 7, 0);
         }},
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
             "error":{"type":0,"code":0},"retry":{"retryTimer":-1},"warning":{"code":-1}}})",
         [](ims::Response& r) {
             auto* b = r.mutable_sendimslmmessageresp();
             b->set_imdnmessageid("id-1");
             setError(b->mutable_imerror(), 0, 0);
         }},
        {521,
         [](ims::Request& r) {
             auto* b = r.mutable_requestsendslmfile();
             b->set_registrationhandle(3);
             b->mutable_payloadparam()->mutable_fileattr()->set_size(10);
         },
         R"({"class":"RequestSlmSendFile","fields":{"handle":3,
             "payload":{"fileAttr":{"size":10,"start":0,"end":9}}}})",
         R"({"class":"SendSlmFileRespData","fields":{"imdnMessageId":"id-2",
             "error":{"type":0,"code":0},"handle":90}})",
         [](ims::Response& r) {
             auto* b = r.mutable_sendslmfileresp();
             b->set_sessionhandle(90);
             b->set_imdnmessageid("id-2");
             setError(b->mutable_imerror(), 0, 0);
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
         R"({"class":"GeneralResponseData","fields":{"handle":2,"result":0,"reason":0,
             "errorStr":"","sipError":0}})",
         [](ims::Response& r) {
             auto* b = r.mutable_generalresponse();
             b->set_handle(2);
             b->set_result(ims::Result(0));
             b->set_reason(ims::GeneralReason(0));
         }},
        {561,
         [](ims::Request& r) {
             auto* b = r.mutable_requestgroupinfosubscribe();
             b->set_handle(2);
             b->set_subscriptionid("info");
             b->set_uri("sip:group@x");
         },
         R"({"class":"GroupInfoSubscribeData","fields":{"handle":2,"subscriptionId":"info",
             "uri":"sip:group@x"}})",
         R"({"class":"GeneralResponseData","fields":{"handle":2,"result":1,"reason":3,
             "errorStr":"busy","sipError":486}})",
         [](ims::Response& r) {
             auto* b = r.mutable_generalresponse();
             b->set_handle(2);
             b->set_result(ims::Result(1));
             b->set_reason(ims::GeneralReason(3));
             b->set_siperror(486);
             b->set_errorstr("busy");
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
        ims::Response expected;
        expected.set_resid(ims::Id(row.id));
        row.response(expected);
        EXPECT_EQ(f.response().SerializeAsString(), expected.SerializeAsString());
    }
}

TEST(MessagingFtE2e, EveryNotificationReachesTheClient) {
    const std::vector<NotifyRow> rows = {
        // The session notifications of transfers share their wire fields with
        // those of chats; only the id tells them apart.
        {12001,
         R"({"class":"SessionStartedData","fields":{"handle":70,"error":{"type":0,"code":0},
             "retry":{"retryTimer":-1},"warning":{"code":-1},"sessionUri":""}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_sessionstarted();
             b->set_sessionhandle(70);
             setError(b->mutable_imerror(), 0, 0);
             b->set_sessionuri("");
         }},
        {12002,
         R"({"class":"SessionClosedData","fields":{"handle":70,"error":{"type":4,"code":0},
             "reason":{"code":0,"text":"done"}}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_sessionclosed();
             b->set_sessionhandle(70);
             setError(b->mutable_imerror(), 4, 0);
             b->mutable_reasonhdr()->set_code(0);
             b->mutable_reasonhdr()->set_text("done");
         }},
        {12003,
         R"({"class":"SessionEstablishedData","fields":{"handle":70,"error":{"type":0,"code":0},
             "acceptContent":["image/jpeg"]}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_sessionestablished();
             b->set_sessionhandle(70);
             setError(b->mutable_imerror(), 0, 0);
             b->add_acceptcontent("image/jpeg");
         }},
        {12004,
         R"({"class":"FtProgressData","fields":{"handle":70,"state":2,"error":{"type":0,"code":0},
             "total":100,"transferred":50,"warning":{"code":-1},"reason":{"code":-1}}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_ftprogress();
             b->set_sessionhandle(70);
             b->set_total(100);
             b->set_transferred(50);
             b->set_state(2);
             setError(b->mutable_imerror(), 0, 0);
         }},
        {18003,
         R"({"class":"FtProgressData","fields":{"handle":90,"state":5,"error":{"type":5,"code":1},
             "total":10,"transferred":0,"warning":{"code":0,"host":"","text":""},
             "reason":{"code":-1}}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_ftprogress();
             b->set_sessionhandle(90);
             b->set_total(10);
             b->set_transferred(0);
             b->set_state(5);
             setError(b->mutable_imerror(), 5, 1);
             b->mutable_warninghdr()->set_code(0);
             b->mutable_warninghdr()->set_host("");
             b->mutable_warninghdr()->set_text("");
         }},
        {12005,
         R"({"class":"FtIncomingData","fields":{"session":{"sessionHandle":71},
             "payload":{"fileAttr":{"path":"/f","size":3}}}})",
         [](ims::Notify& n) {
             auto* f = emptyIncoming(n, 71)->mutable_fileattr();
             f->set_path("/f");
             f->set_size(3);
         }},
        {18001,
         R"({"class":"FtIncomingData","fields":{"session":{"sessionHandle":91},
             "payload":{"iconAttr":{"path":"/i","size":4,"name":"i"}}}})",
         [](ims::Notify& n) {
             auto* icon = emptyIncoming(n, 91)->mutable_iconattr();
             icon->set_path("/i");
             icon->set_size(4);
         }},
        {18000,
         R"({"class":"SlmIncomingData","fields":{"session":{"sessionHandle":92,
             "receivers":["sip:me@x"]},"message":{"body":"ok"}}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_slmmessageincoming();
             auto* s = b->mutable_sessiondata();
             s->set_sessionhandle(92);
             s->set_preferredlineuri("");
             s->set_contributionid("");
             s->set_conversationid("");
             s->add_receivers("sip:me@x");
             auto* m = b->mutable_msg();
             m->set_sender("");
             m->set_useralias("");
             m->set_contenttype("");
             m->set_body("ok");
             m->set_isburnmsg(false);
             m->set_ispublicaccountmsg(false);
             m->set_devicename("");
             m->set_reliablemessage("");
             m->set_extraft(false);
             m->set_xmsmessage("");
             setEmptyImdn(m->mutable_imdn());
             m->set_receiver("");
             m->set_silencesupported(false);
         }},
        {11009,
         R"({"class":"GroupSubscribeStatusData","fields":{"handle":2,"isSuccess":true,
             "sipErrorCode":200,"sipErrorPhrase":"OK","subscriptionId":"list"}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_groupchatsubscribestatus();
             b->set_handle(2);
             b->set_issuccess(true);
             b->set_siperrorcode(200);
             b->set_siperrorphrase("OK");
             b->set_subscriptionid("list");
         }},
        {11010,
         R"({"class":"GroupListUpdateData","fields":{"version":6,"increaseMode":false,
             "groups":[{"method":"add","uri":"sip:g@x","conversationId":"c","subject":"s"}]}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_groupchatlistupdated();
             b->set_version(6);
             b->set_increasemode(false);
             auto* g = b->add_groupchats();
             g->set_method("add");
             g->set_uri("sip:g@x");
             g->set_conversationid("c");
             g->set_subject("s");
         }},
        {11011,
         R"({"class":"GroupInfoUpdateData","fields":{"uri":"sip:g@x","sessionId":3,
             "state":"full","subject":"s","maxUserCnt":9,
             "users":[{"entity":"sip:u@x","state":"active","yourOwn":true,"roles":"",
               "endpoint":{"entity":"sip:e@x","status":"connected"},"userAlias":"U"}]}})",
         [](ims::Notify& n) {
             auto* b = n.mutable_groupchatinfoupdated();
             b->set_uri("sip:g@x");
             auto* info = b->mutable_info();
             info->set_sessionid(3);
             info->set_state("full");
             info->set_subject("s");
             info->set_maxusercnt(9);
             auto* u = info->add_users();
             u->set_entity("sip:u@x");
             u->set_state("active");
             u->set_yourown(true);
             u->set_roles("");
             u->set_useralias("U");
             u->mutable_endpoint()->set_entity("sip:e@x");
             u->mutable_endpoint()->set_status("connected");
             u->mutable_endpoint()->mutable_joininginfo();
             u->mutable_endpoint()->mutable_disconnectioninfo();
         }},
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
        ims::Notify expected;
        expected.set_notifyid(ims::Id(row.id));
        row.notify(expected);
        EXPECT_EQ(f.notify().SerializeAsString(), expected.SerializeAsString());
    }
}
