#include <android/log.h>

#include <errno.h>
#include <limits.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/stderr_capture.h"

namespace {

using velard_test::splitLines;
using velard_test::StderrCapture;

TEST(Log, LineFormatPerPriority) {
    const std::pair<int, char> cases[] = {
        {ANDROID_LOG_VERBOSE, 'V'}, {ANDROID_LOG_DEBUG, 'D'},
        {ANDROID_LOG_INFO, 'I'},    {ANDROID_LOG_WARN, 'W'},
        {ANDROID_LOG_ERROR, 'E'},   {ANDROID_LOG_FATAL, 'F'},
        {ANDROID_LOG_DEFAULT, '?'}, {42, '?'},
    };
    for (const auto& [prio, letter] : cases) {
        StderrCapture cap;
        errno = ECONNRESET;  // callers log, then look at errno themselves
        __android_log_print(prio, "[IMS6.0]", "unsupported request code %d", 9999);
        EXPECT_EQ(errno, ECONNRESET);
        EXPECT_EQ(cap.finish(), letter + std::string(" [IMS6.0]: unsupported request code 9999\n"))
            << "priority " << prio;
    }
}

TEST(Log, LongMessageIsOneTruncatedLine) {
    const std::string huge(3 * PIPE_BUF, 'x');
    StderrCapture cap;
    __android_log_print(ANDROID_LOG_ERROR, "tag", "%s|end", huge.c_str());
    __android_log_print(ANDROID_LOG_ERROR, "tag", "after");
    auto lines = splitLines(cap.finish());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "E tag: " + std::string(PIPE_BUF - 8, 'x'));
    EXPECT_EQ(lines[1], "E tag: after");
}

// Lines from several threads each arrive whole, none lost.
TEST(Log, ConcurrentLinesStayWhole) {
    constexpr int kThreads = 6, kLines = 300;
    // Lengths vary up to near the line cap so writes overlap a lot.
    auto filler = [](int t, int i) {
        return std::string(static_cast<size_t>((i * 997 + t * 131) % 3500),
                           static_cast<char>('a' + t));
    };
    StderrCapture cap;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &filler] {
            for (int i = 0; i < kLines; ++i)
                __android_log_print(ANDROID_LOG_DEBUG, "thr", "%d %d %s.", t, i,
                                    filler(t, i).c_str());
        });
    }
    for (auto& th : threads) th.join();
    auto lines = splitLines(cap.finish());

    ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kLines));
    std::set<std::pair<int, int>> seen;
    for (const std::string& line : lines) {
        int t = -1, i = -1, used = 0;
        ASSERT_EQ(sscanf(line.c_str(), "D thr: %d %d %n", &t, &i, &used), 2) << line.substr(0, 80);
        ASSERT_TRUE(t >= 0 && t < kThreads && i >= 0 && i < kLines) << line.substr(0, 80);
        ASSERT_EQ(line.substr(static_cast<size_t>(used)), filler(t, i) + ".")
            << "mixed line from thread " << t;
        seen.emplace(t, i);
    }
    EXPECT_EQ(seen.size(), static_cast<size_t>(kThreads * kLines));
}

}  // namespace
