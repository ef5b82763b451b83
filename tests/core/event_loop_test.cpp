// The event loop's table, read set and firing rules, driven one round at a
// time on the test's thread.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "core/ims_core.h"
#include "tests/support/in_process.h"

namespace {

struct Pipe {
    int r = -1, w = -1;
    Pipe() {
        int fds[2];
        EXPECT_EQ(pipe(fds), 0);
        r = fds[0];
        w = fds[1];
    }
    ~Pipe() {
        close(r);
        close(w);
    }
    void poke() { EXPECT_EQ(write(w, "x", 1), 1); }
};

std::vector<int> g_fired;
imsEvent* g_self = nullptr;
int g_indexSeen = 0;
bool g_watchedSeen = true;

void record(int fd, short, void*) {
    g_fired.push_back(fd);
}
void recordAndInspect(int fd, short, void*) {
    g_fired.push_back(fd);
    g_indexSeen = g_self->index;
    g_watchedSeen = ImsEventIsWatched(fd);
}
void deleteSelf(int fd, short, void*) {
    g_fired.push_back(fd);
    ImsEventDel(g_self);
}

// Sets ev up on fd and adds it to the table.
void watch(imsEvent& ev, int fd, bool persist = true, void (*func)(int, short, void*) = record) {
    ImsEventSet(&ev, fd, persist, func, nullptr);
    ImsEventAdd(&ev);
}

class EventLoop : public ::testing::Test {
protected:
    void SetUp() override {
        ImsEventInit();
        ImsEventSetLoopThread(pthread_self());
        g_fired.clear();
    }
};

}  // namespace

TEST_F(EventLoop, TableHoldsEightAndSilentlyDropsTheNinth) {
    std::vector<Pipe> pipes(9);
    std::vector<imsEvent> events(9);
    for (int i = 0; i < 9; i++) watch(events[i], pipes[i].r);
    for (int i = 0; i < 8; i++) EXPECT_EQ(events[i].index, i);
    EXPECT_EQ(events[8].index, -1);
    EXPECT_FALSE(ImsEventIsWatched(pipes[8].r));
    pipes[8].poke();
    EXPECT_EQ(ImsEventLoopOnce(0), 0);
}

TEST_F(EventLoop, NfdsFollowsTheHighestDescriptor) {
    Pipe a, b;
    imsEvent low, high;
    int lo = std::min(a.r, b.r), hi = std::max(a.r, b.r);
    watch(low, lo);
    watch(high, hi);
    EXPECT_EQ(ImsEventNfds(), hi + 1);
    ImsEventDel(&low);  // not the highest: unchanged
    EXPECT_EQ(ImsEventNfds(), hi + 1);
    ImsEventAdd(&low);
    ImsEventDel(&high);  // the highest: recomputed
    EXPECT_EQ(ImsEventNfds(), lo + 1);
    ImsEventDel(&low);
    EXPECT_EQ(ImsEventNfds(), 1);  // empty table
    ImsEventDel(&low);             // not in the table: left alone
    EXPECT_EQ(low.index, -1);
}

// A one-shot event is out of the table by the time its callback runs; a
// persistent one that deletes itself from its callback stops at once.
TEST_F(EventLoop, EventsOutOfTheTableFireNoMore) {
    for (bool persist : {false, true}) {
        SCOPED_TRACE(persist ? "persistent, deletes itself" : "one-shot");
        g_fired.clear();
        Pipe p;
        imsEvent ev;
        g_self = &ev;
        g_indexSeen = 0;
        g_watchedSeen = true;
        watch(ev, p.r, persist, persist ? deleteSelf : recordAndInspect);
        p.poke();
        EXPECT_EQ(ImsEventLoopOnce(1000), 1);
        EXPECT_EQ(g_fired, std::vector<int>{p.r});
        if (!persist) {
            EXPECT_EQ(g_indexSeen, -1);
            EXPECT_FALSE(g_watchedSeen);
        }
        EXPECT_EQ(ImsEventLoopOnce(0), 0);  // still readable, no longer watched
    }
}

TEST_F(EventLoop, ReadyEventsFireInSlotOrderNotDescriptorOrder) {
    Pipe a, b;
    int first = std::max(a.r, b.r), second = std::min(a.r, b.r);
    imsEvent e1, e2;
    watch(e1, first);
    watch(e2, second);
    a.poke();
    b.poke();
    ImsEventLoopOnce(1000);
    EXPECT_EQ(g_fired, (std::vector<int>{first, second}));
}

TEST_F(EventLoop, DescriptorsBeyondTheReadSetAreNeverWatched) {
    Pipe p;
    int big = dup2(p.r, 1500);
    ASSERT_EQ(big, 1500);
    imsEvent ev;
    int before = ImsEventNfds();
    watch(ev, big);
    EXPECT_EQ(ev.index, -1);
    EXPECT_EQ(ImsEventNfds(), before);
    close(big);
}

TEST_F(EventLoop, WakeupsCoalesceAndTheLoopThreadNeverWritesToItself) {
    ASSERT_EQ(ImsWakeupPipeInit(), 0);
    // From the loop thread: nothing is written.
    TriggerWakeup();
    EXPECT_EQ(ImsEventLoopOnce(0), 0);
    // Ten from another thread while the loop is busy: one firing drains all.
    std::thread other([] {
        for (int i = 0; i < 10; i++) TriggerWakeup();
    });
    other.join();
    velard_test::LogCapture log;
    EXPECT_EQ(ImsEventLoopOnce(1000), 1);
    auto lines = log.lines();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& l) {
                                return l.find("ProcessWakeupCallback") != std::string::npos;
                            }),
              1);
    EXPECT_EQ(ImsEventLoopOnce(0), 0);
}
