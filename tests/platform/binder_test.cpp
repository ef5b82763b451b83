#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

// The daemon's main thread ends in joinThreadPool; returning from it would
// end the daemon.
TEST(Binder, JoinThreadPoolNeverReturns) {
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        android::ProcessState::self()->startThreadPool();
        android::IPCThreadState::self()->joinThreadPool();
        _exit(0);
    }
    usleep(200 * 1000);
    int status;
    EXPECT_EQ(waitpid(pid, &status, WNOHANG), 0) << "joinThreadPool returned";
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
}

}  // namespace
