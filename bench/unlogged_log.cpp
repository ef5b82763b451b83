// For velard_unlogged: the daemon with its log lines formatted, as the host
// logger formats them, but never written. Beside the real velard it shows how
// much of a round trip is the daemon's own work and how much the host's
// write(2) of each log line, which the daemon's logging rules make several
// per request.
#include <android/log.h>
#include <limits.h>
#include <stdarg.h>
#include <stdio.h>

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    char line[PIPE_BUF];
    int n = snprintf(line, sizeof line,
                     "%c %s: ", prio >= 2 && prio <= 7 ? "VDIWEF"[prio - 2] : '?', tag ? tag : "");
    size_t len = n < 0                                  ? 0
                 : static_cast<size_t>(n) < sizeof line ? static_cast<size_t>(n)
                                                        : sizeof line - 1;
    va_list ap;
    va_start(ap, fmt);
    n = vsnprintf(line + len, sizeof line - len, fmt, ap);
    va_end(ap);
    return n < 0 ? static_cast<int>(len) : static_cast<int>(len) + n;
}
