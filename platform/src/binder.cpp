// The daemon registers no binder service, so on a host the thread pool has
// nothing to run: starting it does nothing and joining it parks the caller.
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>

#include <unistd.h>

namespace android {

sp<ProcessState> ProcessState::self() {
    // One instance for the life of the process. The extra reference keeps it
    // alive past static destruction, whatever order that runs in.
    static ProcessState* const instance = [] {
        auto* p = new ProcessState;
        p->incStrong(p);
        return p;
    }();
    return sp<ProcessState>(instance);
}

void ProcessState::startThreadPool() {}

IPCThreadState* IPCThreadState::self() {
    thread_local IPCThreadState state;
    return &state;
}

void IPCThreadState::joinThreadPool(bool /*isMain*/) {
    for (;;) pause();
}

}  // namespace android
