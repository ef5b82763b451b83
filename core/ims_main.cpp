// The life of the process up to the binder pool: identity, the dispatch
// thread with its tables and event loop, the stack, the listening socket.
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <cutils/multiuser.h>
#include <cutils/properties.h>
#include <errno.h>
#include <linux/capability.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "core/ims_core.h"
#include "handlers/common/ims_log.h"

void ImsWatchListenFd();

namespace {

// The stack library's hooks, taken before anything else of the daemon runs.
[[maybe_unused]] const bool s_resipDataInit = resip::Data::init(resip::DataLocalSize<16>());
[[maybe_unused]] const bool s_resipCpimInit = resip::CpimContents::init();

int s_started = 0;
pthread_mutex_t s_startupMutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t s_startupCond = PTHREAD_COND_INITIALIZER;
pthread_t s_dispatchThread;
int s_registerCalled = 0;

const char kSocketName[] = "velard";
constexpr unsigned kCapabilityMask = 0x203087;

}  // namespace

Velar* s_velar = nullptr;
IMS_Env s_imsEnv = {IMS_onResponse, IMS_onNotify};

void SwitchUser() {
    char value[PROPERTY_VALUE_MAX];
    prctl(PR_SET_KEEPCAPS, 1, 0, 0, 0);
    property_get("sys.ims.current_uid", value, "0");
    if (setuid(multiuser_get_uid(atoi(value), 1000)) != 0) {
        // Not looked at: a daemon that cannot change identity goes on as it is.
    }
    __user_cap_header_struct header;
    __user_cap_data_struct data;
    header.version = _LINUX_CAPABILITY_VERSION_1;
    header.pid = 0;
    data.effective = kCapabilityMask;
    data.permitted = kCapabilityMask;
    data.inheritable = 0;
    syscall(SYS_capset, &header, &data);
}

void ImsStartEventLoop() {
    pthread_attr_t attr;
    pthread_mutex_lock(&s_startupMutex);
    pthread_attr_init(&attr);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    int result = pthread_create(&s_dispatchThread, &attr, DispatchThreadMain, nullptr);
    if (result != 0) {
        IMS_LOGE("Failed to create dispatch thread errno: %d", result);
        pthread_mutex_unlock(&s_startupMutex);
        return;
    }
    while (s_started == 0) pthread_cond_wait(&s_startupCond, &s_startupMutex);
    pthread_mutex_unlock(&s_startupMutex);
}

void* DispatchThreadMain(void*) {
    ImsFillDispatchMaps();
    ImsEventInit();
    ImsEventSetLoopThread(pthread_self());

    pthread_mutex_lock(&s_startupMutex);
    s_started = 1;
    pthread_cond_broadcast(&s_startupCond);
    pthread_mutex_unlock(&s_startupMutex);

    if (ImsWakeupPipeInit() < 0) return nullptr;
    ImsEventLoop();
    IMS_LOGE("Error in eventLoopBase errno: %d", errno);
    kill(0, SIGKILL);
    return nullptr;
}

void ImsRegister() {
    if (s_registerCalled > 0) {
        IMS_LOGE("ImsRegister has been called more than once.");
        IMS_LOGE("Subsequent call ignored");
        return;
    }
    s_velar = Velar::GetInstance();
    if (s_velar->Init(&s_imsEnv) < 0) {
        IMS_LOGE("Ims Stack init failed");
        exit(-1);
    }
    s_registerCalled = 1;

    pthread_mutex_lock(&s_startupMutex);
    int started = s_started;
    pthread_mutex_unlock(&s_startupMutex);
    if (started == 0) ImsStartEventLoop();

    char name[64];
    snprintf(name, sizeof name, "ANDROID_SOCKET_%s", kSocketName);
    const char* value = getenv(name);
    errno = 0;
    long fd = value == nullptr ? -1 : strtol(value, nullptr, 10);
    if (value == nullptr || errno != 0 || fd < 0 || fd > INT32_MAX) {
        ImsSetListenFd(-1);
        IMS_LOGE("Failed to get socket");
        exit(-1);
    }
    int rc = listen(static_cast<int>(fd), 4);
    ImsSetListenFd(static_cast<int>(fd));
    if (rc < 0) {
        IMS_LOGE("Failed to listen on control socket '%d':%s", static_cast<int>(fd), strerror(errno));
        exit(-1);
    }
    ImsWatchListenFd();
}

int ImsMain() {
    SwitchUser();
    ImsStartEventLoop();
    ImsRegister();
    android::ProcessState::self()->startThreadPool();
    android::IPCThreadState::self()->joinThreadPool(true);
    return 0;
}
