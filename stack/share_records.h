// Records of the content-sharing family: image and video share sessions.
// Accepting and stopping use the shared TupleData and PrimitiveData records.
#pragma once

#include <string>

#include "shared_records.h"

// Request 1001.
#define VELAR_FIELDS_StartIshSession                                                       \
    (registrationHandle, unsigned int), (remoteUri, std::string), (filePath, std::string), \
        (size, unsigned int), (contentType, std::string)
class StartIshSession : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_StartIshSession)
};

// Request 1101.
#define VELAR_FIELDS_StartVshSession (registrationHandle, unsigned int), (remoteUri, std::string)
class StartVshSession : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_StartVshSession)
};

// The answer of requests 1001 to 1003 and 1101 to 1103, and the record of
// notifications 16002, 16003, 17002 and 17003. code is a CshError number, or
// a VshResolution number in 17002.
#define VELAR_FIELDS_CshResultData (sessionId, unsigned int), (code, int)
class CshResultData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CshResultData)
};

// Notification 16001.
#define VELAR_FIELDS_IshIncomingData                                              \
    (sessionId, unsigned int), (remoteUri, std::string), (fileName, std::string), \
        (size, unsigned int), (contentType, std::string)
class IshIncomingData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_IshIncomingData)
};

// Notification 16004.
#define VELAR_FIELDS_IshProgressData \
    (sessionId, unsigned int), (total, unsigned int), (transferred, unsigned int)
class IshProgressData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_IshProgressData)
};

// Notification 17001.
#define VELAR_FIELDS_VshIncomingData (sessionId, unsigned int), (remoteUri, std::string)
class VshIncomingData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_VshIncomingData)
};
