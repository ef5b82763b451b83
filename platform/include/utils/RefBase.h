// Host stand-in: just enough of the device's reference counting for the
// thread-pool calls of the daemon's start-up.
#pragma once
#include <atomic>

namespace android {

class RefBase {
public:
    void incStrong(const void*) const { mRefs.fetch_add(1, std::memory_order_relaxed); }
    void decStrong(const void*) const {
        if (mRefs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

protected:
    RefBase() = default;
    virtual ~RefBase() = default;

private:
    mutable std::atomic<int> mRefs{0};
};

template <typename T>
class sp {
public:
    sp() = default;
    sp(T* p) : mPtr(p) {
        if (mPtr) mPtr->incStrong(this);
    }
    sp(const sp& o) : sp(o.mPtr) {}
    ~sp() {
        if (mPtr) mPtr->decStrong(this);
    }
    sp& operator=(const sp& o) {
        sp tmp(o);
        std::swap(mPtr, tmp.mPtr);
        return *this;
    }
    T* operator->() const { return mPtr; }
    T& operator*() const { return *mPtr; }
    T* get() const { return mPtr; }

private:
    T* mPtr = nullptr;
};

}  // namespace android
