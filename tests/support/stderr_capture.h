// Captures what this process writes to stderr, for tests of log output.
#pragma once

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace velard_test {

// Sends stderr into a pipe while alive and collects what arrives; a thread
// drains the pipe, so writers never block and each write(2) of up to
// PIPE_BUF bytes arrives whole, as on the device's log pipe.
class StderrCapture {
public:
    StderrCapture() {
        fflush(stderr);
        int p[2];
        if (pipe2(p, O_CLOEXEC) != 0) abort();
        read_ = p[0];
        saved_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
        dup2(p[1], STDERR_FILENO);
        close(p[1]);
        drain_ = std::thread([this] {
            char buf[8192];
            for (ssize_t n; (n = read(read_, buf, sizeof buf)) > 0;)
                text_.append(buf, static_cast<size_t>(n));
        });
    }
    ~StderrCapture() { finish(); }
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    // Restores stderr (the first time) and returns everything written meanwhile.
    const std::string& finish() {
        if (saved_ >= 0) {
            fflush(stderr);
            dup2(saved_, STDERR_FILENO);
            close(saved_);
            saved_ = -1;
            drain_.join();
            close(read_);
        }
        return text_;
    }

private:
    int read_ = -1;
    int saved_ = -1;
    std::thread drain_;
    std::string text_;
};

inline std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

}  // namespace velard_test
