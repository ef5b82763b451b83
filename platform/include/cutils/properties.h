// Host stand-in: a property NAME is read from the environment variable
// VELARD_PROP_<NAME with every '.' replaced by '_'>. The packaged libcutils
// has no property_get, and its header needs the device's C library.
#pragma once

#define PROPERTY_KEY_MAX 32
#define PROPERTY_VALUE_MAX 92

#ifdef __cplusplus
extern "C" {
#endif

// Copies the value (or default_value when unset) into value, which holds
// PROPERTY_VALUE_MAX bytes; returns the length copied.
int property_get(const char* key, char* value, const char* default_value);

#ifdef __cplusplus
}
#endif
