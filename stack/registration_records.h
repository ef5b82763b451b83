// Records of the registration family: common configuration, the user agent,
// registration, the platform services the stack asks for, and the SIP dialog.
#pragma once

#include <list>
#include <map>
#include <string>
#include <vector>

#include "shared_records.h"

// ---------------------------------------------------------------------------
// Common configuration (request 101). Made empty; one setter per section that
// the client sent.

#define VELAR_ARGS_ConfigData_SetXDMConfig                                                 \
    (enabled, bool), (httpUserName, const std::string&), (httpPasswd, const std::string&), \
        (xcapRootUri, const std::string&), (authProxyServer, const std::string&),          \
        (authProxyPort, int), (bsfServer, const std::string&), (bsfServerPort, int),       \
        (userAgent, const std::string&), (mno, int), (impu, const std::string&),           \
        (impi, const std::string&), (enableGba, bool)
#define VELAR_ARGS_ConfigData_SetRegiConfig \
    (imei, const std::string&), (supported, const std::string&), (privacy, const std::string&)
#define VELAR_ARGS_ConfigData_SetSSConfig                                                          \
    (callWaiting, bool), (supportTls, bool), (ssMode, bool), (ssCbMode, bool), (mediaType, int),   \
        (ipVersion, int), (supportMultidns, bool), (supportRetry, bool), (supportCpElement, bool), \
        (supportSsElement, bool), (supportSimservsRetry, bool),                                    \
        (ruleId, const std::map<std::string, std::string>&)
#define VELAR_ARGS_ConfigData_SetCallConfig (ttySessionRequired, bool)
#define VELAR_ARGS_ConfigData_SetSrvccConfig (version, int)
#define VELAR_ARGS_ConfigData_SetRcsConfig (rcsConfig, const ConfigData::RcsConfig&)
#define VELAR_ARGS_ConfigData_SetFeatureConfig \
    (trellFeature, const std::map<std::string, std::string>&)

#define VELAR_FIELDS_ConfigData_RcsConfig                                                    \
    (rcsFtChunkSize, unsigned int), (rcsIshChunkSize, unsigned int), (confUri, std::string), \
        (isMsrpCema, bool), (downloadsPath, std::string), (isConfSubscribeEnabled, bool),    \
        (isClosedGroupChat, bool), (exploderUri, std::string), (pagerModeSizeLimit, unsigned int)
#define VELAR_CALLS_ConfigData                                                             \
    SetXDMConfig, SetRegiConfig, SetSSConfig, SetCallConfig, SetSrvccConfig, SetRcsConfig, \
        SetFeatureConfig
class ConfigData : public ImsData {
public:
    // Filled by the daemon and handed to SetRcsConfig.
    class RcsConfig {
    public:
        VELAR_FIELDS(VELAR_FIELDS_ConfigData_RcsConfig)
    };

    VELAR_RECORD_CONSTRUCTOR0(ConfigData)
    VELAR_SETTER(SetXDMConfig, VELAR_ARGS_ConfigData_SetXDMConfig)
    VELAR_SETTER(SetRegiConfig, VELAR_ARGS_ConfigData_SetRegiConfig)
    VELAR_SETTER(SetSSConfig, VELAR_ARGS_ConfigData_SetSSConfig)
    VELAR_SETTER(SetCallConfig, VELAR_ARGS_ConfigData_SetCallConfig)
    VELAR_SETTER(SetSrvccConfig, VELAR_ARGS_ConfigData_SetSrvccConfig)
    VELAR_SETTER(SetRcsConfig, VELAR_ARGS_ConfigData_SetRcsConfig)
    VELAR_SETTER(SetFeatureConfig, VELAR_ARGS_ConfigData_SetFeatureConfig)
    VELAR_CALLS(VELAR_CALLS_ConfigData)
};

// ---------------------------------------------------------------------------
// The user agent (request 102): the long constructor, then the timers, then
// the media settings when the client sent them.

#define VELAR_ARGS_UAProfileData                                                                   \
    (profileId, int), (interface, const std::string&), (netId, int), (pdn, const std::string&),    \
        (impu, const std::string&), (impi, const std::string&), (password, const std::string&),    \
        (domain, const std::string&), (isSipOutbound, bool), (qParam, int),                        \
        (transType, const std::string&), (isEmergencySupport, bool), (isIpsec, bool),              \
        (isSipCompactHeader, bool), (encrAlg, const std::string&), (authAlg, const std::string&),  \
        (registerAlgo, const std::string&), (prefId, const std::string&),                          \
        (remoteUriType, const std::string&), (isPrecondEnabled, bool),                             \
        (isPrecondInitialSendrecv, bool), (sessionExpires, int), (minse, int),                     \
        (sessionRefresher, std::string), (mno, unsigned int), (userAgent, std::string),            \
        (displayName, const std::string&), (contactDisplayName, const std::string&),               \
        (instanceId, const std::string&), (realm, const std::string&),                             \
        (imMsgTech, const std::string&), (isSoftphoneEnabled, bool), (mssSize, int),               \
        (ringbackTimer, int), (ringingTimer, int), (sipMobility, int), (isEnableGruu, bool),       \
        (audioEngineType, int), (curPani, const std::string&), (isVceConfigEnabled, bool),         \
        (isGcfConfigEnabled, bool), (isNsdsServiceEnabled, bool), (wifiPreConditionEnabled, bool), \
        (isMsrpBearerUsed, bool), (subscriberTimer, int), (isSubscribeReg, bool),                  \
        (useKeepAlive, bool), (msrpTransType, const std::string&), (hostname, const std::string&), \
        (serviceList, const std::vector<std::string>&),                                            \
        (featureTagList, const std::vector<unsigned int>&)
#define VELAR_ARGS_UAProfileData_SetTimer                                       \
    (timer1, unsigned int), (timer2, unsigned int), (timer4, unsigned int),     \
        (timerA, unsigned int), (timerB, unsigned int), (timerC, unsigned int), \
        (timerD, unsigned int), (timerE, unsigned int), (timerF, unsigned int), \
        (timerG, unsigned int), (timerH, unsigned int), (timerI, unsigned int), \
        (timerJ, unsigned int), (timerK, unsigned int), (timerTs, unsigned int)
#define VELAR_ARGS_UAProfileData_SetMediaConfig                                                    \
    (audioPort, unsigned int), (isAmrOctecAlign, bool), (audioCodec, std::string),                 \
        (dtmfMode, unsigned int), (audioAs, std::string), (audioRs, std::string),                  \
        (audioRr, std::string), (amrModeChangeCapability, std::string), (amrMaxRed, std::string),  \
        (amrMode, std::string), (amrWbMode, std::string), (amrPayload, unsigned int),              \
        (amrbePayload, unsigned int), (amrWbPayload, unsigned int),                                \
        (amrbeWbPayload, unsigned int), (amrOpenPayload, unsigned int),                            \
        (dtmfPayload, unsigned int), (dtmfWbPayload, unsigned int), (pTime, unsigned int),         \
        (maxTime, unsigned int), (videoCodec, std::string), (videoPort, unsigned int),             \
        (frameRate, unsigned int), (displayFormat, std::string), (packetizationMode, std::string), \
        (h264VgaPayload, unsigned int), (h264VgalPayload, unsigned int),                           \
        (h264QvgaPayload, unsigned int), (h264QvgalPayload, unsigned int),                         \
        (h264CifPayload, unsigned int), (h264CiflPayload, unsigned int),                           \
        (h263QcifPayload, unsigned int), (videoAs, unsigned int), (videoRs, unsigned int),         \
        (videoRr, unsigned int), (audioAvpf, bool), (audioSrtp, bool), (videoAvpf, bool),          \
        (videoSrtp, bool), (videoCapabilities, bool), (enableScr, bool), (rtpTimeout, int),        \
        (rtcpTimeout, int), (audioRtcpXr, bool), (videoRtcpXr, bool), (enableEvsCodec, bool),      \
        (evsDiscontinuousTransmission, std::string), (evsDtxRecv, std::string),                    \
        (evsHeaderFull, std::string), (evsModeSwitch, std::string), (evsChannelSend, std::string), \
        (evsChannelRecv, std::string), (evsChannelAwareReceive, std::string),                      \
        (evsCodecModeRequest, std::string), (evsBitRateSend, std::string),                         \
        (evsBitRateReceive, std::string), (evsBandwidthSend, std::string),                         \
        (evsBandwidthReceive, std::string), (evsPayload, int), (evsDefaultBandwidth, std::string), \
        (evsDefaultBitrate, std::string), (enableRtcpOnActiveCall, bool), (enableAvSync, bool)

#define VELAR_CALLS_UAProfileData SetTimer, SetMediaConfig
class UAProfileData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(UAProfileData, VELAR_ARGS_UAProfileData)
    VELAR_SETTER(SetTimer, VELAR_ARGS_UAProfileData_SetTimer)
    VELAR_SETTER(SetMediaConfig, VELAR_ARGS_UAProfileData_SetMediaConfig)
    VELAR_CALLS(VELAR_CALLS_UAProfileData)
};

// ---------------------------------------------------------------------------
// Registration (requests 104 to 109 and their notifications).

#define VELAR_ARGS_RegiSetupData                                                      \
    (handle, int), (pcscfAddrList, const std::list<std::string>&), (pcscfPort, int),  \
        (serviceList, const std::vector<std::string>&), (regExp, int),                \
        (impuList, const std::vector<std::string>&),                                  \
        (featureTagList, const std::vector<unsigned int>&), (isExplicitDeregi, bool), \
        (thirdpartyFeatureList, const std::vector<std::string>&), (accessToken, std::string)
class RegiSetupData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(RegiSetupData, VELAR_ARGS_RegiSetupData)
};

// The AKA exchange, in both directions: the stack hands the challenge up as
// notification 10002 and the client's response goes down as request 105.
#define VELAR_ARGS_RegiAuth                                                                 \
    (recvMng, RegiAuth::AKA_RESP_RECV_MANAGER), (handle, int), (nonce, const std::string&), \
        (akaResp, const std::string&)
class RegiAuth : public ImsData {
public:
    // The stack's own numbering; the client's value is passed as it stands.
    enum AKA_RESP_RECV_MANAGER : int {};

    RegiAuth() : recvMng(), handle() {}
    VELAR_RECORD_CONSTRUCTOR(RegiAuth, VELAR_ARGS_RegiAuth)
};

#define VELAR_ARGS_UpdatePreferredImpu (handle, int), (impu, const std::string&)
class UpdatePreferredImpu : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(UpdatePreferredImpu, VELAR_ARGS_UpdatePreferredImpu)
};

#define VELAR_ARGS_NetworkSuspended (handle, int), (state, bool)
class NetworkSuspended : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(NetworkSuspended, VELAR_ARGS_NetworkSuspended)
};

// Notifications 10001 and 10023.
#define VELAR_FIELDS_RegiStatusData                                                       \
    (handle, int), (serviceList, std::vector<std::string>), (regiType, int),              \
        (impuList, std::vector<std::string>), (respCode, int), (respReason, std::string), \
        (retryAfter, int), (ecmpMode, int)
class RegiStatusData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_RegiStatusData)
};

// Notification 10013.
#define VELAR_FIELDS_SubscribeStatusData \
    (handle, unsigned int), (respCode, unsigned int), (respReason, std::string)
class SubscribeStatusData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SubscribeStatusData)
};

// One contact of the reg-info document. The stack keeps more in it than the
// daemon reads; only what is read is declared.
#define VELAR_FIELDS_RegInfoContact \
    (uri, std::string), (displayName, std::string), (state, int), (event, int)
class RegInfoContact {
public:
    VELAR_FIELDS(VELAR_FIELDS_RegInfoContact)
};

// Notification 10007.
#define VELAR_FIELDS_RegInfoData (handle, unsigned int), (contacts, std::vector<RegInfoContact>)
class RegInfoData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_RegInfoData)
};

// ---------------------------------------------------------------------------
// System services (requests 106, 110, 600, 601, 901, 902, 1300 and
// notifications 20001, 20002, 20006, 20007).

#define VELAR_ARGS_DnsQueryData                                                            \
    (handle, const int&), (interface, const std::string&), (hostname, const std::string&), \
        (type, const std::string&), (transport, const std::string&), (family, const std::string&)
#define VELAR_MEMBERS_DnsQueryData (dnsServers, std::list<std::string>)
class DnsQueryData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(DnsQueryData, VELAR_ARGS_DnsQueryData)
    VELAR_MEMBERS(VELAR_MEMBERS_DnsQueryData)
};

// Built by the daemon itself.
#define VELAR_FIELDS_VceConfigData (handle, int), (vceConfig, bool)
class VceConfigData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_VceConfigData)
};

#define VELAR_ARGS_PaniData \
    (handle, int), (pani, const std::string&), (lastPani, const std::string&)
class PaniData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(PaniData, VELAR_ARGS_PaniData)
};

#define VELAR_ARGS_GeolocationData                                                             \
    (handle, int), (latitude, std::string), (longitude, std::string), (altitude, std::string), \
        (accuracy, std::string), (providertype, std::string), (retentionexpires, std::string), \
        (srsname, std::string), (radiusuom, std::string), (os, std::string),                   \
        (deviceid, std::string), (country, std::string), (a1, std::string), (a3, std::string), \
        (a6, std::string), (hno, std::string), (pc, std::string), (locationtime, std::string)
class GeolocationData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(GeolocationData, VELAR_ARGS_GeolocationData)
};

#define VELAR_ARGS_DeleteTcpClientSocket (handle, int)
class DeleteTcpClientSocket : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(DeleteTcpClientSocket, VELAR_ARGS_DeleteTcpClientSocket)
};

// Notification 20007.
#define VELAR_FIELDS_DnsResponseData                                                     \
    (hostname, std::string), (ipAddrList, std::list<std::string>), (port, unsigned int), \
        (handle, unsigned int)
class DnsResponseData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_DnsResponseData)
};

// Notification 20001. Its own `id` (the alarm's) hides the record id of
// ImsData, which stays reachable through GetId().
#define VELAR_FIELDS_AlarmData (id, unsigned int), (delay, unsigned int)
class AlarmData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_AlarmData)
};

// Notification 20006: the chain to verify, leaf first. Each certificate is
// held as its bytes (a data pointer and a length) and owned by the record.
#define VELAR_FIELDS_X509VerifyData (certificates, std::vector<std::string*>)
class X509VerifyData : public ImsData {
public:
    X509VerifyData() = default;
    X509VerifyData(const X509VerifyData&) = delete;
    X509VerifyData& operator=(const X509VerifyData&) = delete;
    ~X509VerifyData() override {
        for (std::string* certificate : certificates) delete certificate;
    }
    VELAR_FIELDS(VELAR_FIELDS_X509VerifyData)
};

// ---------------------------------------------------------------------------
// SIP dialog and diagnostics (request 1200 and notifications 10003, 20009,
// 20010).

#define VELAR_ARGS_SendSipData (handle, int), (sipMessage, const std::string&)
class SendSipData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(SendSipData, VELAR_ARGS_SendSipData)
};

// The answer to request 1200.
#define VELAR_FIELDS_SipDialogResponseData \
    (handle, unsigned int), (sipmessage, std::string), (success, bool)
class SipDialogResponseData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SipDialogResponseData)
};

// Notification 10003.
#define VELAR_FIELDS_SipMessageData \
    (handle, unsigned int), (direction, int), (origin, int), (sipMessage, std::string)
class SipMessageData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_SipMessageData)
};

// Notification 20010.
#define VELAR_FIELDS_DumpMessageData (tag, std::string), (value, std::string), (secure, bool)
class DumpMessageData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_DumpMessageData)
};

// Notification 20009: a signalling report (msgType 0) or an RTP report (any
// other msgType) in one record. The RTP report's `id` hides the record id of
// ImsData, which stays reachable through GetId().
#define VELAR_FIELDS_EcholocateData                                                            \
    (handle, unsigned int), (msgType, int), (origin, std::string), (callid, std::string),      \
        (cseq, std::string), (line1, std::string), (from, std::string), (to, std::string),     \
        (reason, std::string), (contents, std::string), (id, std::string), (dir, std::string), \
        (lossrate, std::string), (delay, std::string), (jitter, std::string),                  \
        (measuredperiod, std::string), (nwstate, std::string)
class EcholocateData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_EcholocateData)
};
