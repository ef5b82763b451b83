// File transfer, standalone messages and group chat in process: the records
// the requests hand to the stack, compared whole (the empty record of the id,
// in the library's field order, overlaid with what a case expects), null
// records and the log gates. Answers and notifications are checked end to end.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "core/ims_tables.h"
#include "tests/support/in_process.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

// Objects member by member, arrays of the same length element by element,
// anything else replaced.
void overlay(Json& base, const Json& patch) {
    if (patch.is_object() && base.is_object()) {
        for (auto it = patch.begin(); it != patch.end(); ++it) overlay(base[it.key()], it.value());
    } else if (patch.is_array() && base.is_array() && patch.size() == base.size()) {
        for (size_t i = 0; i < patch.size(); i++) overlay(base[i], patch[i]);
    } else {
        base = patch;
    }
}

template <class... T>
std::string join(const T&... values) {
    std::ostringstream out;
    ((out << values << '|'), ...);
    return out.str();
}

const std::string kFile =
    R"({"name":"","path":"","contentType":"","size":0,"start":0,"end":0,"timeDuration":0})";
const std::string kImdn =
    R"({"messageId":"","datetime":"","noti":[],"recRoute":[],"deviceId":"","originalToHdr":""})";
const std::string kSession = R"({"sessionHandle":0,"id":"","isConference":false,"sessionUri":"",
    "userAlias":"","receivers":[],"contributionId":"","conversationId":"",
    "inReplyToContributionId":"","preferredLineUri":"","sdpContentType":"","serviceId":""})";
const std::string kPayload = R"({"fileAttr":)" + kFile + R"(,"iconAttr":)" + kFile + R"(,"imdn":)" +
                             kImdn + R"(,"deviceName":"","reliableMessage":"",
    "extraFt":false,"isBurnMsg":false,"isPublicAccountMsg":false,"isPush":false,
    "cpimNamespaces":[],"sender":"","receiver":"","silenceSupported":false})";
const std::string kMessage = R"({"sender":"","userAlias":"","body":"","contentType":"","imdn":)" +
                             kImdn + R"(,"deviceName":"","reliableMessage":"","xmsMessage":"",
    "extraFt":false,"isBurnMsg":false,"isPublicAccountMsg":false,"cpimNamespaces":[],
    "receiver":"","silenceSupported":false,"ccParticipants":[]})";
const std::string kReport = R"({"spamFrom":"","spamTo":"","spamDate":""})";

// What each request id hands down when its body is empty.
const std::map<int, std::string> kEmpty = {
    {550, R"({"class":"FtStartSessionData","id":550,"args":[0,)" + kSession + "," + kPayload + "," +
              kReport + "]}"},
    {553, R"({"class":"RequestAcceptFtSession","id":553,"fields":{"handle":0,"start":0,"end":0,
        "filePath":"","userAlias":""}})"},
    // The schema's defaults: no sip code and no warning are both -1.
    {522, R"({"class":"CancelFtSessionData","id":522,"fields":{"handle":0,"sipCode":-1,
        "warning":{"code":-1,"host":"","text":""}}})"},
    {520, R"({"class":"RequestSendImSlmMessage","id":520,"fields":{"handle":0,"session":)" +
              kSession + R"(,"message":)" + kMessage + R"(,"reportData":)" + kReport +
              R"(,"participants":[]}})"},
    {521, R"({"class":"RequestSlmSendFile","id":521,"fields":{"handle":0,"session":)" + kSession +
              R"(,"payload":)" + kPayload + R"(,"participants":[]}})"},
    {560, R"({"class":"GroupListSubscribeData","id":560,"fields":{"handle":0,"subscriptionId":"",
        "version":0,"isIncrease":false}})"},
    {561, R"({"class":"GroupInfoSubscribeData","id":561,"fields":{"handle":0,"subscriptionId":"",
        "uri":""}})"},
};

// Every field a value of its own, so that each one shows whether it is
// passed, dropped or moved.
void fillSession(ims::BaseSessionData* s) {
    s->set_sessionhandle(41);
    s->set_id("id");
    s->set_sessionuri("uri");
    s->set_useralias("alias");
    s->add_receivers("r1");
    s->add_receivers("r2");
    s->set_contributionid("contrib");
    s->set_conversationid("conv");
    s->set_inreplytocontributionid("reply");
    s->set_preferredlineuri("line");
    s->set_sdpcontenttype("sdp");
    s->set_serviceid("svc");
}

void fillFile(ims::ImFileAttr* f, const std::string& tag, uint64_t size) {
    f->set_name(tag);
    f->set_path("/" + tag);
    f->set_contenttype("type/" + tag);
    f->set_size(size);
    f->set_start(1);
    f->set_end(2);
    f->set_timeduration(3);
}

void fillPayload(ims::FtPayloadParam* p) {
    fillFile(p->mutable_fileattr(), "f", 0x100000000ull + 10);
    fillFile(p->mutable_iconattr(), "i", 12);
    p->mutable_imdn()->set_messageid("m");
    p->set_devicename("dev");
    p->set_reliablemessage("rel");
    p->set_extraft(true);
    p->set_isburnmsg(true);
    p->set_ispublicaccountmsg(true);
    p->set_ispush(true);
    p->add_cpimnamespaces()->set_name("ns");
    p->set_sender("me");
    p->set_receiver("you");
    p->set_silencesupported(true);
}

void fillReport(ims::ReportMessageHdr* r) {
    r->set_spamfrom("from");
    r->set_spamto("to");
    r->set_spamdate("date");
}

// copyControl 0, 1, 2 and one the schema does not know.
void addParticipants(google::protobuf::RepeatedPtrField<ims::Participant>* list) {
    for (int c : {0, 1, 2, 7}) {
        auto* p = list->Add();
        p->set_uri("p" + std::to_string(c));
        p->set_copycontrol(ims::Participant_CopyControl(c));
    }
}

const std::string kReportSet =
    R"("reportData":{"spamFrom":"from","spamTo":"to","spamDate":"date"})";
const std::string kIds = R"("userAlias":"alias","contributionId":"contrib","conversationId":"conv",
    "inReplyToContributionId":"reply","preferredLineUri":"line")";
const std::string kParticipants = R"("participants":[{"uri":"p0","copyControl":1},
    {"uri":"p1","copyControl":2},{"uri":"p2","copyControl":3},{"uri":"p7","copyControl":1}])";
// The payload fillPayload gives, with the file's range and what else the
// request takes of it.
std::string filledPayload(const std::string& range, const std::string& more) {
    return R"({"fileAttr":{"name":"f","path":"/f","contentType":"type/f","size":4294967306)" +
           range + R"(},"imdn":{"messageId":"m"},"deviceName":"dev","reliableMessage":"rel",
        "extraFt":true,"isBurnMsg":true,"isPublicAccountMsg":true)" +
           more + "}";
}

struct RequestCase {
    int id;
    std::function<void(ims::Request&)> fill;
    std::string expected;  // laid over the empty record of the id
};

}  // namespace

TEST(MessagingFtInProcess, RequestsHandTheStackWholeRecords) {
    const std::vector<RequestCase> cases = {
        // A transfer keeps neither the content type nor the service id, nor
        // any addressee of the payload.
        {550,
         [](ims::Request& r) {
             auto* b = r.mutable_requeststartftsession();
             b->set_registrationhandle(7);
             fillSession(b->mutable_sessiondata());
             fillPayload(b->mutable_payload());
             fillReport(b->mutable_reportdata());
         },
         R"({"args":[7,{"sessionHandle":41,"id":"id","sessionUri":"uri","receivers":["r1","r2"],)" +
             kIds + "}," +
             filledPayload(R"(,"start":1,"end":2,"timeDuration":3)",
                           R"(,"isPush":true,"iconAttr":{"name":"i","path":"/i",
                 "contentType":"type/i","size":12,"start":1,"end":2,"timeDuration":3})") +
             R"(,{"spamFrom":"from","spamTo":"to","spamDate":"date"}]})"},
        // A conference goes to its URI alone, whatever receivers the wire holds.
        {550,
         [](ims::Request& r) {
             auto* s = r.mutable_requeststartftsession()->mutable_sessiondata();
             s->set_isconference(true);
             s->add_receivers("r1");
         },
         R"({"args":[0,{"isConference":true},{},{}]})"},
        {553,
         [](ims::Request& r) {
             auto* b = r.mutable_requestacceptftsession();
             b->set_sessionhandle(0xFFFFFFFFu);
             b->set_start(0x100000000ull);
             b->set_end(0xFFFFFFFFFFFFFFFFull);
             b->set_filepath("/in");
             b->set_useralias("Bob");
         },
         R"({"fields":{"handle":4294967295,"start":4294967296,"end":18446744073709551615,
             "filePath":"/in","userAlias":"Bob"}})"},
        {522, [](ims::Request&) {}, "{}"},
        // The other cancel id runs the same handler and keeps its own id.
        {552,
         [](ims::Request& r) {
             auto* b = r.mutable_requestcancelftsession();
             b->set_sessionhandle(12);
             b->set_sipcode(486);
             b->mutable_warninghdr()->set_code(399);
             b->mutable_warninghdr()->set_host("h");
             b->mutable_warninghdr()->set_text("t");
         },
         R"({"id":552,"fields":{"handle":12,"sipCode":486,"warning":{"code":399,"host":"h",
             "text":"t"}}})"},
        {520,
         [](ims::Request& r) {
             auto* b = r.mutable_requestsendimslmmessage();
             b->set_registrationhandle(3);
             fillSession(b->mutable_sessiondata());
             auto* m = b->mutable_messageparam();
             m->set_sender("me");
             m->set_receiver("you");
             m->set_useralias("own alias");
             m->set_body(std::string("a\0b\xff", 4));
             m->set_contenttype("text/plain");
             m->mutable_imdn()->set_messageid("m");
             m->set_devicename("dev");
             m->set_reliablemessage("rel");
             m->set_xmsmessage("xms");
             m->set_extraft(true);
             m->set_isburnmsg(true);
             m->set_ispublicaccountmsg(true);
             m->set_silencesupported(true);
             m->add_cpimnamespaces()->set_name("ns");
             m->add_ccparticipants("cc");
             addParticipants(b->mutable_participant());
             fillReport(b->mutable_reportdata());
         },
         // The alias is the session's; sender, receiver, namespaces, copies
         // and silence are not read.
         R"({"fields":{"handle":3,"session":{)" + kIds + R"(},"message":{"userAlias":"alias",
             "body":"a\u0000b\u00ff","contentType":"text/plain","imdn":{"messageId":"m"},
             "deviceName":"dev","reliableMessage":"rel","xmsMessage":"xms","extraFt":true,
             "isBurnMsg":true,"isPublicAccountMsg":true},)" +
             kReportSet + "," + kParticipants + "}}"},
        // Always the whole file and no icon, whatever the client names.
        {521,
         [](ims::Request& r) {
             auto* b = r.mutable_requestsendslmfile();
             b->set_registrationhandle(4);
             fillSession(b->mutable_sessiondata());
             fillPayload(b->mutable_payloadparam());
             addParticipants(b->mutable_participant());
         },
         R"({"fields":{"handle":4,"session":{"sessionUri":"uri","sdpContentType":"sdp",)" + kIds +
             R"(},"payload":)" + filledPayload(R"(,"end":4294967305)", "") + "," + kParticipants +
             "}}"},
        {521, [](ims::Request& r) { r.mutable_requestsendslmfile()->mutable_payloadparam(); },
         R"({"fields":{"payload":{"fileAttr":{"end":18446744073709551615}}}})"},
        {560,
         [](ims::Request& r) {
             auto* b = r.mutable_requestgrouplistsubscribe();
             b->set_handle(2);
             b->set_subscriptionid("list");
             b->set_version(5);
             b->set_isincrease(true);
         },
         R"({"fields":{"handle":2,"subscriptionId":"list","version":5,"isIncrease":true}})"},
        {561,
         [](ims::Request& r) {
             auto* b = r.mutable_requestgroupinfosubscribe();
             b->set_handle(2);
             b->set_subscriptionid("info");
             b->set_uri("sip:g");
         },
         R"({"fields":{"handle":2,"subscriptionId":"info","uri":"sip:g"}})"},
    };
    for (size_t i = 0; i < cases.size(); i++) {
        const auto& c = cases[i];
        ims::Request request;
        request.set_reqid(ims::Id(c.id));
        c.fill(request);
        Json expected = Json::parse(kEmpty.at(c.id == 552 ? 522 : c.id));
        overlay(expected, Json::parse(c.expected));
        EXPECT_EQ(dispatchOne(request), expected) << "case " << i;
    }
}

template <auto Handler>
int notifyNull() {
    ims::Notify n;
    return Handler(n, nullptr);
}

template <auto Handler>
int respondNull() {
    ims::Response r;
    return Handler(1, r, nullptr);
}

TEST(MessagingFtInProcess, NullRecordsSendNothing) {
    const std::pair<int (*)(), const char*> cases[] = {
        {notifyNull<NotifyFtProgress>, "invalid response: NULL"},
        {notifyNull<PrepareNotifyFtIncomingSession>,
         "PrepareNotifyFtIncomingSession: invalid response: NULL"},
        {notifyNull<PrepareNotifySlmIncoming>, "null notification!"},
        {notifyNull<NotifyGroupChatSubscribeStatus>, "invalid response: NULL"},
        {notifyNull<NotifyGroupListUpdate>, "invalid response: NULL"},
        {notifyNull<NotifyGroupInfoUpdate>, "invalid response: NULL"},
        {respondNull<ResponseSendImSlmMessage>, "invalid response: NULL"},
        {respondNull<PrepareResponseSlmSendFile>, "invalid response: NULL"},
    };
    for (const auto& [run, line] : cases) {
        LogCapture log;
        EXPECT_EQ(run(), -1) << line;
        EXPECT_TRUE(log.contains("E [IMS6.0]: " + std::string(line))) << line;
    }
}

TEST(MessagingFtInProcess, LogLevelGatesTheDebugLines) {
    const int saved = logLevel;
    for (int level : {1, 2}) {
        logLevel = level;
        LogCapture log;
        notifyJson(Json::parse(R"({"class":"FtIncomingData","id":18001,"fields":{}})"));
        respondJson(Json::parse(R"({"class":"SendSlmFileRespData","id":521,"fields":{}})"));
        EXPECT_EQ(log.contains("D [IMS6.0]: PrepareNotifyFtIncomingSession: reqId = 18001"),
                  level > 1);
        EXPECT_EQ(log.contains("D [IMS6.0]: PrepareResponseSlmSendFile: "), level > 1);
    }
    logLevel = saved;
}

// The simulated stack's auto mode answers with the record each response
// handler reads.
TEST(MessagingFtInProcess, AutoModeAnswersWithTheRecordTheResponseHandlerReads) {
    const std::pair<int, const char*> table[] = {
        {550, "StartSessionRespData"},     {553, "StartSessionRespData"},
        {522, "CloseSessionRespData"},     {552, "CloseSessionRespData"},
        {520, "SendImSlmMessageRespData"}, {521, "SendSlmFileRespData"},
        {560, "GeneralResponseData"},      {561, "GeneralResponseData"}};
    for (const auto& [id, cls] : table) {
        PrimitiveData<int> request(id, 0);
        std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(&request));
        ASSERT_NE(answer, nullptr) << id;
        EXPECT_EQ(velar_sim::recordToJson(answer.get())["class"], cls) << id;
    }
}
