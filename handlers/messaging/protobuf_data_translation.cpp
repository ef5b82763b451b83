// The messaging family's one set of conversions between stack values and
// wire messages. Strings move as whole byte strings: bodies may hold zero
// bytes, and nothing here parses, trims or builds any of them.
#include "handlers/messaging/protobuf_data_translation.h"

#include <string>

#include "handlers/common/ims_log.h"

namespace {

// The log prefix of each translator is the library's short form of its full
// signature, spelled as the library spells it.
constexpr const char* kStackImdnNotiSignature =
    "imsCommonStruc::NotificationStatus "
    "protobuf_data_translation::translateStackImdnNoti(cpmim::ImNotificationStatus)";
constexpr const char* kFwImdnNotiSignature =
    "std::__1::set<cpmim::ImNotificationStatus> "
    "protobuf_data_translation::translateFwImdnNoti(const google::protobuf::RepeatedField<int>&)";
constexpr const char* kStackImMessageSignature =
    "void protobuf_data_translation::translateStackImMessage(imsCommonStruc::ImMessageParam&, "
    "const ImMessage&)";

bool isKnownImdnStatus(int status) {
    return status == 0 || status == 1;
}

}  // namespace

namespace protobuf_data_translation {

uint32_t translateXdmDocType(imsCommonStruc::XdmDocType type) {
    switch (static_cast<uint32_t>(type)) {
        case 0:
            return 0;
        case 1:
            return 2;
        case 2:
            return 3;
        default:
            return 4;
    }
}

imsCommonStruc::ImError_Type translateImErrorType(ImError::Type type) {
    const uint32_t value = static_cast<uint32_t>(type);
    if (value <= static_cast<uint32_t>(ImError::DeviceUnregistered))
        return static_cast<imsCommonStruc::ImError_Type>(value);
    return imsCommonStruc::ImError_Type_UNKNOWN_IM_ERROR;
}

ImParticipant translateParticipant(const imsCommonStruc::Participant& participant) {
    ImParticipant result;
    result.uri = participant.uri();
    switch (static_cast<int>(participant.copycontrol())) {
        case imsCommonStruc::Participant_CopyControl_CC:
            result.copyControl = 2;
            break;
        case imsCommonStruc::Participant_CopyControl_BCC:
            result.copyControl = 3;
            break;
        default:  // TO, and anything the client should not have sent
            result.copyControl = 1;
            break;
    }
    return result;
}

imsCommonStruc::NotificationStatus translateStackImdnNoti(cpmim::ImNotificationStatus status) {
    const int value = static_cast<int>(status);
    if (logLevel > 1) IMS_LOGD("%s: status = %d", IMS_METHOD_NAME(kStackImdnNotiSignature), value);
    if (isKnownImdnStatus(value)) return static_cast<imsCommonStruc::NotificationStatus>(value);
    IMS_LOGE("%s: unknown status! Use DELIVERED instead!",
             IMS_METHOD_NAME(kStackImdnNotiSignature));
    return imsCommonStruc::NOTIFICATION_STATUS_DELIVERED;
}

std::set<cpmim::ImNotificationStatus> translateFwImdnNoti(
    const google::protobuf::RepeatedField<int>& noti) {
    if (logLevel > 1) IMS_LOGD("%s: size = %d", IMS_METHOD_NAME(kFwImdnNotiSignature), noti.size());
    std::set<cpmim::ImNotificationStatus> result;
    for (int value : noti) {
        if (logLevel > 1) IMS_LOGD("%s: status = %d", IMS_METHOD_NAME(kFwImdnNotiSignature), value);
        if (isKnownImdnStatus(value)) {
            result.insert(static_cast<cpmim::ImNotificationStatus>(value));
        } else {
            IMS_LOGE("%s: unknown status!", IMS_METHOD_NAME(kFwImdnNotiSignature));
        }
    }
    return result;
}

void translateStackImdnData(imsCommonStruc::ImdnParams& out, const ImdnData& imdn) {
    out.set_messageid(imdn.messageId);
    out.set_datetime(imdn.datetime);
    out.set_deviceid(imdn.deviceId);
    out.set_originaltohdr(imdn.originalToHdr);
    // An unknown stack status goes out as DELIVERED, so 0 may appear twice.
    for (cpmim::ImNotificationStatus status : imdn.noti)
        out.add_noti(translateStackImdnNoti(status));
    for (const ImdnRecRoute& route : imdn.recRoute) {
        auto* wire = out.add_recroute();
        wire->set_uri(route.uri);
        wire->set_name(route.name);
    }
}

ImdnData translateFwImdnData(const imsCommonStruc::ImdnParams& params) {
    ImdnData imdn;
    imdn.messageId = params.messageid();
    imdn.datetime = params.datetime();
    imdn.deviceId = params.deviceid();
    imdn.originalToHdr = params.originaltohdr();
    imdn.noti = translateFwImdnNoti(params.noti());
    imdn.recRoute = translateFwImdnRecRoutes(params.recroute());
    return imdn;
}

std::vector<ImdnRecRoute> translateFwImdnRecRoutes(
    const google::protobuf::RepeatedPtrField<imsCommonStruc::ImdnRecRoute>& routes) {
    std::vector<ImdnRecRoute> result;
    for (const auto& wire : routes) {
        ImdnRecRoute route;
        route.name = wire.name();
        route.uri = wire.uri();
        result.push_back(std::move(route));
    }
    return result;
}

void translateCpimNamespace(imsCommonStruc::CpimNamespace& out, const CpimNamespace& ns) {
    out.set_name(ns.name);
    out.set_uri(ns.uri);
    // The map is ordered, so the pairs leave in key order.
    for (const auto& [key, value] : ns.headers) {
        auto* pair = out.add_headers();
        pair->set_key(key);
        pair->set_value(value);
    }
}

void translateStackImMessage(imsCommonStruc::ImMessageParam& out, const ImMessage& message) {
    out.set_sender(message.sender);
    out.set_useralias(message.userAlias);
    out.set_contenttype(message.contentType);
    out.set_body(message.body);
    out.set_isburnmsg(message.isBurnMsg);
    out.set_ispublicaccountmsg(message.isPublicAccountMsg);
    out.set_devicename(message.deviceName);
    out.set_reliablemessage(message.reliableMessage);
    out.set_extraft(message.extraFt);
    out.set_xmsmessage(message.xmsMessage);
    translateStackImdnData(*out.mutable_imdn(), message.imdn);
    for (const CpimNamespace& ns : message.cpimNamespaces)
        translateCpimNamespace(*out.add_cpimnamespaces(), ns);
    out.set_receiver(message.receiver);
    out.set_silencesupported(message.silenceSupported);
    for (const std::string& cc : message.ccParticipants) {
        if (logLevel > 1)
            IMS_LOGD("%s: receiver = %s", IMS_METHOD_NAME(kStackImMessageSignature), cc.c_str());
        out.add_ccparticipants(cc);
    }
}

void translateStackConfUser(imsCommonStruc::ImConfUser& out, const ImConferenceUser& user,
                            bool withDisconnectionReason) {
    out.set_entity(user.entity);
    out.set_state(user.state);
    out.set_yourown(user.yourOwn);
    out.set_roles(user.roles);
    out.set_useralias(user.userAlias);
    auto* endpoint = out.mutable_endpoint();
    endpoint->set_entity(user.endpoint.entity);
    endpoint->set_status(user.endpoint.status);
    if (!user.endpoint.disconnectMethod.empty())
        endpoint->set_disconnectmethod(user.endpoint.disconnectMethod);
    // Both blocks exist even when the stack knows nothing of them.
    auto* joining = endpoint->mutable_joininginfo();
    if (!user.joiningInfo.when.empty()) joining->set_when(user.joiningInfo.when);
    auto* disconnection = endpoint->mutable_disconnectioninfo();
    if (!user.disconnectionInfo.when.empty()) disconnection->set_when(user.disconnectionInfo.when);
    if (withDisconnectionReason && !user.disconnectionInfo.reason.empty())
        disconnection->set_reason(user.disconnectionInfo.reason);
}

}  // namespace protobuf_data_translation

void SetImError(imsCommonStruc::ImError* out, ImError error) {
    out->set_errortype(protobuf_data_translation::translateImErrorType(error.type));
    out->set_errorcode(error.code);
}

void SetWarningHdr(imsCommonStruc::WarningHdr* out, WarningHdr warning) {
    out->set_code(warning.code);
    out->set_host(warning.host);
    out->set_text(warning.text);
}

void SetRetryHdr(imsCommonStruc::RetryHdr* out, RetryHdr retry) {
    out->set_retrytimer(retry.retryTimer);
    out->set_contactvalue(retry.contactValue);
}

void SetReasonHdr(imsCommonStruc::ReasonHdr* out, ReasonHdr reason) {
    out->set_code(static_cast<uint32_t>(reason.code));
    out->set_text(reason.text);
}
