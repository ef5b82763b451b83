// Host logging: one line per call on stderr, "<L> <tag>: <message>".
//
// The whole line goes out in a single write(2) so that lines from several
// threads (the loop thread and the stack's callback threads) never mix. A
// line is capped at PIPE_BUF bytes: writes up to that size are atomic on a
// pipe, which is what stderr usually is under a test runner or velard-host,
// and the device's logger truncates long entries in the same way.
#include <android/log.h>

#include "host/log_line.h"

#include <errno.h>
#include <limits.h>
#include <stdarg.h>
#include <unistd.h>

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    // Callers often log and then look at errno themselves.
    const int savedErrno = errno;

    char line[PIPE_BUF];
    va_list ap;
    va_start(ap, fmt);
    size_t len = FormatLogLine(line, sizeof line, prio, tag, fmt, ap);
    va_end(ap);

    size_t done = 0;
    while (done < len) {
        ssize_t w = write(STDERR_FILENO, line + done, len - done);
        if (w < 0) {
            if (errno == EINTR) continue;
            break;
        }
        done += static_cast<size_t>(w);
    }

    errno = savedErrno;
    return static_cast<int>(done);
}
