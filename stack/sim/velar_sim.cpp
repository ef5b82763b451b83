// The simulated stack: the host provider of the library's operations.
//
// Auto mode answers every request from a stack thread with a success record.
// Controlled mode (VELAR_SIM_CONTROL names a UNIX stream socket) shows every
// request to a controller as a JSON line and carries out the controller's
// answers, notifications and settings, in the order received.
#include "velar_sim.h"
#include "record_tap.h"

#include <android/log.h>
#include <errno.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <map>
#include <memory>
#include <vector>
#include <stdio.h>

#define SIM_TAG "velar-sim"
#define SIM_LOG(prio, ...) __android_log_print(prio, SIM_TAG, __VA_ARGS__)

namespace {

int envInt(const char* name, int fallback) {
    const char* v = getenv(name);
    if (v == nullptr || *v == '\0') return fallback;
    return atoi(v);
}

bool envBool(const char* name) {
    const char* v = getenv(name);
    if (v == nullptr) return false;
    std::string s(v);
    return s == "1" || s == "true" || s == "yes";
}

std::atomic<bool> s_shipBuild{envBool("VELAR_SIM_SHIP_BUILD")};

}  // namespace

int logLevel = envInt("VELAR_SIM_LOGLEVEL", 2);

bool IsShipBuild() {
    return s_shipBuild.load(std::memory_order_relaxed);
}

std::string ImsLogChecker(const std::string& text) {
    // A production build keeps numbers and addresses out of the log.
    if (IsShipBuild()) return std::string(text.size() < 4 ? text.size() : 4, '*');
    return text;
}

std::string methodName(const std::string& signature) {
    size_t paren = signature.find('(');
    if (paren == std::string::npos) paren = signature.size();
    size_t start = paren;
    auto ident = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '~';
    };
    while (start > 0 && ident(signature[start - 1])) --start;
    return signature.substr(start, paren - start);
}

namespace resip {
bool Data::init(DataLocalSize<16>) {
    return true;
}
bool CpimContents::init() {
    return true;
}
}  // namespace resip

namespace velar_sim {
namespace {

struct Registry {
    std::unordered_map<std::string, ClassInfo> byName;
    std::unordered_map<std::type_index, const ClassInfo*> byType;
};

// Never destroyed: stack threads may still be at work while the process exits.
Registry& registry() {
    static Registry* r = new Registry;
    return *r;
}

std::atomic<CaptureHook> s_captureHook{nullptr};
std::atomic<void*> s_captureContext{nullptr};

}  // namespace

void registerClass(const ClassInfo& info) {
    auto& r = registry();
    auto it = r.byName.emplace(info.name, info).first;
    r.byType.emplace(info.type, &it->second);
}

const ClassInfo* findClass(const std::string& name) {
    auto& r = registry();
    auto it = r.byName.find(name);
    return it == r.byName.end() ? nullptr : &it->second;
}

const ClassInfo* findClass(const std::type_info& type) {
    // Records of one class tend to come in runs; the last answer saves
    // hashing the type's name again.
    static thread_local const std::type_info* lastType = nullptr;
    static thread_local const ClassInfo* lastClass = nullptr;
    if (lastType != nullptr && *lastType == type) return lastClass;
    auto& r = registry();
    auto it = r.byType.find(std::type_index(type));
    const ClassInfo* found = it == r.byType.end() ? nullptr : it->second;
    if (found != nullptr) {
        lastType = &type;
        lastClass = found;
    }
    return found;
}

std::vector<std::string> classNames() {
    std::vector<std::string> names;
    for (const auto& entry : registry().byName) names.push_back(entry.first);
    std::sort(names.begin(), names.end());
    return names;
}

namespace {
// The members that an answer repeats from its request (the user agent and
// the call), each under the two spellings that record classes use.
const char* const kCopiedNames[2][2] = {{"handle", "mHandle"}, {"session", "mSession"}};
// The flags by which an answer says that it succeeded. Numbers that say so
// (results, error codes and types) say it with 0, as a fresh record holds.
const char* const kSuccessFlags[] = {"success"};
}  // namespace

namespace {

// The registered class of a table row's answer, looked up by name once per
// row rather than once per request.
const ClassInfo* answerClassOf(const HandlerClass* row) {
    // Per thread, so that no request waits on a lock for it.
    static thread_local std::unordered_map<const HandlerClass*, const ClassInfo*> known;
    auto it = known.find(row);
    if (it == known.end()) it = known.emplace(row, findClass(row->className)).first;
    return it->second;
}

}  // namespace

AutoPlan planAutoAnswer(ImsData* request) {
    AutoPlan plan;
    plan.requestId = request->GetId();
    const HandlerClass* row = handlerClass(Way::kAnswer, plan.requestId);
    if (row == nullptr) return plan;
    const char* cls = row->className;
    const char* handleFrom = row->handleFrom;
    plan.answerClass = answerClassOf(row);
    if (plan.answerClass == nullptr || plan.answerClass->decode == nullptr) {
        SIM_LOG(ANDROID_LOG_ERROR, "no answer class %s for request %d", cls, plan.requestId);
        plan.answerClass = nullptr;
        return plan;
    }
    // The answer names the same user agent and call as its request; a
    // request may name its user agent under a member of its own.
    const ClassInfo* in = findClass(typeid(*request));
    const char* const ownName[2] = {handleFrom, nullptr};
    for (int i = 0; i < 2 && in != nullptr; i++) {
        for (const char* n : {ownName[i], kCopiedNames[i][0], kCopiedNames[i][1]}) {
            if (n != nullptr && in->getInt(request, n, &plan.copied[i].value)) {
                plan.copied[i].found = true;
                break;
            }
        }
    }
    return plan;
}

namespace {

// Whether a class's default constructor leaves a record exactly as decoding
// an empty JSON object does (every member declared zero). It usually does;
// a member held through a pointer to a container is the exception (decoding
// gives an empty container, the constructor none). Auto mode answers every
// request, so it decodes once per class to find out, and from then on
// constructs when that is the same record.
bool freshIsEmptyDecode(const ClassInfo* cls) {
    static thread_local std::unordered_map<const ClassInfo*, bool> known;
    auto it = known.find(cls);
    if (it != known.end()) return it->second;
    bool same = false;
    if (cls->fresh != nullptr) {
        std::unique_ptr<ImsData> decoded(cls->decode(Json::object()));
        std::unique_ptr<ImsData> fresh(cls->fresh());
        same = cls->encode(decoded.get(), cls->name) == cls->encode(fresh.get(), cls->name);
    }
    return known.emplace(cls, same).first->second;
}

}  // namespace

ImsData* buildAutoAnswer(const AutoPlan& plan) {
    if (plan.answerClass == nullptr) return nullptr;
    const ClassInfo* out = plan.answerClass;
    ImsData* answer = freshIsEmptyDecode(out) ? out->fresh() : out->decode(Json::object());
    answer->SetId(plan.requestId);
    for (const char* flag : kSuccessFlags) out->setFlag(answer, flag, true);
    for (int i = 0; i < 2; i++) {
        if (!plan.copied[i].found) continue;
        long long v = plan.copied[i].value;
        out->setInt(answer, kCopiedNames[i][0], v) || out->setInt(answer, kCopiedNames[i][1], v);
    }
    return answer;
}

ImsData* makeAutoAnswer(ImsData* request) {
    return buildAutoAnswer(planAutoAnswer(request));
}

Json recordToJson(ImsData* record) {
    if (record == nullptr) return Json(nullptr);
    const ClassInfo* info = findClass(typeid(*record));
    if (info == nullptr) {
        Json j = Json::object();
        j["class"] = std::string("?") + typeid(*record).name();
        j["id"] = record->GetId();
        return j;
    }
    return info->encode(record, info->name);
}

Json recordToJsonUp(ImsData* record) {
    if (record == nullptr) return Json(nullptr);
    const ClassInfo* info = findClass(typeid(*record));
    if (info == nullptr || info->encodeUp == nullptr) return recordToJson(record);
    return info->encodeUp(record, info->name);
}

ImsData* recordFromJson(const Json& record, std::string* error) {
    try {
        if (!record.is_object()) throw codec::DecodeError{"record: expected an object"};
        auto c = record.find("class");
        if (c == record.end() || !c->is_string()) throw codec::DecodeError{"record: no class"};
        const ClassInfo* info = findClass(c->get<std::string>());
        if (info == nullptr) throw codec::DecodeError{"unknown class " + c->get<std::string>()};
        if (info->decode == nullptr)
            throw codec::DecodeError{"class " + c->get<std::string>() + " is not handed up"};
        int id = 0;
        auto i = record.find("id");
        if (i != record.end()) codec::decode(*i, id, "id");
        auto f = record.find("fields");
        Json fields = f == record.end() ? Json::object() : *f;
        ImsData* r = info->decode(fields);
        r->SetId(id);
        return r;
    } catch (const codec::DecodeError& e) {
        if (error) *error = e.message;
    } catch (const std::exception& e) {
        if (error) *error = e.what();
    }
    return nullptr;
}

void setCaptureHook(CaptureHook hook, void* context) {
    s_captureContext.store(context);
    s_captureHook.store(hook);
}

namespace codec {
void fail(const std::string& path, const std::string& what) {
    throw DecodeError{path + ": " + what};
}
}  // namespace codec

std::string latin1ToUtf8(const std::string& bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (unsigned char c : bytes) {
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return out;
}

bool utf8ToLatin1(const std::string& text, std::string* bytes) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else if ((c == 0xC2 || c == 0xC3) && i + 1 < text.size() &&
                   (static_cast<unsigned char>(text[i + 1]) & 0xC0) == 0x80) {
            out.push_back(static_cast<char>(((c & 0x03) << 6) |
                                            (static_cast<unsigned char>(text[i + 1]) & 0x3F)));
            ++i;
        } else {
            return false;
        }
    }
    *bytes = std::move(out);
    return true;
}

}  // namespace velar_sim

// ---------------------------------------------------------------------------
// The stack singleton.

namespace {

using velar_sim::Json;

IMS_Env* s_env = nullptr;

// A record goes to the daemon only in the class that the daemon's handler for
// its id reads: no real stack sends another, and the daemon makes no check of
// its own. An id without a handler passes, since the daemon reports those.
bool ofHandlersClass(velar_sim::Way way, ImsData* record, std::string* error) {
    const char* expected = way == velar_sim::Way::kAnswer ? velar_sim::answerClass(record->GetId())
                                                          : velar_sim::notifyClass(record->GetId());
    const velar_sim::ClassInfo* info = velar_sim::findClass(typeid(*record));
    if (expected == nullptr || (info != nullptr && std::strcmp(info->name, expected) == 0))
        return true;
    *error = std::string(way == velar_sim::Way::kAnswer ? "response" : "notify") + " record " +
             std::to_string(record->GetId()) + " must be of class " + expected + ", not " +
             (info != nullptr ? info->name : "?");
    return false;
}

// Builds a record that goes up; null with *error set when it cannot be
// built or is not of its handler's class.
ImsData* recordForDaemon(velar_sim::Way way, const Json& json, std::string* error) {
    std::unique_ptr<ImsData> record(velar_sim::recordFromJson(json, error));
    if (record && !ofHandlersClass(way, record.get(), error)) record.reset();
    return record.release();
}

// Auto mode: one stack thread answers the requests in order. Never
// destroyed, since that thread waits on it while the process exits.
//
// The request record is read and released on the thread that hands it over;
// the stack thread gets only what the answer needs and builds, delivers and
// releases the answer itself. A record that is allocated on one thread and
// freed on another takes the host allocator's arena lock for each of its
// strings, and the two threads then contend for it on every request: a cost
// of this simulator and the host's C library, not of the daemon, which the
// benchmarks would otherwise charge to the daemon.
struct AutoQueue {
    std::mutex mutex;
    std::condition_variable cond;
    std::deque<std::pair<unsigned int, velar_sim::AutoPlan>> items;
};
AutoQueue& s_auto = *new AutoQueue;

// VELAR_SIM_SCRIPT names a file of JSON lines {"after": <request id>,
// "record": <record>}: in auto mode, once a request of that id is answered,
// the stack delivers each such record as a notification, in file order.
std::multimap<int, Json>& script() {
    static auto* lines = new std::multimap<int, Json>;
    return *lines;
}

void loadScript() {
    const char* path = getenv("VELAR_SIM_SCRIPT");
    if (path == nullptr || *path == '\0') return;
    FILE* f = fopen(path, "r");
    if (f == nullptr) {
        SIM_LOG(ANDROID_LOG_ERROR, "cannot open script %s", path);
        return;
    }
    char* line = nullptr;
    size_t cap = 0;
    int number = 0;
    while (getline(&line, &cap, f) > 0) {
        number++;
        std::string text(line);
        if (text.find_first_not_of(" \t\r\n") == std::string::npos || text[0] == '#') continue;
        try {
            Json j = Json::parse(text);
            script().emplace(j.at("after").get<int>(), j.at("record"));
        } catch (const std::exception& e) {
            SIM_LOG(ANDROID_LOG_ERROR, "script %s line %d: %s", path, number, e.what());
        }
    }
    free(line);
    fclose(f);
}

std::vector<Json> scriptFor(int requestId) {
    std::vector<Json> out;
    auto range = script().equal_range(requestId);
    for (auto it = range.first; it != range.second; ++it) out.push_back(it->second);
    return out;
}

void autoThread() {
    for (;;) {
        std::pair<unsigned int, velar_sim::AutoPlan> item;
        {
            std::unique_lock<std::mutex> lock(s_auto.mutex);
            s_auto.cond.wait(lock, [] { return !s_auto.items.empty(); });
            item = s_auto.items.front();
            s_auto.items.pop_front();
        }
        int requestId = item.second.requestId;
        ImsData* answer = velar_sim::buildAutoAnswer(item.second);
        if (answer != nullptr) {
            s_env->onResponse(item.first, answer);
            delete answer;
        }
        for (const Json& record : scriptFor(requestId)) {
            std::string error;
            std::unique_ptr<ImsData> n(recordForDaemon(velar_sim::Way::kNotify, record, &error));
            if (n)
                s_env->onNotify(n.get());
            else
                SIM_LOG(ANDROID_LOG_ERROR, "script record after %d: %s", requestId, error.c_str());
        }
    }
}

// Controlled mode.
int s_controlFd = -1;
std::mutex& s_controlWriteMutex = *new std::mutex;
// Set once the controller has gone away. A stack never ends the daemon: from
// then on it keeps the requests it gets to itself, as a stack that lost its
// network would, and the daemon lives on while its client does.
std::atomic<bool> s_controllerGone{false};

void controllerGone() {
    if (!s_controllerGone.exchange(true))
        SIM_LOG(ANDROID_LOG_ERROR, "control channel closed: requests go unanswered from now on");
}

void controlWrite(const Json& j) {
    if (s_controllerGone.load()) return;
    std::string line = j.dump(-1, ' ', false, Json::error_handler_t::replace);
    line.push_back('\n');
    std::lock_guard<std::mutex> lock(s_controlWriteMutex);
    size_t off = 0;
    while (off < line.size()) {
        // Not write(2): a controller that closed its end must not raise
        // SIGPIPE in the daemon's process.
        ssize_t n = send(s_controlFd, line.data() + off, line.size() - off, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            controllerGone();
            return;
        }
        off += static_cast<size_t>(n);
    }
}

void sendError(const Json& seq, const std::string& message) {
    Json j = Json::object();
    j["type"] = "error";
    if (!seq.is_null()) j["seq"] = seq;
    j["message"] = message;
    controlWrite(j);
}

void carryOut(const Json& msg) {
    Json seq = nullptr;
    if (!msg.is_object()) {
        sendError(seq, "message is not an object");
        return;
    }
    if (auto s = msg.find("seq"); s != msg.end()) seq = *s;
    auto t = msg.find("type");
    std::string type = (t != msg.end() && t->is_string()) ? t->get<std::string>() : "";
    std::string error;
    if (type == "response" || type == "notify") {
        unsigned int token = 0;
        if (type == "response") {
            auto tok = msg.find("token");
            try {
                if (tok == msg.end()) throw velar_sim::codec::DecodeError{"token: missing"};
                velar_sim::codec::decode(*tok, token, "token");
            } catch (const velar_sim::codec::DecodeError& e) {
                sendError(seq, e.message);
                return;
            }
        }
        auto rec = msg.find("record");
        ImsData* record = rec == msg.end()
                              ? nullptr
                              : recordForDaemon(type == "response" ? velar_sim::Way::kAnswer
                                                                   : velar_sim::Way::kNotify,
                                                *rec, &error);
        if (record == nullptr) {
            sendError(seq, rec == msg.end() ? "record: missing" : error);
            return;
        }
        if (type == "response")
            s_env->onResponse(token, record);
        else
            s_env->onNotify(record);
        delete record;
    } else if (type == "burst") {
        // Several stack threads notify at once: "threads" threads each deliver
        // "count" copies of the record; done once every thread has finished.
        // A count of 0 with "responses" answers without notifying.
        int threads = 1;
        int count = 1;
        try {
            if (auto v = msg.find("threads"); v != msg.end())
                velar_sim::codec::decode(*v, threads, "threads");
            if (auto v = msg.find("count"); v != msg.end())
                velar_sim::codec::decode(*v, count, "count");
        } catch (const velar_sim::codec::DecodeError& e) {
            sendError(seq, e.message);
            return;
        }
        auto rec = msg.find("record");
        if (rec == msg.end() || threads < 1 || threads > 64 || count < 0) {
            sendError(seq, "burst: needs a record, 1 to 64 threads and a count");
            return;
        }
        std::unique_ptr<ImsData> probe(recordForDaemon(velar_sim::Way::kNotify, *rec, &error));
        if (!probe) {
            sendError(seq, error);
            return;
        }
        // Optional "responses": [{"token":T,"record":R}, ...], answered in
        // order by one more stack thread while the others notify.
        std::vector<std::pair<unsigned int, std::unique_ptr<ImsData>>> answers;
        if (auto a = msg.find("responses"); a != msg.end()) {
            if (!a->is_array()) {
                sendError(seq, "burst: responses must be an array");
                return;
            }
            for (const Json& entry : *a) {
                unsigned int token = 0;
                try {
                    if (!entry.is_object() || !entry.contains("token"))
                        throw velar_sim::codec::DecodeError{"burst: response without a token"};
                    velar_sim::codec::decode(entry["token"], token, "token");
                } catch (const velar_sim::codec::DecodeError& e) {
                    sendError(seq, e.message);
                    return;
                }
                auto r = entry.find("record");
                std::unique_ptr<ImsData> record(
                    r == entry.end() ? nullptr
                                     : recordForDaemon(velar_sim::Way::kAnswer, *r, &error));
                if (!record) {
                    sendError(seq, r == entry.end() ? "burst: response without a record" : error);
                    return;
                }
                answers.emplace_back(token, std::move(record));
            }
        }
        std::vector<std::thread> workers;
        for (int t = 0; t < threads; t++) {
            workers.emplace_back([&rec, count] {
                std::string err;
                std::unique_ptr<ImsData> record(velar_sim::recordFromJson(*rec, &err));
                for (int i = 0; i < count; i++) s_env->onNotify(record.get());
            });
        }
        if (!answers.empty()) {
            workers.emplace_back([&answers] {
                for (auto& [token, record] : answers) s_env->onResponse(token, record.get());
            });
        }
        for (auto& w : workers) w.join();
    } else if (type == "config") {
        try {
            if (auto l = msg.find("logLevel"); l != msg.end()) {
                int v = 0;
                velar_sim::codec::decode(*l, v, "logLevel");
                logLevel = v;
            }
            if (auto b = msg.find("shipBuild"); b != msg.end()) {
                bool v = false;
                velar_sim::codec::decode(*b, v, "shipBuild");
                s_shipBuild.store(v);
            }
        } catch (const velar_sim::codec::DecodeError& e) {
            sendError(seq, e.message);
            return;
        }
    } else {
        sendError(seq, "unknown message type '" + type + "'");
        return;
    }
    if (!seq.is_null()) {
        Json done = Json::object();
        done["type"] = "done";
        done["seq"] = seq;
        controlWrite(done);
    }
}

void controlReader() {
    std::string buffer;
    char chunk[65536];
    for (;;) {
        ssize_t n = read(s_controlFd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            controllerGone();
            return;
        }
        buffer.append(chunk, static_cast<size_t>(n));
        size_t start = 0;
        for (size_t nl; (nl = buffer.find('\n', start)) != std::string::npos; start = nl + 1) {
            std::string line = buffer.substr(start, nl - start);
            if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
            Json msg;
            try {
                msg = Json::parse(line);
            } catch (const std::exception& e) {
                sendError(nullptr, std::string("malformed JSON: ") + e.what());
                continue;
            }
            carryOut(msg);
        }
        buffer.erase(0, start);
    }
}

}  // namespace

Velar* Velar::GetInstance() {
    static Velar instance;
    return &instance;
}

int Velar::Init(IMS_Env* env) {
    s_env = velar_sim::tapEnv(env);
    const char* path = getenv("VELAR_SIM_CONTROL");
    if (path != nullptr && *path != '\0') {
        int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un addr{};
        addr.sun_family = AF_UNIX;
        if (fd < 0 || strlen(path) >= sizeof addr.sun_path) {
            SIM_LOG(ANDROID_LOG_ERROR, "control channel: bad socket path %s", path);
            if (fd >= 0) close(fd);
            return -1;
        }
        strncpy(addr.sun_path, path, sizeof addr.sun_path - 1);
        if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
            SIM_LOG(ANDROID_LOG_ERROR, "control channel: cannot connect to %s errno: %d", path,
                    errno);
            close(fd);
            return -1;
        }
        s_controlFd = fd;
        std::thread(controlReader).detach();
        SIM_LOG(ANDROID_LOG_INFO, "controlled by %s", path);
    } else {
        loadScript();
        std::thread(autoThread).detach();
        SIM_LOG(ANDROID_LOG_INFO, "auto mode");
    }
    return 0;
}

int Velar::OnRequest(unsigned int token, ImsData* data) {
    if (velar_sim::CaptureHook hook = velar_sim::s_captureHook.load()) {
        hook(token, data, velar_sim::s_captureContext.load());
        return 0;
    }
    if (data == nullptr) return -1;
    velar_sim::tapRequest(token, data);
    if (s_controlFd >= 0) {
        if (s_controllerGone.load()) {
            delete data;
            return 0;
        }
        Json j = Json::object();
        j["type"] = "request";
        j["token"] = token;
        j["record"] = velar_sim::recordToJson(data);
        controlWrite(j);
        delete data;
        return 0;
    }
    velar_sim::AutoPlan plan = velar_sim::planAutoAnswer(data);
    delete data;
    {
        std::lock_guard<std::mutex> lock(s_auto.mutex);
        s_auto.items.emplace_back(token, plan);
    }
    s_auto.cond.notify_one();
    return 0;
}
