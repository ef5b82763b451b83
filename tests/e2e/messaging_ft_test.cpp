// File transfer, standalone messages and group chat through the real daemon:
// every request and notification id of the family takes its way, from the
// client's frame to the stack's record and back, and each answer and
// notification fills its wire fields, presence bits included. What the
// requests hand down is checked field by field in process.
#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

template <class... T>
std::string join(const T&... values) {
    std::ostringstream out;
    ((out << values << '|'), ...);
    return out.str();
}

// An incoming file as the stack hands it up, every field set.
const char* const kIncoming = R"({"class":"FtIncomingData","fields":{
    "session":{"sessionHandle":77,"id":"fw","isConference":true,"sessionUri":"uri",
      "userAlias":"al","receivers":["r1","r2"],"contributionId":"c","conversationId":"v",
      "inReplyToContributionId":"irt","preferredLineUri":"line","sdpContentType":"sdp",
      "serviceId":"svc"},
    "payload":{"fileAttr":{"name":"f","path":"/f","contentType":"t/f","size":8589934592,
        "start":1,"end":2,"timeDuration":3},
      "iconAttr":{"name":"i","path":"/i","contentType":"t/i","size":12,"start":4,"end":5,
        "timeDuration":6},
      "imdn":{"messageId":"m"},"deviceName":"dev","reliableMessage":"rel","extraFt":true,
      "isBurnMsg":true,"isPublicAccountMsg":true,"isPush":true,
      "cpimNamespaces":[{"name":"n","uri":"u","headers":{"z":"1","a":"2"}}],
      "sender":"from","receiver":"to","silenceSupported":true}}})";

using R = const ims::Response&;
using N = const ims::Notify&;

struct Row {
    int id;
    const char* down;    // the class of the record the stack gets; none for a notification
    std::string record;  // the stack's answer or notification, without its id
    std::function<std::string(R, N)> wire;  // what it fills
    std::string expected;
};

}  // namespace

TEST(MessagingFtE2e, EveryIdGoesItsWayAndBack) {
    Json slmJson =
        Json::parse(R"({"class":"SlmIncomingData","fields":{"message":{"body":"x\u0000y"}}})");
    slmJson["fields"]["session"] = Json::parse(kIncoming)["fields"]["session"];
    const std::string slm = slmJson.dump();
    const std::vector<Row> rows = {
        // Only -1 means "no header"; 0 is a header like any other.
        {520, "RequestSendImSlmMessage",
         R"({"class":"SendImSlmMessageRespData","fields":{"imdnMessageId":"m",
             "error":{"type":1,"code":403},"warning":{"code":0,"host":"h","text":"t"}}})",
         [](R r, N) {
             const auto& b = r.sendimslmmessageresp();
             return join(b.imdnmessageid(), b.imerror().errortype(), b.imerror().errorcode(),
                         b.has_retryhdr(), b.warninghdr().code(), b.warninghdr().host(),
                         b.warninghdr().text());
         },
         "m|1|403|0|0|h|t|"},
        {521, "RequestSlmSendFile",
         R"({"class":"SendSlmFileRespData","fields":{"imdnMessageId":"m",
             "error":{"type":2,"code":5},"handle":90}})",
         [](R r, N) {
             const auto& b = r.sendslmfileresp();
             return join(b.sessionhandle(), b.imdnmessageid(), b.imerror().errortype(),
                         b.imerror().errorcode());
         },
         "90|m|2|5|"},
        {560, "GroupListSubscribeData", R"({"class":"GeneralResponseData","fields":{"handle":2}})",
         [](R r, N) { return std::to_string(r.generalresponse().handle()); }, "2"},
        {561, "GroupInfoSubscribeData", R"({"class":"GeneralResponseData","fields":{"handle":3}})",
         [](R r, N) { return std::to_string(r.generalresponse().handle()); }, "3"},
        {550, "FtStartSessionData",
         R"({"class":"StartSessionRespData","fields":{"fwSessionId":"fw"}})",
         [](R r, N) { return r.startsessionresp().fwsessionid(); }, "fw"},
        {553, "RequestAcceptFtSession",
         R"({"class":"StartSessionRespData","fields":{"fwSessionId":"fw2"}})",
         [](R r, N) { return r.startsessionresp().fwsessionid(); }, "fw2"},
        {522, "CancelFtSessionData", R"({"class":"CloseSessionRespData","fields":{"handle":70}})",
         [](R r, N) { return std::to_string(r.closesessionresp().sessionhandle()); }, "70"},
        {552, "CancelFtSessionData", R"({"class":"CloseSessionRespData","fields":{"handle":71}})",
         [](R r, N) { return std::to_string(r.closesessionresp().sessionhandle()); }, "71"},
        {12004, nullptr,
         R"({"class":"FtProgressData","fields":{"handle":70,"state":3,"error":{"type":2,
             "code":-5},"total":4294967295,"transferred":50,"reason":{"code":0,"text":"r"}}})",
         [](R, N n) {
             const auto& b = n.ftprogress();
             return join(b.sessionhandle(), b.total(), b.transferred(), b.state(),
                         b.imerror().errortype(), b.imerror().errorcode(), b.has_warninghdr(),
                         b.reasonhdr().code(), b.reasonhdr().text());
         },
         "70|4294967295|50|3|2|-5|0|0|r|"},
        {18003, nullptr,
         R"({"class":"FtProgressData","fields":{"warning":{"code":0,"host":"h","text":"t"}}})",
         [](R, N n) {
             const auto& w = n.ftprogress().warninghdr();
             return join(w.code(), w.host(), w.text(), n.ftprogress().has_reasonhdr());
         },
         "0|h|t|0|"},
        {11009, nullptr, R"({"class":"GroupSubscribeStatusData","fields":{"sipErrorCode":486}})",
         [](R, N n) { return join(n.groupchatsubscribestatus().siperrorcode()); }, "486|"},
        {11010, nullptr,
         R"({"class":"GroupListUpdateData","fields":{"version":6,"increaseMode":false,
             "groups":[{"method":"m","uri":"u","conversationId":"c","subject":""}]}})",
         [](R, N n) {
             const auto& b = n.groupchatlistupdated();
             const auto& g = b.groupchats(0);
             return join(b.version(), b.has_increasemode(), b.groupchats_size(), g.method(),
                         g.uri(), g.conversationid(), g.has_subject());
         },
         "6|1|1|m|u|c|1|"},
        {520, "RequestSendImSlmMessage",
         R"({"class":"SendImSlmMessageRespData","fields":{"retry":{"retryTimer":0,
            "contactValue":"c"}}})",
         [](R r, N) {
             const auto& b = r.sendimslmmessageresp();
             return join(b.retryhdr().retrytimer(), b.retryhdr().contactvalue(),
                         b.has_warninghdr());
         },
         "0|c|0|"},
        // Of the session all but the service id; of the icon only where it
        // is and how big; never isPublicAccountMsg.
        {12005, nullptr, kIncoming,
         [](R, N n) {
             const auto& s = n.ftincomingsession().session();
             const auto& p = n.ftincomingsession().payload();
             const auto& f = p.fileattr();
             const auto& i = p.iconattr();
             const auto& ns = p.cpimnamespaces(0);
             return join(s.sessionhandle(), s.id(), s.isconference(), s.sessionuri(), s.useralias(),
                         s.receivers(0), s.receivers(1), s.contributionid(), s.conversationid(),
                         s.inreplytocontributionid(), s.preferredlineuri(), s.sdpcontenttype(),
                         s.has_serviceid()) +
                    join(f.name(), f.path(), f.contenttype(), f.size(), f.start(), f.end(),
                         f.timeduration(), i.path(), i.size(),
                         i.has_name() || i.has_contenttype() || i.has_start() || i.has_end() ||
                             i.has_timeduration()) +
                    join(p.imdn().messageid(), p.devicename(), p.reliablemessage(), p.extraft(),
                         p.isburnmsg(), p.has_ispublicaccountmsg(), p.ispush(), ns.name(), ns.uri(),
                         ns.headers(0).key(), ns.headers(1).key(), p.sender(), p.receiver(),
                         p.silencesupported());
         },
         "77|fw|1|uri|al|r1|r2|c|v|irt|line|sdp|0|f|/f|t/f|8589934592|1|2|3|/i|12|0|"
         "m|dev|rel|1|1|0|1|n|u|a|z|from|to|1|"},
        // An icon without a path is no icon, whatever else it names.
        {18001, nullptr,
         R"({"class":"FtIncomingData","fields":{"payload":{"iconAttr":{"name":"i"}}}})",
         [](R, N n) { return join(n.ftincomingsession().payload().has_iconattr()); }, "0|"},
        // Of the session only the handle, line, ids and receivers.
        {18000, nullptr, slm,
         [](R, N n) {
             const auto& s = n.slmmessageincoming().sessiondata();
             const auto& m = n.slmmessageincoming().msg();
             return join(s.sessionhandle(), s.receivers(0), s.contributionid(), s.conversationid(),
                         s.preferredlineuri(),
                         s.has_id() || s.has_isconference() || s.has_sessionuri() ||
                             s.has_useralias() || s.has_inreplytocontributionid() ||
                             s.has_sdpcontenttype() || s.has_serviceid(),
                         m.body());
         },
         "77|r1|c|v|line|0|" + std::string("x\0y", 3) + "|"},
        // Empty times leave their blocks present but empty; reasons and
        // authors never go out.
        {11011, nullptr, R"({"class":"GroupInfoUpdateData","fields":{"uri":"g","sessionId":8,
            "state":"full","subject":"","maxUserCnt":10,"users":[
            {"entity":"u1","state":"active","yourOwn":true,"roles":"chair","userAlias":"U1",
             "endpoint":{"entity":"e1","status":"on","disconnectMethod":""},
             "joiningInfo":{"reason":"r","by":"b"},"disconnectionInfo":{"reason":"r","by":"b"}},
            {"endpoint":{"disconnectMethod":"booted"},"joiningInfo":{"when":"t1","reason":"r"},
             "disconnectionInfo":{"when":"t2","by":"b"}}]}})",
         [](R, N n) {
             const auto& i = n.groupchatinfoupdated().info();
             const auto& u1 = i.users(0);
             const auto& e1 = u1.endpoint();
             const auto& e2 = i.users(1).endpoint();
             return join(n.groupchatinfoupdated().uri(), i.sessionid(), i.state(), i.has_subject(),
                         i.maxusercnt(), u1.entity(), u1.state(), u1.yourown(), u1.roles(),
                         u1.useralias(), e1.entity(), e1.status(), e1.has_disconnectmethod(),
                         e1.has_joininginfo(), e1.joininginfo().ByteSizeLong(),
                         e1.has_disconnectioninfo(), e1.disconnectioninfo().ByteSizeLong()) +
                    join(e2.disconnectmethod(), e2.joininginfo().when(),
                         e2.joininginfo().has_reason(), e2.disconnectioninfo().when(),
                         e2.disconnectioninfo().has_by());
         },
         "g|8|full|1|10|u1|active|1|chair|U1|e1|on|0|1|0|1|0|booted|t1|0|t2|0|"},
        // The session notifications of transfers are those of chats.
        {12001, nullptr, R"({"class":"SessionStartedData","fields":{"sessionUri":"s"}})",
         [](R, N n) { return n.sessionstarted().sessionuri(); }, "s"},
        {12002, nullptr, R"({"class":"SessionClosedData","fields":{"handle":4}})",
         [](R, N n) { return std::to_string(n.sessionclosed().sessionhandle()); }, "4"},
        {12003, nullptr, R"({"class":"SessionEstablishedData","fields":{"acceptContent":["a"]}})",
         [](R, N n) { return n.sessionestablished().acceptcontent(0); }, "a"},
    };

    Daemon d;
    uint32_t token = 0xFFFFFF00u;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id);
        Json record = Json::parse(row.record);
        record["id"] = row.id;
        ims::Response response;
        ims::Notify notify;
        if (row.down != nullptr) {
            ims::Request request;
            request.set_reqid(ims::Id(row.id));
            d.send(request, ++token);
            Json down = d.nextStackRequest();
            EXPECT_EQ(down["token"], token);
            EXPECT_EQ(down["record"]["class"], row.down);
            EXPECT_EQ(down["record"]["id"], row.id);
            d.respond(token, record);
            Frame f = d.nextFrame();
            EXPECT_EQ(f.type, 1u);
            EXPECT_EQ(f.token, token);
            response = f.response();
        } else {
            d.notify(record);
            Frame f = d.nextFrame();
            EXPECT_EQ(f.type, 2u);
            EXPECT_EQ(f.token, 0u);
            notify = f.notify();
        }
        EXPECT_EQ(response.resid() + notify.notifyid(), row.id);
        EXPECT_EQ(row.wire(response, notify), row.expected);
    }
}
