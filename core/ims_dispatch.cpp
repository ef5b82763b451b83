// The switchboard: one request record in, one stack call out; one stack
// record up, one framed Response or Notify out.
#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <memory>

#include "core/ims_core.h"
#include "handlers/common/ims_log.h"

#include <google/protobuf/io/coded_stream.h>

namespace {

// The stack library's hooks, taken a second time from this unit as the
// library asks of every unit that uses its strings.
[[maybe_unused]] const bool s_resipDataInit2 = resip::Data::init(resip::DataLocalSize<16>());
[[maybe_unused]] const bool s_resipCpimInit2 = resip::CpimContents::init();

pthread_mutex_t s_pendingRequestsMutex = PTHREAD_MUTEX_INITIALIZER;
RequestInfo* s_pendingRequests = nullptr;

// Frames up to this size are built on the calling thread's stack; larger
// ones on the heap, since the stack's threads may have small stacks.
constexpr size_t kStackFrameBytes = 16 * 1024;

void putWord(uint8_t* p, uint32_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
    p[2] = static_cast<uint8_t>(v >> 16);
    p[3] = static_cast<uint8_t>(v >> 24);
}

// Frames the message once into one buffer of exact size and sends it.
void sendFrame(const google::protobuf::MessageLite& message, uint32_t type, uint32_t token) {
    size_t payload = message.ByteSizeLong();
    size_t total = payload + 12;
    if (total > kMaxCommandBytes) {
        // Too large for the client: SendRecord drops it with its log line,
        // without the buffer ever being built.
        SendRecord(nullptr, total);
        return;
    }
    uint8_t local[kStackFrameBytes];
    std::unique_ptr<uint8_t[]> heap;
    uint8_t* buf = local;
    if (total > sizeof local) {
        heap.reset(new uint8_t[total]);
        buf = heap.get();
    }
    putWord(buf, static_cast<uint32_t>(payload + 8));
    putWord(buf + 4, type);
    putWord(buf + 8, token);
    message.SerializeWithCachedSizesToArray(buf + 12);
    SendRecord(buf, total);
}

}  // namespace

// Never destroyed: stack threads may still look up rows while the process
// exits after its client has gone.
std::map<int, CommandInfo>& s_commandMap = *new std::map<int, CommandInfo>;
std::map<int, NotifyInfo>& s_notifyMap = *new std::map<int, NotifyInfo>;

void ImsFillDispatchMaps() {
    s_commandMap.clear();
    for (size_t i = 0; i < s_commandCount; i++)
        s_commandMap[s_commands[i].requestNumber] = s_commands[i];
    s_notifyMap.clear();
    for (size_t i = 0; i < s_notificationCount; i++)
        s_notifyMap[s_notifications[i].notifyNumber] = s_notifications[i];
}

size_t ImsPendingRequestCount() {
    pthread_mutex_lock(&s_pendingRequestsMutex);
    size_t n = 0;
    for (RequestInfo* r = s_pendingRequests; r != nullptr; r = r->next) n++;
    pthread_mutex_unlock(&s_pendingRequestsMutex);
    return n;
}

void ProcessCommandBuffer(const void* record, size_t length) {
    // Fewer bytes than the reserved word and the token: nothing to read.
    if (length < 8) {
        IMS_LOGE("Short command record dropped (%zu bytes)", length);
        return;
    }
    // One Request per reading thread, parsed into again for each record (the
    // parse clears it first). A cleared message keeps its sub-messages and
    // string buffers, so a request does not pay for building and tearing down
    // the envelope's hundred fields or its body's; what it keeps is bounded by
    // the largest record of each request id.
    static thread_local imsCommonStruc::Request request;
    google::protobuf::io::CodedInputStream input(static_cast<const uint8_t*>(record),
                                                 static_cast<int>(length));
    uint32_t reserved = 0;
    uint32_t token = 0;
    input.ReadLittleEndian32(&reserved);
    input.ReadLittleEndian32(&token);
    // A request that does not parse whole goes on with what it has.
    request.ParsePartialFromCodedStream(&input);

    int reqid = request.reqid();
    auto row = s_commandMap.find(reqid);
    // Row 0 is the table's empty lead row, no command.
    if (row == s_commandMap.end() || row->second.dispatchFunction == nullptr) {
        IMS_LOGE("unsupported request code %d", reqid);
        return;
    }
    RequestInfo* info = static_cast<RequestInfo*>(calloc(1, sizeof(RequestInfo)));
    if (info == nullptr) {
        IMS_LOGE("not enough memory for new request.");
        return;
    }
    info->commandInfo = &row->second;
    pthread_mutex_lock(&s_pendingRequestsMutex);
    info->next = s_pendingRequests;
    s_pendingRequests = info;
    pthread_mutex_unlock(&s_pendingRequestsMutex);

    row->second.dispatchFunction(token, request, info);

    // The request has been handed to the stack and its token travels with
    // it; nothing reads the entry after this, so it retires here instead of
    // growing the list for the life of the process.
    pthread_mutex_lock(&s_pendingRequestsMutex);
    for (RequestInfo** p = &s_pendingRequests; *p != nullptr; p = &(*p)->next) {
        if (*p == info) {
            *p = info->next;
            break;
        }
    }
    pthread_mutex_unlock(&s_pendingRequestsMutex);
    free(info);
}

void IMS_onResponse(unsigned int token, ImsData* data) {
    if (data == nullptr) {
        IMS_LOGE("invalid response: NULL");
        return;
    }
    int id = data->GetId();
    IMS_LOGE("%s() Resp Id:%d", "IMS_onResponse", id);
    // One message per answering thread, as the Request per reading thread:
    // cleared for each answer, it keeps its sub-messages and buffers.
    static thread_local imsCommonStruc::Response response;
    response.Clear();
    auto row = s_commandMap.find(id);
    if (row == s_commandMap.end() || row->second.responseFunction == nullptr ||
        row->second.responseFunction(token, response, data) < 0) {
        IMS_LOGE("Response function failure: %d", id);
        return;
    }
    sendFrame(response, 1, token);
}

void IMS_onNotify(ImsData* data) {
    if (data == nullptr) {
        IMS_LOGE("invalid response: NULL");
        return;
    }
    int id = data->GetId();
    if (logLevel > 1) IMS_LOGD("%s() Notify Id:%d", "IMS_onNotify", id);
    static thread_local imsCommonStruc::Notify notify;
    notify.Clear();
    auto row = s_notifyMap.find(id);
    if (row == s_notifyMap.end() || row->second.notifyFunction == nullptr ||
        row->second.notifyFunction(notify, data) < 0) {
        IMS_LOGE("Response function failure: %d", id);
        return;
    }
    sendFrame(notify, 2, 0);
}
