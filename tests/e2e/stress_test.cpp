// Load from every side at once: the client sends requests while stack
// threads answer them and notify, with a client that reads fast or slowly.
// Every frame must arrive whole and exactly once, and every request must
// reach the stack exactly once. Bounded in count; nothing is timed.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/e2e.h"

using namespace velard_test;

namespace {

constexpr uint32_t kHandleBase = 5000;

imsCommonStruc::Request uaDeletion(uint32_t handle) {
    imsCommonStruc::Request r;
    r.set_reqid(imsCommonStruc::Id(103));
    r.mutable_requestuadeletion()->set_handle(handle);
    return r;
}

// Long enough that a few hundred answers overflow the socket's buffer, and
// different for every token, so that a torn or mixed-up frame shows.
std::string errorTextFor(uint32_t token) {
    std::string s = "answer-" + std::to_string(token) + ":";
    while (s.size() < 3000) s += static_cast<char>('a' + (token + s.size()) % 26);
    return s;
}

Json cancelAlarm(int value) {
    return Json{{"class", "PrimitiveData<int>"}, {"id", 20002}, {"fields", {{"value", value}}}};
}

struct Load {
    int requests;
    int batch;       // requests answered by one burst
    int threads;     // notifying stack threads per burst
    int perThread;   // notifications per thread per burst
    int pauseEvery;  // the client stops reading after this many frames...
    int pauseMs;     // ...for this long (0: reads as fast as it can)
};

// What the client saw, checked frame by frame as it arrived.
struct Seen {
    std::map<uint32_t, int> responses;  // token -> count
    std::map<int, int> notifications;   // burst value -> count
    std::vector<std::string> faults;
};

void readAll(Daemon& d, const Load& load, int expectedFrames, Seen& seen) {
    for (int i = 0; i < expectedFrames; i++) {
        if (load.pauseMs > 0 && i > 0 && i % load.pauseEvery == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(load.pauseMs));
        Frame f;
        try {
            f = d.nextFrame(20000);
        } catch (const std::exception& e) {
            seen.faults.push_back(std::string("frame ") + std::to_string(i) + ": " + e.what());
            return;
        }
        if (f.length != f.payload.size() + 8) seen.faults.push_back("length word off");
        if (f.type == 1) {
            imsCommonStruc::Response r;
            if (!r.ParseFromString(f.payload) || r.resid() != 103 ||
                r.generalresponse().handle() != f.token + kHandleBase ||
                r.generalresponse().errorstr() != errorTextFor(f.token)) {
                seen.faults.push_back("response to token " + std::to_string(f.token) +
                                      " is not its own");
                continue;
            }
            seen.responses[f.token]++;
        } else if (f.type == 2) {
            imsCommonStruc::Notify n;
            if (f.token != 0 || !n.ParseFromString(f.payload) || n.notifyid() != 20002) {
                seen.faults.push_back("malformed notification");
                continue;
            }
            seen.notifications[static_cast<int>(n.cancelalarm().id())]++;
        } else {
            seen.faults.push_back("frame of type " + std::to_string(f.type));
        }
    }
}

}  // namespace

TEST(Stress, AnswersAndNotificationsFromManyThreadsArriveWholeAndOnce) {
    struct Case {
        const char* name;
        Load load;
    } cases[] = {
        {"client reads at once", {400, 40, 4, 25, 0, 0}},
        // Pauses long enough for the socket to fill: stack threads then wait
        // in the daemon's write while others queue behind its lock.
        {"client slow to read", {400, 40, 4, 25, 60, 30}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Load& load = c.load;
        Daemon d;
        const int bursts = load.requests / load.batch;
        const int perBurst = load.threads * load.perThread;
        const int expectedFrames = load.requests + bursts * perBurst;

        Seen seen;
        std::thread reader([&] { readAll(d, load, expectedFrames, seen); });
        std::thread writer([&] {
            for (int i = 0; i < load.requests; i++)
                d.send(uaDeletion(kHandleBase + static_cast<uint32_t>(i)),
                       static_cast<uint32_t>(i));
        });

        // The stack's side: take the requests as they come, and answer each
        // batch from one stack thread while others notify.
        std::map<uint32_t, int> reachedStack;
        int answered = 0;
        try {
            for (int b = 0; b < bursts; b++) {
                Json responses = Json::array();
                for (int i = 0; i < load.batch; i++) {
                    Json req = d.nextStackRequest(20000);
                    uint32_t token = req["token"].get<uint32_t>();
                    reachedStack[token]++;
                    EXPECT_EQ(req["record"]["args"][0].get<uint32_t>(), token + kHandleBase);
                    Json fields = {{"handle", token + kHandleBase},
                                   {"errorStr", errorTextFor(token)}};
                    responses.push_back(
                        {{"token", token},
                         {"record",
                          {{"class", "GeneralResponseData"}, {"id", 103}, {"fields", fields}}}});
                }
                Json answer = d.control({{"type", "burst"},
                                         {"record", cancelAlarm(b + 1)},
                                         {"threads", load.threads},
                                         {"count", load.perThread},
                                         {"responses", responses}});
                if (answer.value("type", "") != "done") {
                    ADD_FAILURE() << answer.dump();
                    break;
                }
                answered += load.batch;
            }
        } catch (const std::exception& e) {
            ADD_FAILURE() << "stack side: " << e.what();
        }
        writer.join();
        reader.join();

        EXPECT_TRUE(seen.faults.empty())
            << seen.faults.size()
            << " faults, first: " << (seen.faults.empty() ? "" : seen.faults.front());
        EXPECT_EQ(answered, load.requests);
        EXPECT_EQ(reachedStack.size(), static_cast<size_t>(load.requests));
        EXPECT_EQ(seen.responses.size(), static_cast<size_t>(load.requests));
        for (const auto& [token, n] : reachedStack) EXPECT_EQ(n, 1) << "request " << token;
        for (const auto& [token, n] : seen.responses) EXPECT_EQ(n, 1) << "response " << token;
        EXPECT_EQ(seen.notifications.size(), static_cast<size_t>(bursts));
        for (const auto& [value, n] : seen.notifications)
            EXPECT_EQ(n, perBurst) << "burst " << value;
        // Nothing more: no duplicate is still on its way.
        EXPECT_TRUE(d.expectNoFrame(100));
        EXPECT_TRUE(d.expectNoStackRequest(50));
    }
}
