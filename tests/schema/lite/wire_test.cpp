// Wire behaviour of the lite classes the daemon links: numbers an enumeration
// doesn't hold, unknown fields, and the unpacked encoding of repeated enums.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "imsCommonStruc.pb.h"

namespace {

using namespace imsCommonStruc;

// Minimal encoder for hand-built payloads.
std::string Varint(uint64_t v) {
    std::string out;
    while (v >= 0x80) {
        out += static_cast<char>((v & 0x7f) | 0x80);
        v >>= 7;
    }
    out += static_cast<char>(v);
    return out;
}
std::string VarintField(int number, uint64_t v) {
    return Varint(static_cast<uint64_t>(number) << 3) + Varint(v);
}
std::string BytesField(int number, const std::string& payload) {
    return Varint((static_cast<uint64_t>(number) << 3) | 2) + Varint(payload.size()) + payload;
}
// A fixed-width field of 4 (wire type 5) or 8 bytes (wire type 1).
std::string FixedField(int number, uint64_t v, int bytes) {
    std::string out = Varint((static_cast<uint64_t>(number) << 3) | (bytes == 4 ? 5 : 1));
    for (int i = 0; i < bytes; ++i) out += static_cast<char>((v >> (8 * i)) & 0xff);
    return out;
}

// Parses as the daemon does, keeping whatever was read even when a required
// field is missing; the message written back must be the bytes read.
template <typename M>
M RoundTrip(const std::string& in) {
    M msg;
    EXPECT_TRUE(msg.ParsePartialFromString(in));
    EXPECT_EQ(msg.SerializePartialAsString(), in);
    return msg;
}

// The bytes of fields 1, 2, ... holding these numbers.
std::string Fields(std::initializer_list<uint64_t> values) {
    std::string out;
    int number = 0;
    for (uint64_t v : values) out += VarintField(++number, v);
    return out;
}

// The message id: every number of the id space parses into reqid; anything
// else is kept as an unknown field and goes back out unchanged.
TEST(SchemaWire, RequestIdOnTheWire) {
    struct Case {
        int number;
        bool valid;
    } const cases[] = {{0, true},     {100, true},    {99, false},   {111, false},
                       {1300, true},  {1301, false},  {10023, true}, {10024, false},
                       {18002, true}, {20011, false}, {-1, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.number);
        auto req = RoundTrip<Request>(Fields({static_cast<uint64_t>(int64_t{c.number})}));
        EXPECT_EQ(req.has_reqid(), c.valid);
        EXPECT_EQ(req.reqid(), c.valid ? c.number : ID_NONE);
        EXPECT_EQ(req.unknown_fields().empty(), c.valid);
        EXPECT_EQ(req.IsInitialized(), c.valid);
    }
}

// Out-of-range numbers in body enumerations, top-level and nested alike: the
// field stays unset and reads its default, the bytes survive a round trip.
TEST(SchemaWire, EnumNumberOutsideItsRange) {
    // CallState holds 0..19.
    auto call =
        RoundTrip<Notify>(Fields({NOTI_CALL_STATUS}) + BytesField(20, Fields({1, 2, 0, 20})));
    EXPECT_FALSE(call.callstatus().has_state());
    EXPECT_EQ(call.callstatus().unknown_fields(), VarintField(4, 20));
    // SubscriptionState holds 1..4 and defaults to 1: 0 is outside.
    auto sub = RoundTrip<Response>(Fields({REQ_PRESENCE_SUBSCRIBE}) +
                                   BytesField(30, Fields({7, 8, 9, 0})));
    EXPECT_FALSE(sub.subscriberesponse().has_state());
    EXPECT_EQ(sub.subscriberesponse().state(), 1);
    // Notify.BearerState holds 1..3.
    auto bearer = RoundTrip<Notify>(Fields({NOTI_DEDICATED_BEARER_EVENT}) +
                                    BytesField(31, Fields({1, 2, 5, 4})));
    EXPECT_FALSE(bearer.dedicatedbearerevent().has_bearerstate());
    EXPECT_EQ(bearer.dedicatedbearerevent().bearerstate(), Notify_BearerState_ESTABLISHED);
}

// In a repeated enum the valid elements stay in order and the others are
// written back after the known fields.
TEST(SchemaWire, RepeatedEnumWithForeignNumber) {
    const std::string body =
        VarintField(1, 5) + VarintField(2, 3) + VarintField(2, 37) + VarintField(2, 36);
    Request_RequestUpdateFeatureTag m;
    ASSERT_TRUE(m.ParseFromString(body));
    ASSERT_EQ(m.featuretaglist_size(), 2);
    EXPECT_EQ(m.featuretaglist(0), 3);
    EXPECT_EQ(m.featuretaglist(1), 36);
    EXPECT_EQ(m.SerializeAsString(),
              VarintField(1, 5) + VarintField(2, 3) + VarintField(2, 36) + VarintField(2, 37));
}

// Fields this schema doesn't know, of every wire type and at every depth,
// pass through unchanged.
TEST(SchemaWire, UnknownFieldsRoundTrip) {
    const std::string make_call = VarintField(1, 3) + BytesField(2, "sip:bob@example.org") +
                                  VarintField(3, 1) + VarintField(4, 0) + VarintField(500, 42) +
                                  BytesField(501, "x");
    const std::string cases[] = {
        VarintField(1, REQ_MAKE_CALL) + VarintField(9999, 7),
        VarintField(1, REQ_MAKE_CALL) + BytesField(3000, std::string("\0\1\2", 3)),
        VarintField(1, REQ_MAKE_CALL) + FixedField(19, 0xdeadbeef, 4) +
            FixedField(77, 0x0123456789abcdefULL, 8),
        VarintField(1, REQ_MAKE_CALL) + BytesField(20, make_call) + VarintField(536870911, 1),
    };
    for (const std::string& in : cases) EXPECT_EQ(RoundTrip<Request>(in).reqid(), REQ_MAKE_CALL);

    // Unknown fields read ahead of known ones are written behind them.
    Request req;
    ASSERT_TRUE(req.ParseFromString(VarintField(9999, 7) + VarintField(1, REQ_MAKE_CALL)));
    EXPECT_EQ(req.SerializeAsString(), VarintField(1, REQ_MAKE_CALL) + VarintField(9999, 7));
}

}  // namespace
