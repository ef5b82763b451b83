// Host tools under test run as separate processes: a temporary directory to
// hold their sockets and files, and a child with its stdin from a string and
// its output kept in files.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velard_test {

inline std::string ReadFile(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

inline bool WaitFor(const std::function<bool()>& cond,
                    std::chrono::milliseconds limit = std::chrono::milliseconds(5000)) {
    auto until = std::chrono::steady_clock::now() + limit;
    while (!cond()) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

class TempDir {
public:
    TempDir() {
        char tmpl[] = "/tmp/velard-test-XXXXXX";
        mPath = mkdtemp(tmpl);
    }
    ~TempDir() { std::filesystem::remove_all(mPath); }
    const std::filesystem::path& path() const { return mPath; }

    std::filesystem::path Script(const std::string& name, const std::string& body) const {
        std::filesystem::path p = mPath / name;
        std::ofstream(p) << "#!/bin/sh\n" << body << "\n";
        std::filesystem::permissions(p, std::filesystem::perms::owner_all);
        return p;
    }

private:
    std::filesystem::path mPath;
};

// A child process with stdin from a string and stdout/stderr kept in files.
class Child {
public:
    Child(const TempDir& dir, std::vector<std::string> argv, const std::string& input = "")
        : mOut(dir.path() / ("out" + std::to_string(++sCount))),
          mErr(dir.path() / ("err" + std::to_string(sCount))) {
        std::filesystem::path in = dir.path() / ("in" + std::to_string(sCount));
        std::ofstream(in) << input;
        std::vector<char*> args;
        for (auto& a : argv) args.push_back(a.data());
        args.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, 0, in.c_str(), O_RDONLY, 0);
        for (auto [fd, path] : {std::pair{1, &mOut}, std::pair{2, &mErr}})
            posix_spawn_file_actions_addopen(&files, fd, path->c_str(), O_WRONLY | O_CREAT, 0600);
        // A group of its own, so that a stray kill(0, ...) below it cannot
        // reach the test runner.
        posix_spawnattr_t attr;
        posix_spawnattr_init(&attr);
        posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP);
        EXPECT_EQ(posix_spawn(&mPid, args[0], &files, &attr, args.data(), environ), 0) << args[0];
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attr);
    }
    ~Child() {
        if (mPid > 0 && !mDone) {
            kill(mPid, SIGKILL);
            waitpid(mPid, nullptr, 0);
        }
    }

    void Signal(int sig) const { kill(mPid, sig); }

    // Whether the child has ended (and is reaped), without waiting. One that
    // never started counts as ended, so that no loop waits for it.
    bool Done() {
        if (!mDone) mDone = mPid <= 0 || waitpid(mPid, &mStatus, WNOHANG) == mPid;
        return mDone;
    }

    // Raw wait status, or -1 if the child is still running after the limit.
    int Wait(std::chrono::milliseconds limit = std::chrono::milliseconds(10000)) {
        if (!WaitFor([&] { return Done(); }, limit)) return -1;
        return mStatus;
    }

    std::string Out() const { return ReadFile(mOut); }
    std::string Err() const { return ReadFile(mErr); }

private:
    static inline int sCount = 0;
    pid_t mPid = -1;
    int mStatus = 0;
    bool mDone = false;
    std::filesystem::path mOut, mErr;
};

// The child exited (was not killed) with this code.
inline ::testing::AssertionResult ExitedWith(int status, int code) {
    if (status == -1) return ::testing::AssertionFailure() << "still running";
    if (!WIFEXITED(status)) return ::testing::AssertionFailure() << "raw status " << status;
    if (WEXITSTATUS(status) != code)
        return ::testing::AssertionFailure() << "exit code " << WEXITSTATUS(status);
    return ::testing::AssertionSuccess();
}

}  // namespace velard_test
