// Every dispatch, response and notification handler of the two tables.
#pragma once

#include <cstdint>
#include <utility>

#include "imsCommonStruc.pb.h"
#include "core/ims_core.h"
#include "handlers/ims_log.h"

#define IMS_DISPATCH(name)                                                                        \
    void name([[maybe_unused]] uint32_t token, [[maybe_unused]] imsCommonStruc::Request& request, \
              [[maybe_unused]] RequestInfo* info)
#define IMS_RESPONSE(name) \
    int name([[maybe_unused]] uint32_t token, imsCommonStruc::Response& response, ImsData* data)
#define IMS_NOTIFY(name) int name(imsCommonStruc::Notify& notify, ImsData* data)

// A dispatch handler's own copy of its sub-message, moved out of the request
// rather than copied: the request is the caller's and is destroyed as soon as
// the handler returns, so copying every string of a large body would only
// double the allocations. An absent sub-message comes out empty and reads as
// its defaults, as the default instance would.
template <class Body>
Body TakeBody(Body* inRequest) {
    return std::move(*inRequest);
}

// Core.
IMS_DISPATCH(DispatchNoOperation);
IMS_RESPONSE(ResponseGeneralResponse);

// registration
IMS_DISPATCH(DispatchUpdateCommonConfig);
IMS_DISPATCH(DispatchUACreation);
IMS_DISPATCH(DispatchUADeletion);
IMS_DISPATCH(DispatchUpdateFeatureTag);
IMS_DISPATCH(DispatchRegistration);
IMS_DISPATCH(DispatchUpdateAkaResp);
IMS_DISPATCH(DispatchDnsQuery);
IMS_DISPATCH(DispatchSetPreferredImpu);
IMS_DISPATCH(DispatchNetworkSuspended);
IMS_DISPATCH(DispatchDeleteTcpClientSocket);
IMS_DISPATCH(DispatchUpdatePani);
IMS_DISPATCH(DispatchUpdateGeolocation);
IMS_DISPATCH(DispatchAlarmWakeUp);
IMS_DISPATCH(DispatchX509CertVerifyResult);
IMS_DISPATCH(DispatchUpdateVceConfig);
IMS_DISPATCH(DispatchSipDialogSendSip);
IMS_RESPONSE(ResponseSendSipResponse);
IMS_DISPATCH(DispatchOpenSipDialog);
IMS_NOTIFY(NotifyRegiStatus);
IMS_NOTIFY(NotifyRegiAuth);
IMS_NOTIFY(NotifyDnsResponse);
IMS_NOTIFY(NotifySubscribeStatus);
IMS_NOTIFY(NotifyRegInfoChanged);
IMS_NOTIFY(NotifySipMessage);
IMS_NOTIFY(NotifyAlarmWakeUp);
IMS_NOTIFY(NotifyCancelAlarm);
IMS_NOTIFY(NotifyEcholocateMsg);
IMS_NOTIFY(NotifyDumpMessage);
IMS_NOTIFY(NotifyStackUpdatePaniNoti);
IMS_NOTIFY(NotifyX509CertVerifyRequest);

// call
IMS_DISPATCH(DispatchMakeCall);
IMS_RESPONSE(ResponseCallResponse);
IMS_DISPATCH(DispatchEndCall);
IMS_DISPATCH(DispatchHoldCall);
IMS_DISPATCH(DispatchResumeCall);
IMS_DISPATCH(DispatchHoldVideo);
IMS_DISPATCH(DispatchResumeVideo);
IMS_DISPATCH(DispatchStartCamera);
IMS_DISPATCH(DispatchStopCamera);
IMS_DISPATCH(DispatchAcceptCall);
IMS_DISPATCH(DispatchRejectCall);
IMS_DISPATCH(DispatchProgressIncomingCall);
IMS_DISPATCH(DispatchUpdateCall);
IMS_DISPATCH(DispatchSendDtmf);
IMS_DISPATCH(DispatchMakeConfCall);
IMS_DISPATCH(DispatchUpdateConfCall);
IMS_DISPATCH(DispatchTransferCall);
IMS_DISPATCH(DispatchPullingCall);
IMS_DISPATCH(DispatchAcceptTransferCall);
IMS_DISPATCH(DispatchModifyCallType);
IMS_DISPATCH(DispatchReplyModifyCallType);
IMS_DISPATCH(DispatchRejectModifyCallType);
IMS_DISPATCH(DispatchExtendToConference);
IMS_DISPATCH(DispatchUpdateAudioInterface);
IMS_DISPATCH(DispatchCancelTransferCall);
IMS_DISPATCH(DispatchPublishDialog);
IMS_DISPATCH(DispatchSendInfo);
IMS_NOTIFY(NotifyCallStatus);
IMS_NOTIFY(NotifyModifyCallCnfm);
IMS_NOTIFY(NotifyIncomingCall);
IMS_NOTIFY(NotifyModifyVideo);
IMS_NOTIFY(NotifyVideoEvent);
IMS_NOTIFY(NotifyDedicatedBearerEvent);
IMS_NOTIFY(NotifyRrcConnectionEvent);
IMS_NOTIFY(NotifyCdpnInfo);
IMS_NOTIFY(NotifyConfCallChanged);
IMS_NOTIFY(NotifyReferReceived);
IMS_NOTIFY(NotifyReferStatus);
IMS_NOTIFY(NotifyUpdateRouteTable);
IMS_NOTIFY(NotifyCallPublishStatus);
IMS_NOTIFY(NotifyDtmfEvent);
IMS_NOTIFY(NotifyRtpLossRateNoti);
IMS_NOTIFY(NotifyDialogEvent);
IMS_NOTIFY(NotifyDialogSubscribeStatus);

// ss
IMS_DISPATCH(DispatchSSGetDivInfo);
IMS_RESPONSE(ResponseSSDivInfoResponse);
IMS_DISPATCH(DispatchSSGetICBInfo);
IMS_RESPONSE(ResponseSSICBInfoResponse);
IMS_DISPATCH(DispatchSSGetOCBInfo);
IMS_RESPONSE(ResponseSSOCBInfoResponse);
IMS_DISPATCH(DispatchSSGetOIPInfo);
IMS_RESPONSE(ResponseSSOIPInfoResponse);
IMS_DISPATCH(DispatchSSGetOIRInfo);
IMS_RESPONSE(ResponseSSOIRInfoResponse);
IMS_DISPATCH(DispatchSSGetCommWaitInfo);
IMS_RESPONSE(ResponseSSCWInfoResponse);
IMS_DISPATCH(DispatchSSSetDivInfo);
IMS_DISPATCH(DispatchSSSetICBInfo);
IMS_DISPATCH(DispatchSSSetOCBInfo);
IMS_DISPATCH(DispatchSSSetOIRInfo);
IMS_DISPATCH(DispatchSSSetCommWaitInfo);
IMS_DISPATCH(DispatchSSUpdateGbaKey);
IMS_DISPATCH(DispatchSSUpdateDns);
IMS_DISPATCH(DispatchSSUpdateRouteResult);
IMS_DISPATCH(DispatchSSResetConfigure);
IMS_DISPATCH(DispatchSSGetSDInfo);
IMS_NOTIFY(NotifyXCapMessage);
IMS_NOTIFY(NotifySsRequestGenKey);

// sms
IMS_DISPATCH(DispatchSendMessage);
IMS_RESPONSE(ResponseSendSmsResponse);
IMS_DISPATCH(DispatchSendRpAckResp);
IMS_DISPATCH(DispatchReceiveSmsResp);
IMS_NOTIFY(NotifySmsRpAck);
IMS_NOTIFY(NotifyReceiveSms);

// messaging
IMS_DISPATCH(DispatchIMStartSession);
IMS_RESPONSE(ResponseStartSession);
IMS_DISPATCH(DispatchAcceptImSession);
IMS_DISPATCH(DispatchRejectImSession);
IMS_RESPONSE(ResponseCloseSession);
IMS_DISPATCH(DispatchImCloseSession);
IMS_DISPATCH(DispatchIMSendMessage);
IMS_RESPONSE(PrepareResponseIMSendMessage);
IMS_DISPATCH(DispatchIMSendComposingStatus);
IMS_DISPATCH(DispatchIMSendNotiStatus);
IMS_DISPATCH(DispatchIMSendSlmMessage);
IMS_RESPONSE(ResponseSendImSlmMessage);
IMS_DISPATCH(DispatchSlmSendFile);
IMS_RESPONSE(PrepareResponseSlmSendFile);
IMS_DISPATCH(DispatchFTCancelSession);
IMS_DISPATCH(DispatchUpdateParticipants);
IMS_RESPONSE(ResponseUpdateParticipants);
IMS_DISPATCH(DispatchFTStartSession);
IMS_DISPATCH(DispatchFTAcceptSession);
IMS_DISPATCH(DispatchGroupListSubscribe);
IMS_DISPATCH(DispatchGroupInfoSubscribe);
IMS_NOTIFY(NotifySessionStarted);
IMS_NOTIFY(NotifySessionClosed);
IMS_NOTIFY(NotifyIncomingImChat);
IMS_NOTIFY(NotifyMessageReceived);
IMS_NOTIFY(NotifyImdnReceived);
IMS_NOTIFY(NotifyComposingStatusReceived);
IMS_NOTIFY(NotifySessionEstablished);
IMS_NOTIFY(PrepareNotifyImMessageReportReceived);
IMS_NOTIFY(NotifyFtProgress);
IMS_NOTIFY(PrepareNotifyFtIncomingSession);
IMS_NOTIFY(NotifyGroupChatSubscribeStatus);
IMS_NOTIFY(NotifyGroupListUpdate);
IMS_NOTIFY(NotifyGroupInfoUpdate);
IMS_NOTIFY(PrepareNotifySlmIncoming);
IMS_NOTIFY(NotifyImConferenceInfoUpdate);

// presence
IMS_DISPATCH(DispatchPresencePublish);
IMS_DISPATCH(DispatchPresenceUnpublish);
IMS_DISPATCH(DispatchPresenceSubscribe);
IMS_DISPATCH(DispatchPresenceUnsubscribe);
IMS_DISPATCH(DispatchOptionsCapExchange);
IMS_NOTIFY(NotifyPresencePublishStatus);
IMS_NOTIFY(NotifyPresenceSubscribeStatus);
IMS_NOTIFY(NotifyPresenceSubscribe);
IMS_NOTIFY(NotifyOptionsReceived);

// xdm
IMS_DISPATCH(DispatchXdmUpdateGbaData);
IMS_RESPONSE(ResponseXdmGeneralResponse);
IMS_DISPATCH(DispatchXdmUpdateAkaResp);
IMS_DISPATCH(DispatchXdmUpdateGbaKey);
IMS_DISPATCH(DispatchXdmFetchDocument);
IMS_DISPATCH(DispatchXdmUploadPresRules);
IMS_DISPATCH(DispatchXdmUploadContacts);
IMS_DISPATCH(DispatchXdmModifyContact);
IMS_DISPATCH(DispatchXdmDeleteContact);
IMS_NOTIFY(NotifyXdmGbaKey);
IMS_NOTIFY(NotifyXdmAuth);
IMS_NOTIFY(NotifyXdmStoreGbaAndGenKey);
IMS_NOTIFY(NotifyXdmContactDownload);

// share
IMS_DISPATCH(DispatchIshStartSession);
IMS_RESPONSE(ResponseCshGeneralResponse);
IMS_DISPATCH(DispatchIshAcceptSession);
IMS_DISPATCH(DispatchIshStopSession);
IMS_DISPATCH(DispatchVshStartSession);
IMS_DISPATCH(DispatchVshAcceptSession);
IMS_DISPATCH(DispatchVshStopSession);
IMS_NOTIFY(NotifyIshIncomingSession);
IMS_NOTIFY(NotifyIshSessionEstablished);
IMS_NOTIFY(NotifyIshSessionTerminated);
IMS_NOTIFY(NotifyIshTransferProgress);
IMS_NOTIFY(NotifyVshIncomingSession);
IMS_NOTIFY(NotifyVshSessionEstablished);
IMS_NOTIFY(NotifyVshSessionTerminated);
