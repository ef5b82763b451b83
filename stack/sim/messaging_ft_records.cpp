// The provider's side of the file transfer, standalone and group chat
// records.
#include "velar_sim.h"

VELAR_DEFINE_RECORD_CONSTRUCTOR(FtStartSessionData, VELAR_ARGS_FtStartSessionData)

VELAR_SIM_CLASS(FtStartSessionData);
VELAR_SIM_CLASS(RequestAcceptFtSession);
VELAR_SIM_CLASS(CancelFtSessionData);
VELAR_SIM_CLASS(FtProgressData);
VELAR_SIM_CLASS(FtIncomingData);
VELAR_SIM_CLASS(RequestSendImSlmMessage);
VELAR_SIM_CLASS(RequestSlmSendFile);
VELAR_SIM_CLASS(SendImSlmMessageRespData);
VELAR_SIM_CLASS(SendSlmFileRespData);
VELAR_SIM_CLASS(SlmIncomingData);
VELAR_SIM_CLASS(GroupListSubscribeData);
VELAR_SIM_CLASS(GroupInfoSubscribeData);
VELAR_SIM_CLASS(GroupSubscribeStatusData);
VELAR_SIM_CLASS(GroupListUpdateData);
VELAR_SIM_CLASS(GroupInfoUpdateData);

// Starting, accepting and cancelling a transfer are answered as the IM
// session requests are.
VELAR_SIM_AUTO(550, "StartSessionRespData");
VELAR_SIM_AUTO(553, "StartSessionRespData");
VELAR_SIM_AUTO(522, "CloseSessionRespData");
VELAR_SIM_AUTO(552, "CloseSessionRespData");
VELAR_SIM_AUTO(520, "SendImSlmMessageRespData");
VELAR_SIM_AUTO(521, "SendSlmFileRespData");

// The class each notification id of this family comes up with.
VELAR_SIM_NOTIFY(12001, "SessionStartedData");
VELAR_SIM_NOTIFY(12004, "FtProgressData");
VELAR_SIM_NOTIFY(12005, "FtIncomingData");
VELAR_SIM_NOTIFY(12003, "SessionEstablishedData");
VELAR_SIM_NOTIFY(12002, "SessionClosedData");
VELAR_SIM_NOTIFY(18000, "SlmIncomingData");
VELAR_SIM_NOTIFY(18001, "FtIncomingData");
VELAR_SIM_NOTIFY(18003, "FtProgressData");
