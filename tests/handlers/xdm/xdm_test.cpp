// XDM in process: contacts in both directions, the log gates, and the layout
// of the records the stack hands up. Each id's plain translation is in the
// end-to-end table.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/in_process.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

// Every string distinct, so that a swapped field shows; the second name and
// number have one field only.
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

// The stack's form of what fillContact builds.
Json contactJson(const std::string& id) {
    Json c = Json::parse(R"({"contactId":"",
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
      "contactOrgs":[{"displayName":"org","entity":"entity","unit":"unit"}]})");
    c["contactId"] = id;
    return c;
}

class LogLevel {
public:
    explicit LogLevel(int level) : saved_(logLevel) { logLevel = level; }
    ~LogLevel() { logLevel = saved_; }

private:
    int saved_;
};

}  // namespace

TEST(XdmContacts, UploadKeepsEveryContactAndEntryInOrder) {
    ims::Request r;
    r.set_reqid(static_cast<ims::Id>(806));
    auto* u = r.mutable_requestxdmuploadcontacts();
    u->set_rid(6);
    fillContact(u->add_contacts(), "c1");
    u->add_contacts()->set_contactid("c2");
    fillContact(u->add_contacts(), "c3");
    Json bare = Json::parse(R"({"contactId":"c2","contactNames":[],"contactAddresses":[],
        "contactNumbers":[],"contactUris":[],"contactOrgs":[]})");
    Json expected = {{"class", "XdmContactData"},
                     {"id", 806},
                     {"args", {6, "", {contactJson("c1"), bare, contactJson("c3")}, "", "", 0}}};
    EXPECT_EQ(dispatchOne(r), expected);
}

// Empty strings stay absent; entries stay even when all their strings are
// empty, and the required contactId is present even when empty.
TEST(XdmContacts, DownloadLeavesEmptyStringsOutButKeepsEntries) {
    Json record = {{"class", "XdmContactListData"},
                   {"id", 14004},
                   {"fields",
                    {{"rid", 5},
                     {"contacts",
                      {contactJson("first"), Json::object(),
                       Json::parse(R"({"contactId":"third","contactNumbers":[
                           {"number":"","type":"","label":""}]})")}}}}};
    auto [rc, n] = notifyJson(record);
    ASSERT_EQ(rc, 0);
    ims::Notify expected;
    expected.set_notifyid(static_cast<ims::Id>(14004));
    auto* d = expected.mutable_contactdownloadnotify();
    d->set_rid(5);
    fillContact(d->add_contacts(), "first");
    d->add_contacts()->set_contactid("");
    d->add_contacts()->set_contactid("third");
    d->mutable_contacts(2)->add_contactnumbers();
    EXPECT_EQ(n.SerializeAsString(), expected.SerializeAsString());
}

TEST(XdmLog, UserDataIsLoggedOnlyAboveLevelOne) {
    ims::Request aka, key;
    aka.set_reqid(static_cast<ims::Id>(802));
    aka.mutable_requestxdmupdateakaresp()->set_akaresp("aka-resp");
    key.set_reqid(static_cast<ims::Id>(803));
    key.mutable_requestxdmupdategbakey()->set_gbakey("secret-key");
    const Json auth = {{"class", "XdmAuthData"}, {"id", 14002}, {"fields", {{"nonce", "nonce-x"}}}};
    const Json list = {{"class", "XdmContactListData"}, {"id", 14005}, {"fields", Json::object()}};
    const std::vector<std::pair<std::function<void()>, const char*>> cases = {
        {[&] { dispatch(aka); }, "D [IMS6.0]: DispatchXdmUpdateAkaResp() aka-resp"},
        {[&] { dispatch(key); }, "D [IMS6.0]: DispatchXdmUpdateGbaKey() secret-key"},
        {[&] { notifyJson(auth); }, "D [IMS6.0]: nonce nonce-x"},
        {[&] { notifyJson(list); },
         "D [IMS6.0]: NotifyXdmContactDownload: ContactDownloadNotify size: "},
    };
    for (const auto& [run, line] : cases) {
        for (int level : {1, 2}) {
            LogLevel l(level);
            LogCapture log;
            run();
            EXPECT_EQ(log.contains(line), level > 1) << line << " at " << level;
        }
    }
}
