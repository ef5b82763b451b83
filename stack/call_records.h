// Records of the call family.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "shared_records.h"

// ---------------------------------------------------------------------------
// Requests whose classes the library constructs.

// A call placed by the framework (201). The seventh argument is a text the
// daemon always leaves empty.
#define VELAR_ARGS_CallSetupData                                                                  \
    (handle, int), (peeruri, std::string), (origUri, std::string), (dispName, std::string),       \
        (dialedNumber, std::string), (extraText, std::string), (callType, int), (codec, int),     \
        (mode, int), (direction, int), (additionalContents, std::unique_ptr<AdditionalContents>), \
        (cli, std::string), (softphoneE911Pani, std::string),                                     \
        (additionalSipHeaders, std::map<std::string, std::string>), (alertInfo, std::string),     \
        (photoRing, std::string)
#define VELAR_MEMBERS_CallSetupData (mEcscfList, std::vector<std::string>), (mEcscfPort, int)
class CallSetupData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(CallSetupData, VELAR_ARGS_CallSetupData)
    // Emergency CSCFs; the port is written only when the framework names one.
    VELAR_MEMBERS(VELAR_MEMBERS_CallSetupData)
};

#define VELAR_ARGS_CallAcceptData (session, int), (callType, int)
class CallAcceptData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(CallAcceptData, VELAR_ARGS_CallAcceptData)
};

#define VELAR_ARGS_StartCamera (session, unsigned int), (camera, unsigned int)
class StartCamera : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(StartCamera, VELAR_ARGS_StartCamera)
};

class StopCamera : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR0(StopCamera)
};

#define VELAR_ARGS_ModifyCallTypeData (session, unsigned int), (oldType, int), (newType, int)
class ModifyCallTypeData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(ModifyCallTypeData, VELAR_ARGS_ModifyCallTypeData)
};

// SIP INFO within a call; takes the body over (null when there is none).
#define VELAR_ARGS_CallSendInfo                                       \
    (handle, unsigned int), (session, unsigned int), (callType, int), \
        (contents, std::unique_ptr<AdditionalContents>)
class CallSendInfo : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(CallSendInfo, VELAR_ARGS_CallSendInfo)
};

// A conference set up (209) or a call extended to one (222).
#define VELAR_ARGS_ConfCallSetupData                                                      \
    (handle, int), (confuri, std::string), (callType, int), (confType, int),              \
        (eventSubscribe, std::string), (dialogType, std::string), (origUri, std::string), \
        (referuriType, std::string), (referuriAsserted, std::string),                     \
        (useAnonymousUpdate, std::string), (sessionId, std::vector<int>),                 \
        (participants, std::vector<std::string>),                                         \
        (extraHeaders, std::map<std::string, std::string>)
class ConfCallSetupData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(ConfCallSetupData, VELAR_ARGS_ConfCallSetupData)
};

#define VELAR_ARGS_ConfCallUpdateSession                                         \
    (session, unsigned int), (cmd, unsigned int), (participantId, unsigned int), \
        (participant, std::string)
class ConfCallUpdateSession : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(ConfCallUpdateSession, VELAR_ARGS_ConfCallUpdateSession)
};

// ---------------------------------------------------------------------------
// Requests the daemon builds itself.

#define VELAR_FIELDS_CallEndData_Reason                            \
    (mProtocol, std::string), (mCause, int), (mText, std::string), \
        (mExtension, std::vector<std::string>), (mIsLocalRelease, bool)
#define VELAR_FIELDS_CallEndData (mSession, int), (mReason, Reason*)
class CallEndData : public ImsData {
public:
    // Why the call ends, as the framework gives it; held by the record.
    class Reason {
    public:
        Reason() = default;
        Reason(std::string protocol, int cause, std::string text,
               std::vector<std::string> extension, bool isLocalRelease)
            : mProtocol(std::move(protocol)),
              mCause(cause),
              mText(std::move(text)),
              mExtension(std::move(extension)),
              mIsLocalRelease(isLocalRelease) {}
        virtual ~Reason() = default;
        VELAR_FIELDS(VELAR_FIELDS_CallEndData_Reason)
    };

    CallEndData() = default;
    CallEndData(const CallEndData&) = delete;
    CallEndData& operator=(const CallEndData&) = delete;
    ~CallEndData() override { delete mReason; }
    // mReason is null when the framework gave no reason.
    VELAR_FIELDS(VELAR_FIELDS_CallEndData)
};

#define VELAR_FIELDS_CallRejectData \
    (mSession, int), (mStatusCode, int), (mReasonPhrase, std::string)
class CallRejectData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CallRejectData)
};

#define VELAR_FIELDS_CallUpdateData \
    (mSession, int), (mAction, int), (mCodecType, int), (mCause, int), (mReasonText, std::string)
class CallUpdateData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CallUpdateData)
};

#define VELAR_FIELDS_ReplyModifyCallType \
    (mSession, int), (mReqType, int), (mCurType, int), (mRepType, int)
class ReplyModifyCallType : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ReplyModifyCallType)
};

#define VELAR_FIELDS_RejectModifyCallType (mSession, int), (mReason, int)
class RejectModifyCallType : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_RejectModifyCallType)
};

#define VELAR_FIELDS_CallSendDtmf (mHandle, int), (mSession, int), (mCode, int)
class CallSendDtmf : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CallSendDtmf)
};

#define VELAR_FIELDS_AudioInterfaceData (mHandle, int), (mMode, std::string)
class AudioInterfaceData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_AudioInterfaceData)
};

#define VELAR_FIELDS_CallPublishData                                                            \
    (mHandle, int), (mOrigUri, std::string), (mDispName, std::string), (mXmlBody, std::string), \
        (mExpireTime, int)
class CallPublishData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CallPublishData)
};

#define VELAR_FIELDS_CallTransferData \
    (mHandle, int), (mSession, int), (mExtraText, std::string), (mTargetUri, std::string)
class CallTransferData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CallTransferData)
};

#define VELAR_FIELDS_AcceptTransferData \
    (mSession, int), (mAccept, bool), (mStatusCode, int), (mReasonPhrase, std::string)
class AcceptTransferData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_AcceptTransferData)
};

#define VELAR_FIELDS_CancelCallTransferData (mHandle, int), (mSession, int)
class CancelCallTransferData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CancelCallTransferData)
};

#define VELAR_FIELDS_CallPullingData                                                  \
    (mHandle, int), (mPullingUri, std::string), (mTargetUri, std::string),            \
        (mOrigUri, std::string), (mCallType, int), (mCodec, int), (mExtraValue, int), \
        (mAudioDirection, int), (mVideoDirection, int), (mIsVideoPortZero, bool),     \
        (mCallId, std::string), (mLocalTag, std::string), (mRemoteTag, std::string),  \
        (mMdmnExtNumber, std::string)
class CallPullingData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CallPullingData)
};

// ---------------------------------------------------------------------------
// Records the stack hands up.

// The answer to a call-level request.
#define VELAR_FIELDS_CallResponseData \
    (mHandle, int), (mSession, int), (mResult, int), (mReason, int), (mSipCallId, std::string)
class CallResponseData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CallResponseData)
};

#define VELAR_FIELDS_CallStatusData                                                          \
    (mHandle, unsigned int), (mSession, unsigned int), (mCallType, int), (mState, int),      \
        (mStatusCode, unsigned int), (mReasonPhrase, std::string), (mRemoteVideoCapa, bool), \
        (mRemoteMmtelCapa, bool), (mAudioCodecName, std::string), (mWidth, unsigned int),    \
        (mHeight, unsigned int), (mConferenceSupport, std::string), (mIsFocus, bool),        \
        (mLocalVideoRtpPort, unsigned int), (mLocalVideoRtcpPort, unsigned int),             \
        (mRemoteVideoRtpPort, unsigned int), (mRemoteVideoRtcpPort, unsigned int),           \
        (mServiceUrn, std::string), (mRetryAfter, unsigned int), (mLocalHoldTone, bool),     \
        (mHistoryInfo, std::string), (mCvoEnabled, bool), (mAlertInfo, std::string),         \
        (mAdditionalContents, AdditionalContents*)
class CallStatusData : public ImsData {
public:
    CallStatusData() = default;
    CallStatusData(const CallStatusData&) = delete;
    CallStatusData& operator=(const CallStatusData&) = delete;
    ~CallStatusData() override { delete mAdditionalContents; }
    VELAR_FIELDS(VELAR_FIELDS_CallStatusData)
};

#define VELAR_FIELDS_IncomingCallData                                                             \
    (mHandle, unsigned int), (mSession, unsigned int), (mCallType, int), (mPeerUri, std::string), \
        (mDisplayName, std::string), (mReferredBy, std::string), (mSipCallId, std::string),       \
        (mTerminatingId, std::string), (mNumberPlus, std::string), (mRawSipmsg, std::string),     \
        (mReplaces, std::string), (mAlertInfo, std::string), (mPhotoRing, std::string),           \
        (mHistoryInfo, std::string)
class IncomingCallData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_IncomingCallData)
};

// One member of a conference, element of ConfCallChangedData.
#define VELAR_FIELDS_ConfParticipant \
    (mParticipantId, unsigned int), (mUri, std::string), (mStatus, int), (mSessionId, unsigned int)
class ConfParticipant {
public:
    VELAR_FIELDS(VELAR_FIELDS_ConfParticipant)
};

#define VELAR_FIELDS_ConfCallChangedData \
    (mSession, unsigned int), (mEvent, int), (mParticipants, std::vector<ConfParticipant>)
class ConfCallChangedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ConfCallChangedData)
};

#define VELAR_FIELDS_CdpnInfoData (mCalledParyNumber, std::string)
class CdpnInfoData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_CdpnInfoData)
};

#define VELAR_FIELDS_ReferReceivedData                                             \
    (mHandle, unsigned int), (mSession, unsigned int), (mReferorUri, std::string), \
        (mTargetUri, std::string)
class ReferReceivedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ReferReceivedData)
};

#define VELAR_FIELDS_ReferStatusData (mSession, unsigned int), (mStatusCode, unsigned int)
class ReferStatusData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ReferStatusData)
};

#define VELAR_FIELDS_RouteTableData \
    (mHandle, unsigned int), (mOperation, int), (mAddress, std::string)
class RouteTableData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_RouteTableData)
};

// mUnread is the stack's own word between the session and the types; the
// daemon never reads it.
class ModifyCallData : public ImsData {
public:
    unsigned int mSession{};
    int mUnread{};
    unsigned int mOldType{};
    unsigned int mNewType{};
};

#define VELAR_FIELDS_ModifyVideoData \
    (mSession, unsigned int), (mDirection, unsigned int), (mIsHeldCall, bool)
class ModifyVideoData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_ModifyVideoData)
};

#define VELAR_FIELDS_VideoEventData (mSession, unsigned int), (mEvent, unsigned int)
class VideoEventData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_VideoEventData)
};

#define VELAR_FIELDS_DedicatedBearerData \
    (mHandle, unsigned int), (mSession, unsigned int), (mQci, unsigned int), (mBearerState, int)
class DedicatedBearerData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_DedicatedBearerData)
};

#define VELAR_FIELDS_RrcConnectionData (mEvent, int)
class RrcConnectionData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_RrcConnectionData)
};

#define VELAR_FIELDS_DtmfEventData                                              \
    (mEvent, unsigned int), (mVolume, unsigned int), (mDuration, unsigned int), \
        (mEndbit, unsigned int)
class DtmfEventData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_DtmfEventData)
};

#define VELAR_FIELDS_RtpLossRateData (mInterval, unsigned int), (mLossRate, float), (mJitter, float)
class RtpLossRateData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_RtpLossRateData)
};

#define VELAR_FIELDS_DialogEventData (mHandle, unsigned int), (mContents, AdditionalContents*)
class DialogEventData : public ImsData {
public:
    DialogEventData() = default;
    DialogEventData(const DialogEventData&) = delete;
    DialogEventData& operator=(const DialogEventData&) = delete;
    ~DialogEventData() override { delete mContents; }
    VELAR_FIELDS(VELAR_FIELDS_DialogEventData)
};

#define VELAR_FIELDS_DialogSubscribeStatusData \
    (mHandle, unsigned int), (mStatusCode, unsigned int), (mReasonPhrase, std::string)
class DialogSubscribeStatusData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_DialogSubscribeStatusData)
};
