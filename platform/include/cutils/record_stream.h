// Host stand-in for the device's record stream: records framed by a
// big-endian 32-bit length, read from a non-blocking descriptor.
#pragma once
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct RecordStream RecordStream;

RecordStream* record_stream_new(int fd, size_t maxRecordLen);
void record_stream_free(RecordStream* p_rs);

// Returns 0 with *p_outRecord set to a whole record (valid until the next
// call), 0 with *p_outRecord NULL at end of stream, -1 with errno set on
// failure (EAGAIN when a record is still incomplete; a record longer than
// maxRecordLen is a failure too).
int record_stream_get_next(RecordStream* p_rs, void** p_outRecord, size_t* p_outRecordLen);

#ifdef __cplusplus
}
#endif
