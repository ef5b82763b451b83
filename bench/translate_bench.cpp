// Translation cost of every row of the two tables, in process:
//   request:      decode the record and run the dispatch handler (the stack
//                 takes the record and frees it at once);
//   response:     run the response handler on the simulator's auto answer and
//                 frame the result, as IMS_onResponse does;
//   notification: the same for a notification record with every field filled.
// Nothing reaches a socket: with no client connected the framed record is
// dropped by SendRecord after it has been built.
//
//   translate_bench [--requests DIR] [--markdown] [--write-seeds DIR] [--only ID]
//
// DIR holds one file per Request body (gen_requests); which body belongs to
// which id is found by trying each: the body that changes the record a
// handler hands the stack is that handler's. A handler that lands later is
// measured without anyone editing this program.
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include "core/ims_core.h"
#include "measure.h"
#include "stack/sim/samples.h"
#include "stack/sim/velar_sim.h"

using velar_sim::Json;
using namespace velard_bench;

namespace {

constexpr double kTargetNs = 2000;

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// The host logger, as this program runs it. Each line is formatted as the
// platform's logger formats it and counted; it is written (one write(2) to
// stderr, as the platform does) only while s_writeLog is set. A write is a
// system call whose cost depends on the host far more than on the daemon,
// so translation is measured both without and with it.
std::atomic<bool> s_writeLog{true};
std::atomic<long> s_logLines{0};

char priorityLetter(int prio) {
    return prio >= 2 && prio <= 7 ? "VDIWEF"[prio - 2] : '?';
}

}  // namespace

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    char line[PIPE_BUF];
    int n = snprintf(line, sizeof line, "%c %s: ", priorityLetter(prio), tag ? tag : "");
    size_t len = n < 0 ? 0 : std::min(static_cast<size_t>(n), sizeof line - 1);
    va_list ap;
    va_start(ap, fmt);
    n = vsnprintf(line + len, sizeof line - len, fmt, ap);
    va_end(ap);
    if (n > 0) len += std::min(static_cast<size_t>(n), sizeof line - len - 1);
    line[len++] = '\n';
    s_logLines++;
    if (s_writeLog.load(std::memory_order_relaxed) && write(2, line, len) < 0) return -1;
    return static_cast<int>(len);
}

namespace {

// Everything the handlers log goes here while they are measured.
class QuietStderr {
public:
    QuietStderr() {
        fflush(stderr);
        saved_ = dup(2);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, 2);
        close(null);
    }
    ~QuietStderr() {
        fflush(stderr);
        dup2(saved_, 2);
        close(saved_);
    }

private:
    int saved_;
};

std::string record(const std::string& payload, uint32_t token) {
    std::string r(8, '\0');
    for (int i = 0; i < 4; i++) r[4 + i] = static_cast<char>(token >> (8 * i));
    return r + payload;
}

std::string reqidOnly(int id) {
    imsCommonStruc::Request r;
    r.set_reqid(static_cast<imsCommonStruc::Id>(id));
    return r.SerializePartialAsString();
}

std::vector<std::unique_ptr<ImsData>> s_captured;
void keep(unsigned int, ImsData* r, void*) {
    s_captured.emplace_back(r);
}
void drop(unsigned int, ImsData* r, void*) {
    delete r;
}

// Runs the record through ProcessCommandBuffer and returns what reached
// the stack (empty when nothing did).
std::vector<std::unique_ptr<ImsData>> dispatchCapture(const std::string& rec) {
    s_captured.clear();
    velar_sim::setCaptureHook(keep, nullptr);
    ProcessCommandBuffer(rec.data(), rec.size());
    velar_sim::setCaptureHook(nullptr, nullptr);
    return std::move(s_captured);
}

Json jsonOf(const std::vector<std::unique_ptr<ImsData>>& records) {
    Json all = Json::array();
    for (const auto& r : records) all.push_back(velar_sim::recordToJson(r.get()));
    return all;
}

struct Bodies {
    std::vector<std::pair<std::string, std::string>> files;  // name, bytes

    explicit Bodies(const std::string& dir) {
        DIR* d = opendir(dir.c_str());
        if (d == nullptr) return;
        while (dirent* e = readdir(d)) {
            std::string name = e->d_name;
            if (name.size() > 4 && name.compare(name.size() - 4, 4, ".bin") == 0)
                files.emplace_back(name.substr(0, name.size() - 4), readFile(dir + "/" + name));
        }
        closedir(d);
        std::sort(files.begin(), files.end());
    }

    // The payload with every field of the id's body filled, and the body's
    // name; the bare id when no body changes what the handler builds.
    std::pair<std::string, std::string> payloadFor(int id) const {
        std::string bare = reqidOnly(id);
        Json baseline = jsonOf(dispatchCapture(record(bare, 1)));
        for (const auto& [name, bytes] : files) {
            std::string payload = bare + bytes;
            Json j = jsonOf(dispatchCapture(record(payload, 1)));
            if (!j.empty() && j != baseline) return {payload, name};
        }
        return {bare, ""};
    }
};

// The filled request as the memory benchmark replays it (requests/) and as
// the command fuzzer takes it (fuzz_commands/: a piece-size byte, then the
// stream with its big-endian length).
void writeSeeds(const std::string& dir, int id, const std::string& rec) {
    std::string name = std::to_string(id) + ".bin";
    std::ofstream(dir + "/requests/request-" + name, std::ios::binary) << rec;
    std::string stream(1, '\xff');
    uint32_t len = static_cast<uint32_t>(rec.size());
    for (int i = 0; i < 4; i++) stream += static_cast<char>(len >> (24 - 8 * i));
    std::ofstream(dir + "/fuzz_commands/request-" + name, std::ios::binary) << stream + rec;
}

// A filled record of every class the stack can hand up, for the codec fuzzer.
void writeRecordSeeds(const std::string& dir) {
    for (const std::string& name : velar_sim::classNames()) {
        std::string error;
        Json sample = velar_sim::sampleRecord(name, 1, {8, 2}, &error);
        if (sample.is_null()) continue;
        std::string file;
        for (char c : name) file += isalnum(static_cast<unsigned char>(c)) ? c : '_';
        std::ofstream(dir + "/fuzz_records/" + file + ".json") << sample.dump() << "\n";
    }
}

struct Cell {
    double ns = -1;         // median with the log lines formatted, not written
    double writtenNs = -1;  // median with every line written, as the daemon does
    long lines = 0;         // log lines one call writes
    std::string status;     // why there is no figure
};

// One call to count its log lines, then the two medians.
template <class Op>
Cell measure(Op&& op) {
    Cell c;
    QuietStderr quiet;
    long before = s_logLines.load();
    op();
    c.lines = s_logLines.load() - before;
    s_writeLog = false;
    c.ns = medianNsPerCall(op);
    s_writeLog = true;
    c.writtenNs = medianNsPerCall(op);
    return c;
}

std::string show(const Cell& c) {
    if (c.ns < 0) return c.status;
    std::string s = duration(c.ns);
    return c.ns > kTargetNs ? "**" + s + "**" : s;
}

std::string showWritten(const Cell& c) {
    if (c.ns < 0) return "";
    return std::to_string(c.lines) + ": " + duration(c.writtenNs);
}

// What parsing the record's Request alone costs, as ProcessCommandBuffer
// parses it before any handler runs: the part of a request's figure that
// belongs to the protocol buffer library and the size of the body.
double decodeNs(const std::string& rec) {
    return medianNsPerCall([&] {
        imsCommonStruc::Request request;
        google::protobuf::io::ArrayInputStream in(rec.data() + 8, static_cast<int>(rec.size() - 8));
        google::protobuf::io::CodedInputStream coded(&in);
        request.ParseFromCodedStream(&coded);
    });
}

struct Summary {
    std::vector<double> all;
    double worstNs = -1, worstWrittenNs = -1;
    std::string worst, worstWritten;
    void add(const Cell& c, int id, const char* kind) {
        if (c.ns < 0) return;
        all.push_back(c.ns);
        std::string what = std::string(kind) + " " + std::to_string(id);
        if (c.ns > worstNs) {
            worstNs = c.ns;
            worst = what;
        }
        if (c.writtenNs > worstWrittenNs) {
            worstWrittenNs = c.writtenNs;
            worstWritten = what;
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    std::string requestsDir = VELARD_REQUESTS_DIR;
    std::string seedsDir;
    bool markdown = false;
    int only = 0;  // one id alone, for a profiler
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        if (a == "--requests" && i + 1 < argc)
            requestsDir = argv[++i];
        else if (a == "--write-seeds" && i + 1 < argc)
            seedsDir = argv[++i];
        else if (a == "--markdown")
            markdown = true;
        else if (a == "--only" && i + 1 < argc)
            only = std::atoi(argv[++i]);
        else {
            std::cerr << "usage: translate_bench [--requests DIR] [--markdown] [--write-seeds DIR] "
                         "[--only ID]\n";
            return 2;
        }
    }
    ImsFillDispatchMaps();
    s_velar = Velar::GetInstance();
    Bodies bodies(requestsDir);
    if (bodies.files.empty()) {
        std::cerr << "no request bodies in " << requestsDir << "\n";
        return 1;
    }
    if (!seedsDir.empty()) {
        for (const char* sub : {"requests", "fuzz_commands", "fuzz_records"})
            mkdir((seedsDir + "/" + sub).c_str(), 0755);
        writeRecordSeeds(seedsDir);
    }

    struct Row {
        int id;
        bool notification;
        std::string body;
        Cell dispatch, response, notify;
        double decodeNs = -1;
    };
    std::vector<Row> rows;
    Summary summary;
    uint32_t token = 0x01020304;

    for (size_t i = 0; i < s_commandCount; i++) {
        const CommandInfo& info = s_commands[i];
        if (info.dispatchFunction == nullptr || (only && info.requestNumber != only)) continue;
        Row row{info.requestNumber, false, "", {}, {}, {}};
        std::string payload;
        {
            QuietStderr quiet;
            auto [p, body] = bodies.payloadFor(info.requestNumber);
            payload = p;
            row.body = body;
        }
        std::string rec = record(payload, token);
        if (!seedsDir.empty()) writeSeeds(seedsDir, info.requestNumber, rec);
        std::vector<std::unique_ptr<ImsData>> captured;
        {
            QuietStderr quiet;
            captured = dispatchCapture(rec);
        }
        std::unique_ptr<ImsData> request;
        if (captured.empty()) {
            row.dispatch.status = "no stack call";
        } else {
            request = std::move(captured.front());
            velar_sim::setCaptureHook(drop, nullptr);
            row.dispatch = measure([&] { ProcessCommandBuffer(rec.data(), rec.size()); });
            velar_sim::setCaptureHook(nullptr, nullptr);
            summary.add(row.dispatch, row.id, "request");
            row.decodeNs = decodeNs(rec);
        }

        // The answer: the auto mode's success record for this request (a
        // bare record of the id where the handler built none).
        ImsData bare(info.requestNumber);
        std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(request ? request.get() : &bare));
        if (!answer) {
            row.response.status = "no response";
        } else {
            imsCommonStruc::Response response;
            int rc = 0;
            {
                QuietStderr quiet;
                rc = info.responseFunction(token, response, answer.get());
            }
            if (rc < 0) {
                row.response.status = "handler fails";
            } else {
                row.response = measure([&] { IMS_onResponse(token, answer.get()); });
                summary.add(row.response, row.id, "response");
            }
        }
        rows.push_back(std::move(row));
    }

    for (size_t i = 0; i < s_notificationCount; i++) {
        const NotifyInfo& info = s_notifications[i];
        if (info.notifyFunction == nullptr || (only && info.notifyNumber != only)) continue;
        Row row{info.notifyNumber, true, "", {}, {}, {}};
        const char* registered = velar_sim::notifyClass(info.notifyNumber);
        std::string cls = registered != nullptr ? registered : "";
        row.body = cls;
        std::unique_ptr<ImsData> rec;
        if (cls.empty()) {
            row.notify.status = "no class registered";
        } else {
            std::string error;
            Json sample = velar_sim::sampleRecord(cls, info.notifyNumber, {}, &error);
            if (!sample.is_null()) rec.reset(velar_sim::recordFromJson(sample, &error));
            if (!rec) row.notify.status = "cannot build " + cls + ": " + error;
        }
        if (rec) {
            imsCommonStruc::Notify notify;
            int rc = 0;
            {
                QuietStderr quiet;
                rc = info.notifyFunction(notify, rec.get());
            }
            if (rc < 0) {
                row.notify.status = "handler fails";
            } else {
                row.notify = measure([&] { IMS_onNotify(rec.get()); });
                summary.add(row.notify, row.id, "notification");
            }
        }
        rows.push_back(std::move(row));
    }

    // What one log line's write costs here, for reading the second figures.
    double writeNs;
    {
        QuietStderr quiet;
        writeNs = medianNsPerCall([] { __android_log_print(6, "bench", "%s", "a line"); });
        s_writeLog = false;
        writeNs -= medianNsPerCall([] { __android_log_print(6, "bench", "%s", "a line"); });
        s_writeLog = true;
    }
    int over = 0;
    for (double ns : summary.all) over += ns > kTargetNs;
    // The requests over the target beside the part of their figure that the
    // parse of their body takes before any handler runs.
    std::string overRequests;
    for (const Row& r : rows) {
        if (r.notification || r.dispatch.ns <= kTargetNs) continue;
        overRequests += std::string(overRequests.empty() ? "" : ", ") + std::to_string(r.id) + " " +
                        duration(r.dispatch.ns) + " (decoding " + duration(r.decodeNs) + ")";
    }
    double median = percentile(summary.all, 0.5);
    std::string text = "Measured " + std::to_string(summary.all.size()) +
                       " translations; median of the per-id medians " + duration(median) +
                       "; worst " + summary.worst + " at " + duration(summary.worstNs) +
                       "; over the 2 µs target: " + std::to_string(over) +
                       (overRequests.empty() ? "" : ", requests: " + overRequests) +
                       ". With every log line written: worst " + summary.worstWritten + " at " +
                       duration(summary.worstWrittenNs) + "; one line's write(2) costs " +
                       duration(writeNs) + " on this machine.";
    if (markdown) {
        std::cout << text << "\n\n";
        std::cout << "| Id | Body / record class | Request | of which decoding | lines: written | "
                     "Response "
                     "| lines: written | Notification | lines: written |\n"
                     "|---|---|---|---|---|---|---|---|---|\n";
        for (const Row& r : rows) {
            std::cout << "| " << r.id << " | " << (r.body.empty() ? "" : "`" + r.body + "`")
                      << " | ";
            if (r.notification)
                std::cout << " | | | | | " << show(r.notify) << " | " << showWritten(r.notify)
                          << " |\n";
            else
                std::cout << show(r.dispatch) << " | "
                          << (r.decodeNs < 0 ? "" : duration(r.decodeNs)) << " | "
                          << showWritten(r.dispatch) << " | " << show(r.response) << " | "
                          << showWritten(r.response) << " | | |\n";
        }
    } else {
        for (const Row& r : rows) {
            if (r.notification)
                std::cout << r.id << "\tnotify " << show(r.notify) << " (" << showWritten(r.notify)
                          << ")\t" << r.body << "\n";
            else
                std::cout << r.id << "\trequest " << show(r.dispatch) << " ("
                          << showWritten(r.dispatch) << ", decoding "
                          << (r.decodeNs < 0 ? "-" : duration(r.decodeNs)) << ")\tresponse "
                          << show(r.response) << " (" << showWritten(r.response) << ")\t" << r.body
                          << "\n";
        }
        std::cout << text << "\n";
    }
    return over > 0 ? 1 : 0;
}
