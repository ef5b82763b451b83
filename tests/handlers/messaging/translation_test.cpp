// The messaging translators: enum tables with their direction-dependent
// fallbacks, presence of empty fields, orders, and opaque bytes.
#include <gtest/gtest.h>

#include <climits>

#include "handlers/messaging/protobuf_data_translation.h"
#include "tests/support/in_process.h"

using namespace velard_test;
using namespace protobuf_data_translation;

namespace {

int countLines(const std::vector<std::string>& lines, const std::string& text) {
    int n = 0;
    for (const auto& l : lines) n += l.find(text) != std::string::npos;
    return n;
}

// Sets the library's log level for one scope.
struct LogLevel {
    explicit LogLevel(int level) : saved(logLevel) { logLevel = level; }
    ~LogLevel() { logLevel = saved; }
    int saved;
};

google::protobuf::RepeatedField<int> ints(const std::vector<int>& values) {
    google::protobuf::RepeatedField<int> field;
    for (int v : values) field.Add(v);
    return field;
}

}  // namespace

TEST(MessagingTranslation, EnumTables) {
    for (int v = 0; v <= 8; ++v)
        EXPECT_EQ(translateImErrorType(static_cast<ImError::Type>(v)), v) << v;
    for (int v : {9, 10, INT_MAX, -1, INT_MIN})
        EXPECT_EQ(translateImErrorType(static_cast<ImError::Type>(v)),
                  imsCommonStruc::ImError_Type_UNKNOWN_IM_ERROR)
            << v;

    const std::pair<int, uint32_t> docTypes[] = {{0, 0}, {1, 2}, {2, 3}, {3, 4}, {99, 4}, {-1, 4}};
    for (auto [wire, stack] : docTypes)
        EXPECT_EQ(translateXdmDocType(static_cast<imsCommonStruc::XdmDocType>(wire)), stack)
            << wire;

    const std::pair<int, int> copyControls[] = {{0, 1}, {1, 2}, {2, 3}, {3, 1}, {-5, 1}};
    for (auto [wire, stack] : copyControls) {
        imsCommonStruc::Participant p;
        p.set_uri("tel:+1");
        p.set_copycontrol(static_cast<imsCommonStruc::Participant_CopyControl>(wire));
        ImParticipant out = translateParticipant(p);
        EXPECT_EQ(out.copyControl, stack) << wire;
        EXPECT_EQ(out.uri, "tel:+1");
    }
    // An absent copyControl reads as TO.
    EXPECT_EQ(translateParticipant(imsCommonStruc::Participant()).copyControl, 1);
}

TEST(MessagingTranslation, UnknownImdnStatusDependsOnDirection) {
    struct Case {
        std::vector<int> wire;
        std::set<cpmim::ImNotificationStatus> stack;
        int errors;
    };
    const Case cases[] = {
        {{1, 0, 1, 7}, {cpmim::DELIVERED, cpmim::STATUS_1}, 1},
        {{5, -1}, {}, 2},
        {{}, {}, 0},
        {{1, 1}, {cpmim::STATUS_1}, 0},
    };
    for (const auto& c : cases) {
        LogCapture log;
        EXPECT_EQ(translateFwImdnNoti(ints(c.wire)), c.stack);
        EXPECT_EQ(countLines(log.lines(), "E [IMS6.0]: translateFwImdnNoti: unknown status!"),
                  c.errors);
    }

    // Towards the client an unknown status becomes DELIVERED, once per value.
    LogCapture log;
    ImdnData imdn;
    imdn.noti = {cpmim::DELIVERED, static_cast<cpmim::ImNotificationStatus>(5)};
    imsCommonStruc::ImdnParams wire;
    translateStackImdnData(wire, imdn);
    ASSERT_EQ(wire.noti_size(), 2);
    EXPECT_EQ(wire.noti(0), 0);
    EXPECT_EQ(wire.noti(1), 0);
    EXPECT_EQ(
        countLines(log.lines(),
                   "E [IMS6.0]: translateStackImdnNoti: unknown status! Use DELIVERED instead!"),
        1);
}

TEST(MessagingTranslation, StatusLinesFollowTheLogLevel) {
    for (int level : {1, 2}) {
        LogLevel scoped(level);
        LogCapture log;
        translateFwImdnNoti(ints({1, 9}));
        translateStackImdnNoti(cpmim::STATUS_1);
        auto lines = log.lines();
        const int gated = level > 1 ? 1 : 0;
        EXPECT_EQ(countLines(lines, "D [IMS6.0]: translateFwImdnNoti: size = 2"), gated);
        EXPECT_EQ(countLines(lines, "D [IMS6.0]: translateFwImdnNoti: status = "), 2 * gated);
        EXPECT_EQ(countLines(lines, "D [IMS6.0]: translateStackImdnNoti: status = 1"), gated);
        // The error is written whatever the level.
        EXPECT_EQ(countLines(lines, "E [IMS6.0]: translateFwImdnNoti: unknown status!"), 1);
    }
}

TEST(MessagingTranslation, ImdnDataBothWays) {
    // Empty strings are still present on the wire.
    imsCommonStruc::ImdnParams empty;
    translateStackImdnData(empty, ImdnData());
    EXPECT_TRUE(empty.has_messageid() && empty.has_datetime() && empty.has_deviceid() &&
                empty.has_originaltohdr());
    EXPECT_EQ(empty.noti_size(), 0);
    EXPECT_EQ(empty.recroute_size(), 0);

    imsCommonStruc::ImdnParams wire;
    wire.set_messageid("m1");
    wire.set_datetime("2024-01-01T00:00:00Z");
    wire.set_deviceid("dev");
    wire.set_originaltohdr("sip:orig");
    wire.add_noti(imsCommonStruc::NOTIFICATION_STATUS_1);
    wire.add_noti(imsCommonStruc::NOTIFICATION_STATUS_DELIVERED);
    for (auto [uri, name] : {std::pair{"sip:b", "B"}, std::pair{"sip:a", "A"}}) {
        auto* r = wire.add_recroute();
        r->set_uri(uri);
        r->set_name(name);
    }
    ImdnData stack = translateFwImdnData(wire);
    EXPECT_EQ(stack.messageId, "m1");
    EXPECT_EQ(stack.datetime, "2024-01-01T00:00:00Z");
    EXPECT_EQ(stack.deviceId, "dev");
    EXPECT_EQ(stack.originalToHdr, "sip:orig");
    ASSERT_EQ(stack.recRoute.size(), 2u);
    EXPECT_EQ(stack.recRoute[0].uri, "sip:b");
    EXPECT_EQ(stack.recRoute[0].name, "B");
    EXPECT_EQ(stack.recRoute[1].uri, "sip:a");

    // Back up: routes keep their order, statuses come in ascending order.
    imsCommonStruc::ImdnParams again;
    translateStackImdnData(again, stack);
    EXPECT_EQ(again.noti(0), 0);
    EXPECT_EQ(again.noti(1), 1);
    EXPECT_EQ(again.recroute(0).SerializeAsString(), wire.recroute(0).SerializeAsString());
    EXPECT_EQ(again.recroute(1).SerializeAsString(), wire.recroute(1).SerializeAsString());

    // An absent block reads as empty.
    ImdnData none = translateFwImdnData(imsCommonStruc::ImdnParams::default_instance());
    EXPECT_TRUE(none.messageId.empty() && none.noti.empty() && none.recRoute.empty());
}

TEST(MessagingTranslation, CpimHeadersLeaveInKeyOrder) {
    CpimNamespace ns;
    ns.name = "ns";
    ns.uri = "urn:x";
    ns.headers.emplace("zeta", "1");
    ns.headers.emplace("alpha", "2");
    ns.headers.emplace("mid", "");
    imsCommonStruc::CpimNamespace wire;
    translateCpimNamespace(wire, ns);
    EXPECT_EQ(wire.name(), "ns");
    EXPECT_EQ(wire.uri(), "urn:x");
    ASSERT_EQ(wire.headers_size(), 3);
    EXPECT_EQ(wire.headers(0).key(), "alpha");
    EXPECT_EQ(wire.headers(1).key(), "mid");
    EXPECT_TRUE(wire.headers(1).has_value());
    EXPECT_EQ(wire.headers(2).key(), "zeta");
    EXPECT_EQ(wire.headers(2).value(), "1");

    imsCommonStruc::CpimNamespace bare;
    translateCpimNamespace(bare, CpimNamespace());
    EXPECT_TRUE(bare.has_name() && bare.has_uri());
    EXPECT_EQ(bare.headers_size(), 0);
}

TEST(MessagingTranslation, WholeMessageGoesUpWithOpaqueBytes) {
    const std::string body("a\0b\xff\0", 5);
    ImMessage m;
    m.sender = "sip:alice";
    m.userAlias = "Alice";
    m.body = body;
    m.contentType = std::string("text/plain\0x", 12);
    m.imdn.messageId = "id-1";
    m.deviceName = "dev";
    m.reliableMessage = "rel";
    m.xmsMessage = "xms";
    m.extraFt = true;
    m.isBurnMsg = true;
    m.isPublicAccountMsg = false;
    m.cpimNamespaces.resize(2);
    m.cpimNamespaces[0].name = "first";
    m.cpimNamespaces[1].name = "second";
    m.cpimNamespaces[1].headers = {{"k", "v"}};
    m.receiver = "sip:bob";
    m.silenceSupported = true;
    m.ccParticipants = {"sip:c1", "sip:c2"};

    LogLevel scoped(2);
    LogCapture log;
    imsCommonStruc::ImMessageParam wire;
    translateStackImMessage(wire, m);

    EXPECT_EQ(wire.body(), body);
    EXPECT_EQ(wire.body().size(), 5u);
    EXPECT_EQ(wire.contenttype(), m.contentType);
    EXPECT_EQ(wire.sender(), "sip:alice");
    EXPECT_EQ(wire.useralias(), "Alice");
    EXPECT_EQ(wire.devicename(), "dev");
    EXPECT_EQ(wire.reliablemessage(), "rel");
    EXPECT_EQ(wire.xmsmessage(), "xms");
    EXPECT_TRUE(wire.extraft());
    EXPECT_TRUE(wire.isburnmsg());
    // A false flag is still sent.
    EXPECT_TRUE(wire.has_ispublicaccountmsg());
    EXPECT_FALSE(wire.ispublicaccountmsg());
    EXPECT_EQ(wire.imdn().messageid(), "id-1");
    ASSERT_EQ(wire.cpimnamespaces_size(), 2);
    EXPECT_EQ(wire.cpimnamespaces(0).name(), "first");
    EXPECT_EQ(wire.cpimnamespaces(1).headers(0).value(), "v");
    EXPECT_EQ(wire.receiver(), "sip:bob");
    EXPECT_TRUE(wire.silencesupported());
    ASSERT_EQ(wire.ccparticipants_size(), 2);
    EXPECT_EQ(wire.ccparticipants(1), "sip:c2");
    EXPECT_EQ(countLines(log.lines(), "D [IMS6.0]: translateStackImMessage: receiver = sip:c"), 2);

    // An empty message still sets every field, and creates imdn.
    imsCommonStruc::ImMessageParam bare;
    translateStackImMessage(bare, ImMessage());
    EXPECT_TRUE(bare.has_sender() && bare.has_useralias() && bare.has_body() &&
                bare.has_contenttype() && bare.has_imdn() && bare.has_devicename() &&
                bare.has_reliablemessage() && bare.has_xmsmessage() && bare.has_extraft() &&
                bare.has_isburnmsg() && bare.has_ispublicaccountmsg() && bare.has_receiver() &&
                bare.has_silencesupported());
}

TEST(MessagingTranslation, HeaderHelpersSetEveryField) {
    imsCommonStruc::ImError error;
    SetImError(&error, ImError{static_cast<ImError::Type>(42), -7});
    EXPECT_EQ(error.errortype(), imsCommonStruc::ImError_Type_UNKNOWN_IM_ERROR);
    EXPECT_EQ(error.errorcode(), -7);

    imsCommonStruc::WarningHdr warning;
    SetWarningHdr(&warning, WarningHdr(0, "", ""));
    EXPECT_TRUE(warning.has_code() && warning.has_host() && warning.has_text());
    EXPECT_EQ(warning.code(), 0);

    imsCommonStruc::RetryHdr retry;
    SetRetryHdr(&retry, RetryHdr(30, ""));
    EXPECT_TRUE(retry.has_retrytimer() && retry.has_contactvalue());
    EXPECT_EQ(retry.retrytimer(), 30);

    // The helpers do not look for -1: that is their callers' test.
    imsCommonStruc::ReasonHdr reason;
    SetReasonHdr(&reason, ReasonHdr());
    EXPECT_EQ(reason.code(), 0xFFFFFFFFu);
    EXPECT_TRUE(reason.has_text());
}
