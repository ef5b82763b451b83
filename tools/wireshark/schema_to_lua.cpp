// Writes the wire schema as a Lua table for the Wireshark dissector, which
// cannot point Wireshark's own protocol-buffer support at a .proto file:
//
//   return {
//     enums = { ["imsCommonStruc.Id"] = { [101] = "REQ_UPDATE_COMMON_CONFIG", ... }, ... },
//     messages = { ["imsCommonStruc.Request"] = {
//       [1] = { "reqid", "enum", "imsCommonStruc.Id", false }, ... }, ... },
//   }
//
// A field is { name, type, message or enumeration type name (or false),
// repeated }. Output is sorted, so the committed copy only changes with the
// schema.
#include <stdio.h>

#include <map>
#include <string>

#include "imsCommonStruc.pb.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;

std::string Quote(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') out.push_back('\\');
        out.push_back(c);
    }
    return out + "\"";
}

void AddEnum(const EnumDescriptor* e, std::map<std::string, std::string>* enums) {
    std::map<int, std::string> values;
    for (int i = 0; i < e->value_count(); ++i)
        values.emplace(e->value(i)->number(), e->value(i)->name());  // first name of a number
    std::string body;
    for (const auto& [number, name] : values)
        body += "    [" + std::to_string(number) + "] = " + Quote(name) + ",\n";
    (*enums)[e->full_name()] = body;
}

void AddMessage(const Descriptor* d, std::map<std::string, std::string>* messages,
                std::map<std::string, std::string>* enums) {
    std::map<int, std::string> fields;
    for (int i = 0; i < d->field_count(); ++i) {
        const FieldDescriptor* f = d->field(i);
        std::string typeName = "false";
        if (f->message_type() != nullptr) typeName = Quote(f->message_type()->full_name());
        if (f->enum_type() != nullptr) typeName = Quote(f->enum_type()->full_name());
        fields[f->number()] = "{ " + Quote(f->name()) + ", " + Quote(f->type_name()) + ", " +
                              typeName + ", " + (f->is_repeated() ? "true" : "false") + " }";
    }
    std::string body;
    for (const auto& [number, text] : fields)
        body += "    [" + std::to_string(number) + "] = " + text + ",\n";
    (*messages)[d->full_name()] = body;
    for (int i = 0; i < d->nested_type_count(); ++i) AddMessage(d->nested_type(i), messages, enums);
    for (int i = 0; i < d->enum_type_count(); ++i) AddEnum(d->enum_type(i), enums);
}

}  // namespace

int main() {
    const auto* file = imsCommonStruc::Request::descriptor()->file();
    std::map<std::string, std::string> messages, enums;
    for (int i = 0; i < file->message_type_count(); ++i)
        AddMessage(file->message_type(i), &messages, &enums);
    for (int i = 0; i < file->enum_type_count(); ++i) AddEnum(file->enum_type(i), &enums);

    printf(
        "-- The wire schema for velard.lua, written by schema_to_lua from the\n"
        "-- schema file; regenerate it rather than editing it.\n"
        "return {\n  enums = {\n");
    for (const auto& [name, body] : enums)
        printf("  [%s] = {\n%s  },\n", Quote(name).c_str(), body.c_str());
    printf("  },\n  messages = {\n");
    for (const auto& [name, body] : messages)
        printf("  [%s] = {\n%s  },\n", Quote(name).c_str(), body.c_str());
    printf("  },\n}\n");
    return 0;
}
