#include "framing.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace vf = velard_framing;

namespace {

std::string Bytes(std::initializer_list<int> b) {
    std::string s;
    for (int c : b) s.push_back(static_cast<char>(c));
    return s;
}

TEST(Framing, Layouts) {
    EXPECT_EQ(vf::EncodeClientRecord(0xA1B2C3D4, "abc", 0x01020304),
              Bytes({0, 0, 0, 11, 4, 3, 2, 1, 0xD4, 0xC3, 0xB2, 0xA1}) + "abc");
    EXPECT_EQ(vf::EncodeClientRecord(1, std::string(0x1234, 'x')).substr(0, 4),
              Bytes({0, 0, 0x12, 0x3C}));
    std::string notify = vf::EncodeDaemonFrame(vf::kTypeNotify, 0, std::string(10, 'n'));
    ASSERT_EQ(notify.size(), 22u);
    EXPECT_EQ(notify.substr(0, 12), Bytes({18, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(vf::EncodeDaemonFrame(vf::kTypeResponse, 0x01020304, ""),
              Bytes({8, 0, 0, 0, 1, 0, 0, 0, 4, 3, 2, 1}));
}

// Frames survive being fed in pieces of any size, and come out in order.
TEST(Framing, ReadersCutStreamsFedInPieces) {
    const std::vector<std::pair<uint32_t, std::string>> frames = {
        {1, "first"}, {2, ""}, {1, std::string(1000, 'z')}, {2, std::string("\0\1\0", 3)}};
    std::string daemonBytes, clientBytes;
    for (size_t i = 0; i < frames.size(); ++i) {
        uint32_t token = static_cast<uint32_t>(i + 100);
        daemonBytes += vf::EncodeDaemonFrame(frames[i].first, token, frames[i].second);
        clientBytes += vf::EncodeClientRecord(token, frames[i].second, frames[i].first);
    }
    for (size_t piece : {size_t{1}, size_t{7}, size_t{500}, daemonBytes.size()}) {
        SCOPED_TRACE("piece " + std::to_string(piece));
        vf::DaemonFrameReader dr;
        vf::ClientRecordReader cr;
        std::vector<vf::DaemonFrame> dout;
        std::vector<vf::ClientRecord> cout;
        for (size_t off = 0; off < daemonBytes.size(); off += piece) {
            dr.Append(daemonBytes.data() + off, std::min(piece, daemonBytes.size() - off));
            cr.Append(clientBytes.data() + off, std::min(piece, clientBytes.size() - off));
            vf::DaemonFrame f;
            while (dr.Next(&f) == vf::ReadResult::kFrame) dout.push_back(f);
            vf::ClientRecord r;
            while (cr.Next(&r) == vf::ReadResult::kFrame) cout.push_back(r);
        }
        ASSERT_EQ(dout.size(), frames.size());
        ASSERT_EQ(cout.size(), frames.size());
        for (size_t i = 0; i < frames.size(); ++i) {
            EXPECT_EQ(dout[i].type, frames[i].first);
            EXPECT_EQ(dout[i].token, i + 100);
            EXPECT_EQ(dout[i].payload, frames[i].second);
            EXPECT_EQ(cout[i].reserved, frames[i].first);
            EXPECT_EQ(cout[i].token, i + 100);
            EXPECT_EQ(cout[i].payload, frames[i].second);
        }
        EXPECT_EQ(dr.buffered(), 0u);
        EXPECT_EQ(cr.buffered(), 0u);
    }
}

TEST(Framing, LengthBounds) {
    struct Case {
        bool client;  // fed to a ClientRecordReader, else a DaemonFrameReader
        std::string bytes;
        vf::ReadResult result;
    };
    const Case cases[] = {
        {false, Bytes({8, 0, 0, 0, 1, 0, 0}), vf::ReadResult::kNeedMore},
        {false, Bytes({7, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}), vf::ReadResult::kError},  // no token
        {false, vf::EncodeDaemonFrame(1, 1, std::string(vf::kMaxRecordLen - 12, 'p')),
         vf::ReadResult::kFrame},                                       // P + 12 == 0x80000
        {false, Bytes({0xfd, 0xff, 0x07, 0}), vf::ReadResult::kError},  // one more
        {true, Bytes({0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0}), vf::ReadResult::kError},
        {true, vf::EncodeClientRecord(1, std::string(vf::kMaxRecordLen - 8, 'p')),
         vf::ReadResult::kFrame},
        {true, Bytes({0, 0x08, 0, 1}), vf::ReadResult::kError},
    };
    const std::string good = vf::EncodeDaemonFrame(1, 1, "x");
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.bytes.size()) + " bytes");
        vf::DaemonFrameReader dr;
        vf::ClientRecordReader cr;
        vf::DaemonFrame f;
        vf::ClientRecord r;
        auto next = [&] { return c.client ? cr.Next(&r) : dr.Next(&f); };
        auto append = [&](const std::string& b) {
            c.client ? cr.Append(b.data(), b.size()) : dr.Append(b.data(), b.size());
        };
        append(c.bytes);
        EXPECT_EQ(next(), c.result);
        if (c.result == vf::ReadResult::kError) {
            // A broken stream stays broken, whatever follows.
            append(good);
            EXPECT_EQ(next(), vf::ReadResult::kError);
        }
    }
}

}  // namespace
