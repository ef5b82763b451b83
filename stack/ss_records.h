// Records of the ss family.
#pragma once

#include "shared_records.h"
