// Field-level checks: a sample of rows from every message family (numbers
// around gaps, odd casing, shared and look-alike types), the non-zero
// defaults, and the unpacked encoding of repeated scalars.
#include <iterator>
#include <string>
#include <vector>

#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include "schema_walk.h"

namespace schema_test {
namespace {

struct Row {
  const char* message;
  int number;
  const char* name;
  const char* label;
  const char* type;  // scalar type, or the dotted name of an enum or message
};

const Row kSample[] = {
    // envelope
    {"Request", 1, "reqid", "required", "Id"},
    {"Request", 9, "requestDeleteTcpClientSocket", "optional", "Request.RequestDeleteTcpClientSocket"},
    {"Request", 20, "requestMakeCall", "optional", "Request.RequestMakeCall"},
    {"Request", 52, "requestGetSsOcbinfo", "optional", "Request.RequestGetSSInfo"},
    {"Request", 54, "requestGetSsOirinfo", "optional", "Request.RequestGetSSRestrictionIdInfo"},
    {"Request", 352, "requestGetSsSdinfo", "optional", "Request.RequestGetSSSimservDocInfo"},
    {"Request", 12002, "requestX509CertVerifyResult", "optional", "Request.RequestX509CertVerifyResult"},
    {"Response", 11, "responseSsIcbinfo", "optional", "Response.ResponseSSbarrInfo"},
    {"Response", 13, "responseSsGetOirinfo", "optional", "Response.ResponseSSGetOIPInfo"},
    {"Response", 90, "sipdialogGeneralResponse", "optional", "Response.SipdialogGeneralResponse"},
    {"Notify", 33, "dtmfParamData", "optional", "Notify.DTMFDataEvent"},
    {"Notify", 200, "imConfInfoUpdated", "optional", "Notify.ImConfInfoUpdated"},
    {"Notify", 12007, "dumpMessage", "optional", "Notify.DumpMessage"},
    // shared records
    {"AdditionalContents", 3, "rawContents", "optional", "bytes"},
    {"ImError", 1, "errorType", "required", "ImError.Type"},
    {"ReasonHdr", 1, "code", "required", "uint32"},
    {"ExtraHeader", 1, "pair", "repeated", "ExtraHeader.Pair"},
    // registration and configuration
    {"Request.RequestUpdateCommonConfig", 4, "ssConfig", "optional", "Request.RequestUpdateCommonConfig.SSConfig"},
    {"Request.RequestUpdateCommonConfig.XDMConfig", 10, "mno", "required", "MNO"},
    {"Request.RequestUACreation.MediaConfig", 17, "dtmfWbPayload", "optional", "uint32"},
    {"Request.RequestUACreation.MediaConfig", 20, "pTime", "optional", "uint32"},
    {"Request.RequestUACreation.MediaConfig", 69, "enableAvSync", "optional", "bool"},
    {"Request.RequestUACreation", 65, "featureTagList", "repeated", "FeatureTag"},
    {"Request.RequestUACreation", 75, "hostname", "optional", "string"},
    {"Request.RequestRegistration", 7, "featureTagList", "repeated", "FeatureTag"},
    {"Notify.RegInfoChanged.Contact", 4, "event", "optional", "Notify.RegInfoChanged.Event"},
    {"Notify.RegistrationStatus", 8, "ecmpMode", "optional", "int32"},
    // calls
    {"Request.RequestMakeCall", 4, "codec", "required", "CodecType"},
    {"Request.RequestMakeCall", 19, "photoRing", "optional", "string"},
    {"Request.RequestRejectModifyCallType", 4, "reason", "required", "int32"},
    {"Request.RequestMakeConfCall", 7, "sessionId", "repeated", "int32"},
    {"Notify.CallStatus", 4, "state", "required", "CallState"},
    {"Notify.CallStatus", 24, "alertInfo", "optional", "string"},
    {"Notify.RtpLossRateNoti", 3, "jitter", "required", "float"},
    {"Notify.ConfCallChanged", 3, "participants", "repeated", "Notify.ConfCallChanged.Participant"},
    {"Response.CallResponse", 2, "session", "required", "int32"},
    // supplementary services and SMS
    {"Request.RequestSetSSDivInfo", 5, "fwdElm", "repeated", "SSForwardTo"},
    {"Response.ResponseSSDivInfo", 8, "mediaType", "repeated", "Media"},
    {"Response.ResponseSSbarrInfo", 6, "allow", "repeated", "bool"},
    {"Response.SendSmsResponse", 5, "retryAfter", "required", "uint32"},
    {"Notify.XCapMessage", 2, "direction", "required", "XCapDirection"},
    {"Notify.SSGetGbaKey", 6, "btid", "required", "string"},
    // messaging
    {"Response.CloseSessionResponse", 3, "imError", "required", "ImError"},
    {"ImdnParams", 3, "noti", "repeated", "NotificationStatus"},
    {"ImFileAttr", 7, "timeDuration", "optional", "uint64"},
    {"Request.CpimNamespace", 3, "headers", "repeated", "Request.CpimNamespace.Pair"},
    {"ImMessageParam", 14, "cpimNamespaces", "repeated", "CpimNamespace"},
    {"FtPayloadParam", 10, "cpimNamespaces", "repeated", "CpimNamespace"},
    {"ImConfUserEndpoint", 5, "disconnectioninfo", "optional", "ImConfUserDisconnectionInfo"},
    {"Notify.GroupChatInfoUpdated", 2, "info", "required", "Notify.ImConfInfoUpdated"},
    {"Participant", 2, "copyControl", "optional", "Participant.CopyControl"},
    // presence, options, XDM, content sharing
    {"Notify.IshIncomingSession", 4, "fileName", "required", "string"},
    {"Notify.IshIncomingSession", 6, "contentType", "optional", "string"},
    {"Notify.NewRemoteCapabilities", 3, "capabilties", "repeated", "string"},
    {"Notify.XdmStoreGbaData", 7, "hexProtocolId", "required", "bytes"},
    {"DeviceTuple", 3, "descriptions", "repeated", "Element"},
    {"Request.RequestIshStopSession", 2, "reason", "optional", "CshRejectReason"},
    {"Response.XdmGeneralResponse", 7, "result", "repeated", "Response.XdmGeneralResponse.Pair"},
    {"Notify.OptionsReceivedInfo", 6, "tags", "repeated", "FeatureTag"},
    // system services and diagnostics
    {"Request.RequestUpdateGeolocation", 18, "locationtime", "optional", "string"},
    {"Request.RequestX509CertVerifyResult", 2, "reason", "optional", "string"},
    {"Response.SipdialogGeneralResponse", 3, "sipmessage", "optional", "string"},
    {"Notify.SipMessage", 3, "origin", "required", "SipOrigin"},
    {"Notify.EcholocateMsg", 4, "echolocateRtpData", "optional", "Notify.EcholocateMsg.EcholocateRtpMsg"},
    {"Notify.DumpMessage", 3, "secure", "optional", "bool"},
};

const pb::Descriptor* FindMessage(const std::string& dotted) {
  return SchemaFile()->pool()->FindMessageTypeByName("imsCommonStruc." + dotted);
}

std::string TypeOf(const pb::FieldDescriptor* f) {
  if (f->enum_type() != nullptr) return DottedName(f->enum_type()->full_name());
  if (f->message_type() != nullptr) return DottedName(f->message_type()->full_name());
  return f->type_name();
}

TEST(SchemaFields, SampleRows) {
  for (const Row& row : kSample) {
    SCOPED_TRACE(std::string(row.message) + "." + row.name);
    const pb::Descriptor* d = FindMessage(row.message);
    ASSERT_NE(d, nullptr);
    const pb::FieldDescriptor* f = d->FindFieldByNumber(row.number);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->name(), row.name);
    EXPECT_EQ(f->is_required() ? "required" : f->is_repeated() ? "repeated" : "optional", std::string(row.label));
    EXPECT_EQ(TypeOf(f), row.type);
  }
}

// The value a field reads in a fresh message, as text.
std::string FreshValue(const pb::FieldDescriptor* f) {
  const pb::Message* fresh = pb::MessageFactory::generated_factory()->GetPrototype(f->containing_type());
  const pb::Reflection* r = fresh->GetReflection();
  switch (f->cpp_type()) {
    case pb::FieldDescriptor::CPPTYPE_INT32: return std::to_string(r->GetInt32(*fresh, f));
    case pb::FieldDescriptor::CPPTYPE_UINT32: return std::to_string(r->GetUInt32(*fresh, f));
    case pb::FieldDescriptor::CPPTYPE_BOOL: return r->GetBool(*fresh, f) ? "true" : "false";
    case pb::FieldDescriptor::CPPTYPE_ENUM: return std::to_string(r->GetEnumValue(*fresh, f));
    case pb::FieldDescriptor::CPPTYPE_STRING: return r->GetString(*fresh, f);
    default: return "?";
  }
}

// Every field that the tables give a default; all others read as zero.
TEST(SchemaFields, NonZeroDefaults) {
  struct Default {
    const char* message;
    const char* field;
    const char* value;
  };
  const Default kDefaults[] = {
      {"WarningHdr", "code", "-1"},
      {"Request.RequestUpdateCommonConfig.SSConfig", "callWaiting", "true"},
      {"Request.RequestUpdateCommonConfig.RcsConfig", "isConfSubscribeEnabled", "true"},
      {"Request.RequestUACreation", "isPrecondEnabled", "true"},
      {"Request.RequestUACreation", "sessionExpires", "-1"},
      {"Request.RequestUACreation", "minse", "90"},
      {"Request.RequestRegistration", "isExplicitDeregi", "true"},
      {"Response.SubscribeResponse", "state", "1"},
      {"Response.SubscribeResponse", "reason", "1"},
      {"Notify.DedicatedBearerEvent", "bearerState", "1"},
      {"Notify.RrcConnectionEvent", "event", "1"},
      {"Request.RequestCancelFtSession", "sipCode", "-1"},
  };
  for (const Default& d : kDefaults) {
    SCOPED_TRACE(std::string(d.message) + "." + d.field);
    const pb::Descriptor* m = FindMessage(d.message);
    ASSERT_NE(m, nullptr);
    const pb::FieldDescriptor* f = m->FindFieldByName(d.field);
    ASSERT_NE(f, nullptr);
    EXPECT_TRUE(f->has_default_value());
    EXPECT_EQ(FreshValue(f), d.value);
  }

  int with_default = 0;
  ForEachField([&](const pb::FieldDescriptor* f) { with_default += f->has_default_value(); });
  EXPECT_EQ(with_default, static_cast<int>(std::size(kDefaults)));

  // The same through the generated accessors the handlers use.
  EXPECT_TRUE(imsCommonStruc::Request_RequestUpdateCommonConfig_SSConfig().callwaiting());
  EXPECT_TRUE(imsCommonStruc::Request_RequestUpdateCommonConfig_RcsConfig().isconfsubscribeenabled());
  EXPECT_TRUE(imsCommonStruc::Request_RequestRegistration().isexplicitderegi());
  EXPECT_EQ(imsCommonStruc::WarningHdr().code(), -1);
  EXPECT_EQ(imsCommonStruc::Notify_DedicatedBearerEvent().bearerstate(), imsCommonStruc::Notify_BearerState_ESTABLISHED);
}

// The client writes one tag per element; packing would change the bytes.
TEST(SchemaFields, RepeatedScalarsAreUnpacked) {
  int packable = 0;
  ForEachField([&](const pb::FieldDescriptor* f) {
    if (!f->is_repeated() || !f->is_packable()) return;
    ++packable;
    EXPECT_FALSE(f->is_packed()) << f->full_name();
  });
  EXPECT_EQ(packable, 14);  // 10 enum, 1 int32, 3 bool
}

}  // namespace
}  // namespace schema_test
