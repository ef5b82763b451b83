// Small measuring helpers shared by the benchmarks: medians of batch means,
// percentiles, the machine's description, a process's resident memory and
// CPU time.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velard_bench {

using Clock = std::chrono::steady_clock;

inline double nsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

// One batch: the mean nanoseconds per call over perBatch calls of op.
template <class Op>
double batchNsPerCall(Op& op, int perBatch) {
    auto start = Clock::now();
    for (int i = 0; i < perBatch; i++) op();
    return nsSince(start) / perBatch;
}

inline double middle(std::vector<double> values) {
    auto mid = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), mid, values.end());
    return *mid;
}

// Nanoseconds per call of op: the median over `batches` batches of `perBatch`
// calls each, after a warm-up. A batch that the scheduler interrupted on a
// busy machine lands in the upper half and leaves the median alone.
template <class Op>
double medianNsPerCall(Op&& op, int batches = 31, int perBatch = 64, int warmup = 256) {
    for (int i = 0; i < warmup; i++) op();
    std::vector<double> means;
    for (int n = 0; n < batches; n++) means.push_back(batchNsPerCall(op, perBatch));
    return middle(std::move(means));
}

// The medians of two operations measured in alternating batches, so that a
// slow spell of the machine falls on both alike.
template <class A, class B>
std::pair<double, double> pairedMedianNsPerCall(A&& a, B&& b, int batches = 31, int perBatch = 64,
                                                int warmup = 256) {
    for (int i = 0; i < warmup; i++) {
        a();
        b();
    }
    std::vector<double> meansA, meansB;
    for (int n = 0; n < batches; n++) {
        meansA.push_back(batchNsPerCall(a, perBatch));
        meansB.push_back(batchNsPerCall(b, perBatch));
    }
    return {middle(std::move(meansA)), middle(std::move(meansB))};
}

// The value below which the fraction q of the samples lie (nearest rank).
inline double percentile(std::vector<double> samples, double q) {
    if (samples.empty()) return 0;
    std::sort(samples.begin(), samples.end());
    size_t rank = static_cast<size_t>(q * static_cast<double>(samples.size()));
    if (rank >= samples.size()) rank = samples.size() - 1;
    return samples[rank];
}

// "2 x AMD EPYC, 23.5 GiB, g++ 12.2.0" and the like, one fact per line.
std::vector<std::pair<std::string, std::string>> machineDescription();

// Resident set of a process in KiB (VmRSS), or -1.
long residentKiB(pid_t pid);
// CPU time (user plus system) used so far, in nanoseconds, or -1: by a whole
// process, threads that have ended included (/proc/<pid>/stat, in clock
// ticks); by the threads of a process that are alive now, and by one of this
// process's threads, from the scheduler's own accounting (schedstat, exact
// to the nanosecond, for short runs).
double cpuNs(pid_t pid);
double liveThreadsCpuNs(pid_t pid);
double threadCpuNs(pid_t tid);

// 1234567 -> "1,234,567"
std::string grouped(double value);
// A duration in ns as "850 ns" or "12.3 µs".
std::string duration(double ns);

}  // namespace velard_bench
