// Taking the fields of a dispatch handler's body (TakeBody) into the stack's
// record: moved where the record keeps them, so that it takes the parsed
// bytes instead of a copy of them.
#pragma once

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <google/protobuf/repeated_ptr_field.h>

// A string field, taken as its receiver takes it. It converts to an rvalue
// of the body's own string: a parameter by value or a record's member moves
// it out, so that the record keeps the parsed bytes instead of a copy, while
// a parameter by constant reference reads it in place and copies it, as it
// would anyway; the body then keeps its buffer for the next parse into it.
// An unset field gives its default without allocating a string in the body.
class TakenString {
public:
    TakenString(std::string* inBody, const std::string& value) : inBody_(inBody) {
        if (inBody_ == nullptr) unset_ = value;
    }
    operator std::string&&() { return std::move(inBody_ != nullptr ? *inBody_ : unset_); }

private:
    std::string* inBody_;
    std::string unset_;
};

#define TAKE_STRING(body, field) \
    TakenString((body).has_##field() ? (body).mutable_##field() : nullptr, (body).field())

// The strings of a repeated field.
inline std::vector<std::string> TakeStrings(
    google::protobuf::RepeatedPtrField<std::string>* values) {
    return std::vector<std::string>(std::make_move_iterator(values->begin()),
                                    std::make_move_iterator(values->end()));
}
