// Host logging: one line per call on stderr, "<L> <tag>: <message>".
//
// The whole line goes out in a single write(2) so that lines from several
// threads (the loop thread and the stack's callback threads) never mix. A
// line is capped at PIPE_BUF bytes: writes up to that size are atomic on a
// pipe, which is what stderr usually is under a test runner or velard-host,
// and the device's logger truncates long entries in the same way.
#include <android/log.h>

#include <errno.h>
#include <limits.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace {

constexpr size_t kMaxLine = PIPE_BUF;

char PriorityLetter(int prio) {
    // Indexed by priority: VERBOSE (2) to FATAL (7); anything else is '?'.
    static const char kLetters[] = "??VDIWEF";
    return prio >= ANDROID_LOG_VERBOSE && prio <= ANDROID_LOG_FATAL ? kLetters[prio] : '?';
}

}  // namespace

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    // Callers often log and then look at errno themselves.
    const int savedErrno = errno;

    char line[kMaxLine];
    int n = snprintf(line, sizeof line, "%c %s: ", PriorityLetter(prio), tag ? tag : "");
    size_t len =
        n < 0 ? 0
              : (static_cast<size_t>(n) < sizeof line ? static_cast<size_t>(n) : sizeof line - 1);

    if (fmt != nullptr && len < sizeof line - 1) {
        va_list ap;
        va_start(ap, fmt);
        n = vsnprintf(line + len, sizeof line - len, fmt, ap);
        va_end(ap);
        if (n > 0) {
            // vsnprintf reports the untruncated length; keep what fitted.
            size_t room = sizeof line - len - 1;
            len += static_cast<size_t>(n) < room ? static_cast<size_t>(n) : room;
        }
    }
    // Room for the newline: drop the last character of a full line.
    if (len > sizeof line - 1) len = sizeof line - 1;
    line[len++] = '\n';

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
