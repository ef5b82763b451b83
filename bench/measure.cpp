#include "measure.h"

#include <dirent.h>

#include <stdio.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <thread>

namespace velard_bench {

std::vector<std::pair<std::string, std::string>> machineDescription() {
    std::vector<std::pair<std::string, std::string>> out;
    std::ifstream cpu("/proc/cpuinfo");
    std::string line, model = "unknown";
    while (std::getline(cpu, line)) {
        if (line.rfind("model name", 0) == 0) {
            model = line.substr(line.find(':') + 2);
            break;
        }
    }
    out.emplace_back("CPU", model);
    out.emplace_back("nproc", std::to_string(sysconf(_SC_NPROCESSORS_ONLN)));
    std::ifstream mem("/proc/meminfo");
    while (std::getline(mem, line)) {
        if (line.rfind("MemTotal:", 0) == 0) {
            long kib = std::stol(line.substr(9));
            char buf[64];
            snprintf(buf, sizeof buf, "%.1f GiB", static_cast<double>(kib) / (1024.0 * 1024.0));
            out.emplace_back("Memory", buf);
            break;
        }
    }
    utsname u{};
    if (uname(&u) == 0) out.emplace_back("Kernel", std::string(u.sysname) + " " + u.release);
#if defined(__clang__)
    out.emplace_back("Compiler", std::string("clang ") + __clang_version__);
#elif defined(__GNUC__)
    out.emplace_back("Compiler", std::string("g++ ") + __VERSION__);
#endif
    std::ifstream load("/proc/loadavg");
    std::string l1;
    if (load >> l1) out.emplace_back("Load average (1 min) at start", l1);
    return out;
}

long residentKiB(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    }
    return -1;
}

namespace {

double schedstatNs(const std::string& dir) {
    std::ifstream in(dir + "/schedstat");
    double ns = -1;
    return in >> ns ? ns : -1;
}

}  // namespace

double liveThreadsCpuNs(pid_t pid) {
    std::string tasks = "/proc/" + std::to_string(pid) + "/task";
    DIR* dir = opendir(tasks.c_str());
    if (dir == nullptr) return -1;
    double sum = 0;
    bool any = false;
    while (dirent* e = readdir(dir)) {
        if (e->d_name[0] == '.') continue;
        double ns = schedstatNs(tasks + "/" + e->d_name);
        if (ns < 0) continue;
        sum += ns;
        any = true;
    }
    closedir(dir);
    return any ? sum : -1;
}

double cpuNs(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    // The command name may hold blanks; fields are counted after its ')'.
    size_t close = text.rfind(')');
    if (close == std::string::npos) return -1;
    std::istringstream rest(text.substr(close + 2));
    std::string field;
    unsigned long long utime = 0, stime = 0;
    for (int i = 3; rest >> field; i++) {
        if (i == 14) utime = std::stoull(field);
        if (i == 15) {
            stime = std::stoull(field);
            break;
        }
    }
    return static_cast<double>(utime + stime) * 1e9 / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double threadCpuNs(pid_t tid) {
    return schedstatNs("/proc/self/task/" + std::to_string(tid));
}

std::string grouped(double value) {
    std::string digits = std::to_string(static_cast<long long>(value + 0.5));
    std::string out;
    int n = 0;
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (n > 0 && n % 3 == 0 && *it != '-') out.insert(out.begin(), ',');
        out.insert(out.begin(), *it);
        n++;
    }
    return out;
}

std::string duration(double ns) {
    char buf[64];
    if (ns < 1000)
        snprintf(buf, sizeof buf, "%.0f ns", ns);
    else if (ns < 1e6)
        snprintf(buf, sizeof buf, "%.1f µs", ns / 1e3);
    else
        snprintf(buf, sizeof buf, "%.2f ms", ns / 1e6);
    return buf;
}

}  // namespace velard_bench
