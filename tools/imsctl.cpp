// imsctl: a command-line client of velard's command socket.
//
//   imsctl --socket PATH [options] < requests     a live session
//   imsctl decode [HEX | FILE ...]                frames or a capture to JSON
//   imsctl replay CAPTURE --socket PATH           a captured session again
//
// A live session reads requests from stdin, one JSON object per line in the
// protocol buffer JSON mapping of imsCommonStruc.Request, plus an optional
// "token". Each is framed, sent, and then echoed to stdout; every frame from
// the daemon is printed as it arrives. All stdout lines are JSON:
//
//   {"frame":"request","token":1,"message":{...}}
//   {"frame":"response","token":1,"message":{...}}
//   {"frame":"notify","token":0,"message":{...}}
//
// A line {"sleep_ms":N} pauses the script; blank lines and lines starting
// with '#' are skipped. Once stdin ends imsctl waits until every request
// that the daemon answers has its answer, then closes the connection, which
// ends the daemon.
//
// Nothing here knows individual messages: any request the schema can
// express goes through, and every response and notification prints.
#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <thread>

#include "framing.h"
#include "imsCommonStruc.pb.h"
#include "imsctl_common.h"
#include "imsctl_modes.h"

namespace pb = google::protobuf;
namespace vf = velard_framing;
using namespace imsctl;

namespace {

struct Options {
    std::string socketPath;
    long timeoutMs = 5000;
    long lingerMs = 0;
    long connectMs = 1000;
    bool compact = false;
    unsigned shown = ~0u;
};

constexpr const char kUsage[] =
    "usage: imsctl --socket PATH [--timeout-ms N] [--linger-ms N] [--connect-ms N]\n"
    "              [--only KINDS] [--compact] < requests\n"
    "       imsctl decode ...   (imsctl decode --help)\n"
    "       imsctl replay ...   (imsctl replay --help)\n";

constexpr const char kHelp[] =
    "Sends imsCommonStruc.Request objects (JSON, one per line, optional \"token\")\n"
    "from stdin to velard and prints every frame as one JSON line.\n"
    "  --socket PATH    velard's command socket\n"
    "  --timeout-ms N   once stdin ends, wait at most N ms for outstanding answers\n"
    "                   (default 5000); requests the daemon never answers are not\n"
    "                   waited for\n"
    "  --linger-ms N    then keep listening N ms for notifications (default 0)\n"
    "  --wait-ms N      older name of --linger-ms\n"
    "  --connect-ms N   keep trying to connect for N ms (default 1000)\n"
    "  --only KINDS     print only these frames: request, response, notify,\n"
    "                   comma separated\n"
    "  --compact        one short line per frame instead of JSON\n"
    "  -h, --help       this text\n"
    "Exit status: 0; 1 when an input line was rejected, an answer did not come\n"
    "or the connection failed; 2 for bad arguments.\n"
    "decode prints frames given in hex, or a whole capture, as these lines;\n"
    "replay sends a captured session again and compares what comes back.\n";

Options ParseArgs(int argc, char** argv) {
    Options o;
    Args args(argc, argv, "imsctl", kUsage, kHelp);
    for (std::string a; args.Next(&a);) {
        if (a == "--compact") {
            o.compact = true;
        } else if (a == "--socket") {
            o.socketPath = args.Value();
        } else if (a == "--timeout-ms") {
            o.timeoutMs = args.Ms();
        } else if (a == "--linger-ms" || a == "--wait-ms") {
            o.lingerMs = args.Ms();
        } else if (a == "--connect-ms") {
            o.connectMs = args.Ms();
        } else if (a == "--only") {
            std::string why;
            o.shown = ParseKinds(args.Value(), &why);
            if (!why.empty()) args.Fail(why);
        } else {
            args.Fail("unknown argument: " + a);
        }
    }
    if (o.socketPath.empty()) args.Fail("--socket is required");
    return o;
}

// Shared between the input loop and the reader thread.
struct Session {
    int fd = -1;
    std::mutex mutex;
    std::condition_variable cond;
    bool connectionClosed = false;  // by the daemon, or unreadable
    std::atomic<bool> stopping{false};
    // Held while a request is written and echoed, so that its answer never
    // prints before it.
    std::mutex sendMutex;
    // Tokens of the requests sent that are still owed an answer, with how
    // many (a client may reuse a token), and the id of the last one.
    std::map<uint32_t, std::pair<int, int>> owed;
};

void ReadFrames(Session& s, FramePrinter& printer, Output& out) {
    vf::DaemonFrameReader reader;
    char buf[65536];
    std::string why;
    for (;;) {
        ssize_t n = read(s.fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (s.stopping) return;
        if (n == 0) {
            why = "the daemon closed the connection";
            break;
        }
        if (n < 0) {
            why = std::string("read: ") + strerror(errno);
            break;
        }
        reader.Append(buf, static_cast<size_t>(n));
        vf::DaemonFrame frame;
        vf::ReadResult r;
        while ((r = reader.Next(&frame)) == vf::ReadResult::kFrame) {
            std::lock_guard<std::mutex> sending(s.sendMutex);
            if (frame.type == vf::kTypeResponse) {
                printer.Frame(Kind::kResponse, frame.token, frame.payload);
                std::lock_guard<std::mutex> lock(s.mutex);
                auto it = s.owed.find(frame.token);
                if (it != s.owed.end() && --it->second.first == 0) s.owed.erase(it);
                s.cond.notify_all();
            } else if (frame.type == vf::kTypeNotify) {
                printer.Frame(Kind::kNotify, frame.token, frame.payload);
            } else {
                printer.UnknownFrame(frame.type, frame.token, frame.payload);
            }
        }
        if (r == vf::ReadResult::kError) {
            // Past a broken length word there is no finding the next frame.
            why = "cannot read frames from the daemon: " + reader.error();
            break;
        }
    }
    if (reader.buffered() > 0 && reader.error().empty()) {
        why += " (" + std::to_string(reader.buffered()) + " bytes of an unfinished frame dropped)";
    }
    out.Error(why);
    std::lock_guard<std::mutex> lock(s.mutex);
    s.connectionClosed = true;
    s.cond.notify_all();
}

enum class LineResult { kDone, kRejected, kLostConnection };

// The warnings a request earns before it goes out: what the daemon will do
// with it may not be what its author thinks.
void CheckAgainstTable(const imsCommonStruc::Request& request, const std::string& binary,
                       const std::string& where, Output& out) {
    const int id = RawId(binary);
    const RequestRow* row = FindRequestRow(id);
    if (row == nullptr) {
        out.Error(where + "warning: the daemon has no handler for " + IdName(id) +
                  "; it logs the id as unsupported and never answers");
        return;
    }
    const pb::Reflection* reflection = request.GetReflection();
    std::vector<const pb::FieldDescriptor*> set;
    reflection->ListFields(request, &set);
    for (const pb::FieldDescriptor* f : set) {
        if (f->number() == imsCommonStruc::Request::kReqidFieldNumber ||
            f->number() == row->bodyField)
            continue;
        std::string reads = row->bodyField != 0
                                ? "its handler reads " + RequestFieldName(row->bodyField)
                                : "its handler reads no body";
        out.Error(where + "warning: " + f->json_name() + " is not the body of " + IdName(id) +
                  " (" + reads + "); sent as it is");
    }
}

// One input line. Complaints about the line go to stderr and the session
// goes on; only a failed send ends it.
LineResult HandleLine(const std::string& line, int lineNo, Session& s, Codec& codec,
                      FramePrinter& printer, Output& out, uint32_t* nextToken) {
    const std::string where = "line " + std::to_string(lineNo) + ": ";
    size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') return LineResult::kDone;

    nlohmann::json j = nlohmann::json::parse(line, nullptr, false);
    if (j.is_discarded()) {
        out.Error(where + "not JSON");
        return LineResult::kRejected;
    }
    if (!j.is_object()) {
        out.Error(where + "expected a JSON object, got " + j.type_name());
        return LineResult::kRejected;
    }

    if (j.contains("sleep_ms")) {
        const auto& ms = j["sleep_ms"];
        if (j.size() != 1 || !ms.is_number_unsigned()) {
            out.Error(where +
                      "a sleep is {\"sleep_ms\": N} on its own, N a whole number of milliseconds");
            return LineResult::kRejected;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(ms.get<uint64_t>()));
        return LineResult::kDone;
    }

    std::optional<uint32_t> token;
    auto it = j.find("token");
    if (it != j.end()) {
        if (!it->is_number_unsigned() || it->get<uint64_t>() > UINT32_MAX) {
            out.Error(where + "bad token " + it->dump() +
                      ": must be a whole number from 0 to 4294967295");
            return LineResult::kRejected;
        }
        token = static_cast<uint32_t>(it->get<uint64_t>());
        j.erase(it);
    }

    std::string binary, error;
    if (!codec.RequestFromJson(j, &binary, &error)) {
        out.Error(where + "bad Request: " + error);
        return LineResult::kRejected;
    }
    if (binary.size() + 8 > vf::kMaxRecordLen) {
        out.Error(where + "request of " + std::to_string(binary.size()) +
                  " bytes is over the record limit");
        return LineResult::kRejected;
    }
    imsCommonStruc::Request request;
    request.ParsePartialFromString(binary);
    CheckAgainstTable(request, binary, where, out);

    // Only requests that go out use up a number.
    if (!token) token = (*nextToken)++;
    const int id = RawId(binary);
    const bool answered = IsAnswered(id);
    if (answered) {
        std::lock_guard<std::mutex> lock(s.mutex);
        auto& owed = s.owed[*token];
        ++owed.first;
        owed.second = id;
    }
    std::lock_guard<std::mutex> sending(s.sendMutex);
    if (!vf::WriteAll(s.fd, vf::EncodeClientRecord(*token, binary))) {
        out.Error(where + "not sent: " + strerror(errno));
        return LineResult::kLostConnection;
    }
    std::string echo, warning;
    if (!codec.ToJson(Kind::kRequest, binary, &echo, &error, &warning)) echo = "null";
    printer.Sent(*token, echo);
    return LineResult::kDone;
}

int RunSession(const Options& opt) {
    Output out;
    Codec codec;
    FramePrinter printer(codec, out);
    printer.SetCompact(opt.compact);
    printer.SetShown(opt.shown);
    Session s;

    s.fd = Connect(opt.socketPath, opt.connectMs, out);
    if (s.fd < 0) return 1;

    std::thread reader(ReadFrames, std::ref(s), std::ref(printer), std::ref(out));

    int status = 0;
    uint32_t nextToken = 1;
    std::string line;
    int lineNo = 0;
    int rejected = 0;
    while (std::getline(std::cin, line)) {
        ++lineNo;
        LineResult r = HandleLine(line, lineNo, s, codec, printer, out, &nextToken);
        if (r == LineResult::kRejected) ++rejected;
        if (r == LineResult::kLostConnection) {
            status = 1;
            break;
        }
    }
    if (rejected > 0) {
        out.Error(std::to_string(rejected) + " input line(s) rejected");
        status = 1;
    }

    // Answers come from the stack's threads some time after the request.
    {
        std::unique_lock<std::mutex> lock(s.mutex);
        s.cond.wait_for(lock, std::chrono::milliseconds(opt.timeoutMs),
                        [&] { return s.connectionClosed || s.owed.empty(); });
        for (const auto& [token, owed] : s.owed) {
            out.Error("no answer to " + IdName(owed.second) + " (token " + std::to_string(token) +
                      (s.connectionClosed ? ") before the connection closed"
                                          : ") within " + std::to_string(opt.timeoutMs) + " ms"));
            status = 1;
        }
        if (opt.lingerMs > 0)
            s.cond.wait_for(lock, std::chrono::milliseconds(opt.lingerMs),
                            [&] { return s.connectionClosed; });
        if (s.connectionClosed) status = 1;
    }
    s.stopping = true;
    shutdown(s.fd, SHUT_RDWR);
    reader.join();
    close(s.fd);
    return status;
}

}  // namespace

namespace imsctl {

unsigned ParseKinds(const std::string& list, std::string* why) {
    unsigned mask = 0;
    size_t start = 0;
    while (start <= list.size()) {
        size_t comma = list.find(',', start);
        std::string name = list.substr(start, comma == std::string::npos ? comma : comma - start);
        bool known = false;
        for (Kind k : {Kind::kRequest, Kind::kResponse, Kind::kNotify}) {
            if (name == KindName(k)) {
                mask |= FramePrinter::Bit(k);
                known = true;
            }
        }
        if (!known) {
            *why = "--only takes request, response or notify, comma separated: \"" + list + "\"";
            return ~0u;
        }
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return mask;
}

}  // namespace imsctl

int main(int argc, char** argv) {
    GOOGLE_PROTOBUF_VERIFY_VERSION;
    if (argc > 1 && strcmp(argv[1], "decode") == 0) return DecodeMain(argc - 1, argv + 1);
    if (argc > 1 && strcmp(argv[1], "replay") == 0) return ReplayMain(argc - 1, argv + 1);
    return RunSession(ParseArgs(argc, argv));
}
