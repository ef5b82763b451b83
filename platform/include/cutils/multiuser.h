#pragma once
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uid_t userid_t;
typedef uid_t appid_t;

#define AID_USER_OFFSET 100000

// user * 100000 + appid % 100000, as on the device.
uid_t multiuser_get_uid(userid_t user_id, appid_t app_id);

#ifdef __cplusplus
}
#endif
