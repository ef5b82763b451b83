// The daemon's log lines: one tag for every line it writes.
#pragma once

#include <android/log.h>

#include <string>

#define IMS_TAG "[IMS6.0]"
#define IMS_LOGV(...) __android_log_print(ANDROID_LOG_VERBOSE, IMS_TAG, __VA_ARGS__)
#define IMS_LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, IMS_TAG, __VA_ARGS__)
#define IMS_LOGI(...) __android_log_print(ANDROID_LOG_INFO, IMS_TAG, __VA_ARGS__)
#define IMS_LOGW(...) __android_log_print(ANDROID_LOG_WARN, IMS_TAG, __VA_ARGS__)
#define IMS_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, IMS_TAG, __VA_ARGS__)

// The stack's short name of a signature (its methodName), for the prefix of log
// lines. The signature is a constant and the name never changes, so it is
// worked out once per call site rather than once per line.
#define IMS_METHOD_NAME(signature)                                         \
    ([]() -> const char* {                                                 \
        static const std::string velardMethodName = methodName(signature); \
        return velardMethodName.c_str();                                   \
    }())
