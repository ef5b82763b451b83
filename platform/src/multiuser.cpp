#include <cutils/multiuser.h>

extern "C" uid_t multiuser_get_uid(userid_t user_id, appid_t app_id) {
    return user_id * AID_USER_OFFSET + (app_id % AID_USER_OFFSET);
}
