#include <cutils/multiuser.h>
#include <cutils/properties.h>

#include <stdlib.h>
#include <string.h>

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(PropertyGet, ReadsEnvironment) {
    struct Case {
        const char* key;
        const char* envName;  // set before the call unless null
        const char* envValue;
        const char* dflt;
        std::string expected;
    };
    const std::string longValue(200, 'v');
    const Case cases[] = {
        {"sys.ims.current_uid", "VELARD_PROP_sys_ims_current_uid", "10057", "0", "10057"},
        {"sys.ims.current_uid", nullptr, nullptr, "0", "0"},
        {"sys.ims.current_uid", nullptr, nullptr, nullptr, ""},
        // An empty property is the same as an unset one.
        {"sys.ims.current_uid", "VELARD_PROP_sys_ims_current_uid", "", "dflt", "dflt"},
        {"plain", "VELARD_PROP_plain", "x y", nullptr, "x y"},
        {"a.b-c..d", "VELARD_PROP_a_b-c__d", "odd", nullptr, "odd"},
        // Only the dotted name counts: the variable named after the raw key is not read.
        {"ro.x", "VELARD_PROP_ro.x", "wrong", "right", "right"},
        {"long.value", "VELARD_PROP_long_value", longValue.c_str(), nullptr,
         longValue.substr(0, PROPERTY_VALUE_MAX - 1)},
        {"long.default", nullptr, nullptr, longValue.c_str(),
         longValue.substr(0, PROPERTY_VALUE_MAX - 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        if (c.envName) setenv(c.envName, c.envValue, 1);
        char value[PROPERTY_VALUE_MAX];
        memset(value, '#', sizeof value);
        int len = property_get(c.key, value, c.dflt);
        EXPECT_EQ(std::string(value), c.expected);
        EXPECT_EQ(len, static_cast<int>(c.expected.size()));
        if (c.envName) unsetenv(c.envName);
    }
}

TEST(MultiuserGetUid, UserTimesOffsetPlusAppId) {
    struct Case {
        userid_t user;
        appid_t app;
        uid_t uid;
    };
    const Case cases[] = {
        {0, 0, 0},           {0, 1000, 1000}, {0, 10057, 10057}, {10, 10057, 1010057},
        {1, 123456, 123456},  // app id taken modulo the per-user range
        {2, 99999, 299999},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(multiuser_get_uid(c.user, c.app), c.uid) << c.user << "/" << c.app;
    }
}

}  // namespace
