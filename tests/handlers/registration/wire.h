// Requests written compactly in tests: a message as [[field number, value],
// ...], a string length-delimited, an array a nested message, a number or a
// flag a varint. A repeated field is its pair written again.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace velard_test {

inline std::string wire(const nlohmann::ordered_json& fields) {
    std::string out;
    auto varint = [&out](uint64_t v) {
        for (; v >= 0x80; v >>= 7) out += static_cast<char>(v | 0x80);
        out += static_cast<char>(v);
    };
    for (const auto& field : fields) {
        const uint64_t number = field[0].get<uint64_t>();
        const auto& v = field[1];
        if (v.is_string() || v.is_array()) {
            const std::string bytes = v.is_string() ? v.get<std::string>() : wire(v);
            varint(number << 3 | 2);
            varint(bytes.size());
            out += bytes;
        } else {
            varint(number << 3);
            varint(v.is_boolean() ? uint64_t{v.get<bool>()}
                                  : static_cast<uint64_t>(v.get<int64_t>()));
        }
    }
    return out;
}

template <class Message>
void fillWire(Message* message, const char* fields) {
    message->ParsePartialFromString(wire(nlohmann::ordered_json::parse(fields)));
}

}  // namespace velard_test
