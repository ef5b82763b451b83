// Registration, supplementary services and SMS in process: the log gates,
// null records, and the simulated stack's answer to each request. Every id's
// translation is checked end to end.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

namespace {

struct LogLevel {
    explicit LogLevel(int level) : saved(logLevel) { logLevel = level; }
    ~LogLevel() { logLevel = saved; }
    int saved;
};

}  // namespace

TEST(RegistrationLog, NonceAndImpuCountOnlyAboveLevelOne) {
    for (int level : {1, 2}) {
        LogLevel set(level);
        LogCapture log;
        notifyJson(Json::parse(R"({"class":"RegiAuth","id":10002,"fields":{"nonce":"n0nce"}})"));
        for (int id : {10001, 10023})
            notifyJson(
                {{"class", "RegiStatusData"}, {"id", id}, {"fields", {{"impuList", {"a"}}}}});
        const auto lines = log.lines();
        auto has = [&lines](const char* text) {
            return std::find(lines.begin(), lines.end(), text) != lines.end();
        };
        EXPECT_EQ(has("D [IMS6.0]: nonce n0nce"), level > 1) << level;
        // The two notifications share a translation but log their own names.
        EXPECT_TRUE(has("V [IMS6.0]: NotifyRegiStatus() size:1")) << level;
        EXPECT_TRUE(has("V [IMS6.0]: NotifyStackUpdatePaniNoti() size:1")) << level;
    }
}

TEST(SsLog, KeysAndInterfacesOnlyAboveLevelOne) {
    const struct {
        int id;
        std::function<void(Request&)> fill;
        const char* name;
        const char* detail;
    } cases[] = {
        {312, [](Request& r) { r.mutable_requestssupdategbakey()->set_gbakey("KEY"); },
         "DispatchSSUpdateGbaKey", "KEY"},
        {313, [](Request& r) { r.mutable_requestssupdatedns()->set_iface("rmnet7"); },
         "DispatchSSUpdateDns", "rmnet7"},
    };
    for (const auto& c : cases) {
        for (int level : {1, 2}) {
            LogLevel set(level);
            Request r;
            r.set_reqid(imsCommonStruc::Id(c.id));
            c.fill(r);
            LogCapture log;
            dispatchOne(r);
            std::vector<std::string> expected = {std::string("I [IMS6.0]: ") + c.name + "()"};
            if (level > 1)
                expected.push_back(std::string("D [IMS6.0]: ") + c.name + "() " + c.detail);
            EXPECT_EQ(log.lines(), expected) << c.id << " at level " << level;
        }
    }
}

TEST(RegistrationSsSms, NullRecordsSendNothing) {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    for (int id :
         {301,   302,   303,   304,   305,   310,   401,   1200,  10001, 10002, 10003, 10007,
          10013, 10018, 10019, 10023, 20001, 20002, 20003, 20004, 20006, 20007, 20009, 20010}) {
        LogCapture log;
        imsCommonStruc::Response response;
        imsCommonStruc::Notify n;
        int rc = id > 10000 ? s_notifyMap.at(id).notifyFunction(n, nullptr)
                            : s_commandMap.at(id).responseFunction(1, response, nullptr);
        EXPECT_EQ(rc, -1) << id;
        // Its own name first: responses at info, notifications at verbose priority.
        const auto lines = log.lines();
        ASSERT_EQ(lines.size(), 2u) << id;
        EXPECT_EQ(lines[0].substr(0, 13), id > 10000 ? "V [IMS6.0]: N" : "I [IMS6.0]: R") << id;
        EXPECT_EQ(lines[1], "E [IMS6.0]: invalid response: NULL") << id;
    }
}

// Auto mode must answer each request with the record its response handler
// reads (any other class would be misread by the handler's cast), naming
// the request's user agent.
TEST(RegistrationSsSms, AutoModeAnswersWithTheRecordTheHandlerReads) {
    const std::map<int, const char*> classes = {
        {301, "SSDivInfoResult"},  {302, "SSBarrInfoResult"},      {303, "SSBarrInfoResult"},
        {304, "SSFlagInfoResult"}, {305, "SSFlagInfoResult"},      {310, "SSFlagInfoResult"},
        {401, "SmsResponseData"},  {1200, "SipDialogResponseData"}};
    // Requests whose answer names the user agent (here 7) by another member.
    const std::map<int, std::function<void(Request&)>> agents = {
        {102, [](Request& r) { r.mutable_requestuacreation()->set_profileid(7); }},
        {103, [](Request& r) { r.mutable_requestuadeletion()->set_handle(7); }},
        {109, [](Request& r) { r.mutable_requestupdatefeaturetag()->set_handle(7); }},
        {401, [](Request& r) { r.mutable_requestsendmsg()->set_handle(7); }},
        {1200, [](Request& r) { r.mutable_requestsendsip()->set_handle(7); }}};
    for (int id : {101, 102, 103,  104,  105,  106, 107, 108, 109, 110, 600, 601,
                   901, 902, 1200, 1201, 1300, 301, 302, 303, 304, 305, 306, 307,
                   308, 309, 310,  311,  312,  313, 314, 315, 316, 401, 402, 403}) {
        Request r;
        r.set_reqid(imsCommonStruc::Id(id));
        if (agents.count(id)) agents.at(id)(r);
        auto records = dispatch(r);
        ASSERT_EQ(records.size(), 1u) << id;
        std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(records[0].record.get()));
        ASSERT_NE(answer, nullptr) << id;
        const Json json = velar_sim::recordToJson(answer.get());
        EXPECT_EQ(json["class"], classes.count(id) ? classes.at(id) : "GeneralResponseData") << id;
        if (agents.count(id)) {
            EXPECT_EQ(json["fields"].value("handle", json["fields"].value("mHandle", 0)), 7) << id;
        }
        auto [rc, response] = respond(answer.get());
        EXPECT_EQ(rc, 0) << id;
        EXPECT_EQ(response.resid(), id);
    }
}
