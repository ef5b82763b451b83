// Runs every response and notification handler of the daemon on a record of
// the class it reads, with every member filled (non-zero, non-empty), and
// prints what each wrote, one line per row:
//   response|notify <id> <handler result> x<message in hex>
// for wire_fields_test.cpp, which looks at the messages through the full
// runtime's reflection (the daemon's lite classes cannot share its process).
#include <stdio.h>

#include <memory>
#include <string>

#include "stack/sim/samples.h"
#include "tests/support/in_process.h"

namespace {

std::string hex(const std::string& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (unsigned char c : bytes) {
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

std::unique_ptr<ImsData> filledRecord(const char* cls, int id) {
    std::string error;
    velar_sim::Json sample = cls ? velar_sim::sampleRecord(cls, id, {}, &error) : nullptr;
    std::unique_ptr<ImsData> record(sample.is_null() ? nullptr
                                                     : velar_sim::recordFromJson(sample, &error));
    if (!record) fprintf(stderr, "no filled record for %d (%s): %s\n", id, cls, error.c_str());
    return record;
}

}  // namespace

int main() {
    ImsFillDispatchMaps();
    for (size_t i = 1; i < s_commandCount + s_notificationCount - 1; i++) {
        bool answer = i < s_commandCount;
        int id = answer ? s_commands[i].requestNumber
                        : s_notifications[i - s_commandCount + 1].notifyNumber;
        auto record =
            filledRecord(answer ? velar_sim::answerClass(id) : velar_sim::notifyClass(id), id);
        if (!record) return 1;
        std::string bytes;
        int rc = 0;
        if (answer) {
            auto [result, message] = velard_test::respond(record.get());
            rc = result;
            bytes = message.SerializePartialAsString();
        } else {
            auto [result, message] = velard_test::notify(record.get());
            rc = result;
            bytes = message.SerializePartialAsString();
        }
        printf("%s %d %d x%s\n", answer ? "response" : "notify", id, rc, hex(bytes).c_str());
    }
    return 0;
}
