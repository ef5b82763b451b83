#include "rc_file.h"

#include <ctype.h>

#include <fstream>
#include <set>
#include <sstream>

namespace velard_rc {
namespace {

struct Line {
    int number;
    std::vector<std::string> tokens;
};

// init's tokens: whitespace separates them, double quotes keep whitespace in
// one, a backslash takes the next character as it is (\n, \t, \r name
// controls), a backslash at the end of a line joins the next line, and a
// '#' where a token would start begins a comment that runs to the line's end.
std::vector<Line> Tokenize(const std::string& text) {
    std::vector<Line> lines;
    Line cur{1, {}};
    std::string tok;
    bool inTok = false, quoted = false;
    int number = 1;
    auto endToken = [&] {
        if (inTok) cur.tokens.push_back(tok);
        tok.clear();
        inTok = false;
    };
    auto endLine = [&] {
        endToken();
        if (!cur.tokens.empty()) lines.push_back(cur);
        cur = Line{number, {}};
    };
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\\' && i + 1 < text.size()) {
            char n = text[++i];
            if (n == '\n') {
                ++number;
                continue;
            }
            inTok = true;
            tok += n == 'n' ? '\n' : n == 't' ? '\t' : n == 'r' ? '\r' : n;
        } else if (c == '#' && !inTok && !quoted) {
            while (i + 1 < text.size() && text[i + 1] != '\n') ++i;
        } else if (c == '"') {
            quoted = !quoted;
            inTok = true;
        } else if (c == '\n') {
            ++number;
            quoted ? void(tok += c) : endLine();
        } else if (!quoted && isspace(static_cast<unsigned char>(c))) {
            endToken();
        } else {
            tok += c;
            inTok = true;
        }
    }
    endLine();
    return lines;
}

struct OptionRule {
    const char* name;
    size_t minArgs, maxArgs;
};

constexpr size_t kMany = 1000;

// The service options of init, with the number of arguments each takes.
const OptionRule kOptions[] = {
    {"capabilities", 0, kMany},
    {"class", 1, kMany},
    {"console", 0, 1},
    {"critical", 0, 2},
    {"disabled", 0, 0},
    {"enter_namespace", 2, 2},
    {"file", 2, 2},
    {"gentle_kill", 0, 0},
    {"group", 1, kMany},
    {"interface", 2, 2},
    {"ioprio", 2, 2},
    {"keycodes", 1, kMany},
    {"namespace", 1, 1},
    {"oneshot", 0, 0},
    {"onrestart", 1, kMany},
    {"oom_score_adjust", 1, 1},
    {"override", 0, 0},
    {"priority", 1, 1},
    {"reboot_on_failure", 1, 1},
    {"restart_period", 1, 1},
    {"rlimit", 3, 3},
    {"seclabel", 1, 1},
    {"setenv", 2, 2},
    {"shutdown", 1, 1},
    {"sigstop", 0, 0},
    {"socket", 3, 6},
    {"stdio_to_kmsg", 0, 0},
    {"task_profiles", 1, kMany},
    {"timeout_period", 1, 1},
    {"updatable", 0, 0},
    {"user", 1, 1},
    {"writepid", 1, kMany},
};

const OptionRule* FindRule(const std::string& keyword) {
    static const OptionRule kMemcg{"memcg.*", 1, 1};
    if (keyword.rfind("memcg.", 0) == 0) return &kMemcg;
    for (const OptionRule& r : kOptions)
        if (keyword == r.name) return &r;
    return nullptr;
}

std::string Arg(const std::vector<std::string>& t, size_t i) {
    return i < t.size() ? t[i] : "";
}

}  // namespace

bool Service::HasOption(const std::string& keyword) const {
    for (const auto& o : options)
        if (o[0] == keyword) return true;
    return false;
}

bool Parse(const std::string& text, const std::string& where, std::vector<Service>* out,
           std::string* error) {
    enum { kNone, kService, kOther } section = kNone;
    std::set<std::string> names;
    for (const Line& l : Tokenize(text)) {
        auto fail = [&](const std::string& why) {
            *error = where + ":" + std::to_string(l.number) + ": " + why;
            return false;
        };
        const std::vector<std::string>& t = l.tokens;
        if (t[0] == "service") {
            if (t.size() < 3) return fail("a service needs a name and a path");
            if (!names.insert(t[1]).second) return fail("service " + t[1] + " named twice");
            Service s;
            s.name = t[1];
            s.argv.assign(t.begin() + 2, t.end());
            s.line = l.number;
            out->push_back(s);
            section = kService;
            continue;
        }
        if (t[0] == "on" || t[0] == "import") {
            section = t[0] == "on" ? kOther : kNone;
            continue;
        }
        if (section == kOther) continue;  // a command of an action
        if (section == kNone) return fail("'" + t[0] + "' outside a service or action");

        const OptionRule* rule = FindRule(t[0]);
        if (rule == nullptr) return fail("unknown service option '" + t[0] + "'");
        size_t args = t.size() - 1;
        if (args < rule->minArgs || args > rule->maxArgs)
            return fail("wrong number of arguments for '" + t[0] + "'");
        Service& s = out->back();
        s.options.push_back(t);
        if (t[0] == "user") {
            s.user = t[1];
        } else if (t[0] == "group") {
            s.groups.assign(t.begin() + 1, t.end());
        } else if (t[0] == "capabilities") {
            s.capabilitiesGiven = true;
            s.capabilities.assign(t.begin() + 1, t.end());
        } else if (t[0] == "setenv") {
            s.env.emplace_back(t[1], t[2]);
        } else if (t[0] == "socket") {
            s.sockets.push_back({t[1], t[2], t[3], Arg(t, 4), Arg(t, 5), l.number});
        }
    }
    return true;
}

bool ReadFile(const std::string& path, std::vector<Service>* out, std::string* error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        *error = "cannot read " + path;
        return false;
    }
    std::stringstream ss;
    ss << in.rdbuf();
    return Parse(ss.str(), path, out, error);
}

std::string SocketVariable(const std::string& socketName) {
    // init replaces whatever is not a letter or digit, as the daemon's
    // lookup does.
    std::string v = "ANDROID_SOCKET_" + socketName;
    for (size_t i = sizeof "ANDROID_SOCKET_" - 1; i < v.size(); ++i)
        if (!isalnum(static_cast<unsigned char>(v[i]))) v[i] = '_';
    return v;
}

bool HostLaunchFromFile(const std::string& path, HostLaunch* out, std::string* error) {
    std::vector<Service> services;
    if (!ReadFile(path, &services, error)) return false;
    if (services.size() != 1) {
        *error = path + ": " + std::to_string(services.size()) +
                 " services; the host runs the one service of a file";
        return false;
    }
    const Service& s = services[0];
    if (s.sockets.size() != 1) {
        *error = path + ": service " + s.name + " has " + std::to_string(s.sockets.size()) +
                 " sockets; the host makes exactly one";
        return false;
    }
    const Socket& sock = s.sockets[0];
    if (sock.type != "stream") {
        *error = path + ":" + std::to_string(sock.line) + ": socket type '" + sock.type +
                 "'; the host makes a plain stream socket";
        return false;
    }
    out->service = s.name;
    out->socketVariable = SocketVariable(sock.name);
    out->env.clear();
    for (const auto& [name, value] : s.env) out->env.push_back(name + "=" + value);
    return true;
}

}  // namespace velard_rc
