// imsctl decode: socket records as they show up in a log, a hex dump or a
// capture file, printed as the lines a live session prints.
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "framing.h"
#include "imsctl_common.h"
#include "imsctl_modes.h"
#include "pcapng.h"

namespace vf = velard_framing;
namespace cap = velard_pcapng;

namespace imsctl {
namespace {

constexpr const char kUsage[] =
    "usage: imsctl decode [--as KIND] [--compact] [--only KINDS] [HEX | FILE | -] ...\n";
constexpr const char kHelp[] =
    "Prints socket records, in either direction, as the JSON lines of a live\n"
    "session. Each argument is a capture file (pcapng), a file of hex text, '-'\n"
    "for stdin, or hex text itself; with no argument stdin is read. Hex may be\n"
    "spaced, split over lines, prefixed with 0x or \\x, and may carry the offset\n"
    "and text columns of a hex dump. Several records may follow one another.\n"
    "In a capture the stack's records (second interface) print as they are.\n"
    "  --as KIND      the hex is a bare message of this kind (request, response,\n"
    "                 notify), without its record words\n"
    "  --compact      one short line per frame\n"
    "  --only KINDS   print only these frames: request, response, notify\n"
    "  -h, --help     this text\n"
    "Exit status: 0; 1 when some input could not be decoded; 2 for bad arguments.\n";

bool IsHexDigit(char c) {
    return isxdigit(static_cast<unsigned char>(c)) != 0;
}

// One line of text without the parts of a hex dump that are not data: a
// leading offset ("00000010:" or the 8 digits of `hexdump -C`) and a
// trailing text column ("|..|", or what follows two spaces after xxd's
// offset).
std::string DataPart(std::string line) {
    size_t bar = line.find('|');
    if (bar != std::string::npos) line.erase(bar);
    size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos) return "";
    size_t end = start;
    while (end < line.size() && IsHexDigit(line[end])) ++end;
    const size_t digits = end - start;
    if (end < line.size() && line[end] == ':' && digits >= 4) {
        line.erase(0, end + 1);
        size_t text = line.find("  ", line.find_first_not_of(' '));
        if (text != std::string::npos) line.erase(text);
    } else if (digits == 8 && line.compare(end, 2, "  ") == 0) {
        line.erase(0, end);
    }
    return line;
}

// Hex text to bytes; false with *why naming the first character that is
// neither a digit nor a separator.
bool HexToBytes(const std::string& text, std::string* bytes, std::string* why) {
    std::istringstream in(text);
    std::string digits;
    int lineNo = 0;
    for (std::string line; std::getline(in, line);) {
        ++lineNo;
        line = DataPart(line);
        for (size_t i = 0; i < line.size(); ++i) {
            char c = line[i];
            if ((c == '0' || c == '\\') && i + 1 < line.size() &&
                (line[i + 1] == 'x' || line[i + 1] == 'X')) {
                ++i;
            } else if (IsHexDigit(c)) {
                digits.push_back(c);
            } else if (!strchr(" \t\r,:;-", c)) {
                *why = "not hex: '" + std::string(1, c) + "' on line " + std::to_string(lineNo);
                return false;
            }
        }
    }
    if (digits.size() % 2 != 0) {
        *why = "odd number of hex digits (" + std::to_string(digits.size()) + ")";
        return false;
    }
    for (size_t i = 0; i < digits.size(); i += 2)
        bytes->push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return true;
}

uint32_t Word(const std::string& b, size_t at, bool bigEndian) {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) {
        uint32_t byte = static_cast<unsigned char>(b[at + i]);
        v |= bigEndian ? byte << (8 * (3 - i)) : byte << (8 * i);
    }
    return v;
}

struct Decoder {
    FramePrinter& printer;
    Output& out;
    bool failed = false;

    void Fail(const std::string& why) {
        out.Error(why);
        failed = true;
    }

    // A daemon frame: little-endian length, type, token, payload.
    void DaemonFrame(const std::string& frame) {
        uint32_t type = Word(frame, 4, false), token = Word(frame, 8, false);
        std::string payload = frame.substr(12);
        if (type == vf::kTypeResponse || type == vf::kTypeNotify) {
            Kind kind = type == vf::kTypeResponse ? Kind::kResponse : Kind::kNotify;
            if (!printer.Frame(kind, token, payload)) failed = true;
        } else {
            printer.UnknownFrame(type, token, payload);
            failed = true;
        }
    }

    // Records back to back. The length word tells the direction: the
    // client's is big-endian, the daemon's little-endian, and only one of
    // the two readings fits the bytes there are.
    void Records(const std::string& bytes) {
        size_t at = 0;
        while (at < bytes.size()) {
            const size_t left = bytes.size() - at;
            if (left < 12) {
                Fail("at byte " + std::to_string(at) + ": " + std::to_string(left) +
                     " bytes are too few for a record (the three words alone take 12)");
                return;
            }
            const uint32_t be = Word(bytes, at, true), le = Word(bytes, at, false);
            const uint32_t type = Word(bytes, at + 4, false);
            const bool client = be >= 8 && be <= left - 4;
            const bool daemon = le >= 8 && le <= left - 4 && (type == 1 || type == 2);
            if (client && (!daemon || be == left - 4)) {
                if (!printer.Frame(Kind::kRequest, Word(bytes, at + 8, false),
                                   bytes.substr(at + 12, be - 8)))
                    failed = true;
                at += be + 4;
            } else if (daemon) {
                DaemonFrame(bytes.substr(at, le + 4));
                at += le + 4;
            } else {
                Fail("at byte " + std::to_string(at) + ": not a record: its length word reads " +
                     std::to_string(be) + " (client, big-endian) or " + std::to_string(le) +
                     " (daemon, little-endian), but " + std::to_string(left - 4) +
                     " bytes follow; a bare message needs --as KIND");
                return;
            }
        }
    }

    void Capture(const std::string& name, const std::string& data) {
        cap::Capture c = cap::Parse(data);
        for (const cap::Packet& p : c.packets) {
            if (p.interface == cap::kInterfaceStack) {
                out.Line(p.bytes);
            } else if (p.interface == cap::kInterfaceFrames && (p.flags & 3) == cap::kInbound) {
                Records(p.bytes);
            } else if (p.interface == cap::kInterfaceFrames && p.bytes.size() >= 12) {
                DaemonFrame(p.bytes);
            } else {
                Fail(name + ": packet of " + std::to_string(p.bytes.size()) +
                     " bytes on interface " + std::to_string(p.interface) + " skipped");
            }
        }
        // A capture whose writer was killed ends in a torn block; what
        // came before it is whole, and that is the normal way for it to end.
        if (!c.stopped.empty()) out.Error(name + ": " + c.stopped);
    }

    void Input(const std::string& name, const std::string& data, const char* bareKind) {
        static const char kMagic[] = {0x0a, 0x0d, 0x0d, 0x0a};
        if (data.compare(0, 4, kMagic, 4) == 0) return Capture(name, data);
        std::string bytes, why;
        if (!HexToBytes(data, &bytes, &why)) return Fail(name + ": " + why);
        if (bytes.empty()) return Fail(name + ": no hex digits");
        if (bareKind == nullptr) return Records(bytes);
        for (Kind k : {Kind::kRequest, Kind::kResponse, Kind::kNotify})
            if (strcmp(bareKind, KindName(k)) == 0 && !printer.Frame(k, 0, bytes)) failed = true;
    }
};

}  // namespace

bool ReadInput(const std::string& path, std::string* text, std::string* why) {
    std::ostringstream ss;
    if (path == "-") {
        ss << std::cin.rdbuf();
    } else {
        std::ifstream in(path, std::ios::binary);
        if (!in) {
            *why = "cannot read " + path + ": " + strerror(errno);
            return false;
        }
        ss << in.rdbuf();
    }
    *text = ss.str();
    return true;
}

int DecodeMain(int argc, char** argv) {
    Output out;
    Codec codec;
    FramePrinter printer(codec, out);
    const char* bareKind = nullptr;
    std::vector<std::string> inputs;
    Args args(argc, argv, "imsctl decode", kUsage, kHelp);
    for (std::string a; args.Next(&a);) {
        std::string why;
        if (a == "--compact") {
            printer.SetCompact(true);
        } else if (a == "--as") {
            bareKind = args.Value();
            ParseKinds(bareKind, &why);
            if (!why.empty() || strchr(bareKind, ','))
                args.Fail("--as takes request, response or notify");
        } else if (a == "--only") {
            printer.SetShown(ParseKinds(args.Value(), &why));
            if (!why.empty()) args.Fail(why);
        } else if (a.size() > 1 && a[0] == '-' && !IsHexDigit(a[1])) {
            args.Fail("unknown argument: " + a);
        } else {
            inputs.push_back(a);
        }
    }
    if (inputs.empty()) inputs.push_back("-");

    Decoder d{printer, out};
    for (const std::string& in : inputs) {
        std::string data, why;
        // A word that names no file is hex on the command line.
        if (in == "-" || access(in.c_str(), F_OK) == 0) {
            if (!ReadInput(in, &data, &why)) {
                d.Fail(why);
                continue;
            }
            d.Input(in == "-" ? "stdin" : in, data, bareKind);
        } else {
            d.Input("argument", in, bareKind);
        }
    }
    return d.failed ? 1 : 0;
}

}  // namespace imsctl
