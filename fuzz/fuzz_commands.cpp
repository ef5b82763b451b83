// The client's byte stream, as the command socket's callback takes it: cut
// into records by the record stream (fed through a socket pair in pieces of
// a size the input chooses) and each record handed to ProcessCommandBuffer.
// Every record a handler gives the stack is answered at once with the
// simulator's success record through IMS_onResponse, so the response
// handlers run too; with no client connected the frame is built and dropped.
//
// Input: one byte choosing the piece size (1 to 256), then the stream.
//
// Where the daemon would end the process (end of stream, a failed read, a
// record over the limit) the harness stops the input instead.
#include <cutils/record_stream.h>
#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>

#include "core/ims_core.h"
#include "stack/sim/velar_sim.h"

namespace {

void answer(unsigned int token, ImsData* record, void*) {
    std::unique_ptr<ImsData> request(record);
    std::unique_ptr<ImsData> response(velar_sim::makeAutoAnswer(record));
    if (response) IMS_onResponse(token, response.get());
}

// Takes every whole record out of the stream; false once the daemon would
// have closed the connection.
bool drain(RecordStream* stream) {
    for (;;) {
        void* record = nullptr;
        size_t length = 0;
        errno = 0;
        int ret = record_stream_get_next(stream, &record, &length);
        if (ret == 0 && record == nullptr) return false;
        if (ret == 0) {
            ProcessCommandBuffer(record, length);
            continue;
        }
        return errno == EAGAIN || errno == EINTR;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    ImsFillDispatchMaps();
    s_velar = Velar::GetInstance();
    velar_sim::setCaptureHook(answer, nullptr);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const size_t piece = 1 + data[0];
    data++;
    size--;
    int sv[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, sv) != 0) return 0;
    fcntl(sv[0], F_SETFL, O_NONBLOCK);
    RecordStream* stream = record_stream_new(sv[0], kMaxCommandBytes);
    size_t off = 0;
    bool open = true;
    while (open) {
        if (off < size) {
            size_t n = size - off < piece ? size - off : piece;
            ssize_t w = write(sv[1], data + off, n);
            if (w > 0) off += static_cast<size_t>(w);
        } else {
            // The client goes away: what is left in the stream is read to
            // its end, as the daemon would before it exits.
            shutdown(sv[1], SHUT_WR);
            open = false;
        }
        if (!drain(stream)) break;
    }
    record_stream_free(stream);
    close(sv[0]);
    close(sv[1]);
    return 0;
}
