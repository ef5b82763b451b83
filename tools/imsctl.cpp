// imsctl: a command-line client of velard's command socket.
//
//   imsctl --socket PATH [--wait-ms N] [--connect-ms N]
//
// Reads requests from stdin, one JSON object per line in the protocol
// buffer JSON mapping of imsCommonStruc.Request, plus an optional "token".
// Each is framed and sent, and echoed to stdout; every frame from the daemon
// is printed as it arrives. All stdout lines are JSON:
//
//   {"frame":"request","token":1,"message":{...}}
//   {"frame":"response","token":1,"message":{...}}
//   {"frame":"notify","token":0,"message":{...}}
//
// A line {"sleep_ms":N} pauses the script; blank lines and lines starting
// with '#' are skipped. After stdin ends imsctl listens for --wait-ms more
// (default 500) before it closes the connection, which ends the daemon.
//
// Nothing here knows individual messages: any request the schema can
// express goes through, and every response and notification prints.
#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include <google/protobuf/descriptor.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver.h>
#include <google/protobuf/util/type_resolver_util.h>
#include <nlohmann/json.hpp>

#include "framing.h"
#include "imsCommonStruc.pb.h"

namespace pb = google::protobuf;
namespace vf = velard_framing;

namespace {

constexpr const char* kTypeUrlPrefix = "type.googleapis.com";

struct Options {
    std::string socketPath;
    long waitMs = 500;
    long connectMs = 1000;
};

// stdout carries one JSON line per frame and stderr the complaints; both are
// written by the input loop and the reader thread, so whole lines only.
class Output {
public:
    void Line(const std::string& text) {
        std::lock_guard<std::mutex> lock(mMutex);
        fwrite(text.data(), 1, text.size(), stdout);
        fputc('\n', stdout);
        fflush(stdout);
    }
    void Error(const std::string& text) {
        std::lock_guard<std::mutex> lock(mMutex);
        fprintf(stderr, "imsctl: %s\n", text.c_str());
        fflush(stderr);
    }

private:
    std::mutex mMutex;
};

// Converts between the wire bytes and the JSON mapping, for the three
// envelope messages, through the descriptors compiled into this program.
class Codec {
public:
    Codec()
        : mResolver(pb::util::NewTypeResolverForDescriptorPool(
              kTypeUrlPrefix, pb::DescriptorPool::generated_pool())) {
        mPrint.preserve_proto_field_names = true;
        mPrint.always_print_primitive_fields = false;
        mParse.ignore_unknown_fields = false;
    }

    // JSON text to a serialised Request. The converter refuses unknown
    // fields, bad values and missing required fields.
    bool RequestFromJson(const std::string& json, std::string* binary, std::string* error) {
        pb::util::Status st = pb::util::JsonToBinaryString(
            mResolver.get(), TypeUrl(imsCommonStruc::Request::default_instance()), json, binary,
            mParse);
        if (!st.ok()) {
            // Problems at the top level come with an empty field path.
            std::string msg(st.message());
            if (msg.rfind(": ", 0) == 0) msg.erase(0, 2);
            *error = msg;
            return false;
        }
        return true;
    }

    // Serialised message of prototype's type to JSON text. Fields outside
    // the schema are dropped; enum numbers outside it print as numbers.
    // *warning is set when a required field is absent.
    bool ToJson(const pb::Message& prototype, const std::string& binary, std::string* json,
                std::string* error, std::string* warning) {
        std::unique_ptr<pb::Message> msg(prototype.New());
        if (!msg->ParsePartialFromString(binary)) {
            *error = "payload is not a valid " + prototype.GetDescriptor()->full_name();
            return false;
        }
        // The framework's parser would refuse such a message. An enum number
        // outside the schema in a required field shows up here too.
        if (!msg->IsInitialized()) {
            *warning = "missing required field(s): " + msg->InitializationErrorString();
        }
        // From the bytes rather than the parsed message: a closed enum would
        // move an unknown number out of sight into the unknown fields.
        pb::util::Status st =
            pb::util::BinaryToJsonString(mResolver.get(), TypeUrl(prototype), binary, json, mPrint);
        if (!st.ok()) {
            *error = std::string(st.message());
            return false;
        }
        return true;
    }

private:
    static std::string TypeUrl(const pb::Message& m) {
        return std::string(kTypeUrlPrefix) + "/" + m.GetDescriptor()->full_name();
    }

    std::unique_ptr<pb::util::TypeResolver> mResolver;
    pb::util::JsonPrintOptions mPrint;
    pb::util::JsonParseOptions mParse;
};

std::string FrameLine(const char* kind, uint32_t token, const std::string& messageJson) {
    return std::string("{\"frame\":\"") + kind + "\",\"token\":" + std::to_string(token) +
           ",\"message\":" + messageJson + "}";
}

std::string Hex(const std::string& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (unsigned char c : bytes) {
        out.push_back(digits[c >> 4]);
        out.push_back(digits[c & 15]);
    }
    return out;
}

// Shared between the input loop and the reader thread.
struct Session {
    int fd = -1;
    std::mutex mutex;
    std::condition_variable cond;
    bool connectionClosed = false;  // by the daemon, or unreadable
    std::atomic<bool> stopping{false};
};

void PrintFrame(const vf::DaemonFrame& f, Codec& codec, Output& out) {
    const char* kind;
    const pb::Message* prototype;
    if (f.type == vf::kTypeResponse) {
        kind = "response";
        prototype = &imsCommonStruc::Response::default_instance();
    } else if (f.type == vf::kTypeNotify) {
        kind = "notify";
        prototype = &imsCommonStruc::Notify::default_instance();
    } else {
        out.Error("frame of unknown type " + std::to_string(f.type) + " (token " +
                  std::to_string(f.token) + ", " + std::to_string(f.payload.size()) + " bytes)");
        out.Line("{\"frame\":\"unknown\",\"type\":" + std::to_string(f.type) +
                 ",\"token\":" + std::to_string(f.token) +
                 ",\"error\":\"unknown frame type\",\"payload\":\"" + Hex(f.payload) + "\"}");
        return;
    }
    std::string json, error, warning;
    if (!codec.ToJson(*prototype, f.payload, &json, &error, &warning)) {
        out.Error(std::string(kind) + " frame, token " + std::to_string(f.token) + ": " + error);
        out.Line(std::string("{\"frame\":\"") + kind + "\",\"token\":" + std::to_string(f.token) +
                 ",\"error\":" + nlohmann::json(error).dump() + ",\"payload\":\"" + Hex(f.payload) +
                 "\"}");
        return;
    }
    if (!warning.empty())
        out.Error(std::string(kind) + " frame, token " + std::to_string(f.token) + ": " + warning);
    out.Line(FrameLine(kind, f.token, json));
}

void ReadFrames(Session& s, Codec& codec, Output& out) {
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
        while ((r = reader.Next(&frame)) == vf::ReadResult::kFrame) PrintFrame(frame, codec, out);
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

// Connects, retrying for a while if the socket is not there or not yet
// listening: velard-host creates it before the daemon listens on it.
int Connect(const std::string& path, long retryMs, Output& out) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof addr.sun_path) {
        out.Error("socket path too long: " + path);
        return -1;
    }
    memcpy(addr.sun_path, path.c_str(), path.size() + 1);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(retryMs);
    for (;;) {
        int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd < 0) {
            out.Error(std::string("socket: ") + strerror(errno));
            return -1;
        }
        if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) return fd;
        int err = errno;
        close(fd);
        bool transient = err == ENOENT || err == ECONNREFUSED || err == EAGAIN || err == EINTR;
        if (!transient || std::chrono::steady_clock::now() >= deadline) {
            out.Error("cannot connect to " + path + ": " + strerror(err));
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

[[noreturn]] void Usage(const std::string& why) {
    if (!why.empty()) fprintf(stderr, "imsctl: %s\n", why.c_str());
    fprintf(why.empty() ? stdout : stderr,
            "usage: imsctl --socket PATH [--wait-ms N] [--connect-ms N]\n"
            "  reads imsCommonStruc.Request objects (JSON, one per line, optional \"token\")\n"
            "  from stdin and prints every frame as one JSON line\n"
            "  --wait-ms N     keep listening N ms after stdin ends (default 500)\n"
            "  --connect-ms N  keep trying to connect for N ms (default 1000)\n");
    exit(why.empty() ? 0 : 2);
}

long ParseMs(const char* flag, const char* text) {
    char* end;
    errno = 0;
    long v = strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || v < 0)
        Usage(std::string(flag) + " wants milliseconds: " + text);
    return v;
}

Options ParseArgs(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--socket" && i + 1 < argc) {
            o.socketPath = argv[++i];
        } else if (a == "--wait-ms" && i + 1 < argc) {
            o.waitMs = ParseMs("--wait-ms", argv[++i]);
        } else if (a == "--connect-ms" && i + 1 < argc) {
            o.connectMs = ParseMs("--connect-ms", argv[++i]);
        } else if (a == "-h" || a == "--help") {
            Usage("");
        } else {
            Usage("unknown or incomplete argument: " + a);
        }
    }
    if (o.socketPath.empty()) Usage("--socket is required");
    return o;
}

enum class LineResult { kDone, kLostConnection };

// One input line. Complaints about the line go to stderr and the session
// goes on; only a failed send ends it.
LineResult HandleLine(const std::string& line, int lineNo, Session& s, Codec& codec, Output& out,
                      uint32_t* nextToken) {
    const std::string where = "line " + std::to_string(lineNo) + ": ";
    size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') return LineResult::kDone;

    nlohmann::json j;
    try {
        j = nlohmann::json::parse(line);
    } catch (const nlohmann::json::exception& e) {
        out.Error(where + "not JSON: " + e.what());
        return LineResult::kDone;
    }
    if (!j.is_object()) {
        out.Error(where + "expected a JSON object, got " + j.type_name());
        return LineResult::kDone;
    }

    if (j.contains("sleep_ms")) {
        const auto& ms = j["sleep_ms"];
        if (j.size() != 1 || !ms.is_number_unsigned()) {
            out.Error(where +
                      "a sleep is {\"sleep_ms\": N} on its own, N a whole number of milliseconds");
            return LineResult::kDone;
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
            return LineResult::kDone;
        }
        token = static_cast<uint32_t>(it->get<uint64_t>());
        j.erase(it);
    }

    std::string binary, error;
    std::string json;
    try {
        json = j.dump();
    } catch (const nlohmann::json::exception& e) {
        out.Error(where + e.what());
        return LineResult::kDone;
    }
    if (!codec.RequestFromJson(json, &binary, &error)) {
        out.Error(where + "bad Request: " + error);
        return LineResult::kDone;
    }
    if (binary.size() + 8 > vf::kMaxRecordLen) {
        out.Error(where + "request of " + std::to_string(binary.size()) +
                  " bytes is over the record limit");
        return LineResult::kDone;
    }

    // Only requests that go out use up a number.
    if (!token) token = (*nextToken)++;

    std::string echo, warning;
    if (!codec.ToJson(imsCommonStruc::Request::default_instance(), binary, &echo, &error, &warning))
        echo = "null";
    out.Line(FrameLine("request", *token, echo));
    if (!vf::WriteAll(s.fd, vf::EncodeClientRecord(*token, binary))) {
        out.Error(where + "not sent: " + strerror(errno));
        return LineResult::kLostConnection;
    }
    return LineResult::kDone;
}

}  // namespace

int main(int argc, char** argv) {
    GOOGLE_PROTOBUF_VERIFY_VERSION;
    Options opt = ParseArgs(argc, argv);
    Output out;
    Codec codec;
    Session s;

    s.fd = Connect(opt.socketPath, opt.connectMs, out);
    if (s.fd < 0) return 1;

    std::thread reader(ReadFrames, std::ref(s), std::ref(codec), std::ref(out));

    int status = 0;
    uint32_t nextToken = 1;
    std::string line;
    int lineNo = 0;
    while (std::getline(std::cin, line)) {
        ++lineNo;
        if (HandleLine(line, lineNo, s, codec, out, &nextToken) == LineResult::kLostConnection) {
            status = 1;
            break;
        }
    }

    // Answers come from the stack's threads some time after the request;
    // give them a while before hanging up.
    {
        std::unique_lock<std::mutex> lock(s.mutex);
        s.cond.wait_for(lock, std::chrono::milliseconds(opt.waitMs),
                        [&] { return s.connectionClosed; });
        if (s.connectionClosed) status = 1;
    }
    s.stopping = true;
    shutdown(s.fd, SHUT_RDWR);
    reader.join();
    close(s.fd);
    return status;
}
