// Load from every side at once: the client sends requests while stack
// threads answer them and notify, with a client that reads fast or slowly.
// Every frame must arrive whole and exactly once, and every request must
// reach the stack exactly once. Bounded in count; nothing is timed.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/e2e.h"

using namespace velard_test;

namespace {

constexpr uint32_t kHandleBase = 5000;

// Long enough that a few hundred answers overflow the socket's buffer, and
// different for every token, so that a torn or mixed-up frame shows.
std::string errorTextFor(uint32_t token) {
    std::string s = "answer-" + std::to_string(token) + ":";
    while (s.size() < 3000) s += static_cast<char>('a' + (token + s.size()) % 26);
    return s;
}

// "response <token>" for the whole answer to its own request, "notify
// <value>" for a whole notification; anything else is a fault.
std::string describe(const Frame& f) {
    if (f.type == 1) {
        imsCommonStruc::Response r;
        if (r.ParseFromString(f.payload) && r.resid() == 103 &&
            r.generalresponse().handle() == f.token + kHandleBase &&
            r.generalresponse().errorstr() == errorTextFor(f.token))
            return "response " + std::to_string(f.token);
    } else if (f.type == 2) {
        imsCommonStruc::Notify n;
        if (f.token == 0 && n.ParseFromString(f.payload) && n.notifyid() == 20002)
            return "notify " + std::to_string(n.cancelalarm().id());
    }
    return "fault: frame of type " + std::to_string(f.type) + ", token " + std::to_string(f.token);
}

std::vector<std::string> sorted(std::vector<std::string> v) {
    std::sort(v.begin(), v.end());
    return v;
}

}  // namespace

TEST(Stress, AnswersAndNotificationsFromManyThreadsArriveWholeAndOnce) {
    struct Case {
        const char* name;
        int requests;
        int batch;       // requests answered by one burst
        int threads;     // notifying stack threads per burst
        int perThread;   // notifications per thread per burst
        int pauseEvery;  // the client stops reading after this many frames...
        int pauseMs;     // ...for this long (0: reads as fast as it can)
    } cases[] = {
        {"client reads at once", 400, 40, 4, 25, 0, 0},
        // Pauses long enough for the socket to fill: stack threads then wait
        // in the daemon's write while others queue behind its lock.
        {"client slow to read", 400, 40, 4, 25, 60, 30},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Daemon d;
        const int bursts = c.requests / c.batch;
        std::vector<std::string> wantFrames, wantRequests;
        for (int i = 0; i < c.requests; i++) {
            wantFrames.push_back("response " + std::to_string(i));
            wantRequests.push_back("request " + std::to_string(i));
        }
        for (int b = 1; b <= bursts; b++)
            wantFrames.insert(wantFrames.end(), c.threads * c.perThread,
                              "notify " + std::to_string(b));

        std::vector<std::string> frames;
        std::thread reader([&] {
            for (size_t i = 0; i < wantFrames.size(); i++) {
                if (c.pauseMs > 0 && i > 0 && i % c.pauseEvery == 0)
                    std::this_thread::sleep_for(std::chrono::milliseconds(c.pauseMs));
                try {
                    frames.push_back(describe(d.nextFrame(20000)));
                } catch (const std::exception& e) {
                    frames.push_back(std::string("fault: ") + e.what());
                    return;
                }
            }
        });
        std::thread writer([&] {
            for (int i = 0; i < c.requests; i++)
                d.send(uaDeletionRequest(kHandleBase + i), static_cast<uint32_t>(i));
        });

        // The stack's side: take the requests as they come, and answer each
        // batch from one stack thread while others notify.
        std::vector<std::string> requests;
        try {
            for (int b = 1; b <= bursts; b++) {
                Json responses = Json::array();
                for (int i = 0; i < c.batch; i++) {
                    Json req = d.nextStackRequest(20000);
                    uint32_t token = req["token"].get<uint32_t>();
                    requests.push_back("request " + std::to_string(token));
                    EXPECT_EQ(req["record"]["args"][0].get<uint32_t>(), token + kHandleBase);
                    Json fields = {{"handle", token + kHandleBase},
                                   {"errorStr", errorTextFor(token)}};
                    responses.push_back(
                        {{"token", token},
                         {"record",
                          {{"class", "GeneralResponseData"}, {"id", 103}, {"fields", fields}}}});
                }
                Json answer = d.control({{"type", "burst"},
                                         {"record", cancelAlarmRecord(b)},
                                         {"threads", c.threads},
                                         {"count", c.perThread},
                                         {"responses", responses}});
                if (answer.value("type", "") != "done") {
                    ADD_FAILURE() << answer.dump();  // the reader then waits in vain, and says so
                    break;
                }
            }
        } catch (const std::exception& e) {
            ADD_FAILURE() << "stack side: " << e.what();
        }
        writer.join();
        reader.join();

        EXPECT_EQ(sorted(requests), sorted(wantRequests));
        EXPECT_EQ(sorted(frames), sorted(wantFrames));
        // Nothing more: no duplicate is still on its way.
        EXPECT_TRUE(d.expectNoFrame(100));
        EXPECT_TRUE(d.expectNoStackRequest(50));
    }
}
