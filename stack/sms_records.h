// Records of the sms family.
#pragma once

#include "shared_records.h"
