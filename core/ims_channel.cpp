// The command socket: accepting the one client, cutting its byte stream into
// records, writing whole records back, and the end of the daemon when the
// client goes away.
#include <cutils/record_stream.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>

#include "core/ims_core.h"
#include "handlers/common/ims_log.h"

namespace {

std::atomic<int> s_fdListen{-1};
// Written on the loop thread, read by every writer.
std::atomic<int> s_fdCommand{-1};
imsEvent s_listenEvent;
imsEvent s_commandsEvent;
pthread_mutex_t s_writeMutex = PTHREAD_MUTEX_INITIALIZER;

void onCommandsSocketClosed(RecordStream* stream) {
    close(s_fdCommand.load());
    s_fdCommand.store(-1);
    ImsEventDel(&s_commandsEvent);
    record_stream_free(stream);
    TriggerWakeup();
    IMS_LOGE("OnCommandsSocketClosed: reset velard");
    close(s_fdListen.load());
    exit(-1);
}

// True when the connected client has closed its end: this process ends as
// soon as the loop reads that end of stream.
bool clientHasLeft(int fd) {
    pollfd pfd{fd, POLLRDHUP, 0};
    return poll(&pfd, 1, 0) > 0 && (pfd.revents & (POLLRDHUP | POLLHUP | POLLERR | POLLNVAL)) != 0;
}

}  // namespace

int ImsListenFd() {
    return s_fdListen.load();
}
int ImsCommandFd() {
    return s_fdCommand.load();
}

void ImsSetListenFd(int fd) {
    s_fdListen.store(fd);
    ImsEventSet(&s_listenEvent, fd, true, ListenCallback, nullptr);
}

void ImsWatchListenFd() {
    ImsEventAdd(&s_listenEvent);
    TriggerWakeup();
}

void ListenCallback(int, short, void*) {
    // A client that connects just as the previous one leaves is no second
    // client: the loop may see it before the leaving client's end of stream.
    // It stays in the backlog, where the next daemon serves it, instead of
    // being refused here. The listening socket stops being watched, since it
    // stays readable and the loop would spin on it until the end of stream
    // ends the process.
    int current = s_fdCommand.load();
    if (current >= 0 && clientHasLeft(current)) {
        ImsEventDel(&s_listenEvent);
        return;
    }
    sockaddr_un peer;
    socklen_t peerLen = sizeof(peer);
    int fd = accept(s_fdListen.load(), reinterpret_cast<sockaddr*>(&peer), &peerLen);
    if (fd < 0) {
        IMS_LOGE("Error on accept() errno: %d", errno);
        TriggerWakeup();
        return;
    }
    // One client at a time: a second connection while the first is live is
    // closed at once, so that it cannot take over the descriptor or the
    // stream of the first.
    if (current >= 0) {
        IMS_LOGE("Refusing connection: a client is already connected");
        close(fd);
        return;
    }
    // A descriptor the read set cannot hold would never be served.
    if (fd >= FD_SETSIZE) {
        IMS_LOGE("Refusing connection: descriptor %d out of range", fd);
        close(fd);
        return;
    }
    s_fdCommand.store(fd);
    errno = 0;
    if (fcntl(fd, F_SETFL, O_NONBLOCK) < 0) {
        IMS_LOGE("Error setting O_NONBLOCK errno: %d", errno);
    }
    IMS_LOGV("new connection");
    RecordStream* stream = record_stream_new(fd, kMaxCommandBytes);
    ImsEventSet(&s_commandsEvent, fd, true, ProcessCommandsCallback, stream);
    ImsEventAdd(&s_commandsEvent);
    TriggerWakeup();
}

void ProcessCommandsCallback(int, short, void* param) {
    RecordStream* stream = static_cast<RecordStream*>(param);
    for (;;) {
        void* record = nullptr;
        size_t length = 0;
        errno = 0;
        // The record and its length mean something only when the result is
        // 0: on a failure the stream may leave them as they were. It reads
        // once per call, so a partial record (or a client that closed in the
        // middle of one) is EAGAIN first and the end of the stream on the
        // next wake-up; a length word over the limit fails with EFBIG only
        // once the buffer is full without a whole record.
        int ret = record_stream_get_next(stream, &record, &length);
        if (ret == 0 && record == nullptr) {
            IMS_LOGV("EOS. Closing command socket");
            onCommandsSocketClosed(stream);
            return;
        }
        if (ret == 0) {
            ProcessCommandBuffer(record, length);
            continue;
        }
        if (errno == EAGAIN || errno == EINTR) return;
        IMS_LOGE("Error on reading command socket errno: %d", errno);
        onCommandsSocketClosed(stream);
        return;
    }
}

int SendRecord(const void* data, size_t length) {
    int fd = s_fdCommand.load();
    if (fd < 0) return -1;
    if (length > kMaxCommandBytes) {
        IMS_LOGE("IMS: packet larger than %u (%u)", static_cast<unsigned>(kMaxCommandBytes),
                 static_cast<unsigned>(length));
        return -1;
    }
    const char* p = static_cast<const char*>(data);
    size_t written = 0;
    pthread_mutex_lock(&s_writeMutex);
    while (written < length) {
        // send rather than write: a client that has gone must show as EPIPE
        // on this path, not as a SIGPIPE that kills the process.
        ssize_t n = send(fd, p + written, length - written, MSG_NOSIGNAL);
        if (n < 0) {
            if (errno == EINTR) continue;
            if (errno == EAGAIN) {
                // A slow client holds up every writer until it reads; wait
                // for room rather than spin on the descriptor.
                pollfd pfd{fd, POLLOUT, 0};
                poll(&pfd, 1, -1);
                continue;
            }
            IMS_LOGE("IMS Response: unexpected error on write errno: %d", errno);
            // The descriptor stays in the read set: the loop's next select
            // fails on it and the process ends.
            close(fd);
            pthread_mutex_unlock(&s_writeMutex);
            return -1;
        }
        written += static_cast<size_t>(n);
    }
    pthread_mutex_unlock(&s_writeMutex);
    return 0;
}
