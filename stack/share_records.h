// Records of the share family.
#pragma once

#include "shared_records.h"
