// The select-based event loop of the dispatch thread: a fixed table of eight
// watched descriptors, the read set beside it, and a list of due events that
// fire outside any lock.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/select.h>
#include <unistd.h>

#include <atomic>

#include "core/ims_core.h"
#include "handlers/common/ims_log.h"

namespace {

pthread_mutex_t s_eventMutex = PTHREAD_MUTEX_INITIALIZER;
imsEvent* s_watchTable[kMaxEvents];
fd_set s_readFds;
int s_nfds = 0;
imsEvent s_pendingList;  // sentinel of a circular list

std::atomic<bool> s_loopThreadSet{false};
pthread_t s_loopThread;

std::atomic<int> s_fdWakeupRead{-1};
std::atomic<int> s_fdWakeupWrite{-1};
imsEvent s_wakeupEvent;

void initList(imsEvent* list) {
    memset(list, 0, sizeof(*list));
    list->next = list;
    list->prev = list;
    list->fd = -1;
}

void addToList(imsEvent* ev, imsEvent* list) {
    ev->next = list;
    ev->prev = list->prev;
    ev->prev->next = ev;
    list->prev = ev;
}

void removeFromList(imsEvent* ev) {
    ev->next->prev = ev->prev;
    ev->prev->next = ev->next;
    ev->next = nullptr;
    ev->prev = nullptr;
}

// Called with s_eventMutex held.
void recomputeNfds() {
    int maxFd = 0;
    for (imsEvent* ev : s_watchTable) {
        if (ev != nullptr && ev->fd > maxFd) maxFd = ev->fd;
    }
    s_nfds = maxFd + 1;
}

// Called with s_eventMutex held.
void removeWatch(int index) {
    imsEvent* ev = s_watchTable[index];
    s_watchTable[index] = nullptr;
    ev->index = -1;
    FD_CLR(ev->fd, &s_readFds);
    if (ev->fd + 1 == s_nfds) recomputeNfds();
}

void fireEvent(imsEvent* ev) { ev->func(ev->fd, 0, ev->param); }

}  // namespace

int ImsEventInit() {
    int rc = pthread_mutex_init(&s_eventMutex, nullptr);
    FD_ZERO(&s_readFds);
    for (imsEvent*& slot : s_watchTable) slot = nullptr;
    s_nfds = 0;
    initList(&s_pendingList);
    return rc;
}

int ImsEventSet(imsEvent* ev, int fd, bool persist, void (*func)(int, short, void*), void* param) {
    memset(ev, 0, sizeof(*ev));
    ev->fd = fd;
    ev->index = -1;
    ev->persist = persist;
    ev->func = func;
    ev->param = param;
    return fcntl(fd, F_SETFL, O_NONBLOCK);
}

void ImsEventAdd(imsEvent* ev) {
    // A descriptor past the read set's capacity cannot be watched; setting
    // its bit would write outside the set.
    if (ev->fd < 0 || ev->fd >= FD_SETSIZE) {
        IMS_LOGE("imsEvent: descriptor %d cannot be watched", ev->fd);
        return;
    }
    pthread_mutex_lock(&s_eventMutex);
    for (int i = 0; i < kMaxEvents; i++) {
        if (s_watchTable[i] == nullptr) {
            s_watchTable[i] = ev;
            ev->index = i;
            FD_SET(ev->fd, &s_readFds);
            if (ev->fd >= s_nfds) s_nfds = ev->fd + 1;
            break;
        }
    }
    pthread_mutex_unlock(&s_eventMutex);
}

void ImsEventDel(imsEvent* ev) {
    pthread_mutex_lock(&s_eventMutex);
    if (ev->index >= 0 && ev->index < kMaxEvents) removeWatch(ev->index);
    pthread_mutex_unlock(&s_eventMutex);
}

int ImsEventLoopOnce(int timeoutMs) {
    fd_set rfds;
    int nfds;
    // The copy is taken under the lock: another thread may be changing the
    // set, and a torn copy could watch a descriptor that is gone.
    pthread_mutex_lock(&s_eventMutex);
    memcpy(&rfds, &s_readFds, sizeof(fd_set));
    nfds = s_nfds;
    pthread_mutex_unlock(&s_eventMutex);

    timeval tv{};
    if (timeoutMs >= 0) {
        tv.tv_sec = timeoutMs / 1000;
        tv.tv_usec = (timeoutMs % 1000) * 1000;
    }
    int n = select(nfds, &rfds, nullptr, nullptr, timeoutMs >= 0 ? &tv : nullptr);
    int selectErrno = errno;
    IMS_LOGE("ImsEventLoop: select (%d)", n);
    if (n <= 0) {
        errno = selectErrno;
        return n;
    }

    pthread_mutex_lock(&s_eventMutex);
    for (int i = 0; i < kMaxEvents && n > 0; i++) {
        imsEvent* ev = s_watchTable[i];
        if (ev != nullptr && FD_ISSET(ev->fd, &rfds)) {
            addToList(ev, &s_pendingList);
            if (!ev->persist) removeWatch(i);
            n--;
        }
    }
    pthread_mutex_unlock(&s_eventMutex);

    imsEvent* ev = s_pendingList.next;
    while (ev != &s_pendingList) {
        imsEvent* next = ev->next;
        removeFromList(ev);
        fireEvent(ev);
        ev = next;
    }
    return 1;
}

void ImsEventLoop() {
    for (;;) {
        int n = ImsEventLoopOnce(-1);
        if (n < 0) {
            if (errno == EINTR) continue;
            IMS_LOGE("imsEvent: select error (%d)", errno);
            return;
        }
    }
}

int ImsEventNfds() {
    pthread_mutex_lock(&s_eventMutex);
    int n = s_nfds;
    pthread_mutex_unlock(&s_eventMutex);
    return n;
}

bool ImsEventIsWatched(int fd) {
    if (fd < 0 || fd >= FD_SETSIZE) return false;
    pthread_mutex_lock(&s_eventMutex);
    bool set = FD_ISSET(fd, &s_readFds);
    pthread_mutex_unlock(&s_eventMutex);
    return set;
}

void ImsEventSetLoopThread(pthread_t thread) {
    s_loopThread = thread;
    s_loopThreadSet.store(true);
}

void TriggerWakeup() {
    if (s_loopThreadSet.load() && pthread_equal(pthread_self(), s_loopThread)) return;
    // Before the pipe exists there is nothing to wake: the loop has not made
    // its first copy of the read set yet, so it will see the change anyway.
    int fd = s_fdWakeupWrite.load();
    if (fd < 0) return;
    ssize_t ret;
    do {
        ret = write(fd, " ", 1);
    } while (ret < 0 && errno == EINTR);
}

void ProcessWakeupCallback(int, short, void*) {
    char buf[16];
    IMS_LOGV("ProcessWakeupCallback");
    int fd = s_fdWakeupRead.load();
    for (;;) {
        ssize_t ret = read(fd, buf, sizeof buf);
        if (ret > 0) continue;
        if (ret < 0 && errno == EINTR) continue;
        break;
    }
}

// Makes the wake-up pipe and watches its read end. Returns 0, or -1 with
// the failure logged.
int ImsWakeupPipeInit() {
    int fds[2];
    if (pipe(fds) < 0) {
        IMS_LOGE("Error in pipe() errno: %d", errno);
        return -1;
    }
    s_fdWakeupRead.store(fds[0]);
    s_fdWakeupWrite.store(fds[1]);
    if (fcntl(fds[0], F_SETFL, O_NONBLOCK) < 0) {
        IMS_LOGE("Error setting O_NONBLOCK errno: %d", errno);
        return -1;
    }
    ImsEventSet(&s_wakeupEvent, fds[0], true, ProcessWakeupCallback, nullptr);
    ImsEventAdd(&s_wakeupEvent);
    TriggerWakeup();
    return 0;
}
