// Representative records of any registered class, for benchmarks, fuzz seeds
// and codec checks: every field filled, built from nothing but the class's
// declaration (as the JSON decoder sees it), so that a class a family adds
// tomorrow gets its sample without anyone writing one.
#pragma once

#include <string>

#include "velar_sim.h"

namespace velar_sim {

struct SampleShape {
    size_t stringLength = 20;  // every string (and string map key) this long
    int repeat = 3;            // entries of every vector, set and map
};

// The JSON form of a record of the class as the stack would hand it up:
// scalars non-zero, strings of the shape's length, containers with the
// shape's number of entries, held objects present (to a bounded depth).
// Null with *error set when the class cannot be built from JSON (classes
// that only ever go down).
Json sampleRecord(const std::string& className, int id, const SampleShape& shape,
                  std::string* error);

}  // namespace velar_sim
