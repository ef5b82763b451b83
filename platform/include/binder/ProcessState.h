#pragma once
#include <utils/RefBase.h>

namespace android {

// Host stand-in: the daemon serves no binder interface on a host, so the
// pool has nothing to start.
class ProcessState : public virtual RefBase {
public:
    static sp<ProcessState> self();
    void startThreadPool();
};

}  // namespace android
