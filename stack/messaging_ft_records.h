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
#define VELAR_FIELDS_RequestAcceptFtSession                                          \
    (handle, uint32_t), (start, uint64_t), (end, uint64_t), (filePath, std::string), \
        (userAlias, std::string)
class RequestAcceptFtSession : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS(VELAR_FIELDS_RequestAcceptFtSession)
};

// Requests 522 and 552, under the id the client sent.
#define VELAR_FIELDS_CancelFtSessionData \
    (handle, uint32_t), (sipCode, int32_t), (warning, WarningHdr)
class CancelFtSessionData : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS(VELAR_FIELDS_CancelFtSessionData)
};

// Notifications 12004 and 18003.
#define VELAR_FIELDS_FtProgressData                                             \
    (handle, uint32_t), (state, uint32_t), (error, ImError), (total, uint32_t), \
        (transferred, uint32_t), (warning, WarningHdr), (reason, ReasonHdr)
class FtProgressData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_FtProgressData)
};

// Notifications 12005 and 18001: the session's own handle stands in for the
// usual leading handle.
#define VELAR_FIELDS_FtIncomingData (session, FtSessionParam), (payload, FtPayload*)
class FtIncomingData : public ImsData {
public:
    FtIncomingData() = default;
    FtIncomingData(const FtIncomingData&) = delete;
    FtIncomingData& operator=(const FtIncomingData&) = delete;
    ~FtIncomingData() override { delete payload; }
    VELAR_FIELDS(VELAR_FIELDS_FtIncomingData)
};

// Request 520: a message to a list of participants, outside any session.
#define VELAR_FIELDS_RequestSendImSlmMessage                                                       \
    (handle, uint32_t), (session, FtSessionParam), (message, ImMessage), (reportData, ReportData), \
        (participants, std::vector<ImParticipant>)
class RequestSendImSlmMessage : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS(VELAR_FIELDS_RequestSendImSlmMessage)
};

// Request 521: a whole file to a list of participants.
#define VELAR_FIELDS_RequestSlmSendFile                                  \
    (handle, uint32_t), (session, FtSessionParam), (payload, FtPayload), \
        (participants, std::vector<ImParticipant>)
class RequestSlmSendFile : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS(VELAR_FIELDS_RequestSlmSendFile)
};

// Answer to 520; it has no handle.
#define VELAR_FIELDS_SendImSlmMessageRespData \
    (imdnMessageId, std::string), (error, ImError), (retry, RetryHdr), (warning, WarningHdr)
class SendImSlmMessageRespData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SendImSlmMessageRespData)
};

// Answer to 521; the session handle comes last.
#define VELAR_FIELDS_SendSlmFileRespData \
    (imdnMessageId, std::string), (error, ImError), (handle, uint32_t)
class SendSlmFileRespData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SendSlmFileRespData)
};

// Notification 18000.
#define VELAR_FIELDS_SlmIncomingData (session, FtSessionParam), (message, ImMessage*)
class SlmIncomingData : public ImsData {
public:
    SlmIncomingData() = default;
    SlmIncomingData(const SlmIncomingData&) = delete;
    SlmIncomingData& operator=(const SlmIncomingData&) = delete;
    ~SlmIncomingData() override { delete message; }
    VELAR_FIELDS(VELAR_FIELDS_SlmIncomingData)
};

// Request 560.
#define VELAR_FIELDS_GroupListSubscribeData \
    (handle, uint32_t), (subscriptionId, std::string), (version, uint32_t), (isIncrease, bool)
class GroupListSubscribeData : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS(VELAR_FIELDS_GroupListSubscribeData)
};

// Request 561.
#define VELAR_FIELDS_GroupInfoSubscribeData \
    (handle, uint32_t), (subscriptionId, std::string), (uri, std::string)
class GroupInfoSubscribeData : public ImsData {
public:
    using ImsData::ImsData;
    VELAR_FIELDS(VELAR_FIELDS_GroupInfoSubscribeData)
};

// Notification 11009.
#define VELAR_FIELDS_GroupSubscribeStatusData                        \
    (handle, uint32_t), (isSuccess, bool), (sipErrorCode, uint32_t), \
        (sipErrorPhrase, std::string), (subscriptionId, std::string)
class GroupSubscribeStatusData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_GroupSubscribeStatusData)
};

// One group chat of the list. The library's leading word is never read.
#define VELAR_FIELDS_GroupListEntry \
    (method, std::string), (uri, std::string), (conversationId, std::string), (subject, std::string)
class GroupListEntry {
public:
    int leadingWord = 0;
    VELAR_FIELDS(VELAR_FIELDS_GroupListEntry)
};

// Notification 11010.
#define VELAR_FIELDS_GroupListUpdateData \
    (version, uint32_t), (increaseMode, bool), (groups, std::vector<GroupListEntry>)
class GroupListUpdateData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_GroupListUpdateData)
};

// Notification 11011.
#define VELAR_FIELDS_GroupInfoUpdateData                                                     \
    (uri, std::string), (sessionId, uint32_t), (state, std::string), (subject, std::string), \
        (maxUserCnt, uint32_t), (users, std::vector<ImConferenceUser>)
class GroupInfoUpdateData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_GroupInfoUpdateData)
};
