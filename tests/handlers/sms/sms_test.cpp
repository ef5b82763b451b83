// SMS over IP in process: the constructor choice and opaque bodies. Every
// id's full round trip is in the end-to-end table.
#include <gtest/gtest.h>

#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

namespace {

// Bytes that a C string would cut short or a text codec would mangle, and
// their JSON form.
const std::string kBinary("\x00\x41\x00\xff\x80\n", 6);
const char* const kBinaryJson = "\"\\u0000A\\u0000\\u00ff\\u0080\\n\"";

}  // namespace

TEST(Sms, PresenceOfInReplyToChoosesTheConstructor) {
    const char* const head = R"([3,"tel:+4912","sip:me@x","application","vnd.3gpp.sms",99,)";
    struct Case {
        const char* name;
        const char* inReplyTo;  // null: absent
        const char* tail;
    };
    const Case cases[] = {
        {"absent", nullptr, "]"},
        {"empty", "", R"(,""])"},
        {"set", "call-7", R"(,"call-7"])"},
    };
    for (const auto& c : cases) {
        Request request;
        request.set_reqid(imsCommonStruc::Id(401));
        auto* b = request.mutable_requestsendmsg();
        b->set_handle(3);
        b->set_smsc("tel:+4912");
        b->set_localuri("sip:me@x");
        b->set_contenttype("application");
        b->set_contentsubtype("vnd.3gpp.sms");
        b->set_contentlen(99);  // disagrees with the body, and goes as it is
        b->set_contentbody(kBinary);
        if (c.inReplyTo) b->set_inreplyto(c.inReplyTo);
        Json args = Json::parse(std::string(head) + kBinaryJson + c.tail);
        EXPECT_EQ(dispatchOne(request),
                  (Json{{"class", "SendMessageData"}, {"id", 401}, {"args", args}}))
            << c.name;
    }
}

TEST(Sms, CodesAndBodiesComeUpWhole) {
    Json ack = Json::parse(R"({"class":"SmsRpAckData","id":20003,"fields":{}})");
    ack["fields"]["mAckCode"] = Json::parse(kBinaryJson);
    auto [rc1, n1] = notifyJson(ack);
    ASSERT_EQ(rc1, 0);
    EXPECT_EQ(n1.smsrpack().ackcode(), kBinary);
    EXPECT_TRUE(n1.smsrpack().has_contentsubtype());

    Json sms = Json::parse(R"({"class":"ReceiveSmsData","id":20004,"fields":{}})");
    sms["fields"]["mContent"] = Json::parse(kBinaryJson);
    auto [rc2, n2] = notifyJson(sms);
    ASSERT_EQ(rc2, 0);
    EXPECT_EQ(n2.smsnoti().content(), kBinary);
    EXPECT_TRUE(n2.smsnoti().has_scuri());
}

TEST(Sms, NullRecordsSendNothing) {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    for (int id : {401, 20003, 20004}) {
        LogCapture log;
        imsCommonStruc::Response response;
        imsCommonStruc::Notify n;
        int rc = id > 10000 ? s_notifyMap.at(id).notifyFunction(n, nullptr)
                            : s_commandMap.at(id).responseFunction(1, response, nullptr);
        EXPECT_EQ(rc, -1) << id;
        EXPECT_TRUE(log.contains("E [IMS6.0]: invalid response: NULL")) << id;
    }
}

// Auto mode answers a message sent with the handler's own record, naming the
// message's user agent; the acknowledgements take the general answer.
TEST(Sms, AutoModeAnswersWithTheRecordTheHandlerReads) {
    Request request;
    request.set_reqid(imsCommonStruc::Id(401));
    request.mutable_requestsendmsg()->set_handle(12);
    auto records = dispatch(request);
    ASSERT_EQ(records.size(), 1u);
    std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(records[0].record.get()));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(velar_sim::recordToJson(answer.get())["class"], "SmsResponseData");
    auto [rc, response] = respond(answer.get());
    ASSERT_EQ(rc, 0);
    EXPECT_EQ(response.sendsmsresp().handle(), 12u);
    EXPECT_TRUE(response.sendsmsresp().has_errstr());
}
