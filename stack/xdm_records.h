// Records of the xdm family.
#pragma once

#include "shared_records.h"
