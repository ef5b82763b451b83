// The provider's side of the call records.
#include "velar_sim.h"

// The library keeps a port of its own until the framework names one; it is
// not 0 here, so that a 0 written over it would show.
CallSetupData::CallSetupData(int recordId,
                             VELAR_PP_LIST(VELAR_M_PARAM_, ~, VELAR_ARGS_CallSetupData))
    : ImsData(recordId), VELAR_PP_LIST(VELAR_M_INIT_, ~, VELAR_ARGS_CallSetupData) {
    mEcscfPort = 5060;
}
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

// The requests answered at call level; the others get GeneralResponseData.
VELAR_SIM_AUTO(201, "CallResponseData");
VELAR_SIM_AUTO(202, "CallResponseData");
VELAR_SIM_AUTO(203, "CallResponseData");
VELAR_SIM_AUTO(204, "CallResponseData");
VELAR_SIM_AUTO(205, "CallResponseData");
VELAR_SIM_AUTO(206, "CallResponseData");
VELAR_SIM_AUTO(209, "CallResponseData");
VELAR_SIM_AUTO(214, "CallResponseData");
VELAR_SIM_AUTO(216, "CallResponseData");
VELAR_SIM_AUTO(217, "CallResponseData");
VELAR_SIM_AUTO(218, "CallResponseData");
VELAR_SIM_AUTO(219, "CallResponseData");
VELAR_SIM_AUTO(220, "CallResponseData");
VELAR_SIM_AUTO(221, "CallResponseData");
VELAR_SIM_AUTO(222, "CallResponseData");
VELAR_SIM_AUTO(224, "CallResponseData");

// The class each notification id of this family comes up with.
VELAR_SIM_NOTIFY(10004, "CallStatusData");
VELAR_SIM_NOTIFY(10011, "ModifyCallData");
VELAR_SIM_NOTIFY(10005, "IncomingCallData");
VELAR_SIM_NOTIFY(10014, "ModifyVideoData");
VELAR_SIM_NOTIFY(10015, "VideoEventData");
VELAR_SIM_NOTIFY(10016, "DedicatedBearerData");
VELAR_SIM_NOTIFY(10017, "RrcConnectionData");
VELAR_SIM_NOTIFY(10012, "CdpnInfoData");
VELAR_SIM_NOTIFY(10006, "ConfCallChangedData");
VELAR_SIM_NOTIFY(10008, "ReferReceivedData");
VELAR_SIM_NOTIFY(10009, "ReferStatusData");
VELAR_SIM_NOTIFY(10010, "RouteTableData");
VELAR_SIM_NOTIFY(10020, "PrimitiveData<int>");
VELAR_SIM_NOTIFY(10021, "DtmfEventData");
VELAR_SIM_NOTIFY(10022, "RtpLossRateData");
VELAR_SIM_NOTIFY(20005, "DialogEventData");
VELAR_SIM_NOTIFY(20008, "DialogSubscribeStatusData");
