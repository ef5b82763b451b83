#include "imsctl_common.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver_util.h>

#include "imsCommonStruc.pb.h"

namespace pb = google::protobuf;

namespace imsctl {
namespace {

constexpr RequestRow kRequestRows[] = {
#include "request_rows.inc"
};

constexpr const char* kTypeUrlPrefix = "type.googleapis.com";

std::string TypeUrl(Kind kind) {
    return std::string(kTypeUrlPrefix) + "/" + Prototype(kind).GetDescriptor()->full_name();
}

size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t up = row[j];
            bool same = tolower(static_cast<unsigned char>(a[i - 1])) ==
                        tolower(static_cast<unsigned char>(b[j - 1]));
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (same ? 0 : 1)});
            diagonal = up;
        }
    }
    return row[b.size()];
}

const pb::FieldDescriptor* FindField(const pb::Descriptor* d, const std::string& key) {
    if (const pb::FieldDescriptor* f = d->FindFieldByName(key)) return f;
    for (int i = 0; i < d->field_count(); ++i)
        if (d->field(i)->json_name() == key) return d->field(i);
    return nullptr;
}

// The first key anywhere in the object that the schema does not know, as a
// message naming where it is and the closest known name. The converter
// would otherwise stop at whatever it checks first, which for a misspelt
// "reqid" is the missing required field.
std::string FindUnknownField(const nlohmann::json& object, const pb::Descriptor* d,
                             const std::string& path) {
    for (auto it = object.begin(); it != object.end(); ++it) {
        const pb::FieldDescriptor* f = FindField(d, it.key());
        if (f == nullptr) {
            std::string nearest;
            size_t best = std::max<size_t>(2, it.key().size() / 3) + 1;
            for (int i = 0; i < d->field_count(); ++i) {
                size_t dist = EditDistance(it.key(), d->field(i)->json_name());
                if (dist < best) best = dist, nearest = d->field(i)->json_name();
            }
            std::string msg = "unknown field \"" + it.key() + "\" in " +
                              (path.empty() ? d->full_name() : path + " (" + d->full_name() + ")");
            if (!nearest.empty()) msg += "; did you mean \"" + nearest + "\"?";
            return msg;
        }
        if (f->type() != pb::FieldDescriptor::TYPE_MESSAGE || f->is_map()) continue;
        std::string inner = path.empty() ? f->json_name() : path + "." + f->json_name();
        if (it->is_object()) {
            std::string e = FindUnknownField(*it, f->message_type(), inner);
            if (!e.empty()) return e;
        } else if (it->is_array()) {
            for (const auto& element : *it) {
                if (!element.is_object()) continue;
                std::string e = FindUnknownField(element, f->message_type(), inner);
                if (!e.empty()) return e;
            }
        }
    }
    return "";
}

}  // namespace

const RequestRow* FindRequestRow(int id) {
    for (const RequestRow& row : kRequestRows)
        if (row.id == id) return &row;
    return nullptr;
}

void Output::Line(const std::string& text) {
    std::lock_guard<std::mutex> lock(mMutex);
    fwrite(text.data(), 1, text.size(), stdout);
    fputc('\n', stdout);
    fflush(stdout);
}

void Output::Error(const std::string& text) {
    std::lock_guard<std::mutex> lock(mMutex);
    fprintf(stderr, "imsctl: %s\n", text.c_str());
    fflush(stderr);
}

const char* KindName(Kind kind) {
    switch (kind) {
        case Kind::kRequest:
            return "request";
        case Kind::kResponse:
            return "response";
        case Kind::kNotify:
            return "notify";
    }
    return "?";
}

const pb::Message& Prototype(Kind kind) {
    switch (kind) {
        case Kind::kRequest:
            return imsCommonStruc::Request::default_instance();
        case Kind::kResponse:
            return imsCommonStruc::Response::default_instance();
        case Kind::kNotify:
            break;
    }
    return imsCommonStruc::Notify::default_instance();
}

Codec::Codec()
    : mResolver(pb::util::NewTypeResolverForDescriptorPool(kTypeUrlPrefix,
                                                           pb::DescriptorPool::generated_pool())) {}

bool Codec::RequestFromJson(const nlohmann::json& request, std::string* binary,
                            std::string* error) {
    *error = FindUnknownField(request, imsCommonStruc::Request::descriptor(), "");
    if (!error->empty()) return false;
    pb::util::JsonParseOptions options;
    options.ignore_unknown_fields = false;
    pb::util::Status st = pb::util::JsonToBinaryString(mResolver.get(), TypeUrl(Kind::kRequest),
                                                       request.dump(), binary, options);
    if (!st.ok()) {
        // Problems at the top level come with an empty field path.
        std::string msg(st.message());
        if (msg.rfind(": ", 0) == 0) msg.erase(0, 2);
        *error = msg;
        return false;
    }
    return true;
}

std::unique_ptr<pb::Message> Codec::Parse(Kind kind, const std::string& binary) {
    std::unique_ptr<pb::Message> msg(Prototype(kind).New());
    if (!msg->ParsePartialFromString(binary)) return nullptr;
    return msg;
}

bool Codec::ToJson(Kind kind, const std::string& binary, std::string* json, std::string* error,
                   std::string* warning) {
    std::unique_ptr<pb::Message> msg = Parse(kind, binary);
    if (!msg) {
        *error = "payload is not a valid " + Prototype(kind).GetDescriptor()->full_name();
        return false;
    }
    // The framework's parser would refuse such a message. An enum number
    // outside the schema in a required field shows up here too.
    if (!msg->IsInitialized())
        *warning = "missing required field(s): " + msg->InitializationErrorString();
    // From the bytes rather than the parsed message: a closed enum would
    // move an unknown number out of sight into the unknown fields.
    pb::util::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    pb::util::Status st =
        pb::util::BinaryToJsonString(mResolver.get(), TypeUrl(kind), binary, json, options);
    if (!st.ok()) {
        *error = std::string(st.message());
        return false;
    }
    return true;
}

int RawId(const std::string& binary) {
    pb::io::CodedInputStream in(reinterpret_cast<const uint8_t*>(binary.data()),
                                static_cast<int>(binary.size()));
    int id = 0;
    for (uint32_t tag; (tag = in.ReadTag()) != 0;) {
        uint32_t value;
        if (tag == (1 << 3) && in.ReadVarint32(&value))
            id = static_cast<int>(value);
        else if (!pb::internal::WireFormatLite::SkipField(&in, tag))
            break;
    }
    return id;
}

std::string IdName(int id) {
    const pb::EnumValueDescriptor* v = imsCommonStruc::Id_descriptor()->FindValueByNumber(id);
    return v != nullptr ? v->name() : std::to_string(id);
}

std::string RequestFieldName(int number) {
    const pb::FieldDescriptor* f = imsCommonStruc::Request::descriptor()->FindFieldByNumber(number);
    return f != nullptr ? f->json_name() : "";
}

std::string Hex(std::string_view bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (unsigned char c : bytes) {
        out.push_back(digits[c >> 4]);
        out.push_back(digits[c & 15]);
    }
    return out;
}

void FramePrinter::Print(Kind kind, uint32_t token, const std::string& messageJson) {
    if (!(mShown & Bit(kind))) return;
    if (!mCompact) {
        mOut.Line(std::string("{\"frame\":\"") + KindName(kind) +
                  "\",\"token\":" + std::to_string(token) + ",\"message\":" + messageJson + "}");
        return;
    }
    // kind token ID body={...}, cut to a terminal's width.
    std::string line = std::string(KindName(kind)) + " " + std::to_string(token);
    nlohmann::json m = nlohmann::json::parse(messageJson, nullptr, false);
    if (m.is_object()) {
        for (auto it = m.begin(); it != m.end(); ++it) {
            if (it.key() == "reqid" || it.key() == "resid" || it.key() == "notifyid")
                line += " " + (it->is_string() ? it->get<std::string>() : it->dump());
        }
        for (auto it = m.begin(); it != m.end(); ++it) {
            if (it.key() != "reqid" && it.key() != "resid" && it.key() != "notifyid")
                line += " " + it.key() + "=" + it->dump();
        }
    }
    constexpr size_t kWidth = 160;
    if (line.size() > kWidth) line = line.substr(0, kWidth - 3) + "...";
    mOut.Line(line);
}

void FramePrinter::Sent(uint32_t token, const std::string& messageJson) {
    Print(Kind::kRequest, token, messageJson);
}

bool FramePrinter::Frame(Kind kind, uint32_t token, const std::string& payload) {
    std::string json, error, warning;
    std::string where = std::string(KindName(kind)) + " frame, token " + std::to_string(token);
    if (!mCodec.ToJson(kind, payload, &json, &error, &warning)) {
        mOut.Error(where + ": " + error);
        if (mShown & Bit(kind))
            mOut.Line(std::string("{\"frame\":\"") + KindName(kind) + "\",\"token\":" +
                      std::to_string(token) + ",\"error\":" + nlohmann::json(error).dump() +
                      ",\"payload\":\"" + Hex(payload) + "\"}");
        return false;
    }
    if (!warning.empty()) mOut.Error(where + ": " + warning);
    Print(kind, token, json);
    return true;
}

void FramePrinter::UnknownFrame(uint32_t type, uint32_t token, const std::string& payload) {
    mOut.Error("frame of unknown type " + std::to_string(type) + " (token " +
               std::to_string(token) + ", " + std::to_string(payload.size()) + " bytes)");
    mOut.Line("{\"frame\":\"unknown\",\"type\":" + std::to_string(type) +
              ",\"token\":" + std::to_string(token) +
              ",\"error\":\"unknown frame type\",\"payload\":\"" + Hex(payload) + "\"}");
}

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

long ParseMs(const char* text) {
    char* end;
    errno = 0;
    long v = strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || v < 0) return -1;
    return v;
}

bool Args::Next(std::string* arg) {
    if (++mAt >= mArgc) return false;
    *arg = mArgv[mAt];
    if (*arg == "-h" || *arg == "--help") {
        printf("%s%s", mUsage, mHelp);
        exit(0);
    }
    return true;
}

const char* Args::Value() {
    if (mAt + 1 >= mArgc) Fail(std::string(mArgv[mAt]) + " wants a value");
    return mArgv[++mAt];
}

long Args::Ms() {
    const char* option = mArgv[mAt];
    const char* text = Value();
    long ms = ParseMs(text);
    if (ms < 0) Fail(std::string(option) + " wants milliseconds: " + text);
    return ms;
}

void Args::Fail(const std::string& why) const {
    fprintf(stderr, "%s: %s\n%s(%s --help for more)\n", mMode, why.c_str(), mUsage, mMode);
    exit(2);
}

}  // namespace imsctl
