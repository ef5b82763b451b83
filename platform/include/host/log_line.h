// How the host logger lays out a line, for the logger itself and for the
// benchmarks that format the daemon's lines without writing them.
#pragma once

#include <stdarg.h>
#include <stddef.h>

// Formats "<L> <tag>: <message>\n" into line (size bytes, at least 8) and
// gives its length. A line longer than size is cut, keeping its newline.
size_t FormatLogLine(char* line, size_t size, int prio, const char* tag, const char* fmt,
                     va_list ap);
