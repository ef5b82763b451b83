// Every field that a record carries reaches the wire: each response and
// notification handler, given a record of the class it reads with every
// member filled, sets every field of the message body it writes, but for the
// fields listed below that the daemon deliberately leaves unset. A handler
// that drops a field, or a list that names one it no longer drops, fails.
#include <gtest/gtest.h>
#include <stdio.h>

#include <map>
#include <memory>
#include <set>
#include <string>

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>

#include "imsCommonStruc.pb.h"

namespace {

namespace pb = google::protobuf;

// The fields that a filled record leaves unset, per message: what the
// daemon does not forward, or what its presence rules leave out even when
// the record holds something. Keyed by "response <id>" / "notify <id>".
const std::map<std::string, std::set<std::string>> kNotForwarded = {
    // Outgoing barring does not read the record's target; incoming does.
    {"response 303", {"responseSsOcbinfo.sibTarget"}},
    // The raw copy of the contents goes only with call state 17.
    {"notify 10004", {"callStatus.additionalContents.rawContents"}},
    {"notify 10005", {"incomingCall.replacingSession"}},
    {"notify 10006", {"confCallChanged.participants.aor"}},
    // Any message type but 0 is the RTP report: the signal part stays out.
    {"notify 20009", {"echolocateMsg.echolocateSignalData"}},
    // The publish status comes up as an empty message, id and all.
    {"notify 10020", {"body", "notifyid"}},
    // An invitation carries chosen fields of its session and first message.
    {"notify 11004",
     {"imSessionInvited.messageParam.ccParticipants",
      "imSessionInvited.messageParam.cpimNamespaces", "imSessionInvited.messageParam.deviceName",
      "imSessionInvited.messageParam.isBurnMsg", "imSessionInvited.messageParam.isPublicAccountMsg",
      "imSessionInvited.messageParam.receiver", "imSessionInvited.messageParam.silenceSupported",
      "imSessionInvited.messageParam.userAlias", "imSessionInvited.messageParam.xmsMessage",
      "imSessionInvited.session.acceptTypes", "imSessionInvited.session.acceptWrappedTypes",
      "imSessionInvited.session.isExtension", "imSessionInvited.session.isInviteforbye",
      "imSessionInvited.session.isRejoin"}},
    // A message received names its session by the handle alone.
    {"notify 11005",
     {"imMessageReceived.sessionData.contributionId",
      "imMessageReceived.sessionData.conversationId", "imMessageReceived.sessionData.id",
      "imMessageReceived.sessionData.inReplyToContributionId",
      "imMessageReceived.sessionData.isConference",
      "imMessageReceived.sessionData.preferredLineUri", "imMessageReceived.sessionData.receivers",
      "imMessageReceived.sessionData.sdpContentType", "imMessageReceived.sessionData.serviceId",
      "imMessageReceived.sessionData.sessionUri", "imMessageReceived.sessionData.userAlias"}},
    // The IMDN's route and original recipient are not sent.
    {"notify 11006",
     {"imNotificationStatusReceived.status.imdnOriginalTo",
      "imNotificationStatusReceived.status.imdnRecRoute"}},
    // An incoming file: of the icon only its path and size, no service id,
    // no public-account flag.
    {"notify 12005",
     {"ftIncomingSession.payload.iconAttr.contentType", "ftIncomingSession.payload.iconAttr.end",
      "ftIncomingSession.payload.iconAttr.name", "ftIncomingSession.payload.iconAttr.start",
      "ftIncomingSession.payload.iconAttr.timeDuration",
      "ftIncomingSession.payload.isPublicAccountMsg", "ftIncomingSession.session.serviceId"}},
    {"notify 18001",
     {"ftIncomingSession.payload.iconAttr.contentType", "ftIncomingSession.payload.iconAttr.end",
      "ftIncomingSession.payload.iconAttr.name", "ftIncomingSession.payload.iconAttr.start",
      "ftIncomingSession.payload.iconAttr.timeDuration",
      "ftIncomingSession.payload.isPublicAccountMsg", "ftIncomingSession.session.serviceId"}},
    // Who ended a participant's part, and why one joined, are never sent;
    // group chat information does not send why one left either.
    {"notify 11011",
     {"groupChatInfoUpdated.info.users.endpoint.disconnectioninfo.by",
      "groupChatInfoUpdated.info.users.endpoint.disconnectioninfo.reason",
      "groupChatInfoUpdated.info.users.endpoint.joininginfo.by",
      "groupChatInfoUpdated.info.users.endpoint.joininginfo.reason"}},
    {"notify 19000",
     {"imConfInfoUpdated.users.endpoint.disconnectioninfo.by",
      "imConfInfoUpdated.users.endpoint.joininginfo.by",
      "imConfInfoUpdated.users.endpoint.joininginfo.reason"}},
    // A standalone message names its session by handle, line, ids and
    // receivers only.
    {"notify 18000",
     {"slmMessageIncoming.sessionData.id", "slmMessageIncoming.sessionData.inReplyToContributionId",
      "slmMessageIncoming.sessionData.isConference",
      "slmMessageIncoming.sessionData.sdpContentType", "slmMessageIncoming.sessionData.serviceId",
      "slmMessageIncoming.sessionData.sessionUri", "slmMessageIncoming.sessionData.userAlias"}},
    // Presence fills no contact detail beyond what its table names.
    {"notify 13001",
     {"newPresenceInfo.contactInfo.className", "newPresenceInfo.contactInfo.email",
      "newPresenceInfo.contactInfo.homepage", "newPresenceInfo.contactInfo.iconUri",
      "newPresenceInfo.contactInfo.note", "newPresenceInfo.contactInfo.number"}},
    {"notify 20005", {"dialogEvent.additionalContents.rawContents"}},
    {"notify 20006", {"x509CertVerifyRequest.keyExchangeAlgo"}},
    // An incoming video share names its session and peer only.
    {"notify 17001", {"vshIncomingSession.fileName", "vshIncomingSession.type"}},
};

std::string unhex(const std::string& hex) {
    std::string out;
    for (size_t i = 1; i + 1 < hex.size(); i += 2)  // after the leading x
        out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return out;
}

// An enum field that holds a number its enumeration does not name (the
// daemon passes the stack's numbers on as they stand) is parsed into the
// unknown fields: it is on the wire all the same.
bool inUnknownFields(const pb::Message& m, const pb::FieldDescriptor* f) {
    const pb::UnknownFieldSet& unknown = m.GetReflection()->GetUnknownFields(m);
    for (int i = 0; i < unknown.field_count(); i++)
        if (unknown.field(i).number() == f->number()) return true;
    return false;
}

// The fields of m left unset, by path: a repeated field without entries, a
// singular field not present; set messages are walked into, every entry of a
// repeated one.
void collectUnset(const pb::Message& m, const std::string& prefix, std::set<std::string>* out) {
    const pb::Descriptor* d = m.GetDescriptor();
    const pb::Reflection* r = m.GetReflection();
    for (int i = 0; i < d->field_count(); i++) {
        const pb::FieldDescriptor* f = d->field(i);
        std::string path = prefix + f->name();
        bool message = f->cpp_type() == pb::FieldDescriptor::CPPTYPE_MESSAGE;
        if (f->is_repeated()) {
            int n = r->FieldSize(m, f);
            if (n == 0 && !inUnknownFields(m, f)) out->insert(path);
            for (int k = 0; message && k < n; k++)
                collectUnset(r->GetRepeatedMessage(m, f, k), path + ".", out);
        } else if (!r->HasField(m, f) && !inUnknownFields(m, f)) {
            out->insert(path);
        } else if (message) {
            collectUnset(r->GetMessage(m, f), path + ".", out);
        }
    }
}

// The top level: the id and the one body that the handler wrote ("body"
// when it wrote none); the other bodies belong to other ids.
std::set<std::string> unsetFields(const pb::Message& m, std::string* error) {
    const pb::Descriptor* d = m.GetDescriptor();
    const pb::Reflection* r = m.GetReflection();
    std::set<std::string> unset;
    int bodies = 0;
    for (int i = 0; i < d->field_count(); i++) {
        const pb::FieldDescriptor* f = d->field(i);
        if (f->cpp_type() != pb::FieldDescriptor::CPPTYPE_MESSAGE) {
            if (!r->HasField(m, f)) unset.insert(f->name());
        } else if (r->HasField(m, f)) {
            bodies++;
            collectUnset(r->GetMessage(m, f), f->name() + ".", &unset);
        }
    }
    if (bodies == 0) unset.insert("body");
    if (bodies > 1) *error = std::to_string(bodies) + " bodies written";
    return unset;
}

std::string join(const std::set<std::string>& s) {
    std::string out;
    for (const auto& e : s) out += (out.empty() ? "" : " ") + e;
    return out;
}

}  // namespace

TEST(WireFields, EveryFilledRecordFillsItsMessageButTheFieldsNotForwarded) {
    FILE* p = popen(HANDLER_SAMPLES_BIN " 2>/dev/null", "r");
    ASSERT_NE(p, nullptr);
    char kind[16];
    int id = 0;
    int rc = 0;
    static char hex[1 << 20];
    int rows = 0;
    std::set<std::string> seen;
    while (fscanf(p, "%15s %d %d %1048575s", kind, &id, &rc, hex) == 4) {
        rows++;
        std::string key = std::string(kind) + " " + std::to_string(id);
        seen.insert(key);
        EXPECT_EQ(rc, 0) << key;
        std::unique_ptr<pb::Message> m;
        if (std::string(kind) == "response")
            m = std::make_unique<imsCommonStruc::Response>();
        else
            m = std::make_unique<imsCommonStruc::Notify>();
        ASSERT_TRUE(m->ParsePartialFromString(unhex(hex))) << key;
        std::string error;
        std::set<std::string> unset = unsetFields(*m, &error);
        EXPECT_EQ(error, "") << key;
        auto listed = kNotForwarded.find(key);
        EXPECT_EQ(join(unset), listed == kNotForwarded.end() ? "" : join(listed->second)) << key;
    }
    EXPECT_EQ(pclose(p), 0);
    EXPECT_EQ(rows, 100 + 70);
    for (const auto& [key, fields] : kNotForwarded) EXPECT_EQ(seen.count(key), 1u) << key;
}
