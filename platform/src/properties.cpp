// Host properties come from the environment: NAME is read from
// VELARD_PROP_<NAME with every '.' replaced by '_'>, so a test or
// velard-host sets a property by exporting a variable.
#include <cutils/properties.h>

#include <stdlib.h>
#include <string.h>

#include <string>

extern "C" int property_get(const char* key, char* value, const char* default_value) {
    const char* found = nullptr;
    if (key != nullptr) {
        std::string var = "VELARD_PROP_";
        var += key;
        for (size_t i = sizeof "VELARD_PROP_" - 1; i < var.size(); ++i) {
            if (var[i] == '.') var[i] = '_';
        }
        found = getenv(var.c_str());
    }
    // As on the device, an empty property reads the same as an unset one.
    if (found == nullptr || found[0] == '\0') found = default_value;
    if (found == nullptr) found = "";

    size_t len = strnlen(found, PROPERTY_VALUE_MAX - 1);
    memcpy(value, found, len);
    value[len] = '\0';
    return static_cast<int>(len);
}
