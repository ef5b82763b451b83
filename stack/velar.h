// Everything the daemon knows of the stack library.
#pragma once

#include "velar_boundary.h"
#include "shared_records.h"
#include "registration_records.h"
#include "call_records.h"
#include "ss_records.h"
#include "sms_records.h"
#include "messaging_records.h"
#include "messaging_ft_records.h"
#include "presence_records.h"
#include "xdm_records.h"
#include "share_records.h"
