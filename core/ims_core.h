// The daemon core: process state, the event loop, the command channel and
// the two dispatch tables, as the handlers and the tests see them.
#pragma once

#include <pthread.h>
#include <stddef.h>
#include <stdint.h>

#include <map>

#include "core/ims_handler.h"

struct CommandInfo {
    int requestNumber;
    void (*dispatchFunction)(uint32_t token, imsCommonStruc::Request& request, RequestInfo* info);
    int (*responseFunction)(uint32_t token, imsCommonStruc::Response& response, ImsData* data);
};

struct NotifyInfo {
    int notifyNumber;
    int (*notifyFunction)(imsCommonStruc::Notify& notify, ImsData* data);
};

struct RequestInfo {
    CommandInfo* commandInfo;
    RequestInfo* next;
};

// Tables, in their fixed order, each led by an all-zero row.
extern const CommandInfo s_commands[];
extern const size_t s_commandCount;
extern const NotifyInfo s_notifications[];
extern const size_t s_notificationCount;

// Filled from the tables before the start handshake; read without a lock.
extern std::map<int, CommandInfo>& s_commandMap;
extern std::map<int, NotifyInfo>& s_notifyMap;
void ImsFillDispatchMaps();

extern IMS_Env s_imsEnv;

// Limits of the command channel.
constexpr size_t kMaxCommandBytes = 0x80000;

// Start-up.
void SwitchUser();
void ImsStartEventLoop();
void ImsRegister();
void* DispatchThreadMain(void* param);

// Event loop.
struct imsEvent {
    imsEvent* next;
    imsEvent* prev;
    int fd;
    int index;
    bool persist;
    void (*func)(int fd, short events, void* param);
    void* param;
};
constexpr int kMaxEvents = 8;
int ImsEventInit();
int ImsEventSet(imsEvent* ev, int fd, bool persist, void (*func)(int, short, void*), void* param);
void ImsEventAdd(imsEvent* ev);
void ImsEventDel(imsEvent* ev);
void ImsEventLoop();
void TriggerWakeup();
void ProcessWakeupCallback(int fd, short events, void* param);
// For tests: one round of the loop (select with the timeout in ms, then fire);
// returns select's result.
int ImsEventLoopOnce(int timeoutMs);
int ImsEventNfds();
bool ImsEventIsWatched(int fd);
// The loop runs on this thread (tests set it; start-up sets it for the
// dispatch thread).
void ImsEventSetLoopThread(pthread_t thread);
int ImsWakeupPipeInit();

// Command channel.
void ListenCallback(int fd, short events, void* param);
void ProcessCommandsCallback(int fd, short events, void* param);
int SendRecord(const void* data, size_t length);
int ImsListenFd();
int ImsCommandFd();
void ImsSetListenFd(int fd);

// Dispatch.
void ProcessCommandBuffer(const void* record, size_t length);
void IMS_onResponse(unsigned int token, ImsData* data);
void IMS_onNotify(ImsData* data);
size_t ImsPendingRequestCount();
