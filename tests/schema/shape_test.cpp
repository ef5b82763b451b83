// The schema against the client's tables: a fingerprint of every field and
// enumeration, so that a dropped row, a shifted number or a wrong label shows
// up, with totals and tallies that narrow down where.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>

#include "imsCommonStruc.pb.h"

namespace schema_test {
namespace {

namespace pb = google::protobuf;

// Walks every message, field and enumeration of the wire schema through the
// full runtime's descriptors.
const pb::FileDescriptor* SchemaFile() {
    return imsCommonStruc::Request::descriptor()->file();
}

void ForEachMessage(const std::function<void(const pb::Descriptor*)>& fn) {
    std::function<void(const pb::Descriptor*)> walk = [&](const pb::Descriptor* d) {
        fn(d);
        for (int i = 0; i < d->nested_type_count(); ++i) walk(d->nested_type(i));
    };
    const pb::FileDescriptor* file = SchemaFile();
    for (int i = 0; i < file->message_type_count(); ++i) walk(file->message_type(i));
}

void ForEachField(const std::function<void(const pb::FieldDescriptor*)>& fn) {
    ForEachMessage([&](const pb::Descriptor* d) {
        for (int i = 0; i < d->field_count(); ++i) fn(d->field(i));
    });
}

void ForEachEnum(const std::function<void(const pb::EnumDescriptor*)>& fn) {
    const pb::FileDescriptor* file = SchemaFile();
    for (int i = 0; i < file->enum_type_count(); ++i) fn(file->enum_type(i));
    ForEachMessage([&](const pb::Descriptor* d) {
        for (int i = 0; i < d->enum_type_count(); ++i) fn(d->enum_type(i));
    });
}

std::string LabelOf(const pb::FieldDescriptor* f) {
    return f->is_required() ? "required" : f->is_repeated() ? "repeated" : "optional";
}

TEST(SchemaShape, Totals) {
    int messages = 0;
    ForEachMessage([&](const pb::Descriptor*) { ++messages; });
    int fields = 0;
    ForEachField([&](const pb::FieldDescriptor*) { ++fields; });
    int enums = 0;
    ForEachEnum([&](const pb::EnumDescriptor*) { ++enums; });

    EXPECT_EQ(messages, 237);
    EXPECT_EQ(fields, 1288);
    EXPECT_EQ(enums, 45);
    EXPECT_EQ(SchemaFile()->enum_type_count(), 31);
    EXPECT_EQ(SchemaFile()->service_count(), 0);
    EXPECT_EQ(SchemaFile()->package(), "imsCommonStruc");
}

// Tallies taken from the field tables independently of the .proto: a field
// transcribed with the wrong label or type moves one of these numbers.
TEST(SchemaShape, LabelAndTypeTallies) {
    std::map<std::string, int> labels;
    std::map<std::string, int> types;
    ForEachField([&](const pb::FieldDescriptor* f) {
        labels[LabelOf(f)]++;
        types[f->type_name()]++;
    });
    const std::map<std::string, int> want_labels = {
        {"required", 566}, {"optional", 640}, {"repeated", 82}};
    const std::map<std::string, int> want_types = {
        {"message", 298}, {"enum", 69},  {"bool", 110},   {"bytes", 5},    {"float", 2},
        {"int32", 23},    {"sint32", 1}, {"string", 472}, {"uint32", 302}, {"uint64", 6}};
    EXPECT_EQ(labels, want_labels);
    EXPECT_EQ(types, want_types);
}

// The client writes one tag per element; packing would change the bytes.
TEST(SchemaShape, RepeatedScalarsAreUnpacked) {
    int packable = 0;
    ForEachField([&](const pb::FieldDescriptor* f) {
        if (!f->is_repeated() || !f->is_packable()) return;
        ++packable;
        EXPECT_FALSE(f->is_packed()) << f->full_name();
    });
    EXPECT_EQ(packable, 14);  // 10 enum, 1 int32, 3 bool
}

// One line per field and per enumeration, sorted; numbers only for the
// top-level enumerations since their value names are ours.
std::string CanonicalSchema() {
    std::vector<std::string> lines;
    using F = pb::FieldDescriptor;
    ForEachField([&](const F* f) {
        std::string type = f->type_name();
        if (f->cpp_type() == F::CPPTYPE_ENUM) type += ":" + f->enum_type()->full_name();
        if (f->cpp_type() == F::CPPTYPE_MESSAGE) type += ":" + f->message_type()->full_name();
        // The schema's defaults are all integers, booleans or enum numbers;
        // any other would show as "?", which is change enough.
        std::string def =
            !f->has_default_value()              ? ""
            : f->cpp_type() == F::CPPTYPE_INT32  ? std::to_string(f->default_value_int32())
            : f->cpp_type() == F::CPPTYPE_UINT32 ? std::to_string(f->default_value_uint32())
            : f->cpp_type() == F::CPPTYPE_BOOL   ? (f->default_value_bool() ? "true" : "false")
            : f->cpp_type() == F::CPPTYPE_ENUM   ? std::to_string(f->default_value_enum()->number())
                                                 : "?";
        lines.push_back("field|" + f->containing_type()->full_name() + "|" +
                        std::to_string(f->number()) + "|" + f->name() + "|" + LabelOf(f) + "|" +
                        type + "|" + def);
    });
    ForEachEnum([&](const pb::EnumDescriptor* e) {
        std::string values;
        for (int i = 0; i < e->value_count(); ++i) {
            if (i) values += ",";
            if (e->containing_type() != nullptr) values += e->value(i)->name() + "=";
            values += std::to_string(e->value(i)->number());
        }
        lines.push_back("enum|" + e->full_name() + "|" + values);
    });
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const std::string& l : lines) text += l + "\n";
    return text;
}

uint64_t Fnv1a64(const std::string& s) {
    uint64_t h = 0xcbf29ce484222325ULL;
    for (unsigned char c : s) {
        h ^= c;
        h *= 0x100000001b3ULL;
    }
    return h;
}

// The fingerprint was computed from the client's field tables, not from our
// .proto. Any change of a number, name, label, type, default, enum value or
// enum order changes it (the id space and every enumeration's range and
// default included); the totals and tallies narrow down where.
TEST(SchemaShape, FingerprintOfEveryFieldAndEnum) {
    const std::string text = CanonicalSchema();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1288 + 45);
    EXPECT_EQ(Fnv1a64(text), 0x0b5a06c91c4f57d6ULL) << "canonical schema:\n" << text;
}

}  // namespace
}  // namespace schema_test
