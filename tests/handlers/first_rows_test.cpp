// The first rows of the tables, end to end in process.
#include <gtest/gtest.h>

#include "tests/support/in_process.h"

using namespace velard_test;

TEST(FirstRows, RequestsReachTheStackAsTheirRecords) {
    struct Case {
        const char* name;
        imsCommonStruc::Request request;
        const char* expected;
    };
    std::vector<Case> cases(4);
    cases[0].name = "103 with handle";
    cases[0].request.set_reqid(imsCommonStruc::Id(103));
    cases[0].request.mutable_requestuadeletion()->set_handle(5);
    cases[0].expected = R"({"class":"PrimitiveData<int>","id":103,"args":[5]})";
    cases[1].name = "103 without body";
    cases[1].request.set_reqid(imsCommonStruc::Id(103));
    cases[1].expected = R"({"class":"PrimitiveData<int>","id":103,"args":[0]})";
    cases[2].name = "103 handle above 2^31 is an int";
    cases[2].request.set_reqid(imsCommonStruc::Id(103));
    cases[2].request.mutable_requestuadeletion()->set_handle(0xFFFFFFFFu);
    cases[2].expected = R"({"class":"PrimitiveData<int>","id":103,"args":[-1]})";
    cases[3].name = "1201";
    cases[3].request.set_reqid(imsCommonStruc::Id(1201));
    cases[3].request.mutable_requestopensipdialog()->set_isrequired(true);
    cases[3].expected = R"({"class":"PrimitiveData<bool>","id":1201,"args":[true]})";
    for (auto& c : cases) {
        EXPECT_EQ(dispatchOne(c.request, 9), Json::parse(c.expected)) << c.name;
    }
}

TEST(FirstRows, NoOperationRowsReachNothing) {
    for (int id : {208, 210, 211}) {
        imsCommonStruc::Request request;
        request.set_reqid(imsCommonStruc::Id(id));
        EXPECT_TRUE(dispatch(request).empty()) << id;
    }
}

TEST(FirstRows, CancelAlarmCarriesTheValue) {
    auto [rc, message] =
        notifyJson(Json::parse(R"({"class":"PrimitiveData<int>","id":20002,"fields":{"value":77}})"));
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(message.notifyid(), 20002);
    EXPECT_EQ(message.cancelalarm().id(), 77u);
}
