// The simulated stack's record codec, as a controller drives it: any JSON,
// under the class it names and under one of the registered classes that the
// input picks. Whatever decodes must encode, and what the codec writes it
// must read back to the same record.
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include <functional>
#include <memory>
#include <string>

#include "stack/sim/velar_sim.h"

namespace {

using velar_sim::Json;

void roundTrip(const Json& j) {
    std::string error;
    std::unique_ptr<ImsData> record(velar_sim::recordFromJson(j, &error));
    if (!record) return;
    // The down form too: it must not fail on anything that came up.
    velar_sim::recordToJson(record.get());
    Json written = velar_sim::recordToJsonUp(record.get());
    std::unique_ptr<ImsData> again(velar_sim::recordFromJson(written, &error));
    if (!again) {
        fprintf(stderr, "the codec cannot read what it wrote: %s\n%s\n", error.c_str(),
                written.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
        abort();
    }
    if (velar_sim::recordToJsonUp(again.get()) != written) {
        fprintf(stderr, "a second trip changes the record:\n%s\n",
                written.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
        abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Json j = Json::parse(data, data + size, nullptr, false);
    if (j.is_discarded()) return 0;
    roundTrip(j);
    static const std::vector<std::string> names = velar_sim::classNames();
    if (j.is_object() && !names.empty()) {
        size_t pick =
            std::hash<std::string>{}(std::string(reinterpret_cast<const char*>(data), size));
        j["class"] = names[pick % names.size()];
        roundTrip(j);
    }
    return 0;
}
