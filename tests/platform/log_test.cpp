#include <android/log.h>

#include <errno.h>
#include <limits.h>
#include <unistd.h>

#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

// Sends this process's stderr into a pipe for the life of the object and
// collects what arrives; a thread drains the pipe so writers never block.
class StderrCapture {
public:
    StderrCapture() {
        int p[2];
        if (pipe(p) != 0) abort();
        mRead = p[0];
        mSaved = dup(STDERR_FILENO);
        dup2(p[1], STDERR_FILENO);
        close(p[1]);
        mDrain = std::thread([this] {
            char buf[8192];
            ssize_t n;
            while ((n = read(mRead, buf, sizeof buf)) > 0)
                mText.append(buf, static_cast<size_t>(n));
        });
    }
    // Restores stderr and returns everything written meanwhile.
    std::string Finish() {
        dup2(mSaved, STDERR_FILENO);
        close(mSaved);
        mDrain.join();
        close(mRead);
        return mText;
    }

private:
    int mRead = -1;
    int mSaved = -1;
    std::thread mDrain;
    std::string mText;
};

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) out.push_back(line);
    return out;
}

TEST(Log, LineFormatPerPriority) {
    struct Case {
        int prio;
        const char* expected;
    };
    const Case cases[] = {
        {ANDROID_LOG_VERBOSE, "V [IMS6.0]: unsupported request code 9999\n"},
        {ANDROID_LOG_DEBUG, "D [IMS6.0]: unsupported request code 9999\n"},
        {ANDROID_LOG_INFO, "I [IMS6.0]: unsupported request code 9999\n"},
        {ANDROID_LOG_WARN, "W [IMS6.0]: unsupported request code 9999\n"},
        {ANDROID_LOG_ERROR, "E [IMS6.0]: unsupported request code 9999\n"},
        {ANDROID_LOG_FATAL, "F [IMS6.0]: unsupported request code 9999\n"},
        {ANDROID_LOG_DEFAULT, "? [IMS6.0]: unsupported request code 9999\n"},
        {42, "? [IMS6.0]: unsupported request code 9999\n"},
    };
    for (const Case& c : cases) {
        StderrCapture cap;
        errno = ECONNRESET;  // callers log, then look at errno themselves
        __android_log_print(c.prio, "[IMS6.0]", "unsupported request code %d", 9999);
        EXPECT_EQ(errno, ECONNRESET);
        EXPECT_EQ(cap.Finish(), c.expected) << "priority " << c.prio;
    }
}

TEST(Log, LongMessageIsOneTruncatedLine) {
    const std::string huge(3 * PIPE_BUF, 'x');
    StderrCapture cap;
    __android_log_print(ANDROID_LOG_ERROR, "tag", "%s|end", huge.c_str());
    __android_log_print(ANDROID_LOG_ERROR, "tag", "after");
    std::string out = cap.Finish();
    auto lines = Lines(out);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].size() + 1, static_cast<size_t>(PIPE_BUF));
    EXPECT_EQ(lines[0].substr(0, 10), "E tag: xxx");
    EXPECT_EQ(lines[0].find_first_not_of('x', 7), std::string::npos);
    EXPECT_EQ(lines[1], "E tag: after");
}

// Lines from several threads each arrive whole, none lost.
TEST(Log, ConcurrentLinesStayWhole) {
    constexpr int kThreads = 6;
    constexpr int kLines = 300;
    StderrCapture cap;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < kLines; ++i) {
                // Lengths vary up to near the line cap so writes overlap a lot.
                std::string filler(static_cast<size_t>((i * 997 + t * 131) % 3500),
                                   static_cast<char>('a' + t));
                __android_log_print(ANDROID_LOG_DEBUG, "thr", "%d %d %s.", t, i, filler.c_str());
            }
        });
    }
    for (auto& th : threads) th.join();
    auto lines = Lines(cap.Finish());

    ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kLines));
    std::set<std::pair<int, int>> seen;
    for (const std::string& line : lines) {
        int t = -1, i = -1, used = 0;
        ASSERT_EQ(sscanf(line.c_str(), "D thr: %d %d %n", &t, &i, &used), 2) << line.substr(0, 80);
        ASSERT_TRUE(t >= 0 && t < kThreads && i >= 0 && i < kLines) << line.substr(0, 80);
        std::string expected(static_cast<size_t>((i * 997 + t * 131) % 3500),
                             static_cast<char>('a' + t));
        ASSERT_EQ(line.substr(static_cast<size_t>(used)), expected + ".")
            << "mixed line from thread " << t;
        seen.emplace(t, i);
    }
    EXPECT_EQ(seen.size(), static_cast<size_t>(kThreads * kLines));
}

}  // namespace
