// Records of file transfer, standalone messages and group chat.
#pragma once

#include "messaging_records.h"
