// The provider's side of the call records.
#include "velar_sim.h"

VELAR_DEFINE_RECORD_CONSTRUCTOR(CallSetupData, VELAR_ARGS_CallSetupData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(CallAcceptData, VELAR_ARGS_CallAcceptData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(StartCamera, VELAR_ARGS_StartCamera)
VELAR_DEFINE_RECORD_CONSTRUCTOR0(StopCamera)
VELAR_DEFINE_RECORD_CONSTRUCTOR(ModifyCallTypeData, VELAR_ARGS_ModifyCallTypeData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(CallSendInfo, VELAR_ARGS_CallSendInfo)
VELAR_DEFINE_RECORD_CONSTRUCTOR(ConfCallSetupData, VELAR_ARGS_ConfCallSetupData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(ConfCallUpdateSession, VELAR_ARGS_ConfCallUpdateSession)

// Going down.
VELAR_SIM_CLASS(CallSetupData);
VELAR_SIM_CLASS(CallAcceptData);
VELAR_SIM_CLASS(StartCamera);
VELAR_SIM_CLASS(StopCamera);
VELAR_SIM_CLASS(ModifyCallTypeData);
VELAR_SIM_CLASS(CallSendInfo);
VELAR_SIM_CLASS(ConfCallSetupData);
VELAR_SIM_CLASS(ConfCallUpdateSession);
VELAR_SIM_CLASS(CallEndData);
VELAR_SIM_CLASS(CallRejectData);
VELAR_SIM_CLASS(CallUpdateData);
VELAR_SIM_CLASS(ReplyModifyCallType);
VELAR_SIM_CLASS(RejectModifyCallType);
VELAR_SIM_CLASS(CallSendDtmf);
VELAR_SIM_CLASS(AudioInterfaceData);
VELAR_SIM_CLASS(CallPublishData);
VELAR_SIM_CLASS(CallTransferData);
VELAR_SIM_CLASS(AcceptTransferData);
VELAR_SIM_CLASS(CancelCallTransferData);
VELAR_SIM_CLASS(CallPullingData);

// Coming up.
VELAR_SIM_CLASS(CallResponseData);
VELAR_SIM_CLASS(CallStatusData);
VELAR_SIM_CLASS(IncomingCallData);
VELAR_SIM_CLASS(ConfCallChangedData);
VELAR_SIM_CLASS(CdpnInfoData);
VELAR_SIM_CLASS(ReferReceivedData);
VELAR_SIM_CLASS(ReferStatusData);
VELAR_SIM_CLASS(RouteTableData);
VELAR_SIM_CLASS(ModifyCallData);
VELAR_SIM_CLASS(ModifyVideoData);
VELAR_SIM_CLASS(VideoEventData);
VELAR_SIM_CLASS(DedicatedBearerData);
VELAR_SIM_CLASS(RrcConnectionData);
VELAR_SIM_CLASS(DtmfEventData);
VELAR_SIM_CLASS(RtpLossRateData);
VELAR_SIM_CLASS(DialogEventData);
VELAR_SIM_CLASS(DialogSubscribeStatusData);
