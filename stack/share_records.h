// Records of the content-sharing family: image and video share sessions.
// Accepting and stopping use the shared TupleData and PrimitiveData records.
#pragma once

#include <string>

#include "shared_records.h"

// Request 1001.
class StartIshSession : public ImsData {
public:
    VELAR_FIELDS((registrationHandle, unsigned int), (remoteUri, std::string),
                 (filePath, std::string), (size, unsigned int), (contentType, std::string))
};

// Request 1101.
class StartVshSession : public ImsData {
public:
    VELAR_FIELDS((registrationHandle, unsigned int), (remoteUri, std::string))
};

// The answer of requests 1001 to 1003 and 1101 to 1103, and the record of
// notifications 16002, 16003, 17002 and 17003. code is a CshError number, or
// a VshResolution number in 17002.
class CshResultData : public ImsData {
public:
    VELAR_FIELDS((sessionId, unsigned int), (code, int))
};

// Notification 16001.
class IshIncomingData : public ImsData {
public:
    VELAR_FIELDS((sessionId, unsigned int), (remoteUri, std::string), (fileName, std::string),
                 (size, unsigned int), (contentType, std::string))
};

// Notification 16004.
class IshProgressData : public ImsData {
public:
    VELAR_FIELDS((sessionId, unsigned int), (total, unsigned int), (transferred, unsigned int))
};

// Notification 17001.
class VshIncomingData : public ImsData {
public:
    VELAR_FIELDS((sessionId, unsigned int), (remoteUri, std::string))
};
