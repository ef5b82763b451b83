#include "pcapng.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

namespace velard_pcapng {

namespace {

constexpr uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr uint32_t kInterfaceDescription = 1;
constexpr uint32_t kEnhancedPacket = 6;
constexpr uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr uint32_t kByteOrderMagicSwapped = 0x4D3C2B1A;

constexpr uint16_t kOptEnd = 0;
constexpr uint16_t kOptComment = 1;
constexpr uint16_t kOptIfName = 2;
constexpr uint16_t kOptEpbFlags = 2;
constexpr uint16_t kOptIfTsresol = 9;

template <typename T>
void Put(std::string* out, T v) {
    out->append(reinterpret_cast<const char*>(&v), sizeof v);
}

void Pad(std::string* out) {
    out->append((4 - out->size() % 4) % 4, '\0');
}

void PutOption(std::string* out, uint16_t code, std::string_view value) {
    Put<uint16_t>(out, code);
    Put<uint16_t>(out, static_cast<uint16_t>(value.size()));
    out->append(value);
    Pad(out);
}

// Wraps a body in type, total length (twice) and padding.
std::string Block(uint32_t type, std::string body) {
    Pad(&body);
    std::string b;
    uint32_t total = static_cast<uint32_t>(body.size() + 12);
    Put(&b, type);
    Put(&b, total);
    b += body;
    Put(&b, total);
    return b;
}

std::string InterfaceBlock(uint16_t linkType, std::string_view name) {
    std::string body;
    Put<uint16_t>(&body, linkType);
    Put<uint16_t>(&body, 0);
    Put<uint32_t>(&body, 0);  // no snap length
    PutOption(&body, kOptIfName, name);
    PutOption(&body, kOptEnd, {});
    return Block(kInterfaceDescription, body);
}

// Reads fields of one section's byte order.
struct Cursor {
    std::string_view data;
    bool swap = false;

    uint16_t U16(size_t at) const {
        uint16_t v;
        memcpy(&v, data.data() + at, 2);
        return swap ? __builtin_bswap16(v) : v;
    }
    uint32_t U32(size_t at) const {
        uint32_t v;
        memcpy(&v, data.data() + at, 4);
        return swap ? __builtin_bswap32(v) : v;
    }
};

// Calls f(code, value) for each option in [at, end).
template <typename F>
void ForOptions(const Cursor& c, size_t at, size_t end, F f) {
    while (at + 4 <= end) {
        uint16_t code = c.U16(at), len = c.U16(at + 2);
        if (code == kOptEnd || at + 4 + len > end) return;
        f(code, c.data.substr(at + 4, len));
        at += 4 + ((len + 3u) & ~3u);
    }
}

// Units per second of an interface's timestamps.
uint64_t UnitsPerSecond(uint8_t tsresol) {
    uint64_t units = 1;
    unsigned exponent = tsresol & 0x7F;
    for (unsigned i = 0; i < exponent && units < (uint64_t{1} << 62); ++i)
        units *= (tsresol & 0x80) ? 2 : 10;
    return units;
}

}  // namespace

std::string HeaderBlocks() {
    std::string shb;
    Put<uint32_t>(&shb, kByteOrderMagic);
    Put<uint16_t>(&shb, 1);
    Put<uint16_t>(&shb, 0);
    Put<int64_t>(&shb, -1);  // section length unknown: the file grows while read
    PutOption(&shb, kOptEnd, {});
    return Block(kSectionHeader, shb) + InterfaceBlock(kLinkTypeFrames, "velard") +
           InterfaceBlock(kLinkTypeStack, "velar-stack");
}

std::string PacketBlock(uint32_t interface, uint64_t timestampUs, uint32_t flags,
                        std::string_view bytes, std::string_view comment) {
    std::string body;
    body.reserve(bytes.size() + 48 + comment.size());
    Put<uint32_t>(&body, interface);
    Put<uint32_t>(&body, static_cast<uint32_t>(timestampUs >> 32));
    Put<uint32_t>(&body, static_cast<uint32_t>(timestampUs));
    Put<uint32_t>(&body, static_cast<uint32_t>(bytes.size()));
    Put<uint32_t>(&body, static_cast<uint32_t>(bytes.size()));
    body.append(bytes);
    Pad(&body);
    std::string flagValue;
    Put<uint32_t>(&flagValue, flags);
    PutOption(&body, kOptEpbFlags, flagValue);
    // An option's length is 16 bits; a longer comment is cut.
    if (!comment.empty()) PutOption(&body, kOptComment, comment.substr(0, 0xFFFC));
    PutOption(&body, kOptEnd, {});
    return Block(kEnhancedPacket, std::move(body));
}

uint64_t NowUs() {
    timeval tv;
    gettimeofday(&tv, nullptr);
    return static_cast<uint64_t>(tv.tv_sec) * 1000000u + static_cast<uint64_t>(tv.tv_usec);
}

bool Writer::Write(std::string_view block) {
    if (!mOk) return false;
    size_t done = 0;
    while (done < block.size()) {
        ssize_t n = write(mFd, block.data() + done, block.size() - done);
        if (n > 0) {
            done += static_cast<size_t>(n);
        } else if (n < 0 && errno == EAGAIN) {
            pollfd p{mFd, POLLOUT, 0};
            poll(&p, 1, -1);
        } else if (!(n < 0 && errno == EINTR)) {
            mOk = false;
            mError = n < 0 ? strerror(errno) : "write returned 0";
            return false;
        }
    }
    return true;
}

Capture Parse(std::string_view data) {
    Capture out;
    Cursor c{data};
    bool inSection = false;
    std::vector<uint64_t> unitsPerSecond;  // per interface of the current section
    size_t at = 0;
    while (at < data.size()) {
        if (data.size() - at < 12) {
            out.stopped = "truncated block header at offset " + std::to_string(at);
            break;
        }
        uint32_t type;
        memcpy(&type, data.data() + at, 4);  // the same in both byte orders for a section header
        if (type == kSectionHeader) {
            uint32_t magic;
            memcpy(&magic, data.data() + at + 8, 4);
            if (magic != kByteOrderMagic && magic != kByteOrderMagicSwapped) {
                out.stopped = "bad byte-order magic at offset " + std::to_string(at);
                break;
            }
            c.swap = magic == kByteOrderMagicSwapped;
            inSection = true;
            unitsPerSecond.clear();
        } else if (!inSection) {
            out.stopped = "not a pcapng file";
            break;
        }
        type = c.U32(at);
        uint32_t total = c.U32(at + 4);
        if (total < 12 || total % 4 != 0) {
            out.stopped = "bad block length at offset " + std::to_string(at);
            break;
        }
        if (total > data.size() - at) {
            out.stopped = "block cut off at offset " + std::to_string(at);
            break;
        }
        if (c.U32(at + total - 4) != total) {
            out.stopped = "block lengths disagree at offset " + std::to_string(at);
            break;
        }
        size_t body = at + 8, end = at + total - 4;
        if (type == kInterfaceDescription && end - body >= 8) {
            uint64_t units = 1000000;
            ForOptions(c, body + 8, end, [&](uint16_t code, std::string_view v) {
                if (code == kOptIfTsresol && v.size() == 1)
                    units = UnitsPerSecond(static_cast<uint8_t>(v[0]));
            });
            unitsPerSecond.push_back(units);
        } else if (type == kEnhancedPacket && end - body >= 20) {
            Packet p;
            p.interface = c.U32(body);
            uint64_t ts = (uint64_t{c.U32(body + 4)} << 32) | c.U32(body + 8);
            uint32_t captured = c.U32(body + 12);
            size_t padded = (static_cast<size_t>(captured) + 3) & ~size_t{3};
            if (padded > end - body - 20) {
                out.stopped = "packet longer than its block at offset " + std::to_string(at);
                break;
            }
            uint64_t units =
                p.interface < unitsPerSecond.size() ? unitsPerSecond[p.interface] : 1000000;
            p.timestampUs =
                units == 1000000
                    ? ts
                    : static_cast<uint64_t>(static_cast<unsigned __int128>(ts) * 1000000u / units);
            p.bytes.assign(data.substr(body + 20, captured));
            ForOptions(c, body + 20 + padded, end, [&](uint16_t code, std::string_view v) {
                if (code == kOptEpbFlags && v.size() == 4) {
                    p.flags = c.U32(static_cast<size_t>(v.data() - data.data()));
                } else if (code == kOptComment && p.comment.empty()) {
                    p.comment.assign(v);
                }
            });
            out.packets.push_back(std::move(p));
        }
        at += total;
    }
    return out;
}

bool ReadFile(const std::string& path, Capture* out, std::string* why) {
    int fd = path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        *why = path + ": " + strerror(errno);
        return false;
    }
    std::string data;
    char buf[65536];
    for (;;) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n > 0) {
            data.append(buf, static_cast<size_t>(n));
        } else if (n == 0) {
            break;
        } else if (errno != EINTR) {
            *why = path + ": " + strerror(errno);
            close(fd);
            return false;
        }
    }
    close(fd);
    *out = Parse(data);
    return true;
}

}  // namespace velard_pcapng
