// Supplementary services in process: the translations that are easy to get
// wrong. Every id's full round trip is in the end-to-end table.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;
using imsCommonStruc::Response;

namespace {

Json dispatchWith(int id, const std::function<void(Request&)>& fill) {
    Request request;
    request.set_reqid(imsCommonStruc::Id(id));
    if (fill) fill(request);
    return dispatchOne(request);
}

Json record(const char* cls, int id, const Json& fields) {
    return Json{{"class", cls}, {"id", id}, {"fields", fields}};
}

void barr(Request& r, bool deleteRule) {
    auto* b = r.mutable_requestsetssbarrinfo();
    b->set_serviceactivation(true);
    b->set_ruleid("r9");
    b->set_cbtype(4);
    b->set_mediatype(imsCommonStruc::Media(2));
    b->set_deleterule(deleteRule);
    b->set_allow(true);
    b->set_impu("sip:me@x");
    b->set_sibtarget("sib");
}

}  // namespace

TEST(SsRequests, TranslationsThatAreEasyToGetWrong) {
    struct Case {
        const char* name;
        int id;
        std::function<void(Request&)> fill;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"306 without body", 306, nullptr,
         R"({"class":"SSSetDivInfo","id":306,"args":[false,0,"",0,[],"",0,"",false]})"},
        {"306 keeps order and duplicates; timer and type are ints", 306,
         [](Request& r) {
             auto* b = r.mutable_requestsetssdivinfo();
             for (int v : {5, 0, 5, 2}) b->add_fwdelm(imsCommonStruc::SSForwardTo(v));
             b->set_noreplytimer(0xFFFFFFFFu);
             b->set_cftype(0x80000000u);
         },
         R"({"class":"SSSetDivInfo","id":306,
             "args":[false,-1,"",-2147483648,[5,0,5,2],"",0,"",false]})"},
        // deleteRule has no place in the barring record.
        {"307", 307, [](Request& r) { barr(r, false); },
         R"({"class":"SSSetBarrInfo","id":307,"args":[true,"r9",4,2,true,"sip:me@x","sib"]})"},
        {"307 deleteRule", 307, [](Request& r) { barr(r, true); },
         R"({"class":"SSSetBarrInfo","id":307,"args":[true,"r9",4,2,true,"sip:me@x","sib"]})"},
        {"302 reads only the incoming field", 302,
         [](Request& r) { r.mutable_requestgetssocbinfo()->set_impu("x"); },
         R"({"class":"SSGetBarrInfo","id":302,"args":[0,0,""]})"},
        {"303 ssType stays unsigned", 303,
         [](Request& r) { r.mutable_requestgetssocbinfo()->set_sstype(0x80000001u); },
         R"({"class":"SSGetBarrInfo","id":303,"args":[2147483649,0,""]})"},
        {"313 without servers", 313,
         [](Request& r) { r.mutable_requestssupdatedns()->set_iface("wlan0"); },
         R"({"class":"SSGetDns","id":313,"args":[[],"wlan0"]})"},
        {"316 without body", 316, nullptr,
         R"({"class":"PrimitiveData<bool>","id":316,"args":[false]})"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(dispatchWith(c.id, c.fill), Json::parse(c.expected)) << c.name;
}

TEST(SsRequests, KeysAndInterfacesAreLoggedOnlyAboveLevelOne) {
    struct Case {
        int id;
        std::function<void(Request&)> fill;
        const char* name;
        const char* detail;
    };
    const Case cases[] = {
        {312, [](Request& r) { r.mutable_requestssupdategbakey()->set_gbakey("KEY"); },
         "DispatchSSUpdateGbaKey", "D [IMS6.0]: DispatchSSUpdateGbaKey() KEY"},
        {313, [](Request& r) { r.mutable_requestssupdatedns()->set_iface("rmnet7"); },
         "DispatchSSUpdateDns", "D [IMS6.0]: DispatchSSUpdateDns() rmnet7"},
    };
    const int saved = logLevel;
    for (const auto& c : cases) {
        for (int level : {1, 2}) {
            logLevel = level;
            LogCapture log;
            dispatchWith(c.id, c.fill);
            std::vector<std::string> expected = {std::string("I [IMS6.0]: ") + c.name + "()"};
            if (level > 1) expected.push_back(c.detail);
            EXPECT_EQ(log.lines(), expected) << c.id << " at level " << level;
        }
    }
    logLevel = saved;
}

TEST(SsResponses, OnlyIncomingBarringCarriesTheSibTarget) {
    for (int id : {302, 303}) {
        for (const char* sib : {"sib-1", ""}) {
            auto [rc, r] = respondJson(record("SSBarrInfoResult", id, {{"mSibTarget", sib}}));
            ASSERT_EQ(rc, 0);
            const auto& b = id == 302 ? r.responsessicbinfo() : r.responsessocbinfo();
            EXPECT_EQ(b.has_sibtarget(), id == 302) << id << " '" << sib << "'";
            EXPECT_EQ(b.sibtarget(), id == 302 ? sib : "");
            EXPECT_TRUE(b.has_errorstr());
        }
    }
}

TEST(SsResponses, NullRecordsSendNothing) {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    for (int id : {301, 302, 303, 304, 305, 310, 10018, 10019}) {
        LogCapture log;
        Response response;
        imsCommonStruc::Notify n;
        int rc = id > 10000 ? s_notifyMap.at(id).notifyFunction(n, nullptr)
                            : s_commandMap.at(id).responseFunction(1, response, nullptr);
        EXPECT_EQ(rc, -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
}

// Auto mode must answer each request with the record its response handler
// reads; any other class would be misread by the handler's cast.
TEST(SsResponses, AutoModeAnswersWithTheRecordTheHandlerReads) {
    for (int id = 301; id <= 316; ++id) {
        const char* cls = id <= 301                ? "SSDivInfoResult"
                          : id <= 303              ? "SSBarrInfoResult"
                          : id <= 305 || id == 310 ? "SSFlagInfoResult"
                                                   : "GeneralResponseData";
        auto records = dispatch([id] {
            Request r;
            r.set_reqid(imsCommonStruc::Id(id));
            return r;
        }());
        ASSERT_EQ(records.size(), 1u) << id;
        std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(records[0].record.get()));
        ASSERT_NE(answer, nullptr) << id;
        EXPECT_EQ(velar_sim::recordToJson(answer.get())["class"], cls) << id;
        auto [rc, response] = respond(answer.get());
        EXPECT_EQ(rc, 0) << id;
        EXPECT_EQ(response.resid(), id);
    }
}
