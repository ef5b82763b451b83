// The first rows of the tables, end to end in process.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/in_process.h"

using namespace velard_test;

TEST(FirstRows, RequestsReachTheStackAsTheirRecords) {
    using Fill = std::function<void(imsCommonStruc::Request&)>;
    struct Case {
        const char* name;
        int id;
        Fill fill;
        const char* expected;
    } const cases[] = {
        {"103 with handle", 103, [](auto& r) { r.mutable_requestuadeletion()->set_handle(5); },
         R"({"class":"PrimitiveData<int>","id":103,"args":[5]})"},
        {"103 without body", 103, nullptr, R"({"class":"PrimitiveData<int>","id":103,"args":[0]})"},
        {"103 handle above 2^31 is an int", 103,
         [](auto& r) { r.mutable_requestuadeletion()->set_handle(0xFFFFFFFFu); },
         R"({"class":"PrimitiveData<int>","id":103,"args":[-1]})"},
        {"1201", 1201, [](auto& r) { r.mutable_requestopensipdialog()->set_isrequired(true); },
         R"({"class":"PrimitiveData<bool>","id":1201,"args":[true]})"},
        // No-operation rows reach nothing (a count where not one record).
        {"208", 208, nullptr, "0"},
        {"210", 210, nullptr, "0"},
        {"211", 211, nullptr, "0"},
    };
    for (const auto& c : cases) {
        imsCommonStruc::Request request;
        request.set_reqid(imsCommonStruc::Id(c.id));
        if (c.fill) c.fill(request);
        auto records = dispatch(request, 9);
        Json got = records.size() == 1 ? records[0].json : Json(records.size());
        EXPECT_EQ(got, Json::parse(c.expected)) << c.name;
    }
}

TEST(FirstRows, CancelAlarmCarriesTheValue) {
    auto [rc, message] = notifyJson(
        Json::parse(R"({"class":"PrimitiveData<int>","id":20002,"fields":{"value":77}})"));
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(message.notifyid(), 20002);
    EXPECT_EQ(message.cancelalarm().id(), 77u);
}
