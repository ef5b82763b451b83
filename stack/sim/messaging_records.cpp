// The provider's side of the messaging records: constructors, destructors,
// registration.
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
