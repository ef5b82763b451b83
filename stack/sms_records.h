// Records of the sms family.
#pragma once

#include <string>

#include "shared_records.h"

// An outgoing short message. The library has two constructors: the longer
// one answers an earlier message and also takes inReplyTo.
class SendMessageData : public ImsData {
public:
    SendMessageData(int recordId, int handle, const std::string& smsc, const std::string& localUri,
                    const std::string& contentType, const std::string& contentSubType,
                    int contentLen, const std::string& contentBody);
    SendMessageData(int recordId, int handle, const std::string& smsc, const std::string& localUri,
                    const std::string& contentType, const std::string& contentSubType,
                    int contentLen, const std::string& contentBody, const std::string& inReplyTo);

    int handle;
    std::string smsc;
    std::string localUri;
    std::string contentType;
    std::string contentSubType;
    int contentLen;
    std::string contentBody;
    std::string inReplyTo;
    // Which constructor built the record, so that an empty inReplyTo stays
    // apart from none.
    bool withInReplyTo;
};

// The framework's answer to an RP-ACK (notification 20003).
#define VELAR_ARGS_RpAckResponse (handle, unsigned int), (callId, const std::string&)
class RpAckResponse : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(RpAckResponse, VELAR_ARGS_RpAckResponse)
};

// The framework's answer to a received message (notification 20004).
#define VELAR_ARGS_SmsReceiveResponse \
    (handle, unsigned int), (callId, const std::string&), (status, int)
class SmsReceiveResponse : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SmsReceiveResponse, VELAR_ARGS_SmsReceiveResponse)
};

// The stack's answer to 401. A refused message is a good record too, with
// its status code, text and retry delay.
#define VELAR_FIELDS_SmsResponseData                                              \
    (mHandle, unsigned int), (mStatusCode, unsigned int), (mCallId, std::string), \
        (mErrStr, std::string), (mRetryAfter, unsigned int)
class SmsResponseData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SmsResponseData)
};

// Notification 20003: the network's RP-ACK for a message sent.
#define VELAR_FIELDS_SmsRpAckData                                             \
    (mCallId, std::string), (mAckCode, std::string), (mAckLen, unsigned int), \
        (mContentType, std::string), (mContentSubType, std::string)
class SmsRpAckData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SmsRpAckData)
};

// Notification 20004: an incoming message.
#define VELAR_FIELDS_ReceiveSmsData                                                  \
    (mCallId, std::string), (mContent, std::string), (mContentType, std::string),    \
        (mContentSubType, std::string), (mLen, unsigned int), (mScUri, std::string), \
        (mHandle, unsigned int)
class ReceiveSmsData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ReceiveSmsData)
};
