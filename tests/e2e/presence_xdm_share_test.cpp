// Presence, capability exchange, XDM and content sharing over the real
// socket: every request and notification id of the families, each at least
// once, compared as whole records and whole serialised messages (so that
// field presence counts as well as values).
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/e2e.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

struct RequestRow {
    int id;
    std::function<void(ims::Request&)> fill;  // null: no sub-message
    const char* stackRecord;
};

struct NotifyRow {
    const char* record;
    std::function<void(ims::Notify&)> expected;
};

// The stack's answer to a request and the response the client must see.
// XDM answers alternate between empty and filled optional strings so that
// both presence rules show, and give their pairs out of key order.
std::pair<Json, ims::Response> answer(int id) {
    ims::Response r;
    r.set_resid(static_cast<ims::Id>(id));
    if (id >= 801 && id <= 808) {
        const bool odd = id % 2 == 1;
        Json fields = {{"rid", id},
                       {"success", !odd},
                       {"reason", odd ? "busy" : ""},
                       {"result", {{"zeta", "26"}, {"alpha", "1"}}},
                       {"statusCode", odd ? 0 : 200},
                       {"etag", odd ? "" : "E"},
                       {"retryAfter", odd ? "30" : ""}};
        auto* x = r.mutable_xdmgeneralresponse();
        x->set_rid(static_cast<uint32_t>(id));
        x->set_success(!odd);
        x->set_statuscode(odd ? 0 : 200);
        if (odd) x->set_reason("busy");
        if (odd) x->set_retryafter("30");
        if (!odd) x->set_etag("E");
        for (auto [key, value] : {std::pair{"alpha", "1"}, std::pair{"zeta", "26"}}) {
            auto* pair = x->add_result();
            pair->set_key(key);
            pair->set_value(value);
        }
        return {{{"class", "XdmResponseData"}, {"id", id}, {"fields", fields}}, r};
    }
    if (id >= 1001) {
        r.mutable_cshgeneralresponse()->set_sessionid(21);
        r.mutable_cshgeneralresponse()->set_error(static_cast<ims::CshError>(id % 2 ? 0 : 7));
        return {{{"class", "CshResultData"},
                 {"id", id},
                 {"fields", {{"sessionId", 21}, {"code", id % 2 ? 0 : 7}}}},
                r};
    }
    auto* g = r.mutable_generalresponse();
    g->set_handle(9);
    g->set_result(static_cast<ims::Result>(1));
    g->set_reason(static_cast<ims::GeneralReason>(2));
    g->set_siperror(403);
    return {{{"class", "GeneralResponseData"},
             {"id", id},
             {"fields", {{"handle", 9}, {"result", 1}, {"reason", 2}, {"sipError", 403}}}},
            r};
}

}  // namespace

TEST(PresenceXdmShareEndToEnd, EveryRequestReachesTheStackAndItsAnswerTheClient) {
    const std::vector<RequestRow> rows = {
        // The document tree is checked in process; here the envelope.
        {701,
         [](ims::Request& r) {
             auto* p = r.mutable_requestpresencepublish();
             p->set_handle(0x80000001u);
             p->set_uri("sip:a");
             p->set_etag("e");
         },
         R"({"class":"PresencePublishData","id":701,"fields":{"handle":-2147483647,"presentity":{
            "uri":"sip:a","personTuples":[],"serviceTuples":[],"deviceTuples":[],"notes":[],
            "timestamp":""},"expireTime":0,"eTag":"e"}})"},
        {702, [](ims::Request& r) { r.mutable_requestpresenceunpublish()->set_handle(2); },
         R"({"class":"PresencePublishData","id":702,"fields":{"handle":2,"presentity":null,
            "expireTime":0,"eTag":""}})"},
        {711,
         [](ims::Request& r) {
             auto* s = r.mutable_requestpresencesubscribe();
             s->set_handle(3);
             s->set_subscriptionid("s1");
             for (const char* uri : {"sip:b", "sip:a", "sip:b"}) s->add_uri(uri);
             s->set_islistsubscribe(true);
             s->set_gzipenable(true);
             s->set_expires(600);
         },
         R"({"class":"PresenceSubscribeData","id":711,"fields":{"handle":3,
            "uris":["sip:b","sip:a","sip:b"],"isAnonymous":false,"isListSubscribe":true,
            "subscriptionId":"s1","gzipEnable":true,"expires":600}})"},
        {712,
         [](ims::Request& r) {
             r.mutable_requestpresenceunsubscribe()->set_handle(4);
             r.mutable_requestpresenceunsubscribe()->set_subscriptionid("s1");
         },
         R"({"class":"PresenceSubscribeData","id":712,"fields":{"handle":4,"uris":[],
            "isAnonymous":true,"isListSubscribe":false,"subscriptionId":"s1",
            "gzipEnable":false,"expires":0}})"},
        {751,
         [](ims::Request& r) {
             auto* o = r.mutable_requestoptionscapexchange();
             o->set_handle(5);
             o->set_uri("tel:+1");
             for (int f : {5, 1, 5, 0}) o->add_myfeatures(static_cast<ims::FeatureTag>(f));
         },
         R"({"class":"OptionsData","id":751,"args":[5,"tel:+1",[5,1,5,0]]})"},
        {751, nullptr, R"({"class":"OptionsData","id":751,"args":[0,"",[]]})"},
        {801,
         [](ims::Request& r) {
             auto* g = r.mutable_requestxdmupdategbadata();
             g->set_rid(0xFFFFFFFEu);
             g->set_imsi("imsi");
             g->set_gbauiccsupported(true);
         },
         R"({"class":"XdmGbaData","id":801,"args":[-2,"imsi",true]})"},
        {802,
         [](ims::Request& r) {
             auto* a = r.mutable_requestxdmupdateakaresp();
             a->set_sid(0x80000001u);
             a->set_akaresp(std::string("res\0\xff", 5));
             a->set_recvmng(3);
         },
         R"({"class":"RegiAuth","id":802,"args":[3,-2147483647,"","res\u0000\u00ff"]})"},
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
             f->set_accesstoken("tok");
             auto* n = f->mutable_nodeselector();
             n->set_node("/list");
             n->set_pos(4);
             n->set_attr("name");
             n->set_attrval("friends");
         },
         R"({"class":"XdmFetchDocumentData","id":804,"fields":{"rid":4,"impu":"sip:me",
            "type":2,"name":"index","accessToken":"tok","nodeSelector":{"node":"/list","pos":4,
            "attr":"name","attrVal":"friends"}}})"},
        // A type past the translator's table takes its fallback; no selector
        // on the wire gives an empty one.
        {804,
         [](ims::Request& r) {
             r.mutable_requestxdmfetchdocument()->set_type(static_cast<ims::XdmDocType>(3));
         },
         R"({"class":"XdmFetchDocumentData","id":804,"fields":{"rid":0,"impu":"","type":4,
            "name":"","accessToken":"","nodeSelector":{"node":"","pos":0,"attr":"",
            "attrVal":""}}})"},
        {805,
         [](ims::Request& r) {
             auto* p = r.mutable_requestxdmuploadpresrules();
             p->set_rid(5);
             p->set_impu("sip:me");
             p->set_rules("<rules/>");
             p->set_btid("b");
             p->set_gbakey("k");
         },
         R"({"class":"XdmPresRuleData","id":805,"args":[5,"sip:me","b","k"]})"},
        {806,
         [](ims::Request& r) {
             auto* u = r.mutable_requestxdmuploadcontacts();
             u->set_rid(6);
             u->add_contacts()->set_contactid("c1");
             u->set_uuid("uu");
             u->set_etag("et");
             u->set_mtc(0x80000000u);
         },
         R"({"class":"XdmContactData","id":806,"args":[6,"",[{"contactId":"c1",
            "contactNames":[],"contactAddresses":[],"contactNumbers":[],"contactUris":[],
            "contactOrgs":[]}],"uu","et",-2147483648]})"},
        {807,
         [](ims::Request& r) {
             auto* m = r.mutable_requestxdmmodifycontact();
             m->set_rid(7);
             m->set_impu("sip:me");
             m->set_contactid("c1");
             m->set_uuid("uu");
             m->set_etag("et");
             m->mutable_contact()->add_contactorgs()->set_unit("u");
         },
         R"({"class":"XdmModifyContactData","id":807,"args":[7,"sip:me","c1","uu","et",{
            "contactId":"","contactNames":[],"contactAddresses":[],"contactNumbers":[],
            "contactUris":[],"contactOrgs":[{"displayName":"","entity":"","unit":"u"}]}]})"},
        // Without a contact the stack still gets one, empty.
        {807, nullptr,
         R"({"class":"XdmModifyContactData","id":807,"args":[0,"","","","",{"contactId":"",
            "contactNames":[],"contactAddresses":[],"contactNumbers":[],"contactUris":[],
            "contactOrgs":[]}]})"},
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
             s->set_registrationhandle(0xFFFFFFFFu);
             s->set_remoteuri("tel:+2");
             s->set_filepath("/f");
             s->set_size(9);
             s->set_contenttype("image/png");
         },
         R"({"class":"StartIshSession","id":1001,"fields":{"registrationHandle":4294967295,
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
             auto* s = r.mutable_requestvshstartsession();
             s->set_registrationhandle(1);
             s->set_remoteuri("tel:+3");
             s->set_filepath("/v");
         },
         R"({"class":"StartVshSession","id":1101,"fields":{"registrationHandle":1,
            "remoteUri":"tel:+3"}})"},
        {1102,
         [](ims::Request& r) { r.mutable_requestvshacceptsession()->set_sessionid(0x80000000u); },
         R"({"class":"PrimitiveData<int>","id":1102,"args":[-2147483648]})"},
        {1103, [](ims::Request& r) { r.mutable_requestvshstopsession()->set_sessionid(21); },
         R"({"class":"PrimitiveData<int>","id":1103,"args":[21]})"},
    };

    Daemon d;
    uint32_t token = 0x70000000;
    for (const auto& row : rows) {
        ims::Request request;
        request.set_reqid(static_cast<ims::Id>(row.id));
        if (row.fill) row.fill(request);
        d.send(request, ++token);
        Json stack = d.nextStackRequest();
        EXPECT_EQ(stack["token"], token) << row.id;
        EXPECT_EQ(stack["record"], Json::parse(row.stackRecord)) << row.id;

        auto [record, expected] = answer(row.id);
        d.respond(token, record);
        Frame f = d.nextFrame();
        EXPECT_EQ(f.type, 1u) << row.id;
        EXPECT_EQ(f.token, token) << row.id;
        EXPECT_EQ(f.payload, expected.SerializeAsString()) << row.id;
    }
}

TEST(PresenceXdmShareEndToEnd, EveryNotificationReachesTheClient) {
    auto publishStatus = [](ims::Notify& n) {
        auto* p = n.mutable_presencepublishstatus();
        p->set_handle(2);
        p->set_issuccess(false);
        p->set_remoteexpires(0);
        p->set_siperrorcode(412);
        p->set_siperrorphrase("Failed");
        p->set_etag("");
        p->set_minexpires(5);
        p->set_isrefresh(true);
        p->set_retryafter(0);
    };
    const std::vector<NotifyRow> rows = {
        // Null entries are skipped; empty optional strings stay absent while
        // the required ones are present even when empty.
        {R"({"class":"PresenceNotifyData","id":13001,"fields":{"handle":1,"subscriptionId":"s",
            "contacts":[null,{"uri":"sip:a"},{"uri":"sip:b","subscriptionState":"terminated",
            "subscriptionFailureReason":"rejected","rawPidf":"<p/>","services":[null,{},
            {"serviceId":"chat","version":"1","status":"open","mediaCapabilities":["v","a","v"]}
            ]}]}})",
         [](ims::Notify& n) {
             auto* p = n.mutable_newpresenceinfo();
             p->set_handle(1);
             p->set_subscriptionid("s");
             auto* a = p->add_contactinfo();
             a->set_uri("sip:a");
             a->set_subscriptionstate("");
             auto* b = p->add_contactinfo();
             b->set_uri("sip:b");
             b->set_subscriptionstate("terminated");
             b->set_subscriptionfailurereason("rejected");
             auto* empty = b->add_servicestatus();
             empty->set_serviceid("");
             empty->set_version("");
             empty->set_status("");
             auto* s = b->add_servicestatus();
             s->set_serviceid("chat");
             s->set_version("1");
             s->set_status("open");
             for (const char* m : {"v", "a", "v"}) s->add_mediacapabilities(m);
             b->set_rawpidf("<p/>");
         }},
        {R"({"class":"PresenceNotifyData","id":13001,"fields":{}})",
         [](ims::Notify& n) {
             n.mutable_newpresenceinfo()->set_handle(0);
             n.mutable_newpresenceinfo()->set_subscriptionid("");
         }},
        // The optional fields are present whatever they hold; 13003 differs
        // only in notifyid.
        {R"({"class":"PresencePublishStatusData","id":13002,"fields":{"handle":2,
            "sipErrorCode":412,"sipErrorPhrase":"Failed","minExpires":5,"isRefresh":true}})",
         publishStatus},
        {R"({"class":"PresencePublishStatusData","id":13003,"fields":{"handle":2,
            "sipErrorCode":412,"sipErrorPhrase":"Failed","minExpires":5,"isRefresh":true}})",
         publishStatus},
        {R"({"class":"PresenceSubscribeStatusData","id":13004,"fields":{"handle":3,
            "sipErrorCode":489,"sipErrorPhrase":"Bad Event","subscriptionId":"s"}})",
         [](ims::Notify& n) {
             auto* p = n.mutable_presencesubscribestatus();
             p->set_handle(3);
             p->set_issuccess(false);
             p->set_siperrorcode(489);
             p->set_siperrorphrase("Bad Event");
             p->set_subscriptionid("s");
             p->set_minexpires(0);
         }},
        {R"({"class":"XdmGbaRequestData","id":14001,"fields":{"rid":1,"nafFqdn":"naf",
            "hexProtocolId":"\u0001\u0000\u00ff"}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_xdmreqgbadata();
             x->set_rid(1);
             x->set_naffqdn("naf");
             x->set_hexprotocolid(std::string("\x01\x00\xff", 3));
         }},
        {R"({"class":"XdmAuthData","id":14002,"fields":{"recvMng":1,"nonce":"n","sessionId":5}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_xdmauth();
             x->set_sessionid(5);
             x->set_nonce("n");
             x->set_recvmng(1);
         }},
        {R"({"class":"XdmStoreGbaKeyData","id":14003,"fields":{"rid":2,"nonce":"n","btid":"b",
            "lifetime":"l","gbaType":"g","nafFqdn":"f","hexProtocolId":""}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_xdmstoregbadata();
             x->set_rid(2);
             x->set_nonce("n");
             x->set_btid("b");
             x->set_lifetime("l");
             x->set_gbatype("g");
             x->set_naffqdn("f");
             x->set_hexprotocolid("");
         }},
        {R"({"class":"XdmContactListData","id":14004,"fields":{"rid":3,"contacts":[
            {"contactId":"c1","contactUris":[{"uri":"sip:c","type":"","label":"home"}]}]}})",
         [](ims::Notify& n) {
             auto* x = n.mutable_contactdownloadnotify();
             x->set_rid(3);
             auto* c = x->add_contacts();
             c->set_contactid("c1");
             c->add_contacturis()->set_uri("sip:c");
             c->mutable_contacturis(0)->set_label("home");
         }},
        {R"({"class":"XdmContactListData","id":14005,"fields":{"rid":4,"contacts":null}})",
         [](ims::Notify& n) { n.mutable_contactdownloadnotify()->set_rid(4); }},
        // Numbers pass as they are; FAILURE_NONE is present too.
        {R"({"class":"OptionsReceivedData","id":15001,"fields":{"sessionId":6,
            "remoteUri":"tel:+1","isResponse":true,"reason":0,"tags":[7,2,7]}})",
         [](ims::Notify& n) {
             auto* o = n.mutable_optionsreceivedinfo();
             o->set_sessionid(6);
             o->set_remoteuri("tel:+1");
             o->set_isresponse(true);
             o->set_success(false);
             o->set_reason(static_cast<ims::Notify_OptionsReceivedInfo_ErrorReason>(0));
             for (int t : {7, 2, 7}) o->add_tags(static_cast<ims::FeatureTag>(t));
         }},
        {R"({"class":"IshIncomingData","id":16001,"fields":{"sessionId":7,"remoteUri":"tel:+2",
            "fileName":"a.jpg","size":10,"contentType":""}})",
         [](ims::Notify& n) {
             auto* i = n.mutable_ishincomingsession();
             i->set_sessionid(7);
             i->set_remoteuri("tel:+2");
             i->set_filename("a.jpg");
             i->set_size(10);
             i->set_contenttype("");
         }},
        {R"({"class":"CshResultData","id":16002,"fields":{"sessionId":7,"code":0}})",
         [](ims::Notify& n) {
             n.mutable_ishsessionestablished()->set_sessionid(7);
             n.mutable_ishsessionestablished()->set_error(static_cast<ims::CshError>(0));
         }},
        // A number outside the enumeration passes as it stands.
        {R"({"class":"CshResultData","id":16003,"fields":{"sessionId":7,"code":250}})",
         [](ims::Notify& n) {
             n.mutable_ishsessionterminated()->set_sessionid(7);
             n.mutable_ishsessionterminated()->set_reason(static_cast<ims::CshError>(250));
         }},
        {R"({"class":"IshProgressData","id":16004,"fields":{"sessionId":7,"total":10,
            "transferred":40}})",
         [](ims::Notify& n) {
             n.mutable_ishtransferprogress()->set_sessionid(7);
             n.mutable_ishtransferprogress()->set_total(10);
             n.mutable_ishtransferprogress()->set_transferred(40);
         }},
        {R"({"class":"VshIncomingData","id":17001,"fields":{"sessionId":8,"remoteUri":"tel:+3"}})",
         [](ims::Notify& n) {
             n.mutable_vshincomingsession()->set_sessionid(8);
             n.mutable_vshincomingsession()->set_remoteuri("tel:+3");
         }},
        {R"({"class":"CshResultData","id":17002,"fields":{"sessionId":8,"code":0}})",
         [](ims::Notify& n) {
             n.mutable_vshsessionestablished()->set_sessionid(8);
             n.mutable_vshsessionestablished()->set_resolution(static_cast<ims::VshResolution>(0));
         }},
        {R"({"class":"CshResultData","id":17003,"fields":{"sessionId":8,"code":4}})",
         [](ims::Notify& n) {
             n.mutable_vshsessionterminated()->set_sessionid(8);
             n.mutable_vshsessionterminated()->set_reason(static_cast<ims::CshError>(4));
         }},
    };

    Daemon d;
    for (const auto& row : rows) {
        const Json record = Json::parse(row.record);
        d.notify(record);
        Frame f = d.nextFrame();
        ims::Notify expected;
        expected.set_notifyid(static_cast<ims::Id>(record["id"].get<int>()));
        row.expected(expected);
        EXPECT_EQ(f.type, 2u) << row.record;
        EXPECT_EQ(f.token, 0u) << row.record;
        EXPECT_EQ(f.payload, expected.SerializeAsString()) << row.record;
    }
}
