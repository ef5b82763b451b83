#include "record_tap.h"

#include <android/log.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/socket.h>

#include <atomic>
#include <string>

#include "velar_sim.h"

namespace velar_sim {

namespace {

int s_tapFd = -1;  // set once in tapEnv, before any record moves
IMS_Env* s_daemonEnv = nullptr;
std::atomic<bool> s_lossLogged{false};

void send(unsigned int token, const char* type, bool withToken, ImsData* record, bool up) {
    std::string message = std::string(R"({"type":")") + type + '"';
    if (withToken) message += R"(,"token":)" + std::to_string(token);
    try {
        Json r = up ? recordToJsonUp(record) : recordToJson(record);
        message += R"(,"record":)" + r.dump(-1, ' ', false, Json::error_handler_t::replace) + '}';
    } catch (const std::exception& e) {
        message += R"(,"error":)" + Json(std::string(e.what())).dump() + '}';
    }
    if (::send(s_tapFd, message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL) < 0 &&
        !s_lossLogged.exchange(true)) {
        __android_log_print(ANDROID_LOG_ERROR, "velar-sim",
                            "capture: record dropped errno: %d (further losses not logged)", errno);
    }
}

void onResponse(unsigned int token, ImsData* data) {
    send(token, "response", true, data, true);
    s_daemonEnv->onResponse(token, data);
}

void onNotify(ImsData* data) {
    send(0, "notify", false, data, true);
    s_daemonEnv->onNotify(data);
}

IMS_Env s_tapEnv{onResponse, onNotify};

}  // namespace

IMS_Env* tapEnv(IMS_Env* env) {
    const char* v = getenv("VELAR_SIM_CAPTURE_FD");
    if (v == nullptr || *v == '\0') return env;
    int fd = atoi(v);
    int type = 0;
    socklen_t len = sizeof type;
    if (getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &len) != 0 || type != SOCK_SEQPACKET) {
        __android_log_print(ANDROID_LOG_ERROR, "velar-sim",
                            "capture: descriptor %s is not a record channel; not capturing", v);
        return env;
    }
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    s_tapFd = fd;
    s_daemonEnv = env;
    return &s_tapEnv;
}

void tapRequest(unsigned int token, ImsData* record) {
    if (s_tapFd >= 0) send(token, "request", true, record, false);
}

}  // namespace velar_sim
