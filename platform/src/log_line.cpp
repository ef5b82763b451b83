#include "host/log_line.h"

#include <android/log.h>
#include <stdio.h>
#include <string.h>

namespace {

char PriorityLetter(int prio) {
    // Indexed by priority: VERBOSE (2) to FATAL (7); anything else is '?'.
    static const char kLetters[] = "??VDIWEF";
    return prio >= ANDROID_LOG_VERBOSE && prio <= ANDROID_LOG_FATAL ? kLetters[prio] : '?';
}

}  // namespace

size_t FormatLogLine(char* line, size_t size, int prio, const char* tag, const char* fmt,
                     va_list ap) {
    // The prefix is copied rather than printed: every line pays for it, and
    // a second pass of the formatter costs about as much as the message.
    const char* t = tag ? tag : "";
    size_t tagLen = strnlen(t, size - 5);
    line[0] = PriorityLetter(prio);
    line[1] = ' ';
    memcpy(line + 2, t, tagLen);
    memcpy(line + 2 + tagLen, ": ", 2);
    size_t len = tagLen + 4;

    if (fmt != nullptr && len < size - 1) {
        int n = vsnprintf(line + len, size - len, fmt, ap);
        if (n > 0) {
            // vsnprintf reports the untruncated length; keep what fitted.
            size_t room = size - len - 1;
            len += static_cast<size_t>(n) < room ? static_cast<size_t>(n) : room;
        }
    }
    // Room for the newline: drop the last character of a full line.
    if (len > size - 1) len = size - 1;
    line[len++] = '\n';
    return len;
}
