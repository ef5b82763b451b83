// For velard_unlogged: the daemon with its log lines formatted, as the host
// logger formats them, but never written. Beside the real velard it shows how
// much of a round trip is the daemon's own work and how much the host's
// write(2) of each log line, which the daemon's logging rules make several
// per request.
#include <android/log.h>
#include <limits.h>
#include <stdarg.h>

#include "host/log_line.h"

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    char line[PIPE_BUF];
    va_list ap;
    va_start(ap, fmt);
    size_t len = FormatLogLine(line, sizeof line, prio, tag, fmt, ap);
    va_end(ap);
    return static_cast<int>(len);
}
