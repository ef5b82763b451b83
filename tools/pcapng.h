// Session captures in pcapng: what crossed the command socket and the stack
// boundary, for Wireshark, tshark and imsctl.
//
// A capture written here has one section and two interfaces:
//   0 "velard"      (LINKTYPE_USER0): one whole socket record per packet, as
//                   its bytes crossed the socket (the client's with its
//                   big-endian length word, the daemon's with its
//                   little-endian one);
//   1 "velar-stack" (LINKTYPE_USER1): one JSON object per packet for a
//                   record that crossed the stack boundary, in the simulated
//                   stack's control-channel form.
// The direction sits in each packet's epb_flags: inbound is towards the
// daemon (client to daemon, stack to daemon), outbound away from it.
// Timestamps are microseconds since the epoch.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

namespace velard_pcapng {

inline constexpr uint32_t kInterfaceFrames = 0;
inline constexpr uint32_t kInterfaceStack = 1;

inline constexpr uint32_t kInbound = 1;
inline constexpr uint32_t kOutbound = 2;

inline constexpr uint16_t kLinkTypeFrames = 147;  // LINKTYPE_USER0
inline constexpr uint16_t kLinkTypeStack = 148;   // LINKTYPE_USER1

// Blocks, each whole, in host byte order.
std::string HeaderBlocks();  // section header and both interface descriptions
std::string PacketBlock(uint32_t interface, uint64_t timestampUs, uint32_t flags,
                        std::string_view bytes, std::string_view comment = {});

// Microseconds since the epoch, now.
uint64_t NowUs();

// Writes blocks to a file or pipe. Blocks go out with as few writes as the
// descriptor allows (one for a file), so a writer killed between writes
// leaves only whole blocks; a reader drops a torn last one anyway.
class Writer {
public:
    // Does not take ownership of fd.
    explicit Writer(int fd) : mFd(fd) {}
    bool Start() { return Write(HeaderBlocks()); }
    bool Packet(uint32_t interface, uint32_t flags, std::string_view bytes,
                std::string_view comment = {}) {
        return Write(PacketBlock(interface, NowUs(), flags, bytes, comment));
    }
    // Whole blocks, one or several (a busy writer gathers them).
    bool Write(std::string_view blocks);
    // False once a write has failed (a full disk, a reader that went away);
    // later calls do nothing, so the session goes on without its capture.
    bool ok() const { return mOk; }
    const std::string& error() const { return mError; }

private:
    int mFd;
    bool mOk = true;
    std::string mError;
};

struct Packet {
    uint32_t interface = 0;
    uint64_t timestampUs = 0;
    uint32_t flags = 0;
    std::string bytes;
    std::string comment;  // the first opt_comment, if any
};

struct Capture {
    std::vector<Packet> packets;
    // Why reading stopped before the end, e.g. a block cut off by a killed
    // writer; the packets before it are all there. Empty when the whole
    // input was read.
    std::string stopped;
};

// Reads any pcapng (either byte order, several sections, other block types
// and options skipped, timestamps scaled by if_tsresol). A packet of an
// interface that the section did not describe is kept as it is.
Capture Parse(std::string_view data);
// False only when the file cannot be read at all (error in *why).
bool ReadFile(const std::string& path, Capture* out, std::string* why);

}  // namespace velard_pcapng
