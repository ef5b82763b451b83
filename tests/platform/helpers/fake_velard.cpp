// A stand-in daemon for the host tools' tests. Like velard it takes its
// listening socket from ANDROID_SOCKET_velard, calls listen itself, serves
// one client and exits with status 255 when the client goes away.
//
// Every record is logged as "<token> <reserved> <payload hex>" to the file
// named by FAKE_LOG and answered, to its token, with the Response
// {resid: 103, generalResponse {handle: 5, result: 0}}.
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include "framing.h"

int main() {
    const char* fdText = getenv("ANDROID_SOCKET_velard");
    if (fdText == nullptr || listen(atoi(fdText), 4) != 0) return 10;
    int fd = accept(atoi(fdText), nullptr, nullptr);
    if (fd < 0) return 11;
    FILE* log = fopen(getenv("FAKE_LOG") ? getenv("FAKE_LOG") : "/dev/null", "a");
    const std::string response("\x08\x67\x12\x04\x08\x05\x10\x00", 8);

    velard_framing::ClientRecordReader reader;
    char buf[4096];
    ssize_t n;
    while ((n = read(fd, buf, sizeof buf)) > 0) {
        reader.Append(buf, static_cast<size_t>(n));
        velard_framing::ClientRecord rec;
        while (reader.Next(&rec) == velard_framing::ReadResult::kFrame) {
            fprintf(log, "%u %u ", rec.token, rec.reserved);
            for (unsigned char c : rec.payload) fprintf(log, "%02x", c);
            fprintf(log, "\n");
            fflush(log);
            std::string frame = velard_framing::EncodeDaemonFrame(velard_framing::kTypeResponse,
                                                                  rec.token, response);
            if (!velard_framing::WriteAll(fd, frame)) return 12;
        }
    }
    return 255;
}
