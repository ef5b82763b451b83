#include "pcapng.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace vp = velard_pcapng;

namespace {

struct Case {
    uint32_t interface;
    uint64_t ts;
    uint32_t flags;
    std::string bytes;
    std::string comment;
};

const std::vector<Case> kCases = {
    {vp::kInterfaceFrames, 1700000000123456, vp::kInbound, std::string("\0\0\0\x09rtk\0x", 9), ""},
    {vp::kInterfaceStack, 1700000000123457, vp::kOutbound, R"({"type":"request"})", ""},
    {vp::kInterfaceFrames, 0x1234567890ull, vp::kOutbound, "", "daemon started"},
    {vp::kInterfaceStack, 1, vp::kInbound, std::string(4001, 'z'), "odd"},
};

std::string File() {
    std::string f = vp::HeaderBlocks();
    for (const Case& c : kCases)
        f += vp::PacketBlock(c.interface, c.ts, c.flags, c.bytes, c.comment);
    return f;
}

void ExpectPrefix(const vp::Capture& got, size_t n) {
    ASSERT_EQ(got.packets.size(), n);
    for (size_t i = 0; i < n; ++i) {
        const vp::Packet& p = got.packets[i];
        EXPECT_EQ(p.interface, kCases[i].interface) << i;
        EXPECT_EQ(p.timestampUs, kCases[i].ts) << i;
        EXPECT_EQ(p.flags, kCases[i].flags) << i;
        EXPECT_EQ(p.bytes, kCases[i].bytes) << i;
        EXPECT_EQ(p.comment, kCases[i].comment) << i;
    }
}

uint32_t Swap(uint32_t v) {
    return __builtin_bswap32(v);
}

TEST(Pcapng, RoundTrip) {
    vp::Capture got = vp::Parse(File());
    EXPECT_EQ(got.stopped, "");
    ExpectPrefix(got, kCases.size());
}

// A writer killed mid-block leaves every whole block readable, wherever the
// cut falls.
TEST(Pcapng, CutFileKeepsWholeBlocks) {
    const std::string file = File();
    std::vector<size_t> ends = {vp::HeaderBlocks().size()};
    for (const Case& c : kCases)
        ends.push_back(ends.back() +
                       vp::PacketBlock(c.interface, c.ts, c.flags, c.bytes, c.comment).size());
    for (size_t cut = ends[0]; cut < file.size(); cut += 3) {
        size_t whole = 0;
        while (whole + 1 < ends.size() && ends[whole + 1] <= cut) ++whole;
        vp::Capture got = vp::Parse(std::string_view(file).substr(0, cut));
        SCOPED_TRACE("cut at " + std::to_string(cut));
        ExpectPrefix(got, whole);
        EXPECT_EQ(got.stopped.empty(), cut == ends[whole]);
    }
}

// Files from other writers: the other byte order, nanosecond timestamps,
// blocks this tool does not know.
TEST(Pcapng, ForeignFiles) {
    // Section header, big-endian, then an interface with if_tsresol 9 and a
    // name-resolution block to skip, then one packet.
    auto be = [](std::initializer_list<uint32_t> words) {
        std::string s;
        for (uint32_t w : words) {
            uint32_t v = Swap(w);
            s.append(reinterpret_cast<const char*>(&v), 4);
        }
        return s;
    };
    std::string f = be({0x0A0D0D0A, 28, 0x1A2B3C4D, 0x00010000, 0xFFFFFFFF, 0xFFFFFFFF, 28});
    f += be({1, 32, 0x00930000, 0, 0x00090001}) + std::string("\x09\0\0\0", 4) + be({0, 32});
    f += be({4, 16, 0, 16});
    uint64_t ns = 1700000000123456789ull;
    f += be({6, 48, 0, uint32_t(ns >> 32), uint32_t(ns), 3, 3}) + std::string("abc\0", 4) +
         be({0x00020004, 2, 0, 48});
    vp::Capture got = vp::Parse(f);
    EXPECT_EQ(got.stopped, "");
    ASSERT_EQ(got.packets.size(), 1u);
    EXPECT_EQ(got.packets[0].timestampUs, 1700000000123456u);
    EXPECT_EQ(got.packets[0].bytes, "abc");
    EXPECT_EQ(got.packets[0].flags, 2u);

    for (const char* bad : {"", "GIF89a and more bytes"}) {
        got = vp::Parse(bad);
        EXPECT_TRUE(got.packets.empty());
        EXPECT_EQ(got.stopped.empty(), *bad == '\0') << bad;
    }
}

}  // namespace
