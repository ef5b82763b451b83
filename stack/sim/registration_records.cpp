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

// A new user agent is named by its profile: the handle of the answer to 102
// is the profileId the client asked for.
VELAR_SIM_AUTO(102, "GeneralResponseData", "profileId");
// Request 109 names its user agent by the pair's first value.
VELAR_SIM_AUTO(109, "GeneralResponseData", "first");
VELAR_SIM_AUTO(1200, "SipDialogResponseData");

// The class each notification id of this family comes up with.
VELAR_SIM_NOTIFY(10001, "RegiStatusData");
VELAR_SIM_NOTIFY(10002, "RegiAuth");
VELAR_SIM_NOTIFY(20007, "DnsResponseData");
VELAR_SIM_NOTIFY(10013, "SubscribeStatusData");
VELAR_SIM_NOTIFY(10007, "RegInfoData");
VELAR_SIM_NOTIFY(10003, "SipMessageData");
VELAR_SIM_NOTIFY(20001, "AlarmData");
VELAR_SIM_NOTIFY(20009, "EcholocateData");
VELAR_SIM_NOTIFY(20010, "DumpMessageData");
VELAR_SIM_NOTIFY(10023, "RegiStatusData");
VELAR_SIM_NOTIFY(20006, "X509VerifyData");
