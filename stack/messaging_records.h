// Records of the messaging family: the value types that chat, file transfer
// and standalone messages share, and the records of IM sessions.
//
// The value types are the library's: the daemon builds, copies and destroys
// them inline, so their members stay in the library's order.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "shared_records.h"

// ---------------------------------------------------------------------------
// Value types
// ---------------------------------------------------------------------------

// Outcome of a messaging operation. Only the numbers 0 to 8 are known; the
// names are ours.
#define VELAR_FIELDS_ImError (type, Type), (code, int32_t)
class ImError {
public:
    enum Type : int32_t {
        Success = 0,
        SipError = 1,
        MsrpError = 2,
        EngineError = 3,
        SessionRelease = 4,
        NetworkError = 5,
        SessionRsrcUnavailable = 6,
        RemotePartyCanceled = 7,
        DeviceUnregistered = 8,
    };
    VELAR_FIELDS(VELAR_FIELDS_ImError)
};

// The three optional SIP headers carry no presence flag: a code (or timer)
// of -1 means "no header". A default-built header is therefore absent, which
// also keeps records built from partial JSON free of phantom headers.
#define VELAR_FIELDS_WarningHdr (code, int32_t), (host, std::string), (text, std::string)
class WarningHdr {
public:
    WarningHdr() : code(-1) {}
    WarningHdr(int32_t c, std::string h, std::string t)
        : code(c), host(std::move(h)), text(std::move(t)) {}
    VELAR_FIELDS(VELAR_FIELDS_WarningHdr)
};

#define VELAR_FIELDS_RetryHdr (retryTimer, int32_t), (contactValue, std::string)
class RetryHdr {
public:
    RetryHdr() : retryTimer(-1) {}
    RetryHdr(int32_t timer, std::string contact)
        : retryTimer(timer), contactValue(std::move(contact)) {}
    VELAR_FIELDS(VELAR_FIELDS_RetryHdr)
};

#define VELAR_FIELDS_ReasonHdr (code, int32_t), (text, std::string)
class ReasonHdr {
public:
    ReasonHdr() : code(-1) {}
    ReasonHdr(int32_t c, std::string t) : code(c), text(std::move(t)) {}
    VELAR_FIELDS(VELAR_FIELDS_ReasonHdr)
};

namespace cpmim {
// Same numbers as the wire's NotificationStatus; 1 has no name of its own.
enum ImNotificationStatus : int32_t {
    DELIVERED = 0,
    STATUS_1 = 1,
};
}  // namespace cpmim

// The library keeps name before uri; the wire has them the other way round.
#define VELAR_FIELDS_ImdnRecRoute (name, std::string), (uri, std::string)
class ImdnRecRoute {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImdnRecRoute)
};

#define VELAR_FIELDS_ImdnData                                                                 \
    (messageId, std::string), (datetime, std::string),                                        \
        (noti, std::set<cpmim::ImNotificationStatus>), (recRoute, std::vector<ImdnRecRoute>), \
        (deviceId, std::string), (originalToHdr, std::string)
class ImdnData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImdnData)
};

#define VELAR_FIELDS_CpimNamespace \
    (name, std::string), (uri, std::string), (headers, std::map<std::string, std::string>)
class CpimNamespace {
public:
    VELAR_FIELDS(VELAR_FIELDS_CpimNamespace)
};

// copyControl uses the library's numbers: 1 To, 2 Cc, 3 Bcc.
#define VELAR_FIELDS_ImParticipant (uri, std::string), (copyControl, int32_t)
class ImParticipant {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImParticipant)
};

// Always held on the heap behind exactly one owner.
#define VELAR_FIELDS_ImMessage                                                      \
    (sender, std::string), (userAlias, std::string), (body, std::string),           \
        (contentType, std::string), (imdn, ImdnData), (deviceName, std::string),    \
        (reliableMessage, std::string), (xmsMessage, std::string), (extraFt, bool), \
        (isBurnMsg, bool), (isPublicAccountMsg, bool),                              \
        (cpimNamespaces, std::vector<CpimNamespace>), (receiver, std::string),      \
        (silenceSupported, bool), (ccParticipants, std::vector<std::string>)
class ImMessage {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImMessage)
};

// The session description. Also the session of standalone messages and
// files, whatever its name says.
#define VELAR_FIELDS_FtSessionParam                                                                \
    (sessionHandle, uint32_t), (id, std::string), (isConference, bool), (sessionUri, std::string), \
        (userAlias, std::string), (receivers, std::vector<std::string>),                           \
        (contributionId, std::string), (conversationId, std::string),                              \
        (inReplyToContributionId, std::string), (preferredLineUri, std::string),                   \
        (sdpContentType, std::string), (serviceId, std::string)
class FtSessionParam {
public:
    VELAR_FIELDS(VELAR_FIELDS_FtSessionParam)
};

#define VELAR_FIELDS_ImSessionParam                                                           \
    (sender, std::string), (subject, std::string), (isRejoin, bool), (isClosed, bool),        \
        (isInviteforbye, bool), (isExtension, bool), (acceptTypes, std::vector<std::string>), \
        (acceptWrappedTypes, std::vector<std::string>)
class ImSessionParam : public FtSessionParam {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImSessionParam)
};

// A file (or its icon). Sizes and offsets are 64 bits on both sides.
#define VELAR_FIELDS_FileAttr                                                               \
    (name, std::string), (path, std::string), (contentType, std::string), (size, uint64_t), \
        (start, uint64_t), (end, uint64_t), (timeDuration, uint64_t)
class FileAttr {
public:
    VELAR_FIELDS(VELAR_FIELDS_FileAttr)
};

// What a file transfer carries.
#define VELAR_FIELDS_FtPayload                                                                    \
    (fileAttr, FileAttr), (iconAttr, FileAttr), (imdn, ImdnData), (deviceName, std::string),      \
        (reliableMessage, std::string), (extraFt, bool), (isBurnMsg, bool),                       \
        (isPublicAccountMsg, bool), (isPush, bool), (cpimNamespaces, std::vector<CpimNamespace>), \
        (sender, std::string), (receiver, std::string), (silenceSupported, bool)
class FtPayload {
public:
    VELAR_FIELDS(VELAR_FIELDS_FtPayload)
};

// The report headers of a message, named as on the wire.
#define VELAR_FIELDS_ReportData \
    (spamFrom, std::string), (spamTo, std::string), (spamDate, std::string)
class ReportData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ReportData)
};

// A composing indication, both ways.
#define VELAR_FIELDS_ImComposingData \
    (contentType, std::string), (interval, uint32_t), (isActive, bool)
class ImComposingData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImComposingData)
};

// One user of a conference (chat or group chat). Each part opens with a word
// of the library's own that the daemon never reads.
#define VELAR_FIELDS_ImConferenceUser_Endpoint                         \
    (reserved, int32_t), (entity, std::string), (status, std::string), \
        (disconnectMethod, std::string)
#define VELAR_FIELDS_ImConferenceUser_JoiningInfo \
    (reserved, int32_t), (when, std::string), (reason, std::string), (by, std::string)
#define VELAR_FIELDS_ImConferenceUser_DisconnectionInfo \
    (reserved, int32_t), (when, std::string), (reason, std::string), (by, std::string)
#define VELAR_FIELDS_ImConferenceUser                                                  \
    (reserved, int32_t), (entity, std::string), (state, std::string), (yourOwn, bool), \
        (roles, std::string), (endpoint, Endpoint), (joiningInfo, JoiningInfo),        \
        (disconnectionInfo, DisconnectionInfo), (userAlias, std::string)
class ImConferenceUser {
public:
    class Endpoint {
    public:
        VELAR_FIELDS(VELAR_FIELDS_ImConferenceUser_Endpoint)
    };
    class JoiningInfo {
    public:
        VELAR_FIELDS(VELAR_FIELDS_ImConferenceUser_JoiningInfo)
    };
    class DisconnectionInfo {
    public:
        VELAR_FIELDS(VELAR_FIELDS_ImConferenceUser_DisconnectionInfo)
    };
    VELAR_FIELDS(VELAR_FIELDS_ImConferenceUser)
};

// ---------------------------------------------------------------------------
// IM session requests
// ---------------------------------------------------------------------------

// Built by the library's constructor, which takes over the session and the
// message.
#define VELAR_ARGS_ImStartSessionData \
    (handle, int), (session, ImSessionParam*), (message, std::unique_ptr<ImMessage>)
class ImStartSessionData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(ImStartSessionData, VELAR_ARGS_ImStartSessionData)
    ~ImStartSessionData() override;
};

#define VELAR_ARGS_RequestAcceptImSession (handle, int), (userAlias, const std::string&)
class RequestAcceptImSession : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(RequestAcceptImSession, VELAR_ARGS_RequestAcceptImSession)
};

#define VELAR_FIELDS_CloseImSessionData (handle, uint32_t), (reason, ReasonHdr)
class CloseImSessionData : public ImsData {
public:
    CloseImSessionData() = default;
    explicit CloseImSessionData(int recordId) : ImsData(recordId) {}
    VELAR_FIELDS(VELAR_FIELDS_CloseImSessionData)
};

#define VELAR_FIELDS_RequestRejectImSession \
    (handle, uint32_t), (sipCode, int32_t), (warning, WarningHdr)
class RequestRejectImSession : public ImsData {
public:
    RequestRejectImSession() = default;
    explicit RequestRejectImSession(int recordId) : ImsData(recordId) {}
    VELAR_FIELDS(VELAR_FIELDS_RequestRejectImSession)
};

// ---------------------------------------------------------------------------
// Requests inside a session
// ---------------------------------------------------------------------------

#define VELAR_FIELDS_RequestSendImMessage (handle, uint32_t), (message, ImMessage*)
class RequestSendImMessage : public ImsData {
public:
    RequestSendImMessage() = default;
    explicit RequestSendImMessage(int recordId) : ImsData(recordId) {}
    RequestSendImMessage(const RequestSendImMessage&) = delete;
    RequestSendImMessage& operator=(const RequestSendImMessage&) = delete;
    ~RequestSendImMessage() override { delete message; }
    VELAR_FIELDS(VELAR_FIELDS_RequestSendImMessage)
};

#define VELAR_FIELDS_RequestSendImComposingStatus (handle, uint32_t), (status, ImComposingData)
class RequestSendImComposingStatus : public ImsData {
public:
    RequestSendImComposingStatus() = default;
    explicit RequestSendImComposingStatus(int recordId) : ImsData(recordId) {}
    VELAR_FIELDS(VELAR_FIELDS_RequestSendImComposingStatus)
};

#define VELAR_FIELDS_RequestSendImNotiStatus                                                \
    (handle, uint32_t), (imdnMessageId, std::string), (imdnDateTime, std::string),          \
        (status, cpmim::ImNotificationStatus), (imdnRecRoute, std::vector<ImdnRecRoute>),   \
        (registrationHandle, uint32_t), (uri, std::string), (conversationId, std::string),  \
        (contributionId, std::string), (service, int32_t), (preferredLineUri, std::string), \
        (originalRecipientUri, std::string)
class RequestSendImNotiStatus : public ImsData {
public:
    RequestSendImNotiStatus() = default;
    explicit RequestSendImNotiStatus(int recordId) : ImsData(recordId) {}
    VELAR_FIELDS(VELAR_FIELDS_RequestSendImNotiStatus)
};

// The library keeps subject before userAlias; the wire has them the other
// way round.
#define VELAR_FIELDS_RequestUpdateParticipants                                     \
    (handle, uint32_t), (reqType, int32_t), (receivers, std::vector<std::string>), \
        (subject, std::string), (userAlias, std::string)
class RequestUpdateParticipants : public ImsData {
public:
    RequestUpdateParticipants() = default;
    explicit RequestUpdateParticipants(int recordId) : ImsData(recordId) {}
    VELAR_FIELDS(VELAR_FIELDS_RequestUpdateParticipants)
};

// ---------------------------------------------------------------------------
// Answers of the stack (read only). handle is the session handle.
// ---------------------------------------------------------------------------

// Also the answer of file-transfer starts and accepts.
#define VELAR_FIELDS_StartSessionRespData \
    (handle, uint32_t), (error, ImError), (fwSessionId, std::string)
class StartSessionRespData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_StartSessionRespData)
};

// Also the answer of file-transfer cancels.
#define VELAR_FIELDS_CloseSessionRespData (handle, uint32_t), (error, ImError)
class CloseSessionRespData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CloseSessionRespData)
};

#define VELAR_FIELDS_SendImMessageRespData \
    (handle, uint32_t), (imdnMessageId, std::string), (error, ImError)
class SendImMessageRespData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SendImMessageRespData)
};

#define VELAR_FIELDS_UpdateParticipantsRespData (handle, uint32_t), (error, ImError)
class UpdateParticipantsRespData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_UpdateParticipantsRespData)
};

// ---------------------------------------------------------------------------
// Notifications of the stack (read only)
// ---------------------------------------------------------------------------

// Also file-transfer sessions (12001).
#define VELAR_FIELDS_SessionStartedData                                             \
    (handle, uint32_t), (error, ImError), (retry, RetryHdr), (warning, WarningHdr), \
        (sessionUri, std::string)
class SessionStartedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SessionStartedData)
};

// Also file-transfer sessions (12002).
#define VELAR_FIELDS_SessionClosedData (handle, uint32_t), (error, ImError), (reason, ReasonHdr)
class SessionClosedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SessionClosedData)
};

// Also file-transfer sessions (12003).
#define VELAR_FIELDS_SessionEstablishedData \
    (handle, uint32_t), (error, ImError), (acceptContent, std::vector<std::string>)
class SessionEstablishedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SessionEstablishedData)
};

// The library never hands these up with null pointers; records built by the
// host provider own what they point to.
#define VELAR_FIELDS_ImSessionInvitedData                                  \
    (handle, uint32_t), (session, ImSessionParam*), (message, ImMessage*), \
        (remoteMsrpAddr, std::string), (isDeferred, bool), (isForStoredNoti, bool)
class ImSessionInvitedData : public ImsData {
public:
    ImSessionInvitedData() = default;
    ImSessionInvitedData(const ImSessionInvitedData&) = delete;
    ImSessionInvitedData& operator=(const ImSessionInvitedData&) = delete;
    ~ImSessionInvitedData() override {
        delete session;
        delete message;
    }
    VELAR_FIELDS(VELAR_FIELDS_ImSessionInvitedData)
};

#define VELAR_FIELDS_ImMessageReceivedData (handle, uint32_t), (message, ImMessage*)
class ImMessageReceivedData : public ImsData {
public:
    ImMessageReceivedData() = default;
    ImMessageReceivedData(const ImMessageReceivedData&) = delete;
    ImMessageReceivedData& operator=(const ImMessageReceivedData&) = delete;
    ~ImMessageReceivedData() override { delete message; }
    VELAR_FIELDS(VELAR_FIELDS_ImMessageReceivedData)
};

#define VELAR_FIELDS_ImdnReceivedData \
    (handle, uint32_t), (uri, std::string), (imdn, ImdnData), (preferredLineUri, std::string)
class ImdnReceivedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImdnReceivedData)
};

#define VELAR_FIELDS_ImComposingReceivedData \
    (handle, uint32_t), (uri, std::string), (status, ImComposingData), (userAlias, std::string)
class ImComposingReceivedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImComposingReceivedData)
};

#define VELAR_FIELDS_ImMessageReportData \
    (handle, uint32_t), (imdnMessageId, std::string), (error, ImError), (isChat, bool)
class ImMessageReportData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImMessageReportData)
};

#define VELAR_FIELDS_ImConferenceInfoData                             \
    (handle, uint32_t), (state, std::string), (maxUserCnt, uint32_t), \
        (users, std::vector<ImConferenceUser>), (subject, std::string)
class ImConferenceInfoData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ImConferenceInfoData)
};
