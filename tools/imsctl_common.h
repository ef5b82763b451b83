// What imsctl's modes share: the JSON mapping of the three envelope messages,
// the request table as the daemon has it, and the printing of frames.
#pragma once

#include <stdint.h>

#include <mutex>
#include <string>
#include <string_view>

#include <google/protobuf/message.h>
#include <google/protobuf/util/type_resolver.h>
#include <nlohmann/json.hpp>

namespace imsctl {

// One row of the daemon's request table, as far as a client cares.
struct RequestRow {
    int id;
    int bodyField;  // the Request field its handler reads; 0: none
    bool answered;  // the stack is given a record, so a Response follows
};
// The row of a request id, or null: the daemon has none and never answers.
const RequestRow* FindRequestRow(int id);
inline bool IsAnswered(int id) {
    const RequestRow* row = FindRequestRow(id);
    return row != nullptr && row->answered;
}

// stdout carries one line per frame and stderr the complaints; several
// threads print, so whole lines only.
class Output {
public:
    void Line(const std::string& text);
    void Error(const std::string& text);

private:
    std::mutex mMutex;
};

enum class Kind { kRequest, kResponse, kNotify };
const char* KindName(Kind kind);
const google::protobuf::Message& Prototype(Kind kind);

// Converts between wire bytes and the JSON mapping through the descriptors
// compiled into this program.
class Codec {
public:
    Codec();
    // JSON text to a serialised Request. Unknown field names are reported as
    // such, with the nearest known name; then the converter's own checks
    // (bad values, missing required fields).
    bool RequestFromJson(const nlohmann::json& request, std::string* binary, std::string* error);
    // Serialised message to JSON text. Fields outside the schema are
    // dropped; enum numbers outside it print as numbers. *warning is set when
    // a required field is absent.
    bool ToJson(Kind kind, const std::string& binary, std::string* json, std::string* error,
                std::string* warning);
    // Parses into a fresh message of the kind (partial parse); null if the
    // bytes are not one.
    std::unique_ptr<google::protobuf::Message> Parse(Kind kind, const std::string& binary);

private:
    std::unique_ptr<google::protobuf::util::TypeResolver> mResolver;
};

// Field 1 of a serialised envelope message (reqid, resid, notifyid) as it
// stands on the wire: a number the schema lacks is not lost to the parser.
int RawId(const std::string& binary);
// The name the schema gives an id number, or the number.
std::string IdName(int id);
// The JSON name of a Request field number ("requestMakeCall"), or "".
std::string RequestFieldName(int number);

std::string Hex(std::string_view bytes);

// Prints frames as JSON lines, or one short line each in compact mode, and
// leaves out the kinds not asked for.
class FramePrinter {
public:
    FramePrinter(Codec& codec, Output& out) : mCodec(codec), mOut(out) {}
    void SetCompact(bool compact) { mCompact = compact; }
    // Which of request, response, notify to show; all by default.
    void SetShown(unsigned mask) { mShown = mask; }
    static unsigned Bit(Kind kind) { return 1u << static_cast<int>(kind); }

    // False (after saying why) when the payload is not a message of the kind.
    bool Frame(Kind kind, uint32_t token, const std::string& payload);
    void UnknownFrame(uint32_t type, uint32_t token, const std::string& payload);
    // A request line whose message is already JSON (what imsctl sent).
    void Sent(uint32_t token, const std::string& messageJson);

private:
    void Print(Kind kind, uint32_t token, const std::string& messageJson);
    Codec& mCodec;
    Output& mOut;
    bool mCompact = false;
    unsigned mShown = ~0u;
};

// Connects to a UNIX stream socket, retrying while it is absent or not yet
// listening (velard-host creates it before the daemon listens on it).
int Connect(const std::string& path, long retryMs, Output& out);

// Milliseconds from an option's text; -1 when it is not a whole number.
long ParseMs(const char* text);

// Walks one mode's arguments. A bad one ends the program with status 2 and
// the mode's usage; -h and --help print the usage and the help and exit 0.
class Args {
public:
    Args(int argc, char** argv, const char* mode, const char* usage, const char* help)
        : mArgc(argc), mArgv(argv), mMode(mode), mUsage(usage), mHelp(help) {}
    // The next argument, or false at the end.
    bool Next(std::string* arg);
    // The value that follows the current option.
    const char* Value();
    long Ms();
    [[noreturn]] void Fail(const std::string& why) const;

private:
    int mArgc;
    char** mArgv;
    int mAt = 0;
    const char* mMode;
    const char* mUsage;
    const char* mHelp;
};

}  // namespace imsctl
