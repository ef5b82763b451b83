// The daemon's log lines: one tag for every line it writes.
#pragma once

#include <android/log.h>

#define IMS_TAG "[IMS6.0]"
#define IMS_LOGV(...) __android_log_print(ANDROID_LOG_VERBOSE, IMS_TAG, __VA_ARGS__)
#define IMS_LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, IMS_TAG, __VA_ARGS__)
#define IMS_LOGI(...) __android_log_print(ANDROID_LOG_INFO, IMS_TAG, __VA_ARGS__)
#define IMS_LOGW(...) __android_log_print(ANDROID_LOG_WARN, IMS_TAG, __VA_ARGS__)
#define IMS_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, IMS_TAG, __VA_ARGS__)
