// Records of the messaging family.
#pragma once

#include "shared_records.h"
