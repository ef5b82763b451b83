// Presence publication in process: the document tree; and for every handler
// of the presence, XDM and sharing families, the records' layout, a null
// record and auto mode. Each id's plain translation is in the end-to-end table.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/in_process.h"

using namespace velard_test;
namespace ims = imsCommonStruc;

namespace {

struct Attr {
    const char* name;
    const char* value;
    const char* nameSpace;  // null: absent on the wire
};

// A wire element with its attributes and children.
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

// Expected records name a bare leaf element "@name"; this writes it out.
Json expand(Json j) {
    if (j.is_string() && j.get<std::string>().rfind('@', 0) == 0) {
        return Json{{"name", j.get<std::string>().substr(1)},
                    {"value", ""},
                    {"nameSpace", ""},
                    {"attributes", Json::array()},
                    {"elements", Json::array()}};
    }
    if (j.is_structured()) {
        for (auto& child : j) child = expand(child);
    }
    return j;
}

}  // namespace

// One leaf per slot, named after it, so that any swap of vectors or
// constructor arguments shows.
TEST(PresencePublish, DocumentTreeReachesTheStackWholeAndInOrder) {
    ims::Request r;
    r.set_reqid(static_cast<ims::Id>(701));
    auto* p = r.mutable_requestpresencepublish();
    p->set_handle(7);
    p->set_uri("sip:alice");
    p->set_timestamp("T0");
    p->set_expiretime(3600);
    p->set_etag("etag-1");
    auto* person = p->add_persontuples();
    person->set_statusicon("icon");
    person->set_timestamp("T1");
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
    p->add_servicetuples()->set_serviceid("no status");
    auto* device = p->add_devicetuples();
    device->set_deviceid("dev");
    fillAll(device->mutable_devicecapabilities(), {{"dcap"}});
    fillAll(device->mutable_descriptions(), {{"ddesc"}});
    fillAll(device->mutable_extensions(), {{"dext"}});
    fillAll(device->mutable_notes(), {{"dnote"}});
    device->set_timestamp("T3");
    fillAll(p->mutable_notes(), {{"note1"}, {"note2"}});

    Json expected = expand(Json::parse(R"({"class":"PresencePublishData","id":701,"fields":{
      "handle":7,"presentity":{"uri":"sip:alice",
        "personTuples":[{"statusIcon":"icon","extensions":[
          {"name":"ext","value":"v","nameSpace":"urn:x",
           "attributes":[{"name":"a1","value":"1","nameSpace":"urn:a"},
                         {"name":"a2","value":"2","nameSpace":""}],
           "elements":[{"name":"c1","value":"","nameSpace":"","attributes":[],"elements":[
                         {"name":"g1","value":"deep","nameSpace":"",
                          "attributes":[{"name":"a3","value":"3","nameSpace":""}],
                          "elements":[]}]},
                       "@c2"]}],
          "notes":["@pnote1","@pnote2"],"timestamp":"T1"}],
        "serviceTuples":[
          {"serviceId":"svc","tupleId":"tuple","version":"1.0","description":"desc",
           "status":{"basic":"open"},"mediaCapabilities":["@media"],"contacts":["@contact"],
           "extensions":["@sext"],"notes":["@snote"],"timestamp":"T2"},
          {"serviceId":"no status","tupleId":"","version":"","description":"",
           "status":{"basic":""},"mediaCapabilities":[],"contacts":[],"extensions":[],
           "notes":[],"timestamp":""}],
        "deviceTuples":[{"deviceId":"dev","deviceCapabilities":["@dcap"],
          "descriptions":["@ddesc"],"extensions":["@dext"],"notes":["@dnote"],
          "timestamp":"T3"}],
        "notes":["@note1","@note2"],"timestamp":"T0"},
      "expireTime":3600,"eTag":"etag-1"}})"));
    EXPECT_EQ(dispatchOne(r), expected);
}

// Layout the library shares with the daemon: an element's sequences, which the
// daemon appends to in place, stand between the name and the other two
// strings; the XDM records keep a string the daemon never reads after rid.
TEST(PresenceXdmShare, RecordsKeepTheLibrarysLayout) {
    Element e("n", "v", "ns");
    XdmGbaRequestData gba;
    XdmStoreGbaKeyData store;
    auto gap = [](const void* a, const void* b) {
        return static_cast<const char*>(b) - static_cast<const char*>(a);
    };
    EXPECT_GT(gap(&e.name, &e.attributes), 0);
    EXPECT_GT(gap(&e.attributes, &e.elements), 0);
    EXPECT_GT(gap(&e.elements, &e.value), 0);
    EXPECT_GT(gap(&e.value, &e.nameSpace), 0);
    EXPECT_GE(gap(&gba.rid, &gba.nafFqdn), static_cast<long>(sizeof(std::string)));
    EXPECT_GE(gap(&store.rid, &store.nonce), static_cast<long>(sizeof(std::string)));
}

TEST(PresenceXdmShare, NullRecordSendsNothing) {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    for (int id : {13001, 13002, 13003, 13004, 15001, 14001, 14002, 14003, 14004, 14005, 16001,
                   16002, 16003, 16004, 17001, 17002, 17003}) {
        LogCapture log;
        ims::Notify n;
        EXPECT_EQ(s_notifyMap.at(id).notifyFunction(n, nullptr), -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
    for (int id : {804, 1101}) {
        LogCapture log;
        ims::Response r;
        EXPECT_EQ(s_commandMap.at(id).responseFunction(1, r, nullptr), -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
}

// Auto mode must answer with the record the response handler reads: any other
// class would be misread by it.
TEST(PresenceXdmShare, AutoModeAnswersWithTheRecordTheResponseHandlerReads) {
    const std::vector<std::pair<std::vector<int>, const char*>> table = {
        {{701, 702, 711, 712, 751}, "GeneralResponseData"},
        {{801, 802, 803, 804, 805, 806, 807, 808}, "XdmResponseData"},
        {{1001, 1002, 1003, 1101, 1102, 1103}, "CshResultData"},
    };
    for (const auto& [ids, cls] : table) {
        for (int id : ids) {
            PrimitiveData<int> request(id, 0);
            std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(&request));
            ASSERT_NE(answer, nullptr) << id;
            EXPECT_EQ(velar_sim::recordToJson(answer.get())["class"], cls) << id;
            EXPECT_EQ(answer->GetId(), id);
        }
    }
}
