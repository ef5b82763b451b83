#include "framing.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>

namespace velard_framing {
namespace {

constexpr size_t kWord = 4;

void Put32(std::string* out, uint32_t v, bool bigEndian) {
    for (int i = 0; i < 4; ++i) {
        int shift = bigEndian ? 24 - 8 * i : 8 * i;
        out->push_back(static_cast<char>((v >> shift) & 0xff));
    }
}

uint32_t Get32(const unsigned char* p, bool bigEndian) {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v |= uint32_t{p[i]} << (bigEndian ? 24 - 8 * i : 8 * i);
    return v;
}

std::string Encode(bool bigEndianLength, uint32_t firstWord, uint32_t token,
                   std::string_view payload) {
    std::string out;
    out.reserve(3 * kWord + payload.size());
    Put32(&out, static_cast<uint32_t>(payload.size() + 2 * kWord), bigEndianLength);
    Put32(&out, firstWord, false);
    Put32(&out, token, false);
    out.append(payload);
    return out;
}

}  // namespace

std::string EncodeClientRecord(uint32_t token, std::string_view payload, uint32_t reserved) {
    return Encode(true, reserved, token, payload);
}

std::string EncodeDaemonFrame(uint32_t type, uint32_t token, std::string_view payload) {
    return Encode(false, type, token, payload);
}

bool WriteAll(int fd, std::string_view bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd p{fd, POLLOUT, 0};
            poll(&p, 1, 1000);
            continue;
        }
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

void StreamCutter::Append(const void* data, size_t len) {
    // Drop consumed bytes once they dominate, so the buffer stays small.
    if (mStart > 0 && mStart >= mData.size() / 2) {
        mData.erase(0, mStart);
        mStart = 0;
    }
    mData.append(static_cast<const char*>(data), len);
}

ReadResult StreamCutter::Cut(uint32_t* firstWord, uint32_t* token, std::string* payload) {
    if (!mError.empty()) return ReadResult::kError;
    if (buffered() < kWord) return ReadResult::kNeedMore;
    const auto* p = reinterpret_cast<const unsigned char*>(mData.data()) + mStart;
    uint32_t length = Get32(p, mBigEndianLength);
    if (length < 2 * kWord || length > mMaxLength) {
        mError = std::string(mBigEndianLength ? "bad record length " : "bad frame length ") +
                 std::to_string(length);
        return ReadResult::kError;
    }
    if (buffered() - kWord < length) return ReadResult::kNeedMore;
    *firstWord = Get32(p + kWord, false);
    *token = Get32(p + 2 * kWord, false);
    payload->assign(reinterpret_cast<const char*>(p + 3 * kWord), length - 2 * kWord);
    mStart += kWord + length;
    if (mStart == mData.size()) {
        mData.clear();
        mStart = 0;
    }
    return ReadResult::kFrame;
}

}  // namespace velard_framing
