// Whole-schema checks: totals, enumeration ranges and a fingerprint of every
// field, so that a dropped row, a shifted number or a wrong label shows up.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "schema_walk.h"

namespace schema_test {
namespace {

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
    labels[f->is_required() ? "required" : f->is_repeated() ? "repeated" : "optional"]++;
    types[f->type_name()]++;
  });
  const std::map<std::string, int> want_labels = {{"required", 566}, {"optional", 640}, {"repeated", 82}};
  const std::map<std::string, int> want_types = {
      {"message", 298}, {"enum", 69},  {"bool", 110}, {"bytes", 5},  {"float", 2},
      {"int32", 23},    {"sint32", 1}, {"string", 472}, {"uint32", 302}, {"uint64", 6}};
  EXPECT_EQ(labels, want_labels);
  EXPECT_EQ(types, want_types);
}

struct Range {
  int lo;
  int hi;
};

// The message id space, as ranges. Everything between them must be rejected.
const std::vector<Range> kIdRanges = {
    {0, 0},         {100, 110},     {200, 229},     {300, 316},     {400, 403},     {500, 508},
    {510, 510},     {520, 522},     {550, 554},     {560, 561},     {600, 601},     {700, 703},
    {711, 712},     {750, 751},     {800, 808},     {900, 902},     {1000, 1003},   {1100, 1103},
    {1200, 1201},   {1300, 1300},   {10000, 10023}, {11001, 11011}, {12001, 12005}, {13000, 13004},
    {14001, 14005}, {15001, 15001}, {16000, 16004}, {17000, 17003}, {18000, 18003}, {19000, 19000},
    {20000, 20010}};

TEST(SchemaEnums, IdAcceptsExactlyItsNumbers) {
  std::set<int> valid;
  for (const Range& r : kIdRanges)
    for (int n = r.lo; n <= r.hi; ++n) valid.insert(n);
  ASSERT_EQ(valid.size(), 192u);

  for (int n = -16; n <= 21000; ++n)
    EXPECT_EQ(imsCommonStruc::Id_IsValid(n), valid.count(n) == 1) << "id " << n;
  for (int n : {INT_MIN, -1, 30000, 65536 + 201, INT_MAX}) EXPECT_FALSE(imsCommonStruc::Id_IsValid(n)) << n;

  const pb::EnumDescriptor* id = imsCommonStruc::Id_descriptor();
  EXPECT_EQ(id->value_count(), 192);  // no aliases
  EXPECT_EQ(imsCommonStruc::Id_MIN, 0);
  EXPECT_EQ(imsCommonStruc::Id_MAX, 20010);
}

// The ranges of the shared enumerations. Value names are local; only the
// numbers travel.
TEST(SchemaEnums, TopLevelRangesAreComplete) {
  const std::map<std::string, Range> kRanges = {
      {"Result", {0, 1}},          {"GeneralReason", {0, 6}},
      {"CallReason", {0, 1}},      {"RegiType", {0, 1}},
      {"RegiReason", {0, 3}},      {"CallState", {0, 19}},
      {"CallType", {0, 12}},       {"ConfType", {0, 2}},
      {"CodecType", {0, 2}},       {"StrengthTag", {0, 1}},
      {"SipDirection", {0, 1}},    {"SipOrigin", {0, 1}},
      {"EcholocateType", {0, 1}},  {"XCapDirection", {0, 1}},
      {"Media", {0, 5}},           {"SSForwardTo", {0, 6}},
      {"SSCondition", {0, 18}},    {"NotificationStatus", {0, 1}},
      {"ImServiceType", {0, 2}},   {"ImSessionType", {0, 3}},
      {"ImFeature", {0, 5}},       {"GcReqType", {0, 4}},
      {"FeatureTag", {0, 36}},     {"SubscriptionState", {1, 4}},
      {"SubscriptionFailureReason", {1, 6}}, {"CshError", {0, 5}},
      {"CshRejectReason", {0, 3}}, {"VshResolution", {0, 8}},
      {"XdmDocType", {0, 3}},      {"MNO", {0, 106}},
  };
  const pb::FileDescriptor* file = SchemaFile();
  std::set<std::string> seen;
  for (int i = 0; i < file->enum_type_count(); ++i) {
    const pb::EnumDescriptor* e = file->enum_type(i);
    if (e->name() == "Id") continue;
    seen.insert(e->name());
    auto it = kRanges.find(e->name());
    ASSERT_NE(it, kRanges.end()) << "unexpected enumeration " << e->name();
    const Range r = it->second;
    EXPECT_EQ(e->value_count(), r.hi - r.lo + 1) << e->name();
    for (int n = r.lo - 1; n <= r.hi + 1; ++n) {
      const bool inside = n >= r.lo && n <= r.hi;
      EXPECT_EQ(e->FindValueByNumber(n) != nullptr, inside) << e->name() << " " << n;
    }
  }
  EXPECT_EQ(seen.size(), kRanges.size());
}

std::string RenderValues(const pb::EnumDescriptor* e) {
  std::string out;
  for (int i = 0; i < e->value_count(); ++i) {
    if (i) out += ",";
    out += e->value(i)->name() + "=" + std::to_string(e->value(i)->number());
  }
  return out;
}

// Nested enumerations keep the client's value names, which the generated
// constants (ImError_Type_SUCCESS, ...) are built from.
TEST(SchemaEnums, NestedNamesAndNumbers) {
  const std::map<std::string, std::string> kNested = {
      {"Request.RequestUpdateCall.Action", "REINVITE_ONLY=0,CODEC_CHANGE=1"},
      {"Notify.BearerState", "ESTABLISHED=1,MODIFIED=2,CLOSED=3"},
      {"Notify.RrcEvent", "REJECTED=1,TIMER_EXPIRED=2"},
      {"Notify.ConfCallChanged.ConfEvent",
       "CONF_PARTICIPANT_ADDED=0,CONF_PARTICIPANT_REMOVED=1,CONF_PARTICIPANT_UPDATED=2"},
      {"Notify.ConfCallChanged.participantstatus",
       "PARTICIPANT_STATUS_NONE=0,PARTICIPANT_INVITING=1,PARTICIPANT_ACTIVE=2,PARTICIPANT_REMOVING=3,"
       "PARTICIPANT_NON_ACTIVE=4,PARTICIPANT_ALERTING=5,PARTICIPANT_ONHOLD=6"},
      {"Notify.RegInfoChanged.State", "INIT=0,ACTIVE=1,TERMINATED=2"},
      {"Notify.RegInfoChanged.Event",
       "REGISTERED=0,CREATED=1,REFRESHED=2,SHORTENED=3,EXPIRED=4,DEACTIVATED=5,PROBATION=6"},
      {"Notify.UpdateRouteTable.Operation", "ADD=0,REMOVE=1,UPDATE=2"},
      {"Notify.ImConferenceInfoUpdated.ImParticipantStatus",
       "PARTICIPANT_STATUS_CONNECTED=0,PARTICIPANT_STATUS_DISCONNECTED=1,PARTICIPANT_STATUS_PENDING=2"},
      {"Notify.ImConferenceInfoUpdated.ImParticipantDisconnectReason",
       "PARTICIPANT_DISCONNECT_REASON=0,PARTICIPANT_DISCONNECT_BOOTED=1,PARTICIPANT_DISCONNECT_FAILED=2,"
       "PARTICIPANT_DISCONNECT_BUSY=3"},
      {"Notify.OptionsReceivedInfo.ErrorReason",
       "FAILURE_NONE=0,USER_NOT_AVAIABLE=1,USER_NOT_REGISTERED=2,USER_NOT_REACHABLE=3,REQUEST_TIMEOUT=4,"
       "AUTOMATA_PRESENT=5,INVALID_DATA=6,FORBIDDEN=7,FAILURE_OTHERS=8"},
      {"Notify.VshIncomingSession.MediaType", "LIVE=0,RECORDED=1,EXTERNAL=2"},
      {"ImError.Type",
       "SUCCESS=0,SIP_ERROR=1,MSRP_ERROR=2,ENGINE_ERROR=3,SESSION_RELEASE=4,NETWORK_ERROR=5,"
       "SESSION_RSRC_UNAVAILABLE=6,REMOTE_PARTY_CANCELED=7,DEVICE_UNREGISTERED=8,UNKNOWN_IM_ERROR=9"},
      {"Participant.CopyControl", "TO=0,CC=1,BCC=2"},
  };
  std::map<std::string, std::string> got;
  ForEachEnum([&](const pb::EnumDescriptor* e) {
    if (e->containing_type() != nullptr) got[DottedName(e->full_name())] = RenderValues(e);
  });
  EXPECT_EQ(got, kNested);
}

// Without an explicit default an enum field must read as the lowest number of
// its enumeration, which in proto2 means the lowest value is declared first.
TEST(SchemaEnums, EnumFieldsWithoutDefaultStartAtLowestNumber) {
  int checked = 0;
  ForEachField([&](const pb::FieldDescriptor* f) {
    if (f->cpp_type() != pb::FieldDescriptor::CPPTYPE_ENUM || f->has_default_value()) return;
    const pb::EnumDescriptor* e = f->enum_type();
    int lowest = INT_MAX;
    for (int i = 0; i < e->value_count(); ++i) lowest = std::min(lowest, e->value(i)->number());
    EXPECT_EQ(f->default_value_enum()->number(), lowest) << f->full_name();
    ++checked;
  });
  EXPECT_EQ(checked, 65);
}

// One line per field and per enumeration, sorted; numbers only for the
// top-level enumerations since their value names are ours.
std::string CanonicalSchema() {
  std::vector<std::string> lines;
  ForEachField([&](const pb::FieldDescriptor* f) {
    std::string type = f->type_name();
    if (f->cpp_type() == pb::FieldDescriptor::CPPTYPE_ENUM) type += ":" + f->enum_type()->full_name();
    if (f->cpp_type() == pb::FieldDescriptor::CPPTYPE_MESSAGE) type += ":" + f->message_type()->full_name();
    std::string def;
    if (f->has_default_value()) {
      switch (f->cpp_type()) {
        case pb::FieldDescriptor::CPPTYPE_INT32: def = std::to_string(f->default_value_int32()); break;
        case pb::FieldDescriptor::CPPTYPE_UINT32: def = std::to_string(f->default_value_uint32()); break;
        case pb::FieldDescriptor::CPPTYPE_INT64: def = std::to_string(f->default_value_int64()); break;
        case pb::FieldDescriptor::CPPTYPE_UINT64: def = std::to_string(f->default_value_uint64()); break;
        case pb::FieldDescriptor::CPPTYPE_BOOL: def = f->default_value_bool() ? "true" : "false"; break;
        case pb::FieldDescriptor::CPPTYPE_ENUM: def = std::to_string(f->default_value_enum()->number()); break;
        case pb::FieldDescriptor::CPPTYPE_STRING: def = f->default_value_string(); break;
        default: def = "?"; break;
      }
    }
    const char* label = f->is_required() ? "required" : f->is_repeated() ? "repeated" : "optional";
    lines.push_back("field|" + f->containing_type()->full_name() + "|" + std::to_string(f->number()) + "|" +
                    f->name() + "|" + label + "|" + type + "|" + def);
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
// .proto. Any change of a number, name, label, type, default or enum value
// changes it; the per-field tests in fields_test.cpp narrow down where.
TEST(SchemaShape, FingerprintOfEveryFieldAndEnum) {
  const std::string text = CanonicalSchema();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1288 + 45);
  EXPECT_EQ(Fnv1a64(text), 0x0b5a06c91c4f57d6ULL) << "canonical schema:\n" << text;
}

}  // namespace
}  // namespace schema_test
