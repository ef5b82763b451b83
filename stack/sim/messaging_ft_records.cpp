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
