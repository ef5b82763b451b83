// Byte-level framing of the command socket, for the client tool and for
// tests that talk to the daemon. Bytes in, bytes out: nothing here knows
// about the messages inside.
//
// Client to daemon: big-endian u32 length L (the bytes that follow), then
// little-endian u32 reserved word, little-endian u32 token, payload (L - 8).
// Daemon to client: little-endian u32 length (payload + 8), little-endian
// u32 type (1 Response, 2 Notify), little-endian u32 token, payload.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <string_view>

namespace velard_framing {

// Largest record either side accepts: the client's length word may say up to
// this much; a daemon frame, its own length word included, may be this long.
inline constexpr uint32_t kMaxRecordLen = 0x80000;
inline constexpr uint32_t kMaxDaemonFrameLength = kMaxRecordLen - 4;

inline constexpr uint32_t kTypeResponse = 1;
inline constexpr uint32_t kTypeNotify = 2;

// A whole client record, ready to write to the socket.
std::string EncodeClientRecord(uint32_t token, std::string_view payload, uint32_t reserved = 0);

// A whole daemon frame, as the daemon writes it (for fake daemons in tests).
std::string EncodeDaemonFrame(uint32_t type, uint32_t token, std::string_view payload);

// Writes all of bytes to a socket, waiting while it is full; false when the
// peer is gone or the socket fails (never SIGPIPE).
bool WriteAll(int fd, std::string_view bytes);

struct DaemonFrame {
    uint32_t type = 0;
    uint32_t token = 0;
    std::string payload;
};

struct ClientRecord {
    uint32_t reserved = 0;
    uint32_t token = 0;
    std::string payload;
};

enum class ReadResult {
    kFrame,     // one whole frame was taken out of the buffer
    kNeedMore,  // no whole frame buffered yet
    kError,     // the stream cannot be cut any further; error() says why
};

// Cuts length-prefixed records out of a byte stream fed in pieces of any
// size. The two directions differ only in the length word's byte order and
// in what the first word after it means.
class StreamCutter {
public:
    void Append(const void* data, size_t len);
    const std::string& error() const { return mError; }
    // Bytes received but not yet returned as a frame.
    size_t buffered() const { return mData.size() - mStart; }

protected:
    // maxLength bounds the length word; a larger one is an error.
    StreamCutter(uint32_t maxLength, bool bigEndianLength)
        : mMaxLength(maxLength), mBigEndianLength(bigEndianLength) {}
    ReadResult Cut(uint32_t* firstWord, uint32_t* token, std::string* payload);

private:
    uint32_t mMaxLength;
    bool mBigEndianLength;
    std::string mData;
    size_t mStart = 0;
    std::string mError;
};

// Cuts daemon frames (what a client reads).
class DaemonFrameReader : public StreamCutter {
public:
    explicit DaemonFrameReader(uint32_t maxLength = kMaxDaemonFrameLength)
        : StreamCutter(maxLength, false) {}
    ReadResult Next(DaemonFrame* out) { return Cut(&out->type, &out->token, &out->payload); }
};

// Cuts client records (what a daemon reads).
class ClientRecordReader : public StreamCutter {
public:
    explicit ClientRecordReader(uint32_t maxLength = kMaxRecordLen)
        : StreamCutter(maxLength, true) {}
    ReadResult Next(ClientRecord* out) { return Cut(&out->reserved, &out->token, &out->payload); }
};

}  // namespace velard_framing
