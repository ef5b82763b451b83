// Supplementary services in process: defaults, integer types and the one
// field that only incoming barring answers with.
#include <gtest/gtest.h>

#include <functional>

#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

TEST(SsRequests, DefaultsAndIntegerTypes) {
    const struct {
        int id;
        std::function<void(Request&)> fill;
        const char* expected;
    } cases[] = {
        {306, nullptr,
         R"({"class":"SSSetDivInfo","id":306,"args":[false,0,"",0,[],"",0,"",false]})"},
        // The timer and the type are ints on the stack's side.
        {306,
         [](Request& r) {
             r.mutable_requestsetssdivinfo()->set_noreplytimer(0xFFFFFFFFu);
             r.mutable_requestsetssdivinfo()->set_cftype(0x80000000u);
         },
         R"({"class":"SSSetDivInfo","id":306,"args":[false,-1,"",-2147483648,[],"",0,"",false]})"},
        // 302 reads the incoming body only; ssType stays unsigned.
        {302, [](Request& r) { r.mutable_requestgetssocbinfo()->set_impu("x"); },
         R"({"class":"SSGetBarrInfo","id":302,"args":[0,0,""]})"},
        {303, [](Request& r) { r.mutable_requestgetssocbinfo()->set_sstype(0x80000001u); },
         R"({"class":"SSGetBarrInfo","id":303,"args":[2147483649,0,""]})"},
        {313, [](Request& r) { r.mutable_requestssupdatedns()->set_iface("wlan0"); },
         R"({"class":"SSGetDns","id":313,"args":[[],"wlan0"]})"},
    };
    for (const auto& c : cases) {
        Request r;
        r.set_reqid(imsCommonStruc::Id(c.id));
        if (c.fill) c.fill(r);
        EXPECT_EQ(dispatchOne(r), Json::parse(c.expected)) << c.expected;
    }
}

TEST(SsResponses, OnlyIncomingBarringCarriesTheSibTargetEvenEmpty) {
    for (int id : {302, 303}) {
        for (const char* sib : {"sib-1", ""}) {
            Json record = {{"class", "SSBarrInfoResult"}, {"id", id}};
            record["fields"] = {{"mSibTarget", sib}};
            auto [rc, r] = respondJson(record);
            ASSERT_EQ(rc, 0);
            const auto& b = id == 302 ? r.responsessicbinfo() : r.responsessocbinfo();
            EXPECT_EQ(b.has_sibtarget(), id == 302) << id << " '" << sib << "'";
            EXPECT_EQ(b.sibtarget(), id == 302 ? sib : "");
        }
    }
}
