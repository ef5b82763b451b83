// The provider's side of the registration family's records.
#include "velar_sim.h"

VELAR_DEFINE_RECORD_CONSTRUCTOR0(ConfigData)
VELAR_DEFINE_SETTER(ConfigData, SetXDMConfig, VELAR_ARGS_ConfigData_SetXDMConfig)
VELAR_DEFINE_SETTER(ConfigData, SetRegiConfig, VELAR_ARGS_ConfigData_SetRegiConfig)
VELAR_DEFINE_SETTER(ConfigData, SetSSConfig, VELAR_ARGS_ConfigData_SetSSConfig)
VELAR_DEFINE_SETTER(ConfigData, SetCallConfig, VELAR_ARGS_ConfigData_SetCallConfig)
VELAR_DEFINE_SETTER(ConfigData, SetSrvccConfig, VELAR_ARGS_ConfigData_SetSrvccConfig)
VELAR_DEFINE_SETTER(ConfigData, SetRcsConfig, VELAR_ARGS_ConfigData_SetRcsConfig)
VELAR_DEFINE_SETTER(ConfigData, SetFeatureConfig, VELAR_ARGS_ConfigData_SetFeatureConfig)

VELAR_DEFINE_RECORD_CONSTRUCTOR(UAProfileData, VELAR_ARGS_UAProfileData)
VELAR_DEFINE_SETTER(UAProfileData, SetTimer, VELAR_ARGS_UAProfileData_SetTimer)
VELAR_DEFINE_SETTER(UAProfileData, SetMediaConfig, VELAR_ARGS_UAProfileData_SetMediaConfig)

VELAR_DEFINE_RECORD_CONSTRUCTOR(RegiSetupData, VELAR_ARGS_RegiSetupData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(RegiAuth, VELAR_ARGS_RegiAuth)
VELAR_DEFINE_RECORD_CONSTRUCTOR(UpdatePreferredImpu, VELAR_ARGS_UpdatePreferredImpu)
VELAR_DEFINE_RECORD_CONSTRUCTOR(NetworkSuspended, VELAR_ARGS_NetworkSuspended)

VELAR_DEFINE_RECORD_CONSTRUCTOR(DnsQueryData, VELAR_ARGS_DnsQueryData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(PaniData, VELAR_ARGS_PaniData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(GeolocationData, VELAR_ARGS_GeolocationData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(DeleteTcpClientSocket, VELAR_ARGS_DeleteTcpClientSocket)

VELAR_DEFINE_RECORD_CONSTRUCTOR(SendSipData, VELAR_ARGS_SendSipData)

// Going down.
VELAR_SIM_CLASS(ConfigData);
VELAR_SIM_CLASS(UAProfileData);
VELAR_SIM_CLASS(RegiSetupData);
VELAR_SIM_CLASS(UpdatePreferredImpu);
VELAR_SIM_CLASS(NetworkSuspended);
VELAR_SIM_CLASS(DnsQueryData);
VELAR_SIM_CLASS(VceConfigData);
VELAR_SIM_CLASS(PaniData);
VELAR_SIM_CLASS(GeolocationData);
VELAR_SIM_CLASS(DeleteTcpClientSocket);
VELAR_SIM_CLASS(SendSipData);
// Both ways.
VELAR_SIM_CLASS(RegiAuth);
// Coming up.
VELAR_SIM_CLASS(RegiStatusData);
VELAR_SIM_CLASS(SubscribeStatusData);
VELAR_SIM_CLASS(RegInfoData);
VELAR_SIM_CLASS(DnsResponseData);
VELAR_SIM_CLASS(AlarmData);
VELAR_SIM_CLASS(X509VerifyData);
VELAR_SIM_CLASS(SipDialogResponseData);
VELAR_SIM_CLASS(SipMessageData);
VELAR_SIM_CLASS(DumpMessageData);
VELAR_SIM_CLASS(EcholocateData);
