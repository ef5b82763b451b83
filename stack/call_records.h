// Records of the call family.
#pragma once

#include "shared_records.h"
