// What the stack reports about calls, copied into Notify messages. Values
// pass as the stack gives them: call types, states, codecs, bearer states and
// event numbers are the same integers on both sides.
#include <string>

#include "handlers/call/call_common.h"
#include "handlers/handlers.h"

IMS_NOTIFY(NotifyCallStatus) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<CallStatusData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_callstatus();
    body->set_handle(r->mHandle);
    body->set_session(r->mSession);
    body->set_calltype(static_cast<imsCommonStruc::CallType>(r->mCallType));
    body->set_state(static_cast<imsCommonStruc::CallState>(r->mState));
    body->set_statuscode(r->mStatusCode);
    body->set_reasonphrase(r->mReasonPhrase);
    body->set_remotevideocapa(r->mRemoteVideoCapa);
    body->set_remotemmtelcapa(r->mRemoteMmtelCapa);
    body->set_audiocodecname(r->mAudioCodecName);
    body->set_width(r->mWidth);
    body->set_height(r->mHeight);
    body->set_conferencesupport(r->mConferenceSupport);
    body->set_isfocus(r->mIsFocus);
    body->set_localvideortpport(r->mLocalVideoRtpPort);
    body->set_localvideortcpport(r->mLocalVideoRtcpPort);
    body->set_remotevideortpport(r->mRemoteVideoRtpPort);
    body->set_remotevideortcpport(r->mRemoteVideoRtcpPort);
    body->set_serviceurn(r->mServiceUrn);
    body->set_retryafter(r->mRetryAfter);
    body->set_localholdtone(r->mLocalHoldTone);
    body->set_historyinfo(r->mHistoryInfo);
    body->set_cvoenabled(r->mCvoEnabled);
    body->set_alertinfo(r->mAlertInfo);
    if (r->mAdditionalContents != nullptr) {
        auto* contents = body->mutable_additionalcontents();
        ims_call::SetContents(contents, r->mAdditionalContents);
        // State 17 is the one state whose body the framework reads as raw
        // bytes; every other state keeps the text form alone.
        if (r->mState == 17) contents->set_rawcontents(r->mAdditionalContents->contents);
    }
    if (logLevel > 1) IMS_LOGD("imsCallStatus %d", r->mState);
    return 0;
}

IMS_NOTIFY(NotifyIncomingCall) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<IncomingCallData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_incomingcall();
    body->set_handle(r->mHandle);
    body->set_session(r->mSession);
    body->set_calltype(static_cast<imsCommonStruc::CallType>(r->mCallType));
    body->set_peeruri(r->mPeerUri);
    body->set_displayname(r->mDisplayName);
    if (!r->mReferredBy.empty()) body->set_referredby(r->mReferredBy);
    if (!r->mSipCallId.empty()) body->set_sipcallid(r->mSipCallId);
    if (!r->mTerminatingId.empty()) body->set_terminatingid(r->mTerminatingId);
    if (!r->mNumberPlus.empty()) body->set_numberplus(r->mNumberPlus);
    if (!r->mRawSipmsg.empty()) body->set_rawsipmsg(r->mRawSipmsg);
    // The one string sent even when empty.
    body->set_replaces(r->mReplaces);
    if (!r->mAlertInfo.empty()) body->set_alertinfo(r->mAlertInfo);
    if (!r->mPhotoRing.empty()) body->set_photoring(r->mPhotoRing);
    if (!r->mHistoryInfo.empty()) body->set_historyinfo(r->mHistoryInfo);
    if (logLevel > 1) {
        IMS_LOGD(
            "incoming call profile(%d) session(%d) type(%d) peeruri(%s) referred-by(%s) "
            "call-id(%s) mAlertInfo(%s) mPhotoRing(%s) mHistoryInfo(%s)",
            r->mHandle, r->mSession, r->mCallType, ImsLogChecker(r->mPeerUri).c_str(),
            ImsLogChecker(r->mReferredBy).c_str(), r->mSipCallId.c_str(), r->mAlertInfo.c_str(),
            r->mPhotoRing.c_str(), r->mHistoryInfo.c_str());
    }
    return 0;
}

IMS_NOTIFY(NotifyConfCallChanged) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<ConfCallChangedData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_confcallchanged();
    body->set_session(r->mSession);
    body->set_event(static_cast<imsCommonStruc::Notify_ConfCallChanged_ConfEvent>(r->mEvent));
    for (const auto& p : r->mParticipants) {
        auto* wire = body->add_participants();
        wire->set_uri(p.mUri);
        wire->set_status(
            static_cast<imsCommonStruc::Notify_ConfCallChanged_participantstatus>(p.mStatus));
        wire->set_participantid(p.mParticipantId);
        wire->set_sessionid(p.mSessionId);
    }
    return 0;
}

// The stack reports the outcome of a dialog publication, but the wire has no
// body for it: the framework gets an empty Notify, without even an id.
IMS_NOTIFY(NotifyCallPublishStatus) {
    IMS_LOGV("%s()", __func__);
    if (RecordOf<ImsData>(notify, data) == nullptr) return -1;
    notify.clear_notifyid();
    return 0;
}

IMS_NOTIFY(NotifyCdpnInfo) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<CdpnInfoData>(notify, data);
    if (r == nullptr) return -1;
    notify.mutable_cdpninfo()->set_calledpartynumber(r->mCalledParyNumber);
    if (logLevel > 1) IMS_LOGD("cdpnInfo mCalledParyNumber(%s)", r->mCalledParyNumber.c_str());
    return 0;
}

IMS_NOTIFY(NotifyReferReceived) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<ReferReceivedData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_referreceived();
    body->set_handle(r->mHandle);
    body->set_session(r->mSession);
    body->set_referoruri(r->mReferorUri);
    body->set_targeturi(r->mTargetUri);
    return 0;
}

IMS_NOTIFY(NotifyReferStatus) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<ReferStatusData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_referstatus();
    body->set_session(r->mSession);
    body->set_statuscode(r->mStatusCode);
    return 0;
}

IMS_NOTIFY(NotifyUpdateRouteTable) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<RouteTableData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_updateroutetable();
    body->set_handle(r->mHandle);
    body->set_operation(
        static_cast<imsCommonStruc::Notify_UpdateRouteTable_Operation>(r->mOperation));
    body->set_address(r->mAddress);
    return 0;
}

IMS_NOTIFY(NotifyModifyCallCnfm) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<ModifyCallData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_modifycalldata();
    body->set_session(r->mSession);
    body->set_oldtype(r->mOldType);
    body->set_newtype(r->mNewType);
    return 0;
}

IMS_NOTIFY(NotifyModifyVideo) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<ModifyVideoData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_modifyvideodata();
    body->set_session(r->mSession);
    body->set_direction(r->mDirection);
    body->set_isheldcall(r->mIsHeldCall);
    return 0;
}

IMS_NOTIFY(NotifyVideoEvent) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<VideoEventData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_notifyvideoeventdata();
    body->set_session(r->mSession);
    body->set_event(r->mEvent);
    return 0;
}

IMS_NOTIFY(NotifyDedicatedBearerEvent) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<DedicatedBearerData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_dedicatedbearerevent();
    body->set_handle(r->mHandle);
    body->set_session(r->mSession);
    body->set_qci(r->mQci);
    body->set_bearerstate(static_cast<imsCommonStruc::Notify_BearerState>(r->mBearerState));
    if (logLevel > 1) {
        IMS_LOGD("NotifyDedicatedBearerEvent %d,%d,%d,%d", r->mHandle, r->mSession, r->mQci,
                 r->mBearerState);
    }
    return 0;
}

IMS_NOTIFY(NotifyRrcConnectionEvent) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<RrcConnectionData>(notify, data);
    if (r == nullptr) return -1;
    notify.mutable_rrcconnectionevent()->set_event(
        static_cast<imsCommonStruc::Notify_RrcEvent>(r->mEvent));
    if (logLevel > 1) IMS_LOGD("NotifyRrcConnectionEvent %d", r->mEvent);
    return 0;
}

IMS_NOTIFY(NotifyDtmfEvent) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<DtmfEventData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_dtmfparamdata();
    body->set_event(r->mEvent);
    body->set_volume(r->mVolume);
    body->set_duration(r->mDuration);
    body->set_endbit(r->mEndbit);
    if (logLevel > 1) IMS_LOGD("NotifyDtmfEvent %d", r->mEvent);
    return 0;
}

IMS_NOTIFY(NotifyRtpLossRateNoti) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<RtpLossRateData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_rtplossratenoti();
    body->set_interval(r->mInterval);
    body->set_lossrate(r->mLossRate);
    body->set_jitter(r->mJitter);
    if (logLevel > 1) IMS_LOGD("NotifyRtpLossRateNoti Interval : %d", r->mInterval);
    return 0;
}

IMS_NOTIFY(NotifyDialogEvent) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<DialogEventData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_dialogevent();
    body->set_handle(r->mHandle);
    // The stack always attaches the dialog document; should one come without
    // it, the daemon must not read through null.
    ims_call::SetContents(body->mutable_additionalcontents(), r->mContents);
    return 0;
}

IMS_NOTIFY(NotifyDialogSubscribeStatus) {
    IMS_LOGD("%s()", __func__);
    const auto* r = RecordOf<DialogSubscribeStatusData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_dialogsubscribestatus();
    body->set_handle(r->mHandle);
    body->set_statuscode(r->mStatusCode);
    body->set_reasonphrase(r->mReasonPhrase);
    return 0;
}
