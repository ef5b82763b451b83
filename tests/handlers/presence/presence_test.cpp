// Presence publication, subscription and capability exchange, in process.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/in_process.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

// Keeps the key order of the text, which the comparisons check.
Json operator""_oj(const char* text, size_t size) {
    return Json::parse(text, text + size);
}

struct Attr {
    const char* name;
    const char* value;
    const char* nameSpace;  // null: absent on the wire
};

// A wire element with its attributes and children, as the tests describe it.
struct Node {
    const char* name;
    const char* value = nullptr;
    const char* nameSpace = nullptr;
    std::vector<Attr> attributes = {};
    std::vector<Node> children = {};
};

void fill(ims::Element* e, const Node& n) {
    e->set_name(n.name);
    if (n.value) e->set_value(n.value);
    if (n.nameSpace) e->set_namespace_(n.nameSpace);
    for (const Attr& a : n.attributes) {
        auto* w = e->add_attributes();
        w->set_name(a.name);
        w->set_value(a.value);
        if (a.nameSpace) w->set_namespace_(a.nameSpace);
    }
    for (const Node& c : n.children) fill(e->add_elements(), c);
}

template <class Repeated>
void fillAll(Repeated* out, const std::vector<Node>& nodes) {
    for (const Node& n : nodes) fill(out->Add(), n);
}

ims::Request request(int id, const std::function<void(ims::Request&)>& build) {
    ims::Request r;
    r.set_reqid(static_cast<ims::Id>(id));
    if (build) build(r);
    return r;
}

// The document shape with one leaf element per slot, named after the slot, so
// that any swap of vectors or arguments shows in the comparison.
Json leaf(const char* name) {
    return Json{{"name", name},
                {"value", ""},
                {"nameSpace", ""},
                {"attributes", Json::array()},
                {"elements", Json::array()}};
}

}  // namespace

TEST(PresencePublish, DocumentTreeReachesTheStackWholeAndInOrder) {
    auto r = request(701, [](ims::Request& r) {
        auto* p = r.mutable_requestpresencepublish();
        p->set_handle(7);
        p->set_uri("sip:alice@example.org");
        p->set_timestamp("T0");
        p->set_expiretime(3600);
        p->set_etag("etag-1");

        auto* person = p->add_persontuples();
        person->set_statusicon("icon");
        person->set_timestamp("T1");
        // Attributes and children keep their order at every depth.
        fillAll(person->mutable_extensions(),
                {{"ext",
                  "v",
                  "urn:x",
                  {{"a1", "1", "urn:a"}, {"a2", "2", nullptr}},
                  {{"c1", nullptr, nullptr, {}, {{"g1", "deep", nullptr, {{"a3", "3", nullptr}}}}},
                   {"c2"}}}});
        fillAll(person->mutable_notes(), {{"pnote1"}, {"pnote2"}});

        auto* service = p->add_servicetuples();
        service->set_serviceid("svc");
        service->set_tupleid("tuple");
        service->set_version("1.0");
        service->set_description("desc");
        service->mutable_status()->set_basic("open");
        fillAll(service->mutable_mediacapabilities(), {{"media"}});
        fillAll(service->mutable_contacts(), {{"contact"}});
        fillAll(service->mutable_extensions(), {{"sext"}});
        fillAll(service->mutable_notes(), {{"snote"}});
        service->set_timestamp("T2");
        // No status: the stack still gets one, with an empty basic.
        p->add_servicetuples()->set_serviceid("bare");

        auto* device = p->add_devicetuples();
        device->set_deviceid("dev");
        fillAll(device->mutable_devicecapabilities(), {{"dcap"}});
        fillAll(device->mutable_descriptions(), {{"ddesc"}});
        fillAll(device->mutable_extensions(), {{"dext"}});
        fillAll(device->mutable_notes(), {{"dnote"}});
        device->set_timestamp("T3");

        fillAll(p->mutable_notes(), {{"note1"}, {"note2"}});
    });

    Json ext = R"({"name":"ext","value":"v","nameSpace":"urn:x",
        "attributes":[{"name":"a1","value":"1","nameSpace":"urn:a"},
                      {"name":"a2","value":"2","nameSpace":""}],
        "elements":[
          {"name":"c1","value":"","nameSpace":"","attributes":[],"elements":[
            {"name":"g1","value":"deep","nameSpace":"",
             "attributes":[{"name":"a3","value":"3","nameSpace":""}],"elements":[]}]},
          {"name":"c2","value":"","nameSpace":"","attributes":[],"elements":[]}]})"_oj;
    Json expected = {
        {"class", "PresencePublishData"},
        {"id", 701},
        {"fields",
         {{"handle", 7},
          {"presentity",
           {{"uri", "sip:alice@example.org"},
            {"personTuples", Json::array({{{"statusIcon", "icon"},
                                           {"extensions", Json::array({ext})},
                                           {"notes", {leaf("pnote1"), leaf("pnote2")}},
                                           {"timestamp", "T1"}}})},
            {"serviceTuples",
             {{{"serviceId", "svc"},
               {"tupleId", "tuple"},
               {"version", "1.0"},
               {"description", "desc"},
               {"status", {{"basic", "open"}}},
               {"mediaCapabilities", Json::array({leaf("media")})},
               {"contacts", Json::array({leaf("contact")})},
               {"extensions", Json::array({leaf("sext")})},
               {"notes", Json::array({leaf("snote")})},
               {"timestamp", "T2"}},
              {{"serviceId", "bare"},
               {"tupleId", ""},
               {"version", ""},
               {"description", ""},
               {"status", {{"basic", ""}}},
               {"mediaCapabilities", Json::array()},
               {"contacts", Json::array()},
               {"extensions", Json::array()},
               {"notes", Json::array()},
               {"timestamp", ""}}}},
            {"deviceTuples", Json::array({{{"deviceId", "dev"},
                                           {"deviceCapabilities", Json::array({leaf("dcap")})},
                                           {"descriptions", Json::array({leaf("ddesc")})},
                                           {"extensions", Json::array({leaf("dext")})},
                                           {"notes", Json::array({leaf("dnote")})},
                                           {"timestamp", "T3"}}})},
            {"notes", {leaf("note1"), leaf("note2")}},
            {"timestamp", "T0"}}},
          {"expireTime", 3600},
          {"eTag", "etag-1"}}}};
    EXPECT_EQ(dispatchOne(r), expected);
}

TEST(PresencePublish, RequestsWithLittleInThem) {
    const Json emptyPresentity = R"({"uri":"","personTuples":[],"serviceTuples":[],
        "deviceTuples":[],"notes":[],"timestamp":""})"_oj;
    struct Case {
        const char* name;
        ims::Request request;
        Json expected;
    };
    std::vector<Case> cases = {
        {"publish without body",
         request(701, nullptr),
         {{"class", "PresencePublishData"},
          {"id", 701},
          {"fields",
           {{"handle", 0}, {"presentity", emptyPresentity}, {"expireTime", 0}, {"eTag", ""}}}}},
        {"publish with expireTime 0 is still a publish",
         request(701,
                 [](ims::Request& r) {
                     auto* p = r.mutable_requestpresencepublish();
                     p->set_handle(0x80000001u);
                     p->set_expiretime(0);
                     p->set_etag("e");
                 }),
         {{"class", "PresencePublishData"},
          {"id", 701},
          {"fields",
           {{"handle", -2147483647},
            {"presentity", emptyPresentity},
            {"expireTime", 0},
            {"eTag", "e"}}}}},
        {"unpublish",
         request(702, [](ims::Request& r) { r.mutable_requestpresenceunpublish()->set_handle(9); }),
         R"({"class":"PresencePublishData","id":702,"fields":{"handle":9,"presentity":null,
             "expireTime":0,"eTag":""}})"_oj},
    };
    for (auto& c : cases) EXPECT_EQ(dispatchOne(c.request), c.expected) << c.name;
}

TEST(PresenceSubscribe, RequestsBecomeSubscribeRecords) {
    struct Case {
        const char* name;
        ims::Request request;
        const char* expected;
    };
    std::vector<Case> cases = {
        {"subscribe keeps the uri order, optionals absent read as defaults",
         request(711,
                 [](ims::Request& r) {
                     auto* s = r.mutable_requestpresencesubscribe();
                     s->set_handle(3);
                     s->set_subscriptionid("sub-1");
                     s->add_uri("sip:b");
                     s->add_uri("sip:a");
                     s->add_uri("sip:b");
                     s->set_isanonymous(false);
                     s->set_islistsubscribe(true);
                 }),
         R"({"class":"PresenceSubscribeData","id":711,"fields":{"handle":3,
             "uris":["sip:b","sip:a","sip:b"],"isAnonymous":false,"isListSubscribe":true,
             "subscriptionId":"sub-1","gzipEnable":false,"expires":0}})"},
        {"subscribe with every field",
         request(711,
                 [](ims::Request& r) {
                     auto* s = r.mutable_requestpresencesubscribe();
                     s->set_handle(4);
                     s->set_subscriptionid("s");
                     s->set_isanonymous(true);
                     s->set_islistsubscribe(false);
                     s->set_gzipenable(true);
                     s->set_expires(600);
                 }),
         R"({"class":"PresenceSubscribeData","id":711,"fields":{"handle":4,"uris":[],
             "isAnonymous":true,"isListSubscribe":false,"subscriptionId":"s",
             "gzipEnable":true,"expires":600}})"},
        {"unsubscribe is anonymous and single, with no uris",
         request(712,
                 [](ims::Request& r) {
                     auto* s = r.mutable_requestpresenceunsubscribe();
                     s->set_handle(5);
                     s->set_subscriptionid("sub-1");
                 }),
         R"({"class":"PresenceSubscribeData","id":712,"fields":{"handle":5,"uris":[],
             "isAnonymous":true,"isListSubscribe":false,"subscriptionId":"sub-1",
             "gzipEnable":false,"expires":0}})"},
        {"options keep the feature numbers as given, duplicates included",
         request(751,
                 [](ims::Request& r) {
                     auto* o = r.mutable_requestoptionscapexchange();
                     o->set_handle(6);
                     o->set_uri("tel:+1");
                     for (int f : {5, 1, 5, 0}) o->add_myfeatures(static_cast<ims::FeatureTag>(f));
                 }),
         R"({"class":"OptionsData","id":751,"args":[6,"tel:+1",[5,1,5,0]]})"},
        {"options without body", request(751, nullptr),
         R"({"class":"OptionsData","id":751,"args":[0,"",[]]})"},
    };
    for (auto& c : cases) EXPECT_EQ(dispatchOne(c.request), Json::parse(c.expected)) << c.name;
}

TEST(PresenceNotify, StatusNotificationsMarkEveryFieldPresent) {
    {
        auto [rc, n] = notifyJson(R"({"class":"PresencePublishStatusData","id":13003,"fields":{
            "handle":2,"isSuccess":false,"sipErrorCode":423,"sipErrorPhrase":"Too Brief",
            "etag":"","remoteExpires":0,"minExpires":1800,"isRefresh":false,"retryAfter":0}})"_oj);
        ASSERT_EQ(rc, 0);
        EXPECT_EQ(n.notifyid(), 13003);
        const auto& s = n.presencepublishstatus();
        EXPECT_EQ(s.handle(), 2u);
        EXPECT_FALSE(s.issuccess());
        EXPECT_EQ(s.siperrorcode(), 423u);
        EXPECT_EQ(s.siperrorphrase(), "Too Brief");
        EXPECT_EQ(s.minexpires(), 1800u);
        // Optional on the wire, but present even when empty or zero.
        EXPECT_TRUE(s.has_etag() && s.has_remoteexpires() && s.has_isrefresh() &&
                    s.has_retryafter() && s.has_minexpires());
    }
    {
        auto [rc, n] = notifyJson(R"({"class":"PresencePublishStatusData","id":13002,"fields":{
            "handle":1,"isSuccess":true,"etag":"E","remoteExpires":3600,"isRefresh":true,
            "retryAfter":30}})"_oj);
        ASSERT_EQ(rc, 0);
        EXPECT_EQ(n.notifyid(), 13002);
        const auto& s = n.presencepublishstatus();
        EXPECT_TRUE(s.issuccess());
        EXPECT_EQ(s.etag(), "E");
        EXPECT_EQ(s.remoteexpires(), 3600u);
        EXPECT_TRUE(s.isrefresh());
        EXPECT_EQ(s.retryafter(), 30u);
    }
    {
        auto [rc, n] = notifyJson(R"({"class":"PresenceSubscribeStatusData","id":13004,"fields":{
            "handle":4,"isSuccess":false,"sipErrorCode":489,"sipErrorPhrase":"Bad Event",
            "subscriptionId":"sub-9","minExpires":0}})"_oj);
        ASSERT_EQ(rc, 0);
        EXPECT_EQ(n.notifyid(), 13004);
        const auto& s = n.presencesubscribestatus();
        EXPECT_EQ(s.handle(), 4u);
        EXPECT_EQ(s.siperrorcode(), 489u);
        EXPECT_EQ(s.siperrorphrase(), "Bad Event");
        EXPECT_EQ(s.subscriptionid(), "sub-9");
        EXPECT_TRUE(s.has_minexpires());
    }
}

TEST(PresenceNotify, ContactsKeepOrderAndLeaveEmptyOptionalsOut) {
    LogCapture log;
    auto [rc, n] = notifyJson(R"({"class":"PresenceNotifyData","id":13001,"fields":{
        "handle":8,"subscriptionId":"sub-2","contacts":[
          {"uri":"sip:first","subscriptionState":"","subscriptionFailureReason":"",
           "services":[],"rawPidf":""},
          {"uri":"sip:second","subscriptionState":"terminated",
           "subscriptionFailureReason":"rejected","rawPidf":"<presence/>","services":[
             {"serviceId":"","version":"","status":"","mediaCapabilities":[]},
             {"serviceId":"chat","version":"2.0","status":"open",
              "mediaCapabilities":["video","audio","video"]}]}]}})"_oj);
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(n.notifyid(), 13001);
    const auto& info = n.newpresenceinfo();
    EXPECT_EQ(info.handle(), 8u);
    EXPECT_EQ(info.subscriptionid(), "sub-2");
    ASSERT_EQ(info.contactinfo_size(), 2);

    const auto& first = info.contactinfo(0);
    EXPECT_EQ(first.uri(), "sip:first");
    EXPECT_TRUE(first.has_subscriptionstate());
    EXPECT_FALSE(first.has_subscriptionfailurereason());
    EXPECT_FALSE(first.has_rawpidf());
    EXPECT_EQ(first.servicestatus_size(), 0);

    const auto& second = info.contactinfo(1);
    EXPECT_EQ(second.uri(), "sip:second");
    EXPECT_EQ(second.subscriptionstate(), "terminated");
    EXPECT_EQ(second.subscriptionfailurereason(), "rejected");
    EXPECT_EQ(second.rawpidf(), "<presence/>");
    ASSERT_EQ(second.servicestatus_size(), 2);
    const auto& empty = second.servicestatus(0);
    EXPECT_TRUE(empty.has_serviceid() && empty.has_version() && empty.has_status());
    const auto& chat = second.servicestatus(1);
    EXPECT_EQ(chat.serviceid(), "chat");
    EXPECT_EQ(chat.version(), "2.0");
    EXPECT_EQ(chat.status(), "open");
    EXPECT_EQ(
        std::vector<std::string>(chat.mediacapabilities().begin(), chat.mediacapabilities().end()),
        (std::vector<std::string>{"video", "audio", "video"}));
    // Fields the stack never gives stay absent.
    for (const auto& c : info.contactinfo()) {
        EXPECT_FALSE(c.has_number() || c.has_note() || c.has_iconuri() || c.has_email() ||
                     c.has_homepage() || c.has_classname());
    }
    EXPECT_TRUE(log.contains("D [IMS6.0]: NotifyPresenceSubscribe() chat 2.0 open"));
}

TEST(PresenceNotify, NoContactsStillNotifies) {
    auto [rc, n] = notifyJson(
        R"({"class":"PresenceNotifyData","id":13001,"fields":{"handle":1,"subscriptionId":""}})"_oj);
    ASSERT_EQ(rc, 0);
    EXPECT_TRUE(n.newpresenceinfo().has_handle());
    EXPECT_TRUE(n.newpresenceinfo().has_subscriptionid());
    EXPECT_EQ(n.newpresenceinfo().contactinfo_size(), 0);
}

TEST(PresenceNotify, NullEntriesAreSkipped) {
    auto [rc, n] = notifyJson(R"({"class":"PresenceNotifyData","id":13001,"fields":{
        "contacts":[null,{"uri":"sip:x","services":[null]}]}})"_oj);
    ASSERT_EQ(rc, 0);
    ASSERT_EQ(n.newpresenceinfo().contactinfo_size(), 1);
    EXPECT_EQ(n.newpresenceinfo().contactinfo(0).uri(), "sip:x");
    EXPECT_EQ(n.newpresenceinfo().contactinfo(0).servicestatus_size(), 0);
}

TEST(PresenceNotify, OptionsReceivedCarriesTagsAndReasonAsNumbers) {
    struct Case {
        const char* record;
        std::vector<int> tags;
        int reason;
    };
    std::vector<Case> cases = {
        {R"({"class":"OptionsReceivedData","id":15001,"fields":{"sessionId":3,
            "remoteUri":"sip:bob","isResponse":true,"success":true,"reason":0,
            "tags":[7,2,7]}})",
         {7, 2, 7},
         0},
        {R"({"class":"OptionsReceivedData","id":15001,"fields":{"sessionId":4,
            "remoteUri":"sip:carol","isResponse":false,"success":false,"reason":4}})",
         {},
         4},
    };
    for (const auto& c : cases) {
        auto [rc, n] = notifyJson(Json::parse(c.record));
        ASSERT_EQ(rc, 0) << c.record;
        EXPECT_EQ(n.notifyid(), 15001);
        const auto& o = n.optionsreceivedinfo();
        EXPECT_TRUE(o.has_sessionid() && o.has_remoteuri() && o.has_isresponse() &&
                    o.has_success() && o.has_reason())
            << c.record;
        EXPECT_EQ(static_cast<int>(o.reason()), c.reason);
        EXPECT_EQ(std::vector<int>(o.tags().begin(), o.tags().end()), c.tags) << c.record;
    }
}

TEST(PresenceNotify, NullRecordSendsNothing) {
    for (int id : {13001, 13002, 13003, 13004, 15001}) {
        if (s_notifyMap.empty()) ImsFillDispatchMaps();
        LogCapture log;
        ims::Notify n;
        EXPECT_EQ(s_notifyMap.at(id).notifyFunction(n, nullptr), -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
}
