// The device's record stream (the packaged libcutils), as the daemon relies
// on it: one read per call, whole records handed out before the descriptor
// is read again, and a length word that is only found to be too long once the
// buffer is full.
#include <cutils/record_stream.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::string Rec(const std::string& body) {
    uint32_t n = static_cast<uint32_t>(body.size());
    std::string out{static_cast<char>(n >> 24), static_cast<char>(n >> 16),
                    static_cast<char>(n >> 8), static_cast<char>(n)};
    return out + body;
}

// One step of a scenario: write bytes, close the writing end, or call
// record_stream_get_next and check what it gives.
struct Step {
    enum Kind { kWrite, kClose, kRecord, kEnd, kAgain, kFail } kind;
    std::string bytes;  // kWrite: what to write; kRecord: the expected record
};

Step W(std::string b) {
    return {Step::kWrite, std::move(b)};
}
Step R(std::string b) {
    return {Step::kRecord, std::move(b)};
}
const Step kClose{Step::kClose, {}};
const Step kEnd{Step::kEnd, {}};      // result 0, null record
const Step kAgain{Step::kAgain, {}};  // -1 with EAGAIN
const Step kFail{Step::kFail, {}};    // -1 with an errno the reader treats as fatal

struct Scenario {
    const char* name;
    size_t maxLen;
    std::vector<Step> steps;
};

void PrintTo(const Scenario& sc, std::ostream* os) {
    *os << sc.name;
}

class RecordStreamTest : public testing::TestWithParam<Scenario> {};

TEST_P(RecordStreamTest, Scenario) {
    const Scenario& sc = GetParam();
    int sv[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sv), 0);
    ASSERT_EQ(fcntl(sv[0], F_SETFL, O_NONBLOCK), 0);
    RecordStream* rs = record_stream_new(sv[0], sc.maxLen);
    ASSERT_NE(rs, nullptr);

    for (size_t i = 0; i < sc.steps.size(); ++i) {
        const Step& st = sc.steps[i];
        SCOPED_TRACE("step " + std::to_string(i));
        if (st.kind == Step::kWrite) {
            ASSERT_EQ(write(sv[1], st.bytes.data(), st.bytes.size()),
                      static_cast<ssize_t>(st.bytes.size()));
            continue;
        }
        if (st.kind == Step::kClose) {
            close(sv[1]);
            sv[1] = -1;
            continue;
        }
        void* rec = reinterpret_cast<void*>(0x1);
        size_t len = 12345;
        errno = 0;
        int rc = record_stream_get_next(rs, &rec, &len);
        int err = errno;
        switch (st.kind) {
            case Step::kRecord:
                ASSERT_EQ(rc, 0);
                ASSERT_NE(rec, nullptr);  // also for an empty record: null means end of stream
                EXPECT_EQ(std::string(static_cast<char*>(rec), len), st.bytes);
                break;
            case Step::kEnd:
                EXPECT_EQ(rc, 0);
                EXPECT_EQ(rec, nullptr);
                break;
            case Step::kAgain:
                EXPECT_EQ(rc, -1);
                EXPECT_EQ(err, EAGAIN);
                break;
            case Step::kFail:
                EXPECT_EQ(rc, -1);
                EXPECT_NE(err, 0);
                EXPECT_NE(err, EAGAIN);
                EXPECT_NE(err, EINTR);
                break;
            default:
                break;
        }
    }
    record_stream_free(rs);
    close(sv[0]);
    if (sv[1] >= 0) close(sv[1]);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RecordStreamTest,
    testing::Values(
        Scenario{"NothingYet", 64, {kAgain}},
        Scenario{"ByteByByte",
                 64,
                 {W(std::string(1, '\0')), kAgain, W(std::string(2, '\0')), kAgain, W("\x02"),
                  kAgain, W("x"), kAgain, W("y"), R("xy"), kAgain}},
        // Both must come out of the one read, the second without touching the
        // (by then empty) descriptor.
        Scenario{"TwoInOneRead", 64, {W(Rec("one") + Rec("two")), R("one"), R("two"), kAgain}},
        Scenario{"WholeThenPartial",
                 64,
                 {W(Rec("one") + Rec("two").substr(0, 5)), R("one"), kAgain,
                  W(Rec("two").substr(5)), R("two")}},
        Scenario{"EmptyRecords", 64, {W(Rec("") + Rec("") + Rec("x")), R(""), R(""), R("x")}},
        Scenario{"ExactlyAtLimit", 8, {W(Rec("12345678")), R("12345678")}},
        // The rest of the too-long record is read in before the stream fails.
        Scenario{"OneOverLimit",
                 8,
                 {W(Rec("ok") + Rec("123456789")), R("ok"), kAgain, kFail, kFail}},
        Scenario{"LengthWordOverLimit",
                 8,
                 {W(Rec(std::string(100, 'x')).substr(0, 8)), kAgain, W("abcd"), kAgain, kFail}},
        // More bytes waiting than the buffer holds: forces compaction.
        Scenario{"LongerThanBuffer",
                 8,
                 {W(Rec("11111111") + Rec("2222222") + Rec("333333") + Rec("44444444") + Rec("5")),
                  R("11111111"), R("2222222"), R("333333"), R("44444444"), R("5"), kAgain}},
        Scenario{"EndAtBoundary", 64, {W(Rec("last")), kClose, R("last"), kEnd}},
        // A peer that closes mid-record: EAGAIN for the bytes of that read,
        // the end of the stream on the next call.
        Scenario{"EndInsideRecord", 64, {W(Rec("abcdef").substr(0, 6)), kAgain, kClose, kEnd}},
        Scenario{"EndInsideRecordInOneRead", 64, {W(Rec("abcdef").substr(0, 6)), kClose, kAgain, kEnd}}),
    [](const testing::TestParamInfo<Scenario>& info) { return std::string(info.param.name); });

TEST(RecordStream, ReadErrorPassesErrno) {
    RecordStream* rs = record_stream_new(-1, 16);
    ASSERT_NE(rs, nullptr);
    void* rec;
    size_t len;
    EXPECT_EQ(record_stream_get_next(rs, &rec, &len), -1);
    EXPECT_EQ(errno, EBADF);
    record_stream_free(rs);
}

}  // namespace
