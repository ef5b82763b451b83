#include "framing.h"

namespace velard_framing {
namespace {

constexpr size_t kWord = 4;

void PutLittleEndian32(std::string* out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out->push_back(static_cast<char>((v >> (8 * i)) & 0xff));
}

void PutBigEndian32(std::string* out, uint32_t v) {
    for (int i = 3; i >= 0; --i) out->push_back(static_cast<char>((v >> (8 * i)) & 0xff));
}

uint32_t GetLittleEndian32(const unsigned char* p) {
    return uint32_t{p[0]} | (uint32_t{p[1]} << 8) | (uint32_t{p[2]} << 16) | (uint32_t{p[3]} << 24);
}

uint32_t GetBigEndian32(const unsigned char* p) {
    return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | uint32_t{p[3]};
}

}  // namespace

std::string EncodeClientRecord(uint32_t token, std::string_view payload, uint32_t reserved) {
    std::string out;
    out.reserve(3 * kWord + payload.size());
    PutBigEndian32(&out, static_cast<uint32_t>(payload.size() + 2 * kWord));
    PutLittleEndian32(&out, reserved);
    PutLittleEndian32(&out, token);
    out.append(payload);
    return out;
}

std::string EncodeDaemonFrame(uint32_t type, uint32_t token, std::string_view payload) {
    std::string out;
    out.reserve(3 * kWord + payload.size());
    PutLittleEndian32(&out, static_cast<uint32_t>(payload.size() + 2 * kWord));
    PutLittleEndian32(&out, type);
    PutLittleEndian32(&out, token);
    out.append(payload);
    return out;
}

void ByteQueue::Append(const void* data, size_t len) {
    // Drop consumed bytes once they dominate, so the buffer stays small.
    if (mStart > 0 && mStart >= mData.size() / 2) {
        mData.erase(0, mStart);
        mStart = 0;
    }
    mData.append(static_cast<const char*>(data), len);
}

void ByteQueue::Consume(size_t len) {
    mStart += len;
    if (mStart == mData.size()) {
        mData.clear();
        mStart = 0;
    }
}

ReadResult DaemonFrameReader::Next(DaemonFrame* out) {
    if (!mError.empty()) return ReadResult::kError;
    if (mQueue.size() < kWord) return ReadResult::kNeedMore;
    const unsigned char* p = mQueue.data();
    uint32_t length = GetLittleEndian32(p);
    if (length < 2 * kWord || length > mMaxLength) {
        mError = "bad frame length " + std::to_string(length);
        return ReadResult::kError;
    }
    if (mQueue.size() - kWord < length) return ReadResult::kNeedMore;
    out->type = GetLittleEndian32(p + kWord);
    out->token = GetLittleEndian32(p + 2 * kWord);
    out->payload.assign(reinterpret_cast<const char*>(p + 3 * kWord), length - 2 * kWord);
    mQueue.Consume(kWord + length);
    return ReadResult::kFrame;
}

ReadResult ClientRecordReader::Next(ClientRecord* out) {
    if (!mError.empty()) return ReadResult::kError;
    if (mQueue.size() < kWord) return ReadResult::kNeedMore;
    const unsigned char* p = mQueue.data();
    uint32_t length = GetBigEndian32(p);
    if (length < 2 * kWord || length > mMaxLength) {
        mError = "bad record length " + std::to_string(length);
        return ReadResult::kError;
    }
    if (mQueue.size() - kWord < length) return ReadResult::kNeedMore;
    out->reserved = GetLittleEndian32(p + kWord);
    out->token = GetLittleEndian32(p + 2 * kWord);
    out->payload.assign(reinterpret_cast<const char*>(p + 3 * kWord), length - 2 * kWord);
    mQueue.Consume(kWord + length);
    return ReadResult::kFrame;
}

}  // namespace velard_framing
