// Walks every message, field and enumeration of the wire schema through the
// full runtime's descriptors.
#pragma once

#include <functional>
#include <string>

#include <google/protobuf/descriptor.h>

#include "imsCommonStruc.pb.h"

namespace schema_test {

namespace pb = google::protobuf;

inline const pb::FileDescriptor* SchemaFile() {
  return imsCommonStruc::Request::descriptor()->file();
}

inline void ForEachMessage(const std::function<void(const pb::Descriptor*)>& fn) {
  std::function<void(const pb::Descriptor*)> walk = [&](const pb::Descriptor* d) {
    fn(d);
    for (int i = 0; i < d->nested_type_count(); ++i) walk(d->nested_type(i));
  };
  const pb::FileDescriptor* file = SchemaFile();
  for (int i = 0; i < file->message_type_count(); ++i) walk(file->message_type(i));
}

inline void ForEachField(const std::function<void(const pb::FieldDescriptor*)>& fn) {
  ForEachMessage([&](const pb::Descriptor* d) {
    for (int i = 0; i < d->field_count(); ++i) fn(d->field(i));
  });
}

inline void ForEachEnum(const std::function<void(const pb::EnumDescriptor*)>& fn) {
  const pb::FileDescriptor* file = SchemaFile();
  for (int i = 0; i < file->enum_type_count(); ++i) fn(file->enum_type(i));
  ForEachMessage([&](const pb::Descriptor* d) {
    for (int i = 0; i < d->enum_type_count(); ++i) fn(d->enum_type(i));
  });
}

// The name of a message or enumeration as the wire tables write it, without
// the package: "Request.RequestMakeCall".
inline std::string DottedName(const std::string& full_name) {
  const std::string prefix = "imsCommonStruc.";
  return full_name.compare(0, prefix.size(), prefix) == 0 ? full_name.substr(prefix.size()) : full_name;
}

}  // namespace schema_test
