// The request and notification tables, in their fixed order: one row per
// id, and the row is the only place where an id is written. The handlers
// take it from the request they are dispatched for, or from the record the
// stack hands up. Each handler is declared here by its rows, so that adding
// a message is adding its handler and its row.
#pragma once

#include "handlers/handlers.h"

// {request id, dispatch handler, response handler}
#define IMS_REQUEST_ROWS(ROW)                                             \
    ROW(101, DispatchUpdateCommonConfig, ResponseGeneralResponse)         \
    ROW(102, DispatchUACreation, ResponseGeneralResponse)                 \
    ROW(103, DispatchUADeletion, ResponseGeneralResponse)                 \
    ROW(109, DispatchUpdateFeatureTag, ResponseGeneralResponse)           \
    ROW(104, DispatchRegistration, ResponseGeneralResponse)               \
    ROW(105, DispatchUpdateAkaResp, ResponseGeneralResponse)              \
    ROW(106, DispatchDnsQuery, ResponseGeneralResponse)                   \
    ROW(107, DispatchSetPreferredImpu, ResponseGeneralResponse)           \
    ROW(108, DispatchNetworkSuspended, ResponseGeneralResponse)           \
    ROW(1300, DispatchDeleteTcpClientSocket, ResponseGeneralResponse)     \
    ROW(201, DispatchMakeCall, ResponseCallResponse)                      \
    ROW(202, DispatchEndCall, ResponseCallResponse)                       \
    ROW(203, DispatchHoldCall, ResponseCallResponse)                      \
    ROW(204, DispatchResumeCall, ResponseCallResponse)                    \
    ROW(219, DispatchHoldVideo, ResponseCallResponse)                     \
    ROW(220, DispatchResumeVideo, ResponseCallResponse)                   \
    ROW(223, DispatchStartCamera, ResponseGeneralResponse)                \
    ROW(226, DispatchStopCamera, ResponseGeneralResponse)                 \
    ROW(205, DispatchAcceptCall, ResponseCallResponse)                    \
    ROW(214, DispatchRejectCall, ResponseCallResponse)                    \
    ROW(218, DispatchProgressIncomingCall, ResponseCallResponse)          \
    ROW(206, DispatchUpdateCall, ResponseCallResponse)                    \
    ROW(207, DispatchSendDtmf, ResponseGeneralResponse)                   \
    ROW(208, DispatchNoOperation, ResponseGeneralResponse)                \
    ROW(209, DispatchMakeConfCall, ResponseCallResponse)                  \
    ROW(210, DispatchNoOperation, ResponseGeneralResponse)                \
    ROW(211, DispatchNoOperation, ResponseGeneralResponse)                \
    ROW(215, DispatchUpdateConfCall, ResponseGeneralResponse)             \
    ROW(212, DispatchTransferCall, ResponseGeneralResponse)               \
    ROW(224, DispatchPullingCall, ResponseCallResponse)                   \
    ROW(213, DispatchAcceptTransferCall, ResponseGeneralResponse)         \
    ROW(301, DispatchSSGetDivInfo, ResponseSSDivInfoResponse)             \
    ROW(302, DispatchSSGetICBInfo, ResponseSSICBInfoResponse)             \
    ROW(303, DispatchSSGetOCBInfo, ResponseSSOCBInfoResponse)             \
    ROW(304, DispatchSSGetOIPInfo, ResponseSSOIPInfoResponse)             \
    ROW(305, DispatchSSGetOIRInfo, ResponseSSOIRInfoResponse)             \
    ROW(310, DispatchSSGetCommWaitInfo, ResponseSSCWInfoResponse)         \
    ROW(306, DispatchSSSetDivInfo, ResponseGeneralResponse)               \
    ROW(307, DispatchSSSetICBInfo, ResponseGeneralResponse)               \
    ROW(308, DispatchSSSetOCBInfo, ResponseGeneralResponse)               \
    ROW(309, DispatchSSSetOIRInfo, ResponseGeneralResponse)               \
    ROW(311, DispatchSSSetCommWaitInfo, ResponseGeneralResponse)          \
    ROW(312, DispatchSSUpdateGbaKey, ResponseGeneralResponse)             \
    ROW(313, DispatchSSUpdateDns, ResponseGeneralResponse)                \
    ROW(315, DispatchSSUpdateRouteResult, ResponseGeneralResponse)        \
    ROW(316, DispatchSSResetConfigure, ResponseGeneralResponse)           \
    ROW(314, DispatchSSGetSDInfo, ResponseGeneralResponse)                \
    ROW(401, DispatchSendMessage, ResponseSendSmsResponse)                \
    ROW(402, DispatchSendRpAckResp, ResponseGeneralResponse)              \
    ROW(403, DispatchReceiveSmsResp, ResponseGeneralResponse)             \
    ROW(216, DispatchModifyCallType, ResponseCallResponse)                \
    ROW(217, DispatchReplyModifyCallType, ResponseCallResponse)           \
    ROW(221, DispatchRejectModifyCallType, ResponseCallResponse)          \
    ROW(222, DispatchExtendToConference, ResponseCallResponse)            \
    ROW(225, DispatchUpdateAudioInterface, ResponseGeneralResponse)       \
    ROW(227, DispatchCancelTransferCall, ResponseGeneralResponse)         \
    ROW(228, DispatchPublishDialog, ResponseGeneralResponse)              \
    ROW(229, DispatchSendInfo, ResponseGeneralResponse)                   \
    ROW(501, DispatchIMStartSession, ResponseStartSession)                \
    ROW(502, DispatchAcceptImSession, ResponseStartSession)               \
    ROW(508, DispatchRejectImSession, ResponseCloseSession)               \
    ROW(503, DispatchImCloseSession, ResponseCloseSession)                \
    ROW(504, DispatchIMSendMessage, PrepareResponseIMSendMessage)         \
    ROW(505, DispatchIMSendComposingStatus, PrepareResponseIMSendMessage) \
    ROW(506, DispatchIMSendNotiStatus, PrepareResponseIMSendMessage)      \
    ROW(520, DispatchIMSendSlmMessage, ResponseSendImSlmMessage)          \
    ROW(521, DispatchSlmSendFile, PrepareResponseSlmSendFile)             \
    ROW(522, DispatchFTCancelSession, ResponseCloseSession)               \
    ROW(510, DispatchUpdateParticipants, ResponseUpdateParticipants)      \
    ROW(550, DispatchFTStartSession, ResponseStartSession)                \
    ROW(552, DispatchFTCancelSession, ResponseCloseSession)               \
    ROW(553, DispatchFTAcceptSession, ResponseStartSession)               \
    ROW(600, DispatchUpdatePani, ResponseGeneralResponse)                 \
    ROW(601, DispatchUpdateGeolocation, ResponseGeneralResponse)          \
    ROW(901, DispatchAlarmWakeUp, ResponseGeneralResponse)                \
    ROW(902, DispatchX509CertVerifyResult, ResponseGeneralResponse)       \
    ROW(560, DispatchGroupListSubscribe, ResponseGeneralResponse)         \
    ROW(561, DispatchGroupInfoSubscribe, ResponseGeneralResponse)         \
    ROW(701, DispatchPresencePublish, ResponseGeneralResponse)            \
    ROW(702, DispatchPresenceUnpublish, ResponseGeneralResponse)          \
    ROW(711, DispatchPresenceSubscribe, ResponseGeneralResponse)          \
    ROW(712, DispatchPresenceUnsubscribe, ResponseGeneralResponse)        \
    ROW(751, DispatchOptionsCapExchange, ResponseGeneralResponse)         \
    ROW(801, DispatchXdmUpdateGbaData, ResponseXdmGeneralResponse)        \
    ROW(802, DispatchXdmUpdateAkaResp, ResponseXdmGeneralResponse)        \
    ROW(803, DispatchXdmUpdateGbaKey, ResponseXdmGeneralResponse)         \
    ROW(804, DispatchXdmFetchDocument, ResponseXdmGeneralResponse)        \
    ROW(805, DispatchXdmUploadPresRules, ResponseXdmGeneralResponse)      \
    ROW(806, DispatchXdmUploadContacts, ResponseXdmGeneralResponse)       \
    ROW(807, DispatchXdmModifyContact, ResponseXdmGeneralResponse)        \
    ROW(808, DispatchXdmDeleteContact, ResponseXdmGeneralResponse)        \
    ROW(1001, DispatchIshStartSession, ResponseCshGeneralResponse)        \
    ROW(1002, DispatchIshAcceptSession, ResponseCshGeneralResponse)       \
    ROW(1003, DispatchIshStopSession, ResponseCshGeneralResponse)         \
    ROW(1101, DispatchVshStartSession, ResponseCshGeneralResponse)        \
    ROW(1102, DispatchVshAcceptSession, ResponseCshGeneralResponse)       \
    ROW(1103, DispatchVshStopSession, ResponseCshGeneralResponse)         \
    ROW(110, DispatchUpdateVceConfig, ResponseGeneralResponse)            \
    ROW(1200, DispatchSipDialogSendSip, ResponseSendSipResponse)          \
    ROW(1201, DispatchOpenSipDialog, ResponseGeneralResponse)

// {notification id, notify handler}
#define IMS_NOTIFY_ROWS(ROW)                         \
    ROW(10001, NotifyRegiStatus)                     \
    ROW(10002, NotifyRegiAuth)                       \
    ROW(20007, NotifyDnsResponse)                    \
    ROW(10013, NotifySubscribeStatus)                \
    ROW(10004, NotifyCallStatus)                     \
    ROW(10011, NotifyModifyCallCnfm)                 \
    ROW(10005, NotifyIncomingCall)                   \
    ROW(10014, NotifyModifyVideo)                    \
    ROW(10015, NotifyVideoEvent)                     \
    ROW(10016, NotifyDedicatedBearerEvent)           \
    ROW(10017, NotifyRrcConnectionEvent)             \
    ROW(10012, NotifyCdpnInfo)                       \
    ROW(10006, NotifyConfCallChanged)                \
    ROW(10007, NotifyRegInfoChanged)                 \
    ROW(10008, NotifyReferReceived)                  \
    ROW(10009, NotifyReferStatus)                    \
    ROW(10010, NotifyUpdateRouteTable)               \
    ROW(10003, NotifySipMessage)                     \
    ROW(20001, NotifyAlarmWakeUp)                    \
    ROW(20002, NotifyCancelAlarm)                    \
    ROW(20003, NotifySmsRpAck)                       \
    ROW(20004, NotifyReceiveSms)                     \
    ROW(20009, NotifyEcholocateMsg)                  \
    ROW(10018, NotifyXCapMessage)                    \
    ROW(20010, NotifyDumpMessage)                    \
    ROW(10019, NotifySsRequestGenKey)                \
    ROW(10020, NotifyCallPublishStatus)              \
    ROW(10021, NotifyDtmfEvent)                      \
    ROW(10022, NotifyRtpLossRateNoti)                \
    ROW(10023, NotifyStackUpdatePaniNoti)            \
    ROW(11001, NotifySessionStarted)                 \
    ROW(11002, NotifySessionClosed)                  \
    ROW(11004, NotifyIncomingImChat)                 \
    ROW(11005, NotifyMessageReceived)                \
    ROW(11006, NotifyImdnReceived)                   \
    ROW(11007, NotifyComposingStatusReceived)        \
    ROW(11003, NotifySessionEstablished)             \
    ROW(11008, PrepareNotifyImMessageReportReceived) \
    ROW(12001, NotifySessionStarted)                 \
    ROW(12004, NotifyFtProgress)                     \
    ROW(12005, PrepareNotifyFtIncomingSession)       \
    ROW(12003, NotifySessionEstablished)             \
    ROW(12002, NotifySessionClosed)                  \
    ROW(11009, NotifyGroupChatSubscribeStatus)       \
    ROW(11010, NotifyGroupListUpdate)                \
    ROW(11011, NotifyGroupInfoUpdate)                \
    ROW(18000, PrepareNotifySlmIncoming)             \
    ROW(18001, PrepareNotifyFtIncomingSession)       \
    ROW(18003, NotifyFtProgress)                     \
    ROW(13002, NotifyPresencePublishStatus)          \
    ROW(13003, NotifyPresencePublishStatus)          \
    ROW(13004, NotifyPresenceSubscribeStatus)        \
    ROW(13001, NotifyPresenceSubscribe)              \
    ROW(14001, NotifyXdmGbaKey)                      \
    ROW(14002, NotifyXdmAuth)                        \
    ROW(14003, NotifyXdmStoreGbaAndGenKey)           \
    ROW(14004, NotifyXdmContactDownload)             \
    ROW(14005, NotifyXdmContactDownload)             \
    ROW(15001, NotifyOptionsReceived)                \
    ROW(20005, NotifyDialogEvent)                    \
    ROW(20008, NotifyDialogSubscribeStatus)          \
    ROW(20006, NotifyX509CertVerifyRequest)          \
    ROW(16001, NotifyIshIncomingSession)             \
    ROW(16002, NotifyIshSessionEstablished)          \
    ROW(16003, NotifyIshSessionTerminated)           \
    ROW(16004, NotifyIshTransferProgress)            \
    ROW(17001, NotifyVshIncomingSession)             \
    ROW(17002, NotifyVshSessionEstablished)          \
    ROW(17003, NotifyVshSessionTerminated)           \
    ROW(19000, NotifyImConferenceInfoUpdate)

// A handler of several rows is declared once for each.
#define IMS_DECLARE_REQUEST(id, dispatch, response) \
    IMS_DISPATCH(dispatch);                         \
    IMS_RESPONSE(response);
#define IMS_DECLARE_NOTIFY(id, handler) IMS_NOTIFY(handler);
IMS_REQUEST_ROWS(IMS_DECLARE_REQUEST)
IMS_NOTIFY_ROWS(IMS_DECLARE_NOTIFY)
