#pragma once
#include <android/log.h>
