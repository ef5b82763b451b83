// Records of file transfer, standalone messages and group chat
// subscriptions. The value types they share with IM sessions (ImMessage,
// ImdnData, ImError, the three headers, FtSessionParam, FtPayload, ...) are
// declared once, in messaging_records.h.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "messaging_records.h"

// Request 550. The library takes over the session and the payload, and
// copies the report data.
#define VELAR_ARGS_FtStartSessionData                                                 \
    (handle, int), (session, FtSessionParam*), (payload, std::unique_ptr<FtPayload>), \
        (reportData, const ReportData&)
class FtStartSessionData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(FtStartSessionData, VELAR_ARGS_FtStartSessionData)
    FtStartSessionData(const FtStartSessionData&) = delete;
    FtStartSessionData& operator=(const FtStartSessionData&) = delete;
    ~FtStartSessionData() override { delete session; }
};

// Request 553: the byte range to take and where the file goes.
class RequestAcceptFtSession : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS((handle, uint32_t), (start, uint64_t), (end, uint64_t), (filePath, std::string),
                 (userAlias, std::string))
};

// Requests 522 and 552, under the id the client sent.
class CancelFtSessionData : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS((handle, uint32_t), (sipCode, int32_t), (warning, WarningHdr))
};

// Notifications 12004 and 18003.
class FtProgressData : public ImsData {
public:
    VELAR_FIELDS((handle, uint32_t), (state, uint32_t), (error, ImError), (total, uint32_t),
                 (transferred, uint32_t), (warning, WarningHdr), (reason, ReasonHdr))
};

// Notifications 12005 and 18001: the session's own handle stands in for the
// usual leading handle.
class FtIncomingData : public ImsData {
public:
    FtIncomingData() = default;
    FtIncomingData(const FtIncomingData&) = delete;
    FtIncomingData& operator=(const FtIncomingData&) = delete;
    ~FtIncomingData() override { delete payload; }
    VELAR_FIELDS((session, FtSessionParam), (payload, FtPayload*))
};

// Request 520: a message to a list of participants, outside any session.
class RequestSendImSlmMessage : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS((handle, uint32_t), (session, FtSessionParam), (message, ImMessage),
                 (reportData, ReportData), (participants, std::vector<ImParticipant>))
};

// Request 521: a whole file to a list of participants.
class RequestSlmSendFile : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS((handle, uint32_t), (session, FtSessionParam), (payload, FtPayload),
                 (participants, std::vector<ImParticipant>))
};

// Answer to 520; it has no handle.
class SendImSlmMessageRespData : public ImsData {
public:
    VELAR_FIELDS((imdnMessageId, std::string), (error, ImError), (retry, RetryHdr),
                 (warning, WarningHdr))
};

// Answer to 521; the session handle comes last.
class SendSlmFileRespData : public ImsData {
public:
    VELAR_FIELDS((imdnMessageId, std::string), (error, ImError), (handle, uint32_t))
};

// Notification 18000.
class SlmIncomingData : public ImsData {
public:
    SlmIncomingData() = default;
    SlmIncomingData(const SlmIncomingData&) = delete;
    SlmIncomingData& operator=(const SlmIncomingData&) = delete;
    ~SlmIncomingData() override { delete message; }
    VELAR_FIELDS((session, FtSessionParam), (message, ImMessage*))
};

// Request 560.
class GroupListSubscribeData : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS((handle, uint32_t), (subscriptionId, std::string), (version, uint32_t),
                 (isIncrease, bool))
};

// Request 561.
class GroupInfoSubscribeData : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS((handle, uint32_t), (subscriptionId, std::string), (uri, std::string))
};

// Notification 11009.
class GroupSubscribeStatusData : public ImsData {
public:
    VELAR_FIELDS((handle, uint32_t), (isSuccess, bool), (sipErrorCode, uint32_t),
                 (sipErrorPhrase, std::string), (subscriptionId, std::string))
};

// One group chat of the list. The library's leading word is never read and
// has no JSON form.
class GroupListEntry {
public:
    int leadingWord = 0;
    VELAR_FIELDS((method, std::string), (uri, std::string), (conversationId, std::string),
                 (subject, std::string))
};

// Notification 11010.
class GroupListUpdateData : public ImsData {
public:
    VELAR_FIELDS((version, uint32_t), (increaseMode, bool), (groups, std::vector<GroupListEntry>))
};

// Notification 11011.
class GroupInfoUpdateData : public ImsData {
public:
    VELAR_FIELDS((uri, std::string), (sessionId, uint32_t), (state, std::string),
                 (subject, std::string), (maxUserCnt, uint32_t),
                 (users, std::vector<ImConferenceUser>))
};
