// Translation cost of every row of the two tables, in process:
//   request:      decode the record and run the dispatch handler (the stack
//                 takes the record and frees it at once);
//   response:     run the response handler on the simulator's auto answer and
//                 frame the result, as IMS_onResponse does;
//   notification: the same for a notification record with every field filled.
// Nothing reaches a socket: with no client connected the framed record is
// dropped by SendRecord after it has been built.
//
// Each figure stands beside the protocol buffer library's own share of it:
// the parse of the record's Request (requests) or the size and serialisation
// of the finished message (answers and notifications). What a translation
// adds beyond that is the daemon's; for a body or message of 1 KiB or more it
// should stay under a third of the library's part, and anything smaller
// should cost at most 1 µs in all.
//
//   translate_bench [--requests DIR] [--markdown | --summary] [--write-seeds DIR] [--only ID]
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
#include <thread>
#include <vector>

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include "core/ims_core.h"
#include "host/log_line.h"
#include "measure.h"
#include "stack/sim/samples.h"
#include "stack/sim/velar_sim.h"

using velar_sim::Json;
using namespace velard_bench;

namespace {

// Bodies and messages from this size on are held to a share of the library's
// part; smaller ones to a bound on the whole translation.
constexpr size_t kLargeBytes = 1024;
constexpr double kLargeShare = 1.0 / 3;
constexpr double kSmallNs = 1000;

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

}  // namespace

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    char line[PIPE_BUF];
    va_list ap;
    va_start(ap, fmt);
    size_t len = FormatLogLine(line, sizeof line, prio, tag, fmt, ap);
    va_end(ap);
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
    size_t bytes = 0;       // the request's body, or the message sent
    double libraryNs = -1;  // its parse or its serialisation alone

    double beyondNs() const { return ns - libraryNs; }
    double share() const { return beyondNs() / libraryNs; }
    bool large() const { return bytes >= kLargeBytes; }
    bool over() const {
        if (ns < 0) return false;
        return large() ? beyondNs() > kLargeShare * libraryNs : ns > kSmallNs;
    }
};

// One call to count its log lines, then the medians: the call with its log
// lines formatted but not written, in batches alternating with the
// library's part alone (the parse or the serialisation), so that a slow
// spell of the machine falls on both alike; then with every line written.
template <class Op, class Library>
Cell measure(Op&& op, Library&& library) {
    Cell c;
    QuietStderr quiet;
    long before = s_logLines.load();
    op();
    c.lines = s_logLines.load() - before;
    s_writeLog = false;
    auto [ns, libraryNs] = pairedMedianNsPerCall(op, library);
    c.ns = ns;
    c.libraryNs = libraryNs;
    s_writeLog = true;
    c.writtenNs = medianNsPerCall(op);
    return c;
}

std::string bold(const std::string& s, bool on) {
    return on ? "**" + s + "**" : s;
}

std::string fixed(double v, int decimals) {
    char buf[32];
    snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return buf;
}

// Markdown cells: bytes | in all | library's part | beyond it (share). The
// figure that a target bounds is bold when it misses.
std::string cells(const Cell& c) {
    if (c.ns < 0) return c.status + " | | | ";
    return grouped(static_cast<double>(c.bytes)) + " | " +
           bold(duration(c.ns), c.over() && !c.large()) + " | " + duration(c.libraryNs) + " | " +
           bold(duration(c.beyondNs()) + " (" + fixed(c.share(), 2) + ")", c.over() && c.large());
}

std::string describe(const Cell& c, const char* kind, int id) {
    std::string s = std::string(kind) + " " + std::to_string(id) + " (" +
                    grouped(static_cast<double>(c.bytes)) + " B): " + duration(c.ns);
    if (c.large())
        s += ", " + duration(c.beyondNs()) + " beyond the library's " + duration(c.libraryNs) +
             " = " + fixed(c.share(), 2);
    return s;
}

// Parsing the record's Request alone, a fresh message each time: the part
// of a request's figure that belongs to the protocol buffer library and the
// size of the body.
auto decodeOp(const std::string& rec) {
    return [&rec] {
        imsCommonStruc::Request request;
        google::protobuf::io::ArrayInputStream in(rec.data() + 8, static_cast<int>(rec.size() - 8));
        google::protobuf::io::CodedInputStream coded(&in);
        request.ParseFromCodedStream(&coded);
    };
}

// Sizing and serialising a finished message, as it is framed.
auto serialiseOp(const google::protobuf::MessageLite& message) {
    return [&message, buf = std::vector<uint8_t>(message.ByteSizeLong())]() mutable {
        buf.resize(message.ByteSizeLong());
        message.SerializeWithCachedSizesToArray(buf.data());
    };
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
    bool summaryOnly = false;  // the one paragraph, without the table
    int only = 0;              // one id alone, for a profiler
    for (int i = 1; i < argc; i++) {
        std::string a = argv[i];
        if (a == "--requests" && i + 1 < argc)
            requestsDir = argv[++i];
        else if (a == "--write-seeds" && i + 1 < argc)
            seedsDir = argv[++i];
        else if (a == "--markdown")
            markdown = true;
        else if (a == "--summary")
            summaryOnly = true;
        else if (a == "--only" && i + 1 < argc)
            only = std::atoi(argv[++i]);
        else {
            std::cerr << "usage: translate_bench [--requests DIR] [--markdown | --summary] "
                         "[--write-seeds DIR] [--only ID]\n";
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
        Cell request, answer;  // answer: the response, or the notification
    };
    uint32_t token = 0x01020304;

    // One pass over every id with a row: its rows, in table order.
    auto measurePass = [&](int pass, std::vector<Row>& rows) {
        for (size_t i = 0; i < s_commandCount; i++) {
            const CommandInfo& info = s_commands[i];
            if (info.dispatchFunction == nullptr || (only && info.requestNumber != only)) continue;
            Row row{info.requestNumber, false, "", {}, {}};
            std::string payload;
            {
                QuietStderr quiet;
                auto [p, body] = bodies.payloadFor(info.requestNumber);
                payload = p;
                row.body = body;
            }
            std::string rec = record(payload, token);
            if (!seedsDir.empty() && pass == 0) writeSeeds(seedsDir, info.requestNumber, rec);
            std::vector<std::unique_ptr<ImsData>> captured;
            {
                QuietStderr quiet;
                captured = dispatchCapture(rec);
            }
            std::unique_ptr<ImsData> request;
            if (captured.empty()) {
                row.request.status = "no stack call";
            } else {
                request = std::move(captured.front());
                velar_sim::setCaptureHook(drop, nullptr);
                row.request =
                    measure([&] { ProcessCommandBuffer(rec.data(), rec.size()); }, decodeOp(rec));
                velar_sim::setCaptureHook(nullptr, nullptr);
                row.request.bytes = payload.size() - reqidOnly(row.id).size();
            }

            // The answer: the auto mode's success record for this request (a
            // bare record of the id where the handler built none).
            ImsData bare(info.requestNumber);
            std::unique_ptr<ImsData> answer(
                velar_sim::makeAutoAnswer(request ? request.get() : &bare));
            if (!answer) {
                row.answer.status = "no response";
            } else {
                imsCommonStruc::Response response;
                int rc = 0;
                {
                    QuietStderr quiet;
                    rc = info.responseFunction(token, response, answer.get());
                }
                if (rc < 0) {
                    row.answer.status = "handler fails";
                } else {
                    row.answer = measure([&] { IMS_onResponse(token, answer.get()); },
                                         serialiseOp(response));
                    row.answer.bytes = response.ByteSizeLong();
                }
            }
            rows.push_back(std::move(row));
        }

        for (size_t i = 0; i < s_notificationCount; i++) {
            const NotifyInfo& info = s_notifications[i];
            if (info.notifyFunction == nullptr || (only && info.notifyNumber != only)) continue;
            Row row{info.notifyNumber, true, "", {}, {}};
            const char* registered = velar_sim::notifyClass(info.notifyNumber);
            std::string cls = registered != nullptr ? registered : "";
            row.body = cls;
            std::unique_ptr<ImsData> rec;
            if (cls.empty()) {
                row.answer.status = "no class registered";
            } else {
                std::string error;
                Json sample = velar_sim::sampleRecord(cls, info.notifyNumber, {}, &error);
                if (!sample.is_null()) rec.reset(velar_sim::recordFromJson(sample, &error));
                if (!rec) row.answer.status = "cannot build " + cls + ": " + error;
            }
            if (rec) {
                imsCommonStruc::Notify notify;
                int rc = 0;
                {
                    QuietStderr quiet;
                    rc = info.notifyFunction(notify, rec.get());
                }
                if (rc < 0) {
                    row.answer.status = "handler fails";
                } else {
                    row.answer = measure([&] { IMS_onNotify(rec.get()); }, serialiseOp(notify));
                    row.answer.bytes = notify.ByteSizeLong();
                }
            }
            rows.push_back(std::move(row));
        }
    };

    // Every id is measured in each of five passes a few seconds apart, and
    // its least figure is kept: this machine slows down now and then for
    // seconds at a time, which a median within one pass cannot see past.
    constexpr int kPasses = 5;
    std::vector<Row> rows;
    for (int pass = 0; pass < kPasses; pass++) {
        if (pass > 0) std::this_thread::sleep_for(std::chrono::seconds(3));
        std::vector<Row> passRows;
        measurePass(pass, passRows);
        if (pass == 0) {
            rows = std::move(passRows);
            continue;
        }
        for (size_t r = 0; r < rows.size(); r++) {
            for (auto cell : {&Row::request, &Row::answer}) {
                Cell& kept = rows[r].*cell;
                const Cell& now = passRows[r].*cell;
                if (now.ns >= 0 && (kept.ns < 0 || now.ns < kept.ns)) kept = now;
            }
        }
    }
    Summary summary;
    for (const Row& r : rows) {
        if (!r.notification) summary.add(r.request, r.id, "request");
        summary.add(r.answer, r.id, r.notification ? "notification" : "response");
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
    std::vector<std::string> over;
    for (const Row& r : rows) {
        if (r.request.over()) over.push_back(describe(r.request, "request", r.id));
        if (r.answer.over())
            over.push_back(describe(r.answer, r.notification ? "notification" : "response", r.id));
    }
    std::string overList;
    for (const std::string& o : over) overList += (overList.empty() ? "" : "; ") + o;
    std::string text =
        "Measured " + std::to_string(summary.all.size()) +
        " translations; median of the per-id medians " + duration(percentile(summary.all, 0.5)) +
        "; worst " + summary.worst + " at " + duration(summary.worstNs) +
        ". Over target: " + std::to_string(over.size()) + (over.empty() ? "" : ": " + overList) +
        ". With every log line written: worst " + summary.worstWritten + " at " +
        duration(summary.worstWrittenNs) + "; one line's write(2) costs " + duration(writeNs) +
        " on this machine.";
    if (summaryOnly) {
        std::cout << text << "\n";
    } else if (markdown) {
        std::cout << text << "\n\n";
        std::cout << "| Id | Body / record class | Body bytes | Request | Parse | Beyond the parse "
                     "(share) | Message bytes | Response or notification | Serialisation | "
                     "Beyond it (share) |\n"
                     "|---|---|---|---|---|---|---|---|---|---|\n";
        for (const Row& r : rows) {
            std::cout << "| " << r.id << " | " << (r.body.empty() ? "" : "`" + r.body + "`")
                      << " | " << (r.notification ? " | | | " : cells(r.request)) << " | "
                      << cells(r.answer) << " |\n";
        }
    } else {
        for (const Row& r : rows) {
            std::cout << r.id << "\t" << r.body;
            for (const Cell* c : {&r.request, &r.answer}) {
                if (c == &r.request && r.notification) continue;
                std::cout << "\t" << (c == &r.request ? "request " : "answer ");
                if (c->ns < 0)
                    std::cout << c->status;
                else
                    std::cout << c->bytes << " B " << duration(c->ns) << " (library "
                              << duration(c->libraryNs) << ", share " << fixed(c->share(), 2) << ")"
                              << (c->over() ? " OVER" : "");
            }
            std::cout << "\n";
        }
        std::cout << text << "\n";
    }
    return over.empty() ? 0 : 1;
}
