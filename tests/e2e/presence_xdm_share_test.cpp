// Presence, capability exchange, XDM and content sharing over the real
// socket: every request and notification id of the families, one table row
// each.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

using Fill = std::function<void(ims::Request&)>;

// Serialised messages compare field presence as well as values.
template <class Message>
std::string wire(const std::function<void(Message&)>& fill) {
    Message m;
    fill(m);
    return m.SerializeAsString();
}

Json general(int id, unsigned handle) {
    return Json{{"class", "GeneralResponseData"},
                {"id", id},
                {"fields", {{"handle", handle}, {"result", 1}, {"reason", 2}, {"sipError", 403}}}};
}

void expectGeneral(ims::Response& r, int id, unsigned handle) {
    r.set_resid(static_cast<ims::Id>(id));
    auto* g = r.mutable_generalresponse();
    g->set_handle(handle);
    g->set_result(static_cast<ims::Result>(1));
    g->set_reason(static_cast<ims::GeneralReason>(2));
    g->set_siperror(403);
}

Json xdmAnswer(int id) {
    return Json{{"class", "XdmResponseData"},
                {"id", id},
                {"fields",
                 {{"rid", 40 + id % 10},
                  {"success", true},
                  {"result", {{"k", "v"}}},
                  {"statusCode", 200},
                  {"etag", "E"}}}};
}

void expectXdm(ims::Response& r, int id) {
    r.set_resid(static_cast<ims::Id>(id));
    auto* x = r.mutable_xdmgeneralresponse();
    x->set_rid(static_cast<uint32_t>(40 + id % 10));
    x->set_success(true);
    x->set_statuscode(200);
    x->set_etag("E");
    auto* p = x->add_result();
    p->set_key("k");
    p->set_value("v");
}

Json cshAnswer(int id) {
    return Json{
        {"class", "CshResultData"}, {"id", id}, {"fields", {{"sessionId", 21}, {"code", 0}}}};
}

void expectCsh(ims::Response& r, int id) {
    r.set_resid(static_cast<ims::Id>(id));
    r.mutable_cshgeneralresponse()->set_sessionid(21);
    r.mutable_cshgeneralresponse()->set_error(static_cast<ims::CshError>(0));
}

struct RequestRow {
    int id;
    Fill fill;
    const char* stackRecord;
};

}  // namespace

TEST(PresenceXdmShareEndToEnd, EveryRequestReachesTheStackAndItsAnswerTheClient) {
    std::vector<RequestRow> rows = {
        {701,
         [](ims::Request& r) {
             auto* p = r.mutable_requestpresencepublish();
             p->set_handle(1);
             p->set_uri("sip:a");
             auto* s = p->add_servicetuples();
             s->set_serviceid("svc");
             s->set_tupleid("t");
             s->mutable_status()->set_basic("open");
             auto* e = s->add_mediacapabilities();
             e->set_name("audio");
             e->add_attributes()->set_name("x");
             e->add_elements()->set_name("child");
             p->set_expiretime(60);
         },
         R"({"class":"PresencePublishData","id":701,"fields":{"handle":1,"presentity":{
            "uri":"sip:a","personTuples":[],"serviceTuples":[{"serviceId":"svc","tupleId":"t",
            "version":"","description":"","status":{"basic":"open"},"mediaCapabilities":[
            {"name":"audio","value":"","nameSpace":"","attributes":[{"name":"x","value":"",
            "nameSpace":""}],"elements":[{"name":"child","value":"","nameSpace":"",
            "attributes":[],"elements":[]}]}],"contacts":[],"extensions":[],"notes":[],
            "timestamp":""}],"deviceTuples":[],"notes":[],"timestamp":""},"expireTime":60,
            "eTag":""}})"},
        {702, [](ims::Request& r) { r.mutable_requestpresenceunpublish()->set_handle(2); },
         R"({"class":"PresencePublishData","id":702,"fields":{"handle":2,"presentity":null,
            "expireTime":0,"eTag":""}})"},
        {711,
         [](ims::Request& r) {
             auto* s = r.mutable_requestpresencesubscribe();
             s->set_handle(3);
             s->set_subscriptionid("s1");
             s->add_uri("sip:b");
             s->set_islistsubscribe(true);
             s->set_expires(300);
         },
         R"({"class":"PresenceSubscribeData","id":711,"fields":{"handle":3,"uris":["sip:b"],
            "isAnonymous":false,"isListSubscribe":true,"subscriptionId":"s1",
            "gzipEnable":false,"expires":300}})"},
        {712,
         [](ims::Request& r) {
             auto* s = r.mutable_requestpresenceunsubscribe();
             s->set_handle(4);
             s->set_subscriptionid("s1");
         },
         R"({"class":"PresenceSubscribeData","id":712,"fields":{"handle":4,"uris":[],
            "isAnonymous":true,"isListSubscribe":false,"subscriptionId":"s1",
            "gzipEnable":false,"expires":0}})"},
        {751,
         [](ims::Request& r) {
             auto* o = r.mutable_requestoptionscapexchange();
             o->set_handle(5);
             o->set_uri("tel:+1");
             o->add_myfeatures(static_cast<ims::FeatureTag>(3));
             o->add_myfeatures(static_cast<ims::FeatureTag>(1));
         },
         R"({"class":"OptionsData","id":751,"args":[5,"tel:+1",[3,1]]})"},
        {801,
         [](ims::Request& r) {
             auto* g = r.mutable_requestxdmupdategbadata();
             g->set_rid(1);
             g->set_imsi("imsi");
             g->set_gbauiccsupported(true);
         },
         R"({"class":"XdmGbaData","id":801,"args":[1,"imsi",true]})"},
        {802,
         [](ims::Request& r) {
             auto* a = r.mutable_requestxdmupdateakaresp();
             a->set_sid(2);
             a->set_akaresp("res");
             a->set_recvmng(1);
         },
         R"({"class":"RegiAuth","id":802,"args":[1,2,"","res"]})"},
        {803,
         [](ims::Request& r) {
             auto* k = r.mutable_requestxdmupdategbakey();
             k->set_rid(3);
             k->set_btid("b");
             k->set_gbakey("k");
         },
         R"({"class":"XdmKeyData","id":803,"args":[3,"b","k"]})"},
        {804,
         [](ims::Request& r) {
             auto* f = r.mutable_requestxdmfetchdocument();
             f->set_rid(4);
             f->set_impu("sip:me");
             f->set_type(static_cast<ims::XdmDocType>(1));
             f->set_name("index");
             f->mutable_nodeselector()->set_node("/n");
         },
         R"({"class":"XdmFetchDocumentData","id":804,"fields":{"rid":4,"impu":"sip:me",
            "type":2,"name":"index","accessToken":"","nodeSelector":{"node":"/n","pos":0,
            "attr":"","attrVal":""}}})"},
        {805,
         [](ims::Request& r) {
             auto* p = r.mutable_requestxdmuploadpresrules();
             p->set_rid(5);
             p->set_impu("sip:me");
             p->set_rules("<rules/>");
         },
         R"({"class":"XdmPresRuleData","id":805,"args":[5,"sip:me","",""]})"},
        {806,
         [](ims::Request& r) {
             auto* u = r.mutable_requestxdmuploadcontacts();
             u->set_rid(6);
             auto* c = u->add_contacts();
             c->set_contactid("c1");
             c->add_contactnumbers()->set_number("+1");
             u->set_mtc(2);
         },
         R"({"class":"XdmContactData","id":806,"args":[6,"",[{"contactId":"c1",
            "contactNames":[],"contactAddresses":[],"contactNumbers":[{"number":"+1",
            "type":"","label":""}],"contactUris":[],"contactOrgs":[]}],"","",2]})"},
        {807,
         [](ims::Request& r) {
             auto* m = r.mutable_requestxdmmodifycontact();
             m->set_rid(7);
             m->set_contactid("c1");
             m->mutable_contact()->add_contactorgs()->set_unit("u");
         },
         R"({"class":"XdmModifyContactData","id":807,"args":[7,"","c1","","",{"contactId":"",
            "contactNames":[],"contactAddresses":[],"contactNumbers":[],"contactUris":[],
            "contactOrgs":[{"displayName":"","entity":"","unit":"u"}]}]})"},
        {808,
         [](ims::Request& r) {
             auto* m = r.mutable_requestxdmmodifycontact();
             m->set_rid(8);
             m->set_contactid("c1");
             m->mutable_contact()->set_contactid("c1");
         },
         R"({"class":"XdmModifyContactData","id":808,"args":[8,"","c1","","",null]})"},
        {1001,
         [](ims::Request& r) {
             auto* s = r.mutable_requestishstartsession();
             s->set_registrationhandle(1);
             s->set_remoteuri("tel:+2");
             s->set_filepath("/f");
             s->set_size(9);
             s->set_contenttype("image/png");
         },
         R"({"class":"StartIshSession","id":1001,"fields":{"registrationHandle":1,
            "remoteUri":"tel:+2","filePath":"/f","size":9,"contentType":"image/png"}})"},
        {1002,
         [](ims::Request& r) {
             r.mutable_requestishacceptsession()->set_sessionid(21);
             r.mutable_requestishacceptsession()->set_filepath("/in");
         },
         R"({"class":"TupleData<int, std::string>","id":1002,"args":[21,"/in"]})"},
        {1003,
         [](ims::Request& r) {
             r.mutable_requestishstopsession()->set_sessionid(21);
             r.mutable_requestishstopsession()->set_reason(static_cast<ims::CshRejectReason>(1));
         },
         R"({"class":"TupleData<int, std::string>","id":1003,"args":[21,""]})"},
        {1101,
         [](ims::Request& r) {
             r.mutable_requestvshstartsession()->set_registrationhandle(1);
             r.mutable_requestvshstartsession()->set_remoteuri("tel:+3");
             r.mutable_requestvshstartsession()->set_filepath("/v");
         },
         R"({"class":"StartVshSession","id":1101,"fields":{"registrationHandle":1,
            "remoteUri":"tel:+3"}})"},
        {1102, [](ims::Request& r) { r.mutable_requestvshacceptsession()->set_sessionid(21); },
         R"({"class":"PrimitiveData<int>","id":1102,"args":[21]})"},
        {1103, [](ims::Request& r) { r.mutable_requestvshstopsession()->set_sessionid(21); },
         R"({"class":"PrimitiveData<int>","id":1103,"args":[21]})"},
    };

    Daemon d;
    uint32_t token = 0x70000000;
    for (const auto& row : rows) {
        ims::Request request;
        request.set_reqid(static_cast<ims::Id>(row.id));
        row.fill(request);
        d.send(request, ++token);
        Json stack = d.nextStackRequest();
        EXPECT_EQ(stack["token"], token) << row.id;
        EXPECT_EQ(stack["record"], Json::parse(row.stackRecord)) << row.id;

        // Each family answers with its own record.
        std::string expected;
        if (row.id >= 801 && row.id <= 808) {
            d.respond(token, xdmAnswer(row.id));
            expected = wire<ims::Response>([&](ims::Response& r) { expectXdm(r, row.id); });
        } else if (row.id >= 1001) {
            d.respond(token, cshAnswer(row.id));
            expected = wire<ims::Response>([&](ims::Response& r) { expectCsh(r, row.id); });
        } else {
            d.respond(token, general(row.id, 9));
            expected = wire<ims::Response>([&](ims::Response& r) { expectGeneral(r, row.id, 9); });
        }
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u) << row.id;
        EXPECT_EQ(f.token, token) << row.id;
        EXPECT_EQ(f.payload, expected) << row.id;
    }
}

TEST(PresenceXdmShareEndToEnd, EveryNotificationReachesTheClient) {
    struct Row {
        int id;
        const char* record;
        std::function<void(ims::Notify&)> expected;
    };
    std::vector<Row> rows = {
        {13001,
         R"({"class":"PresenceNotifyData","id":13001,"fields":{"handle":1,"subscriptionId":"s",
            "contacts":[{"uri":"sip:b","subscriptionState":"active","services":[
            {"serviceId":"chat","version":"1","status":"open","mediaCapabilities":["im"]}]}]}})",
         [](ims::Notify& n) {
             auto* p = n.mutable_newpresenceinfo();
             p->set_handle(1);
             p->set_subscriptionid("s");
             auto* c = p->add_contactinfo();
             c->set_uri("sip:b");
             c->set_subscriptionstate("active");
             auto* s = c->add_servicestatus();
             s->set_serviceid("chat");
             s->set_version("1");
             s->set_status("open");
             s->add_mediacapabilities("im");
         }},
        {13002,
         R"({"class":"PresencePublishStatusData","id":13002,"fields":{"handle":2,
            "isSuccess":true,"etag":"E","remoteExpires":60}})",
         [](ims::Notify& n) {
             auto* p = n.mutable_presencepublishstatus();
             p->set_handle(2);
             p->set_issuccess(true);
             p->set_remoteexpires(60);
             p->set_siperrorcode(0);
             p->set_siperrorphrase("");
             p->set_etag("E");
             p->set_minexpires(0);
             p->set_isrefresh(false);
             p->set_retryafter(0);
         }},
        {13003,
         R"({"class":"PresencePublishStatusData","id":13003,"fields":{"handle":2,
            "sipErrorCode":412,"sipErrorPhrase":"Conditional Request Failed"}})",
         [](ims::Notify& n) {
             auto* p = n.mutable_presencepublishstatus();
             p->set_handle(2);
             p->set_issuccess(false);
             p->set_remoteexpires(0);
             p->set_siperrorcode(412);
             p->set_siperrorphrase("Conditional Request Failed");
             p->set_etag("");
             p->set_minexpires(0);
             p->set_isrefresh(false);
             p->set_retryafter(0);
         }},
        {13004,
         R"({"class":"PresenceSubscribeStatusData","id":13004,"fields":{"handle":3,
            "isSuccess":true,"subscriptionId":"s"}})",
         [](ims::Notify& n) {
             auto* p = n.mutable_presencesubscribestatus();
             p->set_handle(3);
             p->set_issuccess(true);
             p->set_siperrorcode(0);
             p->set_siperrorphrase("");
             p->set_subscriptionid("s");
             p->set_minexpires(0);
         }},
        {14001,
         R"({"class":"XdmGbaRequestData","id":14001,"fields":{"rid":1,"nafFqdn":"naf",
            "hexProtocolId":"\u0001\u0000"}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_xdmreqgbadata();
             x->set_rid(1);
             x->set_naffqdn("naf");
             x->set_hexprotocolid(std::string("\x01\x00", 2));
         }},
        {14002,
         R"({"class":"XdmAuthData","id":14002,"fields":{"recvMng":1,"nonce":"n","sessionId":5}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_xdmauth();
             x->set_sessionid(5);
             x->set_nonce("n");
             x->set_recvmng(1);
         }},
        {14003,
         R"({"class":"XdmStoreGbaKeyData","id":14003,"fields":{"rid":2,"nonce":"n","btid":"b",
            "lifetime":"l","gbaType":"g","nafFqdn":"f","hexProtocolId":"h"}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_xdmstoregbadata();
             x->set_rid(2);
             x->set_nonce("n");
             x->set_btid("b");
             x->set_lifetime("l");
             x->set_gbatype("g");
             x->set_naffqdn("f");
             x->set_hexprotocolid("h");
         }},
        {14004,
         R"({"class":"XdmContactListData","id":14004,"fields":{"rid":3,"contacts":[
            {"contactId":"c1","contactUris":[{"uri":"sip:c","type":"","label":"home"}]}]}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_contactdownloadnotify();
             x->set_rid(3);
             auto* c = x->add_contacts();
             c->set_contactid("c1");
             auto* u = c->add_contacturis();
             u->set_uri("sip:c");
             u->set_label("home");
         }},
        {14005, R"({"class":"XdmContactListData","id":14005,"fields":{"rid":4}})",
         [](ims::Notify& n) { n.mutable_contactdownloadnotify()->set_rid(4); }},
        {15001,
         R"({"class":"OptionsReceivedData","id":15001,"fields":{"sessionId":6,
            "remoteUri":"tel:+1","isResponse":true,"success":false,"reason":3,"tags":[2,0]}})",
         [](ims::Notify& n) {
             auto* o = n.mutable_optionsreceivedinfo();
             o->set_sessionid(6);
             o->set_remoteuri("tel:+1");
             o->set_isresponse(true);
             o->set_success(false);
             o->set_reason(static_cast<ims::Notify_OptionsReceivedInfo_ErrorReason>(3));
             o->add_tags(static_cast<ims::FeatureTag>(2));
             o->add_tags(static_cast<ims::FeatureTag>(0));
         }},
        {16001,
         R"({"class":"IshIncomingData","id":16001,"fields":{"sessionId":7,"remoteUri":"tel:+2",
            "fileName":"a.jpg","size":10,"contentType":"image/jpeg"}})",
         [](ims::Notify& n) {
             auto* i = n.mutable_ishincomingsession();
             i->set_sessionid(7);
             i->set_remoteuri("tel:+2");
             i->set_filename("a.jpg");
             i->set_size(10);
             i->set_contenttype("image/jpeg");
         }},
        {16002, R"({"class":"CshResultData","id":16002,"fields":{"sessionId":7,"code":0}})",
         [](ims::Notify& n) {
             n.mutable_ishsessionestablished()->set_sessionid(7);
             n.mutable_ishsessionestablished()->set_error(static_cast<ims::CshError>(0));
         }},
        {16003, R"({"class":"CshResultData","id":16003,"fields":{"sessionId":7,"code":2}})",
         [](ims::Notify& n) {
             n.mutable_ishsessionterminated()->set_sessionid(7);
             n.mutable_ishsessionterminated()->set_reason(static_cast<ims::CshError>(2));
         }},
        {16004,
         R"({"class":"IshProgressData","id":16004,"fields":{"sessionId":7,"total":10,
            "transferred":4}})",
         [](ims::Notify& n) {
             n.mutable_ishtransferprogress()->set_sessionid(7);
             n.mutable_ishtransferprogress()->set_total(10);
             n.mutable_ishtransferprogress()->set_transferred(4);
         }},
        {17001,
         R"({"class":"VshIncomingData","id":17001,"fields":{"sessionId":8,"remoteUri":"tel:+3"}})",
         [](ims::Notify& n) {
             n.mutable_vshincomingsession()->set_sessionid(8);
             n.mutable_vshincomingsession()->set_remoteuri("tel:+3");
         }},
        {17002, R"({"class":"CshResultData","id":17002,"fields":{"sessionId":8,"code":1}})",
         [](ims::Notify& n) {
             n.mutable_vshsessionestablished()->set_sessionid(8);
             n.mutable_vshsessionestablished()->set_resolution(static_cast<ims::VshResolution>(1));
         }},
        {17003, R"({"class":"CshResultData","id":17003,"fields":{"sessionId":8,"code":4}})",
         [](ims::Notify& n) {
             n.mutable_vshsessionterminated()->set_sessionid(8);
             n.mutable_vshsessionterminated()->set_reason(static_cast<ims::CshError>(4));
         }},
    };

    Daemon d;
    for (const auto& row : rows) {
        d.notify(Json::parse(row.record));
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 2u) << row.id;
        EXPECT_EQ(f.token, 0u) << row.id;
        std::string expected = wire<ims::Notify>([&](ims::Notify& n) {
            n.set_notifyid(static_cast<ims::Id>(row.id));
            row.expected(n);
        });
        EXPECT_EQ(f.payload, expected) << row.id;
    }
}
