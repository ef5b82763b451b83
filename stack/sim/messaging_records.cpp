// The provider's side of the messaging records: constructors, destructors,
// registration and the answers of auto mode.
#include "velar_sim.h"

VELAR_DEFINE_RECORD_CONSTRUCTOR(ImStartSessionData, VELAR_ARGS_ImStartSessionData)
ImStartSessionData::~ImStartSessionData() {
    delete session;
}

VELAR_DEFINE_RECORD_CONSTRUCTOR(RequestAcceptImSession, VELAR_ARGS_RequestAcceptImSession)

// Down.
VELAR_SIM_CLASS(ImStartSessionData);
VELAR_SIM_CLASS(RequestAcceptImSession);
VELAR_SIM_CLASS(CloseImSessionData);
VELAR_SIM_CLASS(RequestRejectImSession);
VELAR_SIM_CLASS(RequestSendImMessage);
VELAR_SIM_CLASS(RequestSendImComposingStatus);
VELAR_SIM_CLASS(RequestSendImNotiStatus);
VELAR_SIM_CLASS(RequestUpdateParticipants);

// Up: answers.
VELAR_SIM_CLASS(StartSessionRespData);
VELAR_SIM_CLASS(CloseSessionRespData);
VELAR_SIM_CLASS(SendImMessageRespData);
VELAR_SIM_CLASS(UpdateParticipantsRespData);

// Up: notifications.
VELAR_SIM_CLASS(SessionStartedData);
VELAR_SIM_CLASS(SessionClosedData);
VELAR_SIM_CLASS(SessionEstablishedData);
VELAR_SIM_CLASS(ImSessionInvitedData);
VELAR_SIM_CLASS(ImMessageReceivedData);
VELAR_SIM_CLASS(ImdnReceivedData);
VELAR_SIM_CLASS(ImComposingReceivedData);
VELAR_SIM_CLASS(ImMessageReportData);
VELAR_SIM_CLASS(ImConferenceInfoData);

VELAR_SIM_AUTO(501, "StartSessionRespData");
VELAR_SIM_AUTO(502, "StartSessionRespData");
VELAR_SIM_AUTO(503, "CloseSessionRespData");
VELAR_SIM_AUTO(508, "CloseSessionRespData");
VELAR_SIM_AUTO(504, "SendImMessageRespData");
VELAR_SIM_AUTO(505, "SendImMessageRespData");
VELAR_SIM_AUTO(506, "SendImMessageRespData");
VELAR_SIM_AUTO(510, "UpdateParticipantsRespData");

// The class each notification id of this family comes up with.
VELAR_SIM_NOTIFY(11001, "SessionStartedData");
VELAR_SIM_NOTIFY(11002, "SessionClosedData");
VELAR_SIM_NOTIFY(11004, "ImSessionInvitedData");
VELAR_SIM_NOTIFY(11005, "ImMessageReceivedData");
VELAR_SIM_NOTIFY(11006, "ImdnReceivedData");
VELAR_SIM_NOTIFY(11007, "ImComposingReceivedData");
VELAR_SIM_NOTIFY(11003, "SessionEstablishedData");
VELAR_SIM_NOTIFY(11008, "ImMessageReportData");
VELAR_SIM_NOTIFY(11009, "GroupSubscribeStatusData");
VELAR_SIM_NOTIFY(11010, "GroupListUpdateData");
VELAR_SIM_NOTIFY(11011, "GroupInfoUpdateData");
VELAR_SIM_NOTIFY(19000, "ImConferenceInfoData");
