// Moving the fields of a body that a dispatch handler owns (TakeBody) into
// the stack's record, so that the record takes the parsed bytes instead of a
// copy of them.
#pragma once

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <google/protobuf/repeated_ptr_field.h>

// A string field; an unset one gives its default without allocating a string
// for it.
#define TAKE_STRING(body, field) \
    ((body).has_##field() ? std::move(*(body).mutable_##field()) : std::string((body).field()))

// The strings of a repeated field.
inline std::vector<std::string> TakeStrings(
    google::protobuf::RepeatedPtrField<std::string>* values) {
    return std::vector<std::string>(std::make_move_iterator(values->begin()),
                                    std::make_move_iterator(values->end()));
}
