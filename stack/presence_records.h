// Records of the presence family.
#pragma once

#include "shared_records.h"
