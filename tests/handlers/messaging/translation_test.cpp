// The messaging translators: enum tables and their direction-dependent
// fallbacks, presence of empty fields, key order, opaque bytes, log gates.
#include <gtest/gtest.h>

#include <climits>

#include "handlers/messaging/protobuf_data_translation.h"
#include "tests/support/in_process.h"

using namespace velard_test;
using namespace protobuf_data_translation;

namespace {

int countLines(LogCapture& log, const std::string& text) {
    int n = 0;
    for (const auto& l : log.lines()) n += l.find(text) != std::string::npos;
    return n;
}

}  // namespace

TEST(MessagingTranslation, EnumTables) {
    for (int v : {0, 1, 5, 8, 9, INT_MAX, -1})
        EXPECT_EQ(translateImErrorType(static_cast<ImError::Type>(v)), v >= 0 && v <= 8 ? v : 9);
    for (auto [wire, stack] : {std::pair{0, 0u}, {1, 2u}, {2, 3u}, {3, 4u}, {-1, 4u}})
        EXPECT_EQ(translateXdmDocType(static_cast<imsCommonStruc::XdmDocType>(wire)), stack);
    for (auto [wire, stack] : {std::pair{0, 1}, {1, 2}, {2, 3}, {3, 1}, {-5, 1}}) {
        imsCommonStruc::Participant p;
        p.set_uri("tel:+1");
        p.set_copycontrol(static_cast<imsCommonStruc::Participant_CopyControl>(wire));
        EXPECT_EQ(translateParticipant(p).copyControl, stack) << wire;
        EXPECT_EQ(translateParticipant(p).uri, "tel:+1");
    }
}

// Towards the stack an unknown status is dropped; towards the client it
// becomes DELIVERED. Both log the error whatever the level; the rest only
// above level 1.
TEST(MessagingTranslation, UnknownImdnStatusDependsOnDirection) {
    const int saved = logLevel;
    for (int level : {1, 2}) {
        logLevel = level;
        LogCapture log;
        google::protobuf::RepeatedField<int> wire;
        for (int v : {1, 0, 1, 7}) wire.Add(v);
        EXPECT_EQ(translateFwImdnNoti(wire),
                  (std::set<cpmim::ImNotificationStatus>{cpmim::DELIVERED, cpmim::STATUS_1}));
        wire.Clear();
        wire.Add(5);
        EXPECT_TRUE(translateFwImdnNoti(wire).empty());

        ImdnData imdn;
        imdn.noti = {cpmim::DELIVERED, static_cast<cpmim::ImNotificationStatus>(5)};
        imsCommonStruc::ImdnParams up;
        translateStackImdnData(up, imdn);
        ASSERT_EQ(up.noti_size(), 2);
        EXPECT_EQ(up.noti(0) + up.noti(1), 0);

        EXPECT_EQ(countLines(log, "E [IMS6.0]: translateFwImdnNoti: unknown status!"), 2);
        EXPECT_EQ(countLines(log,
                             "E [IMS6.0]: translateStackImdnNoti: unknown status! Use "
                             "DELIVERED instead!"),
                  1);
        EXPECT_EQ(countLines(log, "D [IMS6.0]: translateFwImdnNoti: size = 4"), level - 1);
        EXPECT_EQ(countLines(log, "D [IMS6.0]: translateFwImdnNoti: status = "), 5 * (level - 1));
        EXPECT_EQ(countLines(log, "D [IMS6.0]: translateStackImdnNoti: status = 5"), level - 1);
    }
    logLevel = saved;
}

TEST(MessagingTranslation, MessagePartsKeepPresenceOrderAndBytes) {
    // Empty strings and false flags still go out; imdn is always created.
    imsCommonStruc::ImMessageParam bare;
    translateStackImMessage(bare, ImMessage());
    EXPECT_TRUE(bare.has_sender() && bare.has_body() && bare.has_xmsmessage() &&
                bare.has_isburnmsg() && bare.has_receiver() && bare.has_silencesupported());
    EXPECT_TRUE(bare.imdn().has_messageid() && bare.imdn().has_datetime() &&
                bare.imdn().has_deviceid() && bare.imdn().has_originaltohdr());

    // Header pairs leave in key order; routes swap their field order.
    ImMessage m;
    m.body = std::string("a\0b\xff", 4);
    m.cpimNamespaces.resize(2);
    m.cpimNamespaces[1].headers = {{"zeta", "1"}, {"alpha", "2"}};
    m.imdn.recRoute = {ImdnRecRoute{"Name", "sip:route"}};
    imsCommonStruc::ImMessageParam wire;
    translateStackImMessage(wire, m);
    EXPECT_EQ(wire.body(), m.body);
    EXPECT_EQ(wire.cpimnamespaces(0).headers_size(), 0);
    EXPECT_EQ(wire.cpimnamespaces(1).headers(0).key(), "alpha");
    EXPECT_EQ(wire.cpimnamespaces(1).headers(1).value(), "1");
    EXPECT_EQ(wire.imdn().recroute(0).uri(), "sip:route");

    // And back down: bytes and routes as they came.
    imsCommonStruc::ImdnParams params = wire.imdn();
    params.mutable_recroute(0)->set_name("N2");
    ImdnData down = translateFwImdnData(params);
    EXPECT_EQ(down.recRoute[0].name, "N2");
    EXPECT_EQ(down.recRoute[0].uri, "sip:route");
}

TEST(MessagingTranslation, HeaderHelpersSetEveryFieldAndLeaveMinusOneToTheirCallers) {
    imsCommonStruc::ImError error;
    SetImError(&error, ImError{static_cast<ImError::Type>(42), -7});
    EXPECT_EQ(error.errortype(), imsCommonStruc::ImError_Type_UNKNOWN_IM_ERROR);
    EXPECT_EQ(error.errorcode(), -7);
    imsCommonStruc::WarningHdr warning;
    SetWarningHdr(&warning, WarningHdr(0, "", ""));
    EXPECT_TRUE(warning.has_code() && warning.has_host() && warning.has_text());
    imsCommonStruc::RetryHdr retry;
    SetRetryHdr(&retry, RetryHdr(-1, ""));
    EXPECT_EQ(retry.retrytimer(), -1);
    EXPECT_TRUE(retry.has_contactvalue());
    imsCommonStruc::ReasonHdr reason;
    SetReasonHdr(&reason, ReasonHdr(-1, ""));
    EXPECT_EQ(reason.code(), 0xFFFFFFFFu);
    EXPECT_TRUE(reason.has_text());
}
