// Records of the registration family.
#pragma once

#include "shared_records.h"
