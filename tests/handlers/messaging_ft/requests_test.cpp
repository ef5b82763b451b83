// What the file transfer, standalone and group chat requests hand to the
// stack, compared as whole records so that field order, dropped fields and
// defaults all show.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/in_process.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

// Every field set, each to a value of its own, so that each one shows
// whether it is passed, dropped or moved.
void fillSession(ims::BaseSessionData* s) {
    s->set_sessionhandle(41);
    s->set_id("fw-id");
    s->set_isconference(false);
    s->set_sessionuri("sip:conf@x");
    s->set_useralias("Alias");
    s->add_receivers("sip:a@x");
    s->add_receivers("sip:b@x");
    s->set_contributionid("contrib");
    s->set_conversationid("conv");
    s->set_inreplytocontributionid("reply");
    s->set_preferredlineuri("sip:line@x");
    s->set_sdpcontenttype("sdp/type");
    s->set_serviceid("svc");
}

void fillFile(ims::ImFileAttr* f, const std::string& tag) {
    f->set_name(tag + ".jpg");
    f->set_path("/data/" + tag);
    f->set_contenttype("image/jpeg");
    f->set_size(0x100000000ull + 10);  // beyond 32 bits
    f->set_start(3);
    f->set_end(7);
    f->set_timeduration(9);
}

void fillImdn(ims::ImdnParams* imdn) {
    imdn->set_messageid("m1");
    imdn->set_datetime("d1");
    imdn->add_noti(ims::NotificationStatus(1));
    imdn->add_noti(ims::NotificationStatus(0));
    auto* route = imdn->add_recroute();
    route->set_uri("sip:r@x");
    route->set_name("R");
    imdn->set_deviceid("dev");
    imdn->set_originaltohdr("orig");
}

void fillPayload(ims::FtPayloadParam* p) {
    fillFile(p->mutable_fileattr(), "file");
    fillFile(p->mutable_iconattr(), "icon");
    fillImdn(p->mutable_imdn());
    p->set_devicename("phone");
    p->set_reliablemessage("reliable");
    p->set_extraft(true);
    p->set_isburnmsg(true);
    p->set_ispublicaccountmsg(true);
    p->set_ispush(true);
    auto* ns = p->add_cpimnamespaces();
    ns->set_name("ns");
    ns->set_uri("urn:ns");
    p->set_sender("sip:me@x");
    p->set_receiver("sip:you@x");
    p->set_silencesupported(true);
}

void fillReport(ims::ReportMessageHdr* r) {
    r->set_spamfrom("from");
    r->set_spamto("to");
    r->set_spamdate("date");
}

void addParticipants(google::protobuf::RepeatedPtrField<ims::Participant>* list) {
    const int controls[] = {0, 1, 2, 7};
    for (int c : controls) {
        auto* p = list->Add();
        p->set_uri("sip:p" + std::to_string(c) + "@x");
        p->set_copycontrol(ims::Participant_CopyControl(c));
    }
}

const char* const kImdn =
    R"({"messageId":"m1","datetime":"d1","noti":[0,1],"recRoute":[{"name":"R","uri":"sip:r@x"}],
        "deviceId":"dev","originalToHdr":"orig"})";
const char* const kNoImdn =
    R"({"messageId":"","datetime":"","noti":[],"recRoute":[],"deviceId":"","originalToHdr":""})";
const char* const kParticipants =
    R"([{"uri":"sip:p0@x","copyControl":1},{"uri":"sip:p1@x","copyControl":2},
        {"uri":"sip:p2@x","copyControl":3},{"uri":"sip:p7@x","copyControl":1}])";

Json fileJson(const std::string& tag) {
    return Json{{"name", tag + ".jpg"},
                {"path", "/data/" + tag},
                {"contentType", "image/jpeg"},
                {"size", 0x100000000ull + 10},
                {"start", 3},
                {"end", 7},
                {"timeDuration", 9}};
}

Json emptyFile() {
    return Json::parse(
        R"({"name":"","path":"","contentType":"","size":0,"start":0,"end":0,"timeDuration":0})");
}

Json emptySession() {
    return Json::parse(R"({"sessionHandle":0,"id":"","isConference":false,"sessionUri":"",
        "userAlias":"","receivers":[],"contributionId":"","conversationId":"",
        "inReplyToContributionId":"","preferredLineUri":"","sdpContentType":"","serviceId":""})");
}

Json emptyPayload() {
    Json p = Json::object();
    p["fileAttr"] = emptyFile();
    p["iconAttr"] = emptyFile();
    p["imdn"] = Json::parse(kNoImdn);
    for (const char* s : {"deviceName", "reliableMessage"}) p[s] = "";
    for (const char* b : {"extraFt", "isBurnMsg", "isPublicAccountMsg", "isPush"}) p[b] = false;
    p["cpimNamespaces"] = Json::array();
    p["sender"] = "";
    p["receiver"] = "";
    p["silenceSupported"] = false;
    return p;
}

Json emptyMessage() {
    return Json::parse(std::string(R"({"sender":"","userAlias":"","body":"","contentType":"",
        "imdn":)") + kNoImdn +
                       R"(,"deviceName":"","reliableMessage":"","xmsMessage":"",
        "extraFt":false,"isBurnMsg":false,"isPublicAccountMsg":false,"cpimNamespaces":[],
        "receiver":"","silenceSupported":false,"ccParticipants":[]})");
}

// The session fields that every standalone request takes from the wire.
Json standaloneSession() {
    Json s = emptySession();
    s["userAlias"] = "Alias";
    s["contributionId"] = "contrib";
    s["conversationId"] = "conv";
    s["inReplyToContributionId"] = "reply";
    s["preferredLineUri"] = "sip:line@x";
    return s;
}

struct Case {
    std::string name;
    ims::Request request;
    Json expected;
};

void runCases(const std::vector<Case>& cases) {
    for (const auto& c : cases) EXPECT_EQ(dispatchOne(c.request), c.expected) << c.name;
}

}  // namespace

TEST(FtRequests, StartTransfer) {
    std::vector<Case> cases;
    {
        Case c{"one-to-one", {}, {}};
        c.request.set_reqid(ims::Id(550));
        auto* body = c.request.mutable_requeststartftsession();
        body->set_registrationhandle(7);
        fillSession(body->mutable_sessiondata());
        fillPayload(body->mutable_payload());
        fillReport(body->mutable_reportdata());
        // The content type and service id of a transfer stay empty even
        // when the client sets them.
        Json session = emptySession();
        session.update(Json{{"sessionHandle", 41},
                            {"id", "fw-id"},
                            {"sessionUri", "sip:conf@x"},
                            {"userAlias", "Alias"},
                            {"receivers", {"sip:a@x", "sip:b@x"}},
                            {"contributionId", "contrib"},
                            {"conversationId", "conv"},
                            {"inReplyToContributionId", "reply"},
                            {"preferredLineUri", "sip:line@x"}});
        Json payload = emptyPayload();
        payload.update(Json{{"fileAttr", fileJson("file")},
                            {"iconAttr", fileJson("icon")},
                            {"imdn", Json::parse(kImdn)},
                            {"deviceName", "phone"},
                            {"reliableMessage", "reliable"},
                            {"extraFt", true},
                            {"isBurnMsg", true},
                            {"isPublicAccountMsg", true},
                            {"isPush", true}});
        c.expected = Json{{"class", "FtStartSessionData"},
                          {"id", 550},
                          {"args",
                           {7, session, payload,
                            Json{{"spamFrom", "from"}, {"spamTo", "to"}, {"spamDate", "date"}}}}};
        cases.push_back(c);

        Case conf = c;
        conf.name = "conference drops the receivers";
        conf.request.mutable_requeststartftsession()->mutable_sessiondata()->set_isconference(true);
        conf.expected["args"][1]["isConference"] = true;
        conf.expected["args"][1]["receivers"] = Json::array();
        cases.push_back(conf);
    }
    {
        Case c{"no body", {}, {}};
        c.request.set_reqid(ims::Id(550));
        c.expected = Json{{"class", "FtStartSessionData"},
                          {"id", 550},
                          {"args",
                           {0, emptySession(), emptyPayload(),
                            Json{{"spamFrom", ""}, {"spamTo", ""}, {"spamDate", ""}}}}};
        cases.push_back(c);
    }
    runCases(cases);
}

TEST(FtRequests, AcceptAndCancel) {
    std::vector<Case> cases;
    {
        Case c{"accept", {}, {}};
        c.request.set_reqid(ims::Id(553));
        auto* body = c.request.mutable_requestacceptftsession();
        body->set_sessionhandle(0xFFFFFFFFu);
        body->set_start(0x100000000ull);
        body->set_end(0xFFFFFFFFFFFFFFFFull);
        body->set_filepath("/sdcard/in.jpg");
        body->set_useralias("Bob");
        c.expected = Json::parse(R"({"class":"RequestAcceptFtSession","id":553,"fields":{
            "handle":4294967295,"start":4294967296,"end":18446744073709551615,
            "filePath":"/sdcard/in.jpg","userAlias":"Bob"}})");
        cases.push_back(c);
    }
    // One handler serves both ids; the record keeps the one the client sent.
    for (int id : {522, 552}) {
        Case c{"cancel " + std::to_string(id) + " with warning", {}, {}};
        c.request.set_reqid(ims::Id(id));
        auto* body = c.request.mutable_requestcancelftsession();
        body->set_sessionhandle(12);
        body->set_sipcode(486);
        body->mutable_warninghdr()->set_code(399);
        body->mutable_warninghdr()->set_host("host");
        body->mutable_warninghdr()->set_text("text");
        c.expected = Json{{"class", "CancelFtSessionData"},
                          {"id", id},
                          {"fields",
                           {{"handle", 12},
                            {"sipCode", 486},
                            {"warning", {{"code", 399}, {"host", "host"}, {"text", "text"}}}}}};
        cases.push_back(c);
    }
    {
        // The schema gives an absent sip code -1, like an absent warning.
        Case c{"cancel without sip code or warning", {}, {}};
        c.request.set_reqid(ims::Id(552));
        c.request.mutable_requestcancelftsession()->set_sessionhandle(12);
        c.expected = Json::parse(R"({"class":"CancelFtSessionData","id":552,"fields":{
            "handle":12,"sipCode":-1,"warning":{"code":-1,"host":"","text":""}}})");
        cases.push_back(c);
    }
    {
        Case c{"cancel with a warning that has no code", {}, {}};
        c.request.set_reqid(ims::Id(522));
        auto* body = c.request.mutable_requestcancelftsession();
        body->set_sipcode(0);
        body->mutable_warninghdr()->set_text("why");
        c.expected = Json::parse(R"({"class":"CancelFtSessionData","id":522,"fields":{
            "handle":0,"sipCode":0,"warning":{"code":-1,"host":"","text":"why"}}})");
        cases.push_back(c);
    }
    runCases(cases);
}

TEST(FtRequests, StandaloneMessage) {
    std::vector<Case> cases;
    {
        Case c{"every field set", {}, {}};
        c.request.set_reqid(ims::Id(520));
        auto* body = c.request.mutable_requestsendimslmmessage();
        body->set_registrationhandle(3);
        fillSession(body->mutable_sessiondata());
        auto* m = body->mutable_messageparam();
        m->set_sender("sip:me@x");
        m->set_receiver("sip:you@x");
        m->set_useralias("MessageAlias");
        m->set_body(std::string("a\0b\xff", 4));
        m->set_contenttype("text/plain");
        fillImdn(m->mutable_imdn());
        m->set_devicename("phone");
        m->set_reliablemessage("reliable");
        m->set_xmsmessage("xms");
        m->set_extraft(true);
        m->set_isburnmsg(true);
        m->set_ispublicaccountmsg(true);
        m->set_silencesupported(true);
        m->add_cpimnamespaces()->set_name("ns");
        m->add_ccparticipants("sip:cc@x");
        addParticipants(body->mutable_participant());
        fillReport(body->mutable_reportdata());

        Json message = emptyMessage();
        message.update(Json{{"userAlias", "Alias"},
                            {"body", Json::parse(R"("a\u0000b\u00ff")")},
                            {"contentType", "text/plain"},
                            {"imdn", Json::parse(kImdn)},
                            {"deviceName", "phone"},
                            {"reliableMessage", "reliable"},
                            {"xmsMessage", "xms"},
                            {"extraFt", true},
                            {"isBurnMsg", true},
                            {"isPublicAccountMsg", true}});
        c.expected =
            Json{{"class", "RequestSendImSlmMessage"},
                 {"id", 520},
                 {"fields",
                  {{"handle", 3},
                   {"session", standaloneSession()},
                   {"message", message},
                   {"reportData", {{"spamFrom", "from"}, {"spamTo", "to"}, {"spamDate", "date"}}},
                   {"participants", Json::parse(kParticipants)}}}};
        cases.push_back(c);
    }
    runCases(cases);
}

TEST(FtRequests, StandaloneFile) {
    std::vector<Case> cases;
    {
        Case c{"every field set", {}, {}};
        c.request.set_reqid(ims::Id(521));
        auto* body = c.request.mutable_requestsendslmfile();
        body->set_registrationhandle(4);
        fillSession(body->mutable_sessiondata());
        fillPayload(body->mutable_payloadparam());
        addParticipants(body->mutable_participant());

        Json session = standaloneSession();
        session["sessionUri"] = "sip:conf@x";
        session["sdpContentType"] = "sdp/type";
        // The whole file, whatever range the client gave; no icon.
        Json file = fileJson("file");
        file["start"] = 0;
        file["end"] = 0x100000000ull + 9;
        file["timeDuration"] = 0;
        Json payload = emptyPayload();
        payload.update(Json{{"fileAttr", file},
                            {"imdn", Json::parse(kImdn)},
                            {"deviceName", "phone"},
                            {"reliableMessage", "reliable"},
                            {"extraFt", true},
                            {"isBurnMsg", true},
                            {"isPublicAccountMsg", true}});
        c.expected = Json{{"class", "RequestSlmSendFile"},
                          {"id", 521},
                          {"fields",
                           {{"handle", 4},
                            {"session", session},
                            {"payload", payload},
                            {"participants", Json::parse(kParticipants)}}}};
        cases.push_back(c);
    }
    {
        Case c{"empty file wraps its end", {}, {}};
        c.request.set_reqid(ims::Id(521));
        c.request.mutable_requestsendslmfile()->mutable_payloadparam()->mutable_fileattr()->set_end(
            5);
        Json payload = emptyPayload();
        payload["fileAttr"]["end"] = 18446744073709551615ull;
        c.expected = Json{{"class", "RequestSlmSendFile"},
                          {"id", 521},
                          {"fields",
                           {{"handle", 0},
                            {"session", emptySession()},
                            {"payload", payload},
                            {"participants", Json::array()}}}};
        cases.push_back(c);
    }
    runCases(cases);
}
