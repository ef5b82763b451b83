// Records of the ss family.
#pragma once

#include <list>
#include <string>

#include "shared_records.h"

// A media selector and one element of a forwarding list: the wire's numbers,
// which the stack reads as plain integers.
using SS_Media = int;
using SS_FORWARD_TO = int;

// Requests that name only the subscriber's identity (304, 305, 310, 314).
#define VELAR_ARGS_SSInfo (impu, std::string)
class SSInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSInfo, VELAR_ARGS_SSInfo)
};

#define VELAR_ARGS_SSGetDivInfo (ssType, unsigned int), (mediaType, SS_Media), (impu, std::string)
class SSGetDivInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSGetDivInfo, VELAR_ARGS_SSGetDivInfo)
};

// Incoming (302) and outgoing (303) barring; only the record id tells them apart.
#define VELAR_ARGS_SSGetBarrInfo (ssType, unsigned int), (mediaType, SS_Media), (impu, std::string)
class SSGetBarrInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSGetBarrInfo, VELAR_ARGS_SSGetBarrInfo)
};

#define VELAR_ARGS_SSSetDivInfo                                                                  \
    (serviceActivation, bool), (noReplyTimer, int), (ruleId, std::string), (cfType, int),        \
        (fwdElm, std::list<SS_FORWARD_TO>), (target, const std::string&), (mediaType, SS_Media), \
        (impu, std::string), (deleteRule, bool)
class SSSetDivInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSSetDivInfo, VELAR_ARGS_SSSetDivInfo)
};

#define VELAR_ARGS_SSSetBarrInfo                                                            \
    (serviceActivation, bool), (ruleId, std::string), (cbType, int), (mediaType, SS_Media), \
        (allow, bool), (impu, std::string), (sibTarget, std::string)
class SSSetBarrInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSSetBarrInfo, VELAR_ARGS_SSSetBarrInfo)
};

#define VELAR_ARGS_SSSetOIRInfo (serviceActivation, bool), (impu, std::string)
class SSSetOIRInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSSetOIRInfo, VELAR_ARGS_SSSetOIRInfo)
};

#define VELAR_ARGS_SSSetCommWaitInfo (serviceActivation, bool), (impu, std::string)
class SSSetCommWaitInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSSetCommWaitInfo, VELAR_ARGS_SSSetCommWaitInfo)
};

#define VELAR_ARGS_SSGbaKeyData (gbaKey, std::string)
class SSGbaKeyData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSGbaKeyData, VELAR_ARGS_SSGbaKeyData)
};

#define VELAR_ARGS_SSGetDns (dnsList, std::list<std::string>), (iface, std::string)
class SSGetDns : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SSGetDns, VELAR_ARGS_SSGetDns)
};

// The stack's answers to the Get requests.

// Diversion (301): one entry per rule in each list; the lists need not be of
// equal length.
#define VELAR_FIELDS_SSDivInfoResult                                                             \
    (mServiceActivation, bool), (mNoReplyTimer, unsigned int), (mRuleId, std::string),           \
        (mCfType, unsigned int), (mSsStatus, std::list<bool>), (mFwdElm, std::list<int>),        \
        (mTarget, std::list<std::string>), (mMediaType, std::list<int>), (mError, unsigned int), \
        (mErrorStr, std::string)
class SSDivInfoResult : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SSDivInfoResult)
};

// Incoming (302) and outgoing (303) barring.
#define VELAR_FIELDS_SSBarrInfoResult                                                          \
    (mServiceActivation, bool), (mRuleId, std::string), (mCbType, unsigned int),               \
        (mSsStatus, std::list<bool>), (mMediaType, std::list<int>), (mAllow, std::list<bool>), \
        (mSibTarget, std::string), (mError, unsigned int), (mErrorStr, std::string)
class SSBarrInfoResult : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SSBarrInfoResult)
};

// Identity presentation (304), restriction (305) and communication waiting (310).
#define VELAR_FIELDS_SSFlagInfoResult \
    (mServiceActivation, bool), (mError, unsigned int), (mErrorStr, std::string)
class SSFlagInfoResult : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SSFlagInfoResult)
};

// Notification 10019: the inputs of a GBA key; the framework answers with 312.
#define VELAR_FIELDS_SSGenKeyData                                                           \
    (mGbatype, std::string), (mCk, std::string), (mIk, std::string), (mNonce, std::string), \
        (mLifetime, std::string), (mBtid, std::string)
class SSGenKeyData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SSGenKeyData)
};

// Notification 10018: one XCAP message and its direction.
#define VELAR_FIELDS_XCapMessageData \
    (mHandle, unsigned int), (mDirection, int), (mXcapMessage, std::string)
class XCapMessageData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_XCapMessageData)
};
