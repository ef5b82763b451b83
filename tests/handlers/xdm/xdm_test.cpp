// XDM documents, contacts, authentication answers and notifications, in
// process.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
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

ims::Request request(int id, const std::function<void(ims::Request&)>& build) {
    ims::Request r;
    r.set_reqid(static_cast<ims::Id>(id));
    if (build) build(r);
    return r;
}

// Every string distinct, so that a swapped field shows.
void fillContact(ims::Contact* c, const std::string& id) {
    c->set_contactid(id);
    auto* n = c->add_contactnames();
    n->set_title("title");
    n->set_givenname("given");
    n->set_middlename("middle");
    n->set_familyname("family");
    n->set_generationid("gen");
    n->set_displayname("display");
    c->add_contactnames()->set_givenname("second-name");
    auto* a = c->add_contactaddresses();
    a->set_type("atype");
    a->set_label("alabel");
    a->set_addrstr("addr");
    a->set_country("country");
    a->set_region("region");
    a->set_locality("locality");
    a->set_street("street");
    a->set_postcode("post");
    auto* num = c->add_contactnumbers();
    num->set_number("+100");
    num->set_type("ntype");
    num->set_label("nlabel");
    c->add_contactnumbers()->set_number("+200");
    auto* u = c->add_contacturis();
    u->set_uri("sip:u");
    u->set_type("utype");
    u->set_label("ulabel");
    auto* o = c->add_contactorgs();
    o->set_displayname("org");
    o->set_entity("entity");
    o->set_unit("unit");
}

Json contactJson(const std::string& id) {
    Json c = R"({"contactId":"",
      "contactNames":[
        {"title":"title","givenName":"given","middleName":"middle","familyName":"family",
         "generationId":"gen","displayName":"display"},
        {"title":"","givenName":"second-name","middleName":"","familyName":"",
         "generationId":"","displayName":""}],
      "contactAddresses":[
        {"type":"atype","label":"alabel","addrStr":"addr","country":"country",
         "region":"region","locality":"locality","street":"street","postCode":"post"}],
      "contactNumbers":[{"number":"+100","type":"ntype","label":"nlabel"},
                        {"number":"+200","type":"","label":""}],
      "contactUris":[{"uri":"sip:u","type":"utype","label":"ulabel"}],
      "contactOrgs":[{"displayName":"org","entity":"entity","unit":"unit"}]})"_oj;
    c["contactId"] = id;
    return c;
}

const Json kEmptyContact = R"({"contactId":"","contactNames":[],"contactAddresses":[],
    "contactNumbers":[],"contactUris":[],"contactOrgs":[]})"_oj;

class LogLevel {
public:
    explicit LogLevel(int level) : saved_(logLevel) { logLevel = level; }
    ~LogLevel() { logLevel = saved_; }

private:
    int saved_;
};

}  // namespace

TEST(XdmRequests, RequestsBecomeTheirRecords) {
    struct Case {
        const char* name;
        ims::Request request;
        Json expected;
    };
    std::vector<Case> cases = {
        {"801",
         request(801,
                 [](ims::Request& r) {
                     auto* g = r.mutable_requestxdmupdategbadata();
                     g->set_rid(12);
                     g->set_imsi("001010123456789");
                     g->set_gbauiccsupported(true);
                 }),
         R"({"class":"XdmGbaData","id":801,"args":[12,"001010123456789",true]})"_oj},
        {"801 rid above 2^31 is an int",
         request(
             801,
             [](ims::Request& r) { r.mutable_requestxdmupdategbadata()->set_rid(0xFFFFFFFEu); }),
         R"({"class":"XdmGbaData","id":801,"args":[-2,"",false]})"_oj},
        {"803",
         request(803,
                 [](ims::Request& r) {
                     auto* k = r.mutable_requestxdmupdategbakey();
                     k->set_rid(4);
                     k->set_btid("btid");
                     k->set_gbakey("key");
                 }),
         R"({"class":"XdmKeyData","id":803,"args":[4,"btid","key"]})"_oj},
        {"805 leaves the rules out",
         request(805,
                 [](ims::Request& r) {
                     auto* p = r.mutable_requestxdmuploadpresrules();
                     p->set_rid(5);
                     p->set_impu("sip:me");
                     p->set_rules("<ruleset/>");
                     p->set_btid("btid");
                     p->set_gbakey("key");
                 }),
         R"({"class":"XdmPresRuleData","id":805,"args":[5,"sip:me","btid","key"]})"_oj},
        {"806 keeps every contact and entry in order",
         request(806,
                 [](ims::Request& r) {
                     auto* u = r.mutable_requestxdmuploadcontacts();
                     u->set_rid(6);
                     u->set_impu("sip:me");
                     fillContact(u->add_contacts(), "c1");
                     u->add_contacts()->set_contactid("c2");
                     fillContact(u->add_contacts(), "c3");
                     u->set_uuid("uuid");
                     u->set_etag("etag");
                     u->set_mtc(0x80000000u);
                 }),
         {{"class", "XdmContactData"},
          {"id", 806},
          {"args",
           {6, "sip:me",
            Json::array({contactJson("c1"),
                         [] {
                             Json c = kEmptyContact;
                             c["contactId"] = "c2";
                             return c;
                         }(),
                         contactJson("c3")}),
            "uuid", "etag", -2147483648LL}}}},
        {"806 with no contacts", request(806, nullptr),
         R"({"class":"XdmContactData","id":806,"args":[0,"",[],"","",0]})"_oj},
        {"807 converts the contact",
         request(807,
                 [](ims::Request& r) {
                     auto* m = r.mutable_requestxdmmodifycontact();
                     m->set_rid(7);
                     m->set_impu("sip:me");
                     m->set_contactid("c1");
                     m->set_uuid("uuid");
                     m->set_etag("etag");
                     fillContact(m->mutable_contact(), "c1");
                 }),
         {{"class", "XdmModifyContactData"},
          {"id", 807},
          {"args", {7, "sip:me", "c1", "uuid", "etag", contactJson("c1")}}}},
        {"807 without a contact gives an empty one",
         request(807,
                 [](ims::Request& r) { r.mutable_requestxdmmodifycontact()->set_contactid("c1"); }),
         {{"class", "XdmModifyContactData"},
          {"id", 807},
          {"args", {0, "", "c1", "", "", kEmptyContact}}}},
        {"808 ignores the contact",
         request(808,
                 [](ims::Request& r) {
                     auto* m = r.mutable_requestxdmmodifycontact();
                     m->set_rid(8);
                     m->set_impu("sip:me");
                     m->set_contactid("c1");
                     m->set_uuid("uuid");
                     m->set_etag("etag");
                     fillContact(m->mutable_contact(), "c1");
                 }),
         R"({"class":"XdmModifyContactData","id":808,"args":[8,"sip:me","c1","uuid","etag",null]})"_oj},
    };
    for (auto& c : cases) EXPECT_EQ(dispatchOne(c.request), c.expected) << c.name;
}

TEST(XdmRequests, AkaAnswerGoesInTheRegistrationRecord) {
    auto r = request(802, [](ims::Request& r) {
        auto* a = r.mutable_requestxdmupdateakaresp();
        a->set_sid(0x80000001u);
        a->set_akaresp(std::string("res\0\xff", 5));
        a->set_recvmng(3);
    });
    EXPECT_EQ(dispatchOne(r),
              R"({"class":"RegiAuth","id":802,"args":[3,-2147483647,"","res\u0000\u00ff"]})"_oj);
}

TEST(XdmRequests, FetchTranslatesTheTypeAndDefaultsTheSelector) {
    struct Case {
        int wireType;
        bool withSelector;
        const char* expected;
    };
    // Wire 3 is past the stack's table and lands on its fallback.
    std::vector<Case> cases = {
        {0, false, R"({"class":"XdmFetchDocumentData","id":804,"fields":{"rid":11,
            "impu":"sip:me","type":0,"name":"doc","accessToken":"tok",
            "nodeSelector":{"node":"","pos":0,"attr":"","attrVal":""}}})"},
        {1, true, R"({"class":"XdmFetchDocumentData","id":804,"fields":{"rid":11,
            "impu":"sip:me","type":2,"name":"doc","accessToken":"tok",
            "nodeSelector":{"node":"/list","pos":4,"attr":"name","attrVal":"friends"}}})"},
        {2, false, R"({"class":"XdmFetchDocumentData","id":804,"fields":{"rid":11,
            "impu":"sip:me","type":3,"name":"doc","accessToken":"tok",
            "nodeSelector":{"node":"","pos":0,"attr":"","attrVal":""}}})"},
        {3, false, R"({"class":"XdmFetchDocumentData","id":804,"fields":{"rid":11,
            "impu":"sip:me","type":4,"name":"doc","accessToken":"tok",
            "nodeSelector":{"node":"","pos":0,"attr":"","attrVal":""}}})"},
    };
    for (const auto& c : cases) {
        auto r = request(804, [&c](ims::Request& r) {
            auto* f = r.mutable_requestxdmfetchdocument();
            f->set_rid(11);
            f->set_impu("sip:me");
            f->set_type(static_cast<ims::XdmDocType>(c.wireType));
            f->set_name("doc");
            f->set_accesstoken("tok");
            if (c.withSelector) {
                auto* n = f->mutable_nodeselector();
                n->set_node("/list");
                n->set_pos(4);
                n->set_attr("name");
                n->set_attrval("friends");
            }
        });
        EXPECT_EQ(dispatchOne(r), Json::parse(c.expected)) << "wire type " << c.wireType;
    }
}

TEST(XdmRequests, SecretsAreLoggedOnlyAboveLevelOne) {
    struct Case {
        int id;
        std::function<void(ims::Request&)> build;
        const char* line;
    };
    std::vector<Case> cases = {
        {802, [](ims::Request& r) { r.mutable_requestxdmupdateakaresp()->set_akaresp("aka-resp"); },
         "D [IMS6.0]: DispatchXdmUpdateAkaResp() aka-resp"},
        {803, [](ims::Request& r) { r.mutable_requestxdmupdategbakey()->set_gbakey("secret-key"); },
         "D [IMS6.0]: DispatchXdmUpdateGbaKey() secret-key"},
    };
    for (const auto& c : cases) {
        for (int level : {1, 2}) {
            LogLevel l(level);
            LogCapture log;
            dispatch(request(c.id, c.build));
            EXPECT_EQ(log.contains(c.line), level > 1) << c.id << " at " << level;
        }
    }
}

TEST(XdmResponse, OptionalStringsOnlyWhenNotEmptyAndPairsInKeyOrder) {
    {
        auto [rc, r] = respondJson(R"({"class":"XdmResponseData","id":806,"fields":{
            "rid":9,"success":true,"reason":"OK","result":{"zeta":"26","alpha":"1","":"empty"},
            "statusCode":200,"etag":"E2","retryAfter":"30"}})"_oj);
        ASSERT_EQ(rc, 0);
        EXPECT_EQ(r.resid(), 806);
        const auto& x = r.xdmgeneralresponse();
        EXPECT_EQ(x.rid(), 9u);
        EXPECT_TRUE(x.success());
        EXPECT_EQ(x.reason(), "OK");
        EXPECT_EQ(x.statuscode(), 200);
        EXPECT_EQ(x.etag(), "E2");
        EXPECT_EQ(x.retryafter(), "30");
        std::vector<std::string> pairs;
        for (const auto& p : x.result()) pairs.push_back(p.key() + "=" + p.value());
        EXPECT_EQ(pairs, (std::vector<std::string>{"=empty", "alpha=1", "zeta=26"}));
    }
    {
        auto [rc, r] = respondJson(R"({"class":"XdmResponseData","id":801,"fields":{
            "rid":1,"success":false,"statusCode":0}})"_oj);
        ASSERT_EQ(rc, 0);
        const auto& x = r.xdmgeneralresponse();
        EXPECT_TRUE(x.has_rid() && x.has_success() && x.has_statuscode());
        EXPECT_FALSE(x.has_reason() || x.has_etag() || x.has_retryafter());
        EXPECT_EQ(x.result_size(), 0);
    }
}

TEST(XdmNotify, AuthenticationNotificationsCopyEveryField) {
    {
        auto [rc, n] = notifyJson(R"({"class":"XdmGbaRequestData","id":14001,"fields":{
            "rid":3,"nafFqdn":"naf.example","hexProtocolId":"\u0001\u0000\u00ff"}})"_oj);
        ASSERT_EQ(rc, 0);
        EXPECT_EQ(n.notifyid(), 14001);
        EXPECT_EQ(n.xdmreqgbadata().rid(), 3u);
        EXPECT_EQ(n.xdmreqgbadata().naffqdn(), "naf.example");
        EXPECT_EQ(n.xdmreqgbadata().hexprotocolid(), std::string("\x01\x00\xff", 3));
    }
    {
        auto [rc, n] = notifyJson(R"({"class":"XdmStoreGbaKeyData","id":14003,"fields":{
            "rid":4,"nonce":"n","btid":"b","lifetime":"l","gbaType":"g","nafFqdn":"f",
            "hexProtocolId":""}})"_oj);
        ASSERT_EQ(rc, 0);
        const auto& s = n.xdmstoregbadata();
        EXPECT_EQ(s.rid(), 4u);
        EXPECT_EQ(s.nonce() + s.btid() + s.lifetime() + s.gbatype() + s.naffqdn(), "nblgf");
        EXPECT_TRUE(s.has_hexprotocolid());
    }
    for (int level : {1, 2}) {
        LogLevel l(level);
        LogCapture log;
        auto [rc, n] = notifyJson(R"({"class":"XdmAuthData","id":14002,"fields":{
            "recvMng":2,"nonce":"nonce-x","sessionId":77}})"_oj);
        ASSERT_EQ(rc, 0);
        EXPECT_EQ(n.xdmauth().recvmng(), 2u);
        EXPECT_EQ(n.xdmauth().nonce(), "nonce-x");
        EXPECT_EQ(n.xdmauth().sessionid(), 77u);
        EXPECT_EQ(log.contains("D [IMS6.0]: nonce nonce-x"), level > 1) << level;
    }
}

TEST(XdmNotify, ContactDownloadLeavesEmptyStringsOutButKeepsEntries) {
    for (int id : {14004, 14005}) {
        LogLevel l(2);
        LogCapture log;
        Json record = {{"class", "XdmContactListData"},
                       {"id", id},
                       {"fields",
                        {{"rid", 5},
                         {"contacts",
                          {contactJson("first"), kEmptyContact,
                           R"({"contactId":"third","contactNumbers":[
                               {"number":"","type":"","label":""}]})"_oj}}}}};
        auto [rc, n] = notifyJson(record);
        ASSERT_EQ(rc, 0);
        EXPECT_EQ(n.notifyid(), id);
        const auto& d = n.contactdownloadnotify();
        EXPECT_EQ(d.rid(), 5u);
        ASSERT_EQ(d.contacts_size(), 3);

        const auto& first = d.contacts(0);
        EXPECT_EQ(first.contactid(), "first");
        ASSERT_EQ(first.contactnames_size(), 2);
        const auto& name = first.contactnames(0);
        EXPECT_EQ(name.title() + name.givenname() + name.middlename() + name.familyname() +
                      name.generationid() + name.displayname(),
                  "titlegivenmiddlefamilygendisplay");
        EXPECT_FALSE(first.contactnames(1).has_title());
        EXPECT_EQ(first.contactnames(1).givenname(), "second-name");
        const auto& a = first.contactaddresses(0);
        EXPECT_EQ(a.type() + a.label() + a.addrstr() + a.country() + a.region() + a.locality() +
                      a.street() + a.postcode(),
                  "atypealabeladdrcountryregionlocalitystreetpost");
        ASSERT_EQ(first.contactnumbers_size(), 2);
        EXPECT_EQ(first.contactnumbers(0).number(), "+100");
        EXPECT_EQ(first.contactnumbers(0).type(), "ntype");
        EXPECT_EQ(first.contactnumbers(0).label(), "nlabel");
        EXPECT_FALSE(first.contactnumbers(1).has_type() || first.contactnumbers(1).has_label());
        EXPECT_EQ(
            first.contacturis(0).uri() + first.contacturis(0).type() + first.contacturis(0).label(),
            "sip:uutypeulabel");
        EXPECT_EQ(first.contactorgs(0).displayname() + first.contactorgs(0).entity() +
                      first.contactorgs(0).unit(),
                  "orgentityunit");

        // The id is required on the wire: present even when empty.
        EXPECT_TRUE(d.contacts(1).has_contactid());
        EXPECT_EQ(d.contacts(1).contactnames_size(), 0);

        ASSERT_EQ(d.contacts(2).contactnumbers_size(), 1);
        const auto& blank = d.contacts(2).contactnumbers(0);
        EXPECT_FALSE(blank.has_number() || blank.has_type() || blank.has_label());

        EXPECT_TRUE(
            log.contains("D [IMS6.0]: NotifyXdmContactDownload: ContactDownloadNotify size: " +
                         std::to_string(n.ByteSizeLong())));
    }
}

TEST(XdmNotify, ContactDownloadWithoutContacts) {
    struct Case {
        const char* record;
        int level;
        bool logged;
    };
    std::vector<Case> cases = {
        {R"({"class":"XdmContactListData","id":14004,"fields":{"rid":1,"contacts":[]}})", 2, true},
        {R"({"class":"XdmContactListData","id":14004,"fields":{"rid":1,"contacts":null}})", 2,
         true},
        {R"({"class":"XdmContactListData","id":14004,"fields":{"rid":1}})", 1, false},
    };
    for (const auto& c : cases) {
        LogLevel l(c.level);
        LogCapture log;
        auto [rc, n] = notifyJson(Json::parse(c.record));
        ASSERT_EQ(rc, 0) << c.record;
        EXPECT_TRUE(n.contactdownloadnotify().has_rid());
        EXPECT_EQ(n.contactdownloadnotify().contacts_size(), 0);
        EXPECT_EQ(log.contains("ContactDownloadNotify size: "), c.logged) << c.record;
    }
}

TEST(XdmNotify, NullRecordSendsNothing) {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    for (int id : {14001, 14002, 14003, 14004, 14005}) {
        LogCapture log;
        ims::Notify n;
        EXPECT_EQ(s_notifyMap.at(id).notifyFunction(n, nullptr), -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
    LogCapture log;
    ims::Response r;
    EXPECT_EQ(s_commandMap.at(804).responseFunction(1, r, nullptr), -1);
    EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL"));
}

// Auto mode must answer with the record the response handler reads: any other
// class would be misread by it.
TEST(XdmAutoMode, AnswersWithTheFamilysRecord) {
    for (int id : {801, 802, 803, 804, 805, 806, 807, 808}) {
        PrimitiveData<int> request(id, 0);
        std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(&request));
        ASSERT_NE(answer, nullptr) << id;
        EXPECT_EQ(velar_sim::recordToJson(answer.get())["class"], "XdmResponseData") << id;
        EXPECT_EQ(answer->GetId(), id);
    }
}
