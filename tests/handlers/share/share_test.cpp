// Image and video share sessions, in process.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
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

}  // namespace

TEST(ShareRequests, RequestsBecomeTheirRecords) {
    struct Case {
        const char* name;
        ims::Request request;
        const char* expected;
    };
    std::vector<Case> cases = {
        {"1001",
         request(1001,
                 [](ims::Request& r) {
                     auto* s = r.mutable_requestishstartsession();
                     s->set_registrationhandle(0xFFFFFFFFu);
                     s->set_remoteuri("tel:+2");
                     s->set_filepath("/sdcard/a.jpg");
                     s->set_size(1024);
                     s->set_contenttype("image/jpeg");
                 }),
         R"({"class":"StartIshSession","id":1001,"fields":{"registrationHandle":4294967295,
             "remoteUri":"tel:+2","filePath":"/sdcard/a.jpg","size":1024,
             "contentType":"image/jpeg"}})"},
        {"1002",
         request(1002,
                 [](ims::Request& r) {
                     auto* s = r.mutable_requestishacceptsession();
                     s->set_sessionid(31);
                     s->set_filepath("/data/in.jpg");
                 }),
         R"({"class":"TupleData<int, std::string>","id":1002,"args":[31,"/data/in.jpg"]})"},
        {"1003 with a reason drops it",
         request(1003,
                 [](ims::Request& r) {
                     auto* s = r.mutable_requestishstopsession();
                     s->set_sessionid(32);
                     s->set_reason(static_cast<ims::CshRejectReason>(2));
                 }),
         R"({"class":"TupleData<int, std::string>","id":1003,"args":[32,""]})"},
        {"1003 without a reason",
         request(1003,
                 [](ims::Request& r) { r.mutable_requestishstopsession()->set_sessionid(32); }),
         R"({"class":"TupleData<int, std::string>","id":1003,"args":[32,""]})"},
        {"1101 reads only the handle and the uri",
         request(1101,
                 [](ims::Request& r) {
                     auto* s = r.mutable_requestvshstartsession();
                     s->set_registrationhandle(3);
                     s->set_remoteuri("tel:+3");
                     s->set_filepath("/sdcard/v.mp4");
                     s->set_size(99);
                     s->set_contenttype("video/mp4");
                 }),
         R"({"class":"StartVshSession","id":1101,"fields":{"registrationHandle":3,
             "remoteUri":"tel:+3"}})"},
        {"1102",
         request(1102,
                 [](ims::Request& r) {
                     r.mutable_requestvshacceptsession()->set_sessionid(0x80000000u);
                 }),
         R"({"class":"PrimitiveData<int>","id":1102,"args":[-2147483648]})"},
        {"1103",
         request(1103,
                 [](ims::Request& r) { r.mutable_requestvshstopsession()->set_sessionid(41); }),
         R"({"class":"PrimitiveData<int>","id":1103,"args":[41]})"},
    };
    for (auto& c : cases) EXPECT_EQ(dispatchOne(c.request), Json::parse(c.expected)) << c.name;
}

TEST(ShareResponse, SessionAndErrorAlwaysSet) {
    for (int id : {1001, 1002, 1003, 1101, 1102, 1103}) {
        Json record = {{"class", "CshResultData"},
                       {"id", id},
                       {"fields", {{"sessionId", 17}, {"code", id % 2 == 0 ? 0 : 3}}}};
        auto [rc, r] = respondJson(record);
        ASSERT_EQ(rc, 0) << id;
        EXPECT_EQ(r.resid(), id);
        EXPECT_EQ(r.cshgeneralresponse().sessionid(), 17u);
        EXPECT_TRUE(r.cshgeneralresponse().has_error());
        EXPECT_EQ(static_cast<int>(r.cshgeneralresponse().error()), id % 2 == 0 ? 0 : 3);
    }
}

// Which wire field each result notification fills, and that it is present
// even when zero.
TEST(ShareNotify, ResultNotificationsMapTheCodeToTheirField) {
    struct Case {
        int id;
        std::function<std::pair<uint32_t, int>(const ims::Notify&)> read;
        std::function<bool(const ims::Notify&)> present;
    };
    std::vector<Case> cases = {
        {16002,
         [](const ims::Notify& n) {
             return std::make_pair(n.ishsessionestablished().sessionid(),
                                   static_cast<int>(n.ishsessionestablished().error()));
         },
         [](const ims::Notify& n) { return n.ishsessionestablished().has_error(); }},
        {16003,
         [](const ims::Notify& n) {
             return std::make_pair(n.ishsessionterminated().sessionid(),
                                   static_cast<int>(n.ishsessionterminated().reason()));
         },
         [](const ims::Notify& n) { return n.ishsessionterminated().has_reason(); }},
        {17002,
         [](const ims::Notify& n) {
             return std::make_pair(n.vshsessionestablished().sessionid(),
                                   static_cast<int>(n.vshsessionestablished().resolution()));
         },
         [](const ims::Notify& n) { return n.vshsessionestablished().has_resolution(); }},
        {17003,
         [](const ims::Notify& n) {
             return std::make_pair(n.vshsessionterminated().sessionid(),
                                   static_cast<int>(n.vshsessionterminated().reason()));
         },
         [](const ims::Notify& n) { return n.vshsessionterminated().has_reason(); }},
    };
    for (const auto& c : cases) {
        for (int code : {0, 2, 250}) {
            Json record = {{"class", "CshResultData"},
                           {"id", c.id},
                           {"fields", {{"sessionId", 50}, {"code", code}}}};
            auto [rc, n] = notifyJson(record);
            ASSERT_EQ(rc, 0) << c.id;
            EXPECT_EQ(n.notifyid(), c.id);
            EXPECT_EQ(c.read(n), std::make_pair(50u, code)) << c.id << " code " << code;
            EXPECT_TRUE(c.present(n)) << c.id;
        }
    }
}

TEST(ShareNotify, IncomingAndProgressCopyTheirFields) {
    {
        auto [rc, n] = notifyJson(R"({"class":"IshIncomingData","id":16001,"fields":{
            "sessionId":5,"remoteUri":"tel:+5","fileName":"p.png","size":77,
            "contentType":""}})"_oj);
        ASSERT_EQ(rc, 0);
        const auto& i = n.ishincomingsession();
        EXPECT_EQ(i.sessionid(), 5u);
        EXPECT_EQ(i.remoteuri(), "tel:+5");
        EXPECT_EQ(i.filename(), "p.png");
        EXPECT_EQ(i.size(), 77u);
        EXPECT_TRUE(i.has_contenttype());
    }
    {
        // Repeated or decreasing values pass as they are.
        for (auto [total, transferred] : {std::pair{100u, 100u}, std::pair{100u, 150u}}) {
            Json record = {
                {"class", "IshProgressData"},
                {"id", 16004},
                {"fields", {{"sessionId", 6}, {"total", total}, {"transferred", transferred}}}};
            auto [rc, n] = notifyJson(record);
            ASSERT_EQ(rc, 0);
            EXPECT_EQ(n.ishtransferprogress().total(), total);
            EXPECT_EQ(n.ishtransferprogress().transferred(), transferred);
        }
    }
    {
        auto [rc, n] = notifyJson(R"({"class":"VshIncomingData","id":17001,"fields":{
            "sessionId":7,"remoteUri":"tel:+7"}})"_oj);
        ASSERT_EQ(rc, 0);
        const auto& v = n.vshincomingsession();
        EXPECT_EQ(v.sessionid(), 7u);
        EXPECT_EQ(v.remoteuri(), "tel:+7");
        EXPECT_FALSE(v.has_type() || v.has_filename());
    }
}

TEST(ShareNotify, NullRecordSendsNothing) {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    for (int id : {16001, 16002, 16003, 16004, 17001, 17002, 17003}) {
        LogCapture log;
        ims::Notify n;
        EXPECT_EQ(s_notifyMap.at(id).notifyFunction(n, nullptr), -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
    LogCapture log;
    ims::Response r;
    EXPECT_EQ(s_commandMap.at(1101).responseFunction(1, r, nullptr), -1);
    EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL"));
}

// Auto mode must answer with the record the response handler reads: any other
// class would be misread by it.
TEST(ShareAutoMode, AnswersWithTheFamilysRecord) {
    for (int id : {1001, 1002, 1003, 1101, 1102, 1103}) {
        PrimitiveData<int> request(id, 0);
        std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(&request));
        ASSERT_NE(answer, nullptr) << id;
        EXPECT_EQ(velar_sim::recordToJson(answer.get())["class"], "CshResultData") << id;
        EXPECT_EQ(answer->GetId(), id);
    }
}
