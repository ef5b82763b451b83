// Records framed by a big-endian 32-bit length, cut out of a non-blocking
// descriptor.
//
// The buffer holds one maximum-size record plus its length word, so any
// record within the limit fits once the buffer has been compacted. Records
// are handed out in place; a record stays valid until the next call, which
// is the first point at which the buffer may be compacted or refilled.
#include <cutils/record_stream.h>

#include <errno.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace {
constexpr size_t kHeaderLen = 4;
}

struct RecordStream {
    int fd;
    size_t maxRecordLen;
    unsigned char* buffer;
    size_t bufferLen;
    size_t start;  // first byte not yet handed out
    size_t end;    // one past the last byte read
};

namespace {

uint32_t ReadBigEndian32(const unsigned char* p) {
    return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | uint32_t{p[3]};
}

enum class Cut { kRecord, kIncomplete, kTooLong };

// Looks for a whole record at the start of the unconsumed bytes.
Cut CutRecord(RecordStream* rs, void** record, size_t* recordLen) {
    size_t avail = rs->end - rs->start;
    if (avail < kHeaderLen) return Cut::kIncomplete;
    size_t len = ReadBigEndian32(rs->buffer + rs->start);
    if (len > rs->maxRecordLen) return Cut::kTooLong;
    if (avail - kHeaderLen < len) return Cut::kIncomplete;
    *record = rs->buffer + rs->start + kHeaderLen;
    *recordLen = len;
    rs->start += kHeaderLen + len;
    return Cut::kRecord;
}

}  // namespace

extern "C" RecordStream* record_stream_new(int fd, size_t maxRecordLen) {
    // The length word cannot say more than 32 bits.
    if (maxRecordLen > UINT32_MAX) maxRecordLen = UINT32_MAX;
    if (maxRecordLen > SIZE_MAX - kHeaderLen) return nullptr;

    auto* rs = static_cast<RecordStream*>(calloc(1, sizeof(RecordStream)));
    if (rs == nullptr) return nullptr;
    rs->fd = fd;
    rs->maxRecordLen = maxRecordLen;
    rs->bufferLen = maxRecordLen + kHeaderLen;
    rs->buffer = static_cast<unsigned char*>(malloc(rs->bufferLen));
    if (rs->buffer == nullptr) {
        free(rs);
        return nullptr;
    }
    return rs;
}

extern "C" void record_stream_free(RecordStream* rs) {
    if (rs == nullptr) return;
    free(rs->buffer);
    free(rs);
}

extern "C" int record_stream_get_next(RecordStream* rs, void** outRecord, size_t* outRecordLen) {
    *outRecord = nullptr;
    *outRecordLen = 0;

    for (;;) {
        // Whatever is already buffered goes out before the descriptor is read
        // again, so that records that came in one read all get delivered.
        switch (CutRecord(rs, outRecord, outRecordLen)) {
            case Cut::kRecord:
                return 0;
            case Cut::kTooLong:
                // The stream cannot be resynchronised after this; every further
                // call fails the same way.
                errno = EFBIG;
                return -1;
            case Cut::kIncomplete:
                break;
        }

        // Move a partial record to the front so that the rest of it fits.
        if (rs->start > 0) {
            memmove(rs->buffer, rs->buffer + rs->start, rs->end - rs->start);
            rs->end -= rs->start;
            rs->start = 0;
        }

        ssize_t n = read(rs->fd, rs->buffer + rs->end, rs->bufferLen - rs->end);
        if (n == 0) return 0;  // end of stream, even in the middle of a record
        if (n < 0) return -1;  // errno from read: EAGAIN while a record is incomplete
        rs->end += static_cast<size_t>(n);
    }
}
