// File transfer, standalone messages and group chat through the real daemon:
// every request and notification id of the family takes its way, from the
// client's frame to the stack's record and back. The requests and the
// notifications with many fields are checked field by field in process.
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

using R = const ims::Response&;
using N = const ims::Notify&;

struct Row {
    int id;
    const char* down;    // the class of the record the stack gets; none for a notification
    const char* record;  // the stack's answer or notification, without its id
    std::function<std::string(R, N)> wire;  // what it fills
    std::string expected;
};

}  // namespace

TEST(MessagingFtE2e, EveryIdGoesItsWayAndBack) {
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
        {12005, nullptr,
         R"({"class":"FtIncomingData","fields":{"payload":{"fileAttr":{"path":"/f"}}}})",
         [](R, N n) { return n.ftincomingsession().payload().fileattr().path(); }, "/f"},
        {18001, nullptr, R"({"class":"FtIncomingData","fields":{"session":{"sessionUri":"s"}}})",
         [](R, N n) { return n.ftincomingsession().session().sessionuri(); }, "s"},
        {18000, nullptr, R"({"class":"SlmIncomingData","fields":{"message":{"body":"o\u0000k"}}})",
         [](R, N n) { return n.slmmessageincoming().msg().body(); }, std::string("o\0k", 3)},
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
        {11011, nullptr, R"({"class":"GroupInfoUpdateData","fields":{"uri":"g"}})",
         [](R, N n) { return n.groupchatinfoupdated().uri(); }, "g"},
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
