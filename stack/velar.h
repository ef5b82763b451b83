// Everything the daemon knows of the stack library.
#pragma once

#include "velar_boundary.h"
#include "shared_records.h"
