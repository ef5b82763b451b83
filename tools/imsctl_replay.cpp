// imsctl replay: plays the client's side of a captured session to a running
// velard (and, with --control, the stack's side too) and compares what comes
// back with what the capture holds.
//
// The capture is walked in its own order. A client request is sent as it
// was captured, token included, so the replayed session is the captured one
// byte for byte. A frame the daemon sent is waited for where the capture has
// it and compared then: a response with the response to the same request
// (by token, in order where a client reused one), a notification with the
// one of the same id and rank, since responses and notifications may
// overtake each other but notifications of one id keep their order. With a
// controller, each record the daemon hands the stack is compared with the
// captured one, and the captured answers and notifications are injected
// where the capture has them, each acknowledged before the walk goes on.
#include <errno.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <google/protobuf/util/message_differencer.h>

#include "framing.h"
#include "imsCommonStruc.pb.h"
#include "imsctl_common.h"
#include "imsctl_modes.h"
#include "pcapng.h"

namespace pb = google::protobuf;
namespace vf = velard_framing;
namespace cap = velard_pcapng;
using Json = nlohmann::json;

namespace imsctl {
namespace {

constexpr const char kUsage[] =
    "usage: imsctl replay CAPTURE --socket PATH [--control PATH] [--timeout-ms N]\n"
    "                     [--connect-ms N] [--linger-ms N]\n";
constexpr const char kHelp[] =
    "Sends the client's requests of a capture to a running velard, in order and\n"
    "as captured, and compares every frame that comes back with the capture's.\n"
    "Differences print on stdout; the exit status is 1 when there is any.\n"
    "  --socket PATH    velard's command socket\n"
    "  --control PATH   also play the simulated stack: listen at PATH for it (start\n"
    "                   velard-host with VELAR_SIM_CONTROL=PATH after this), check\n"
    "                   each record the daemon hands it against the capture, and\n"
    "                   answer and notify with the captured records\n"
    "  --timeout-ms N   the longest wait for any one frame or record (default 2000)\n"
    "  --connect-ms N   keep trying to connect for N ms (default 5000)\n"
    "  --linger-ms N    at the end, listen N ms for frames the capture lacks\n"
    "                   (default 200)\n"
    "  -h, --help       this text\n"
    "Exit status: 0 when all matched; 1 on a difference or a failure; 2 for bad\n"
    "arguments.\n";

struct Options {
    std::string capture, socketPath, controlPath;
    long timeoutMs = 2000, connectMs = 5000, lingerMs = 200;
};

Options ParseArgs(int argc, char** argv) {
    Options o;
    Args args(argc, argv, "imsctl replay", kUsage, kHelp);
    for (std::string a; args.Next(&a);) {
        if (a == "--socket")
            o.socketPath = args.Value();
        else if (a == "--control")
            o.controlPath = args.Value();
        else if (a == "--timeout-ms")
            o.timeoutMs = args.Ms();
        else if (a == "--connect-ms")
            o.connectMs = args.Ms();
        else if (a == "--linger-ms")
            o.lingerMs = args.Ms();
        else if (a.rfind("-", 0) == 0 || !o.capture.empty())
            args.Fail("unknown argument: " + a);
        else
            o.capture = a;
    }
    if (o.capture.empty()) args.Fail("which capture?");
    if (o.socketPath.empty()) args.Fail("--socket is required");
    return o;
}

// One step of the captured session.
struct Step {
    enum Type { kSend, kResponse, kNotify, kStackRequest, kStackAnswer } type;
    uint32_t token = 0;
    std::string payload;  // frames
    Json message;         // stack records: the control channel line
};

bool LoadSteps(const std::string& path, bool withStack, std::vector<Step>* steps, Output& out) {
    std::string data, why;
    if (!ReadInput(path, &data, &why)) {
        out.Error(why);
        return false;
    }
    cap::Capture c = cap::Parse(data);
    if (!c.stopped.empty()) out.Error(path + ": " + c.stopped);
    for (const cap::Packet& p : c.packets) {
        if (p.interface == cap::kInterfaceFrames && (p.flags & 3) == cap::kInbound) {
            vf::ClientRecordReader reader;
            reader.Append(p.bytes.data(), p.bytes.size());
            for (vf::ClientRecord r; reader.Next(&r) == vf::ReadResult::kFrame;)
                steps->push_back({Step::kSend, r.token, r.payload, {}});
        } else if (p.interface == cap::kInterfaceFrames) {
            vf::DaemonFrameReader reader;
            reader.Append(p.bytes.data(), p.bytes.size());
            for (vf::DaemonFrame f; reader.Next(&f) == vf::ReadResult::kFrame;) {
                if (f.type == vf::kTypeResponse || f.type == vf::kTypeNotify)
                    steps->push_back({f.type == vf::kTypeResponse ? Step::kResponse : Step::kNotify,
                                      f.token,
                                      f.payload,
                                      {}});
            }
        } else if (p.interface == cap::kInterfaceStack && withStack) {
            Json j = Json::parse(p.bytes, nullptr, false);
            std::string type = j.is_object() ? j.value("type", "") : "";
            if (type == "request")
                steps->push_back({Step::kStackRequest, j.value("token", 0u), {}, j});
            else if (type == "response" || type == "notify")
                steps->push_back({Step::kStackAnswer, 0, {}, j});
            else
                out.Error(path + ": stack record skipped: " + p.bytes.substr(0, 80));
        }
    }
    return true;
}

// Paths where two JSON values differ, one line each.
void JsonDiff(const Json& want, const Json& got, const std::string& path,
              std::vector<std::string>* lines) {
    if (want.is_object() && got.is_object()) {
        for (auto it = want.begin(); it != want.end(); ++it) {
            std::string p = path + "." + it.key();
            if (!got.contains(it.key()))
                lines->push_back("deleted: " + p + ": " + it->dump());
            else
                JsonDiff(*it, got[it.key()], p, lines);
        }
        for (auto it = got.begin(); it != got.end(); ++it)
            if (!want.contains(it.key()))
                lines->push_back("added: " + path + "." + it.key() + ": " + it->dump());
    } else if (want.is_array() && got.is_array() && want.size() == got.size()) {
        for (size_t i = 0; i < want.size(); ++i)
            JsonDiff(want[i], got[i], path + "[" + std::to_string(i) + "]", lines);
    } else if (want != got) {
        lines->push_back("modified: " + path + ": " + want.dump() + " -> " + got.dump());
    }
}

class Replay {
public:
    Replay(const Options& opt, Output& out) : mOpt(opt), mOut(out) {}

    int Run(const std::vector<Step>& steps);

private:
    using Clock = std::chrono::steady_clock;

    void Difference(const std::string& what, const std::string& detail = "") {
        ++mDifferences;
        mOut.Line("- " + what + (detail.empty() ? "" : "\n    " + detail));
    }
    std::string Describe(Kind kind, const std::string& payload) {
        std::string json, error, warning;
        if (!mCodec.ToJson(kind, payload, &json, &error, &warning)) return "(" + error + ")";
        return json;
    }
    void CompareFrames(Kind kind, const std::string& what, const std::string& want,
                       const std::string& got);
    // Waits until pred holds (under mMutex) or the timeout passes.
    template <class Pred>
    bool WaitFor(std::unique_lock<std::mutex>& lock, Pred pred) {
        return mCond.wait_for(lock, std::chrono::milliseconds(mOpt.timeoutMs), pred);
    }
    void ReadDaemon();
    void ReadControl();
    bool OpenControl();
    bool AcceptControl();
    void Play(const imsctl::Step& s, size_t index);

    const Options& mOpt;
    Output& mOut;
    Codec mCodec;
    int mDaemonFd = -1, mListenFd = -1, mControlFd = -1;
    std::atomic<int> mDifferences{0};
    size_t mSent = 0, mCompared = 0;

    std::mutex mMutex;
    std::condition_variable mCond;
    bool mDaemonGone = false, mControlGone = false;
    // What came back, not yet matched against the capture.
    std::map<uint32_t, std::deque<std::string>> mResponses;
    std::map<int, std::vector<std::string>> mNotifications;  // by id, all
    std::deque<Json> mStackRequests;
    std::map<long, std::string> mAcks;  // seq -> "" for done, else the error
    // How far the capture's frames have been matched.
    std::map<int, size_t> mNotificationsMatched;
};

void Replay::CompareFrames(Kind kind, const std::string& what, const std::string& want,
                           const std::string& got) {
    ++mCompared;
    if (want == got) return;
    std::unique_ptr<pb::Message> a = mCodec.Parse(kind, want), b = mCodec.Parse(kind, got);
    std::string report;
    if (a && b) {
        pb::util::MessageDifferencer differ;
        differ.ReportDifferencesToString(&report);
        // Field by field is what matters; equal messages may still be
        // serialised differently (unknown fields, order).
        if (differ.Compare(*a, *b)) return;
        while (!report.empty() && report.back() == '\n') report.pop_back();
        for (size_t at = 0; (at = report.find('\n', at)) != std::string::npos; at += 5)
            report.replace(at, 1, "\n    ");
    } else {
        report = "captured " + Describe(kind, want) + "\n    got " + Describe(kind, got);
    }
    Difference(what + " differs:", report);
}

void Replay::ReadDaemon() {
    vf::DaemonFrameReader reader;
    char buf[65536];
    for (;;) {
        ssize_t n = read(mDaemonFd, buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        reader.Append(buf, static_cast<size_t>(n));
        std::lock_guard<std::mutex> lock(mMutex);
        for (vf::DaemonFrame f; reader.Next(&f) == vf::ReadResult::kFrame;) {
            if (f.type == vf::kTypeResponse) {
                mResponses[f.token].push_back(f.payload);
            } else if (f.type == vf::kTypeNotify) {
                mNotifications[RawId(f.payload)].push_back(f.payload);
            } else {
                ++mDifferences;
                mOut.Line("- frame of unknown type " + std::to_string(f.type) + ": " +
                          Hex(f.payload));
            }
        }
        mCond.notify_all();
    }
    std::lock_guard<std::mutex> lock(mMutex);
    mDaemonGone = true;
    mCond.notify_all();
}

void Replay::ReadControl() {
    std::string buffered;
    char buf[65536];
    for (;;) {
        ssize_t n = read(mControlFd, buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        buffered.append(buf, static_cast<size_t>(n));
        std::lock_guard<std::mutex> lock(mMutex);
        for (size_t nl; (nl = buffered.find('\n')) != std::string::npos;) {
            Json j = Json::parse(buffered.substr(0, nl), nullptr, false);
            buffered.erase(0, nl + 1);
            std::string type = j.is_object() ? j.value("type", "") : "";
            if (type == "request")
                mStackRequests.push_back(j);
            else if (type == "done" || type == "error")
                mAcks[j.value("seq", -1L)] = type == "done" ? "" : j.value("message", "error");
        }
        mCond.notify_all();
    }
    std::lock_guard<std::mutex> lock(mMutex);
    mControlGone = true;
    mCond.notify_all();
}

bool Replay::OpenControl() {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (mOpt.controlPath.size() >= sizeof addr.sun_path) {
        mOut.Error("control path too long: " + mOpt.controlPath);
        return false;
    }
    memcpy(addr.sun_path, mOpt.controlPath.c_str(), mOpt.controlPath.size() + 1);
    unlink(mOpt.controlPath.c_str());
    mListenFd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (mListenFd < 0 || bind(mListenFd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        listen(mListenFd, 1) != 0) {
        mOut.Error("cannot listen at " + mOpt.controlPath + ": " + strerror(errno));
        return false;
    }
    return true;
}

// The simulated stack connects while the daemon starts, before the daemon
// listens on its own socket; by the time the client is connected, it waits
// in the backlog.
bool Replay::AcceptControl() {
    pollfd p{mListenFd, POLLIN, 0};
    if (poll(&p, 1, static_cast<int>(mOpt.timeoutMs)) != 1 ||
        (mControlFd = accept4(mListenFd, nullptr, nullptr, SOCK_CLOEXEC)) < 0) {
        mOut.Error("the simulated stack did not connect at " + mOpt.controlPath +
                   " (was velard-host started with VELAR_SIM_CONTROL=" + mOpt.controlPath + "?)");
        return false;
    }
    return true;
}

void Replay::Play(const imsctl::Step& s, size_t index) {
    std::unique_lock<std::mutex> lock(mMutex);
    switch (s.type) {
        case Step::kSend: {
            lock.unlock();
            if (!vf::WriteAll(mDaemonFd, vf::EncodeClientRecord(s.token, s.payload))) {
                Difference("request with token " + std::to_string(s.token) +
                           " could not be sent: " + strerror(errno));
            }
            ++mSent;
            return;
        }
        case Step::kResponse: {
            std::string what = "response to token " + std::to_string(s.token);
            what += " (" + IdName(RawId(s.payload)) + ")";
            // Answers to one token are matched in the order they came.
            if (!WaitFor(lock, [&] { return mResponses[s.token].size() > 0 || mDaemonGone; }) ||
                mResponses[s.token].empty()) {
                Difference(what + " did not come",
                           "captured " + Describe(Kind::kResponse, s.payload));
                return;
            }
            std::string got = mResponses[s.token].front();
            mResponses[s.token].pop_front();
            lock.unlock();
            CompareFrames(Kind::kResponse, what, s.payload, got);
            return;
        }
        case Step::kNotify: {
            const int id = RawId(s.payload);
            size_t rank = mNotificationsMatched[id]++;
            std::string what = "notification " + IdName(id) + " #" + std::to_string(rank + 1);
            if (!WaitFor(lock, [&] { return mNotifications[id].size() > rank || mDaemonGone; }) ||
                mNotifications[id].size() <= rank) {
                Difference(what + " did not come",
                           "captured " + Describe(Kind::kNotify, s.payload));
                return;
            }
            std::string got = mNotifications[id][rank];
            lock.unlock();
            CompareFrames(Kind::kNotify, what, s.payload, got);
            return;
        }
        case Step::kStackRequest: {
            std::string what = "stack record for token " + std::to_string(s.token) + " (" +
                               s.message["record"].value("class", "?") + ")";
            if (!WaitFor(lock, [&] { return !mStackRequests.empty() || mControlGone; }) ||
                mStackRequests.empty()) {
                Difference(what + " was not handed to the stack", "captured " + s.message.dump());
                return;
            }
            Json got = mStackRequests.front();
            mStackRequests.pop_front();
            lock.unlock();
            ++mCompared;
            std::vector<std::string> lines;
            JsonDiff(s.message, got, "", &lines);
            if (!lines.empty()) {
                std::string detail;
                for (const auto& l : lines) detail += (detail.empty() ? "" : "\n    ") + l;
                Difference(what + " differs:", detail);
            }
            return;
        }
        case Step::kStackAnswer: {
            Json j = s.message;
            const long seq = static_cast<long>(index);
            j["seq"] = seq;
            lock.unlock();
            std::string line = j.dump() + "\n";
            if (!vf::WriteAll(mControlFd, line)) {
                Difference("the simulated stack went away before " + s.message.dump());
                return;
            }
            lock.lock();
            // Acknowledged once the daemon's callback has returned, so any
            // frame it sent is on the socket before the next step.
            if (!WaitFor(lock, [&] { return mAcks.count(seq) > 0 || mControlGone; }) ||
                mAcks.count(seq) == 0) {
                Difference("the simulated stack did not acknowledge " + s.message.dump());
            } else if (!mAcks[seq].empty()) {
                Difference("the simulated stack refused " + s.message.dump(), mAcks[seq]);
            }
            return;
        }
    }
}

int Replay::Run(const std::vector<imsctl::Step>& steps) {
    const bool control = !mOpt.controlPath.empty();
    if (control && !OpenControl()) return 1;
    mDaemonFd = Connect(mOpt.socketPath, mOpt.connectMs, mOut);
    if (mDaemonFd < 0 || (control && !AcceptControl())) return 1;
    std::thread daemonReader(&Replay::ReadDaemon, this);
    std::thread controlReader;
    if (control) controlReader = std::thread(&Replay::ReadControl, this);

    for (size_t i = 0; i < steps.size(); ++i) Play(steps[i], i);

    // Whatever else comes is more than the capture had.
    std::this_thread::sleep_for(std::chrono::milliseconds(mOpt.lingerMs));
    {
        std::lock_guard<std::mutex> lock(mMutex);
        for (const auto& [token, left] : mResponses)
            for (const std::string& p : left)
                Difference("response to token " + std::to_string(token) + " not in the capture",
                           "got " + Describe(Kind::kResponse, p));
        for (const auto& [id, all] : mNotifications)
            for (size_t k = mNotificationsMatched[id]; k < all.size(); ++k)
                Difference("notification " + IdName(id) + " #" + std::to_string(k + 1) +
                               " not in the capture",
                           "got " + Describe(Kind::kNotify, all[k]));
        for (const Json& r : mStackRequests)
            Difference("stack record not in the capture", "got " + r.dump());
    }

    shutdown(mDaemonFd, SHUT_RDWR);
    daemonReader.join();
    close(mDaemonFd);
    if (control) {
        shutdown(mControlFd, SHUT_RDWR);
        controlReader.join();
        close(mControlFd);
        close(mListenFd);
        unlink(mOpt.controlPath.c_str());
    }
    mOut.Error("replay: " + std::to_string(mSent) + " requests sent, " + std::to_string(mCompared) +
               " frames and records compared, " + std::to_string(mDifferences) + " difference(s)");
    return mDifferences == 0 ? 0 : 1;
}

}  // namespace

int ReplayMain(int argc, char** argv) {
    Options opt = ParseArgs(argc, argv);
    Output out;
    std::vector<imsctl::Step> steps;
    if (!LoadSteps(opt.capture, !opt.controlPath.empty(), &steps, out)) return 1;
    if (std::none_of(steps.begin(), steps.end(),
                     [](const imsctl::Step& s) { return s.type == Step::kSend; })) {
        out.Error(opt.capture + ": no client requests to replay");
        return 1;
    }
    Replay replay(opt, out);
    return replay.Run(steps);
}

}  // namespace imsctl
