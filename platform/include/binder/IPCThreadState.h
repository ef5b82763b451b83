#pragma once

namespace android {

// Host stand-in: joinThreadPool() parks the calling thread for good, as the
// device's pool does for a daemon that registers no service.
class IPCThreadState {
public:
    static IPCThreadState* self();
    void joinThreadPool(bool isMain = true);
};

}  // namespace android
