// The one table of the classes that the daemon's handlers read.
#include "handler_classes.h"

#include <unordered_map>

namespace velar_sim {

const HandlerClass kHandlerClasses[] = {
    // Answers. 102 names its new user agent by the profile the client asked
    // for; 109 by the pair's first value; 103 by its one value. 208, 210 and
    // 211 never reach the stack, but their handler reads a general answer all
    // the same.
    {Way::kAnswer, 101, "GeneralResponseData"},
    {Way::kAnswer, 102, "GeneralResponseData", "profileId"},
    {Way::kAnswer, 103, "GeneralResponseData", "value"},
    {Way::kAnswer, 109, "GeneralResponseData", "first"},
    {Way::kAnswer, 104, "GeneralResponseData"},
    {Way::kAnswer, 105, "GeneralResponseData"},
    {Way::kAnswer, 106, "GeneralResponseData"},
    {Way::kAnswer, 107, "GeneralResponseData"},
    {Way::kAnswer, 108, "GeneralResponseData"},
    {Way::kAnswer, 1300, "GeneralResponseData"},
    {Way::kAnswer, 201, "CallResponseData"},
    {Way::kAnswer, 202, "CallResponseData"},
    {Way::kAnswer, 203, "CallResponseData"},
    {Way::kAnswer, 204, "CallResponseData"},
    {Way::kAnswer, 219, "CallResponseData"},
    {Way::kAnswer, 220, "CallResponseData"},
    {Way::kAnswer, 223, "GeneralResponseData"},
    {Way::kAnswer, 226, "GeneralResponseData"},
    {Way::kAnswer, 205, "CallResponseData"},
    {Way::kAnswer, 214, "CallResponseData"},
    {Way::kAnswer, 218, "CallResponseData"},
    {Way::kAnswer, 206, "CallResponseData"},
    {Way::kAnswer, 207, "GeneralResponseData"},
    {Way::kAnswer, 208, "GeneralResponseData"},
    {Way::kAnswer, 209, "CallResponseData"},
    {Way::kAnswer, 210, "GeneralResponseData"},
    {Way::kAnswer, 211, "GeneralResponseData"},
    {Way::kAnswer, 215, "GeneralResponseData"},
    {Way::kAnswer, 212, "GeneralResponseData"},
    {Way::kAnswer, 224, "CallResponseData"},
    {Way::kAnswer, 213, "GeneralResponseData"},
    {Way::kAnswer, 301, "SSDivInfoResult"},
    {Way::kAnswer, 302, "SSBarrInfoResult"},
    {Way::kAnswer, 303, "SSBarrInfoResult"},
    {Way::kAnswer, 304, "SSFlagInfoResult"},
    {Way::kAnswer, 305, "SSFlagInfoResult"},
    {Way::kAnswer, 310, "SSFlagInfoResult"},
    {Way::kAnswer, 306, "GeneralResponseData"},
    {Way::kAnswer, 307, "GeneralResponseData"},
    {Way::kAnswer, 308, "GeneralResponseData"},
    {Way::kAnswer, 309, "GeneralResponseData"},
    {Way::kAnswer, 311, "GeneralResponseData"},
    {Way::kAnswer, 312, "GeneralResponseData"},
    {Way::kAnswer, 313, "GeneralResponseData"},
    {Way::kAnswer, 315, "GeneralResponseData"},
    {Way::kAnswer, 316, "GeneralResponseData"},
    {Way::kAnswer, 314, "GeneralResponseData"},
    {Way::kAnswer, 401, "SmsResponseData"},
    {Way::kAnswer, 402, "GeneralResponseData"},
    {Way::kAnswer, 403, "GeneralResponseData"},
    {Way::kAnswer, 216, "CallResponseData"},
    {Way::kAnswer, 217, "CallResponseData"},
    {Way::kAnswer, 221, "CallResponseData"},
    {Way::kAnswer, 222, "CallResponseData"},
    {Way::kAnswer, 225, "GeneralResponseData"},
    {Way::kAnswer, 227, "GeneralResponseData"},
    {Way::kAnswer, 228, "GeneralResponseData"},
    {Way::kAnswer, 229, "GeneralResponseData"},
    {Way::kAnswer, 501, "StartSessionRespData"},
    {Way::kAnswer, 502, "StartSessionRespData"},
    {Way::kAnswer, 508, "CloseSessionRespData"},
    {Way::kAnswer, 503, "CloseSessionRespData"},
    {Way::kAnswer, 504, "SendImMessageRespData"},
    {Way::kAnswer, 505, "SendImMessageRespData"},
    {Way::kAnswer, 506, "SendImMessageRespData"},
    {Way::kAnswer, 520, "SendImSlmMessageRespData"},
    {Way::kAnswer, 521, "SendSlmFileRespData"},
    {Way::kAnswer, 522, "CloseSessionRespData"},
    {Way::kAnswer, 510, "UpdateParticipantsRespData"},
    {Way::kAnswer, 550, "StartSessionRespData"},
    {Way::kAnswer, 552, "CloseSessionRespData"},
    {Way::kAnswer, 553, "StartSessionRespData"},
    {Way::kAnswer, 600, "GeneralResponseData"},
    {Way::kAnswer, 601, "GeneralResponseData"},
    {Way::kAnswer, 901, "GeneralResponseData"},
    {Way::kAnswer, 902, "GeneralResponseData"},
    {Way::kAnswer, 560, "GeneralResponseData"},
    {Way::kAnswer, 561, "GeneralResponseData"},
    {Way::kAnswer, 701, "GeneralResponseData"},
    {Way::kAnswer, 702, "GeneralResponseData"},
    {Way::kAnswer, 711, "GeneralResponseData"},
    {Way::kAnswer, 712, "GeneralResponseData"},
    {Way::kAnswer, 751, "GeneralResponseData"},
    {Way::kAnswer, 801, "XdmResponseData"},
    {Way::kAnswer, 802, "XdmResponseData"},
    {Way::kAnswer, 803, "XdmResponseData"},
    {Way::kAnswer, 804, "XdmResponseData"},
    {Way::kAnswer, 805, "XdmResponseData"},
    {Way::kAnswer, 806, "XdmResponseData"},
    {Way::kAnswer, 807, "XdmResponseData"},
    {Way::kAnswer, 808, "XdmResponseData"},
    {Way::kAnswer, 1001, "CshResultData"},
    {Way::kAnswer, 1002, "CshResultData"},
    {Way::kAnswer, 1003, "CshResultData"},
    {Way::kAnswer, 1101, "CshResultData"},
    {Way::kAnswer, 1102, "CshResultData"},
    {Way::kAnswer, 1103, "CshResultData"},
    {Way::kAnswer, 110, "GeneralResponseData"},
    {Way::kAnswer, 1200, "SipDialogResponseData"},
    {Way::kAnswer, 1201, "GeneralResponseData"},
    // Notifications.
    {Way::kNotify, 10001, "RegiStatusData"},
    {Way::kNotify, 10002, "RegiAuth"},
    {Way::kNotify, 20007, "DnsResponseData"},
    {Way::kNotify, 10013, "SubscribeStatusData"},
    {Way::kNotify, 10004, "CallStatusData"},
    {Way::kNotify, 10011, "ModifyCallData"},
    {Way::kNotify, 10005, "IncomingCallData"},
    {Way::kNotify, 10014, "ModifyVideoData"},
    {Way::kNotify, 10015, "VideoEventData"},
    {Way::kNotify, 10016, "DedicatedBearerData"},
    {Way::kNotify, 10017, "RrcConnectionData"},
    {Way::kNotify, 10012, "CdpnInfoData"},
    {Way::kNotify, 10006, "ConfCallChangedData"},
    {Way::kNotify, 10007, "RegInfoData"},
    {Way::kNotify, 10008, "ReferReceivedData"},
    {Way::kNotify, 10009, "ReferStatusData"},
    {Way::kNotify, 10010, "RouteTableData"},
    {Way::kNotify, 10003, "SipMessageData"},
    {Way::kNotify, 20001, "AlarmData"},
    {Way::kNotify, 20002, "PrimitiveData<int>"},
    {Way::kNotify, 20003, "SmsRpAckData"},
    {Way::kNotify, 20004, "ReceiveSmsData"},
    {Way::kNotify, 20009, "EcholocateData"},
    {Way::kNotify, 10018, "XCapMessageData"},
    {Way::kNotify, 20010, "DumpMessageData"},
    {Way::kNotify, 10019, "SSGenKeyData"},
    {Way::kNotify, 10020, "PrimitiveData<int>"},
    {Way::kNotify, 10021, "DtmfEventData"},
    {Way::kNotify, 10022, "RtpLossRateData"},
    {Way::kNotify, 10023, "RegiStatusData"},
    {Way::kNotify, 11001, "SessionStartedData"},
    {Way::kNotify, 11002, "SessionClosedData"},
    {Way::kNotify, 11004, "ImSessionInvitedData"},
    {Way::kNotify, 11005, "ImMessageReceivedData"},
    {Way::kNotify, 11006, "ImdnReceivedData"},
    {Way::kNotify, 11007, "ImComposingReceivedData"},
    {Way::kNotify, 11003, "SessionEstablishedData"},
    {Way::kNotify, 11008, "ImMessageReportData"},
    {Way::kNotify, 12001, "SessionStartedData"},
    {Way::kNotify, 12004, "FtProgressData"},
    {Way::kNotify, 12005, "FtIncomingData"},
    {Way::kNotify, 12003, "SessionEstablishedData"},
    {Way::kNotify, 12002, "SessionClosedData"},
    {Way::kNotify, 11009, "GroupSubscribeStatusData"},
    {Way::kNotify, 11010, "GroupListUpdateData"},
    {Way::kNotify, 11011, "GroupInfoUpdateData"},
    {Way::kNotify, 18000, "SlmIncomingData"},
    {Way::kNotify, 18001, "FtIncomingData"},
    {Way::kNotify, 18003, "FtProgressData"},
    {Way::kNotify, 13002, "PresencePublishStatusData"},
    {Way::kNotify, 13003, "PresencePublishStatusData"},
    {Way::kNotify, 13004, "PresenceSubscribeStatusData"},
    {Way::kNotify, 13001, "PresenceNotifyData"},
    {Way::kNotify, 14001, "XdmGbaRequestData"},
    {Way::kNotify, 14002, "XdmAuthData"},
    {Way::kNotify, 14003, "XdmStoreGbaKeyData"},
    {Way::kNotify, 14004, "XdmContactListData"},
    {Way::kNotify, 14005, "XdmContactListData"},
    {Way::kNotify, 15001, "OptionsReceivedData"},
    {Way::kNotify, 20005, "DialogEventData"},
    {Way::kNotify, 20008, "DialogSubscribeStatusData"},
    {Way::kNotify, 20006, "X509VerifyData"},
    {Way::kNotify, 16001, "IshIncomingData"},
    {Way::kNotify, 16002, "CshResultData"},
    {Way::kNotify, 16003, "CshResultData"},
    {Way::kNotify, 16004, "IshProgressData"},
    {Way::kNotify, 17001, "VshIncomingData"},
    {Way::kNotify, 17002, "CshResultData"},
    {Way::kNotify, 17003, "CshResultData"},
    {Way::kNotify, 19000, "ImConferenceInfoData"},
};
const size_t kHandlerClassCount = sizeof(kHandlerClasses) / sizeof(kHandlerClasses[0]);

namespace {

struct Index {
    std::unordered_map<int, const HandlerClass*> byWay[2];
    Index() {
        for (const HandlerClass& row : kHandlerClasses)
            byWay[static_cast<int>(row.way)].emplace(row.id, &row);
    }
};

}  // namespace

const HandlerClass* handlerClass(Way way, int id) {
    static const Index* index = new Index;
    const auto& rows = index->byWay[static_cast<int>(way)];
    auto it = rows.find(id);
    return it == rows.end() ? nullptr : it->second;
}

const char* answerClass(int requestId) {
    const HandlerClass* row = handlerClass(Way::kAnswer, requestId);
    return row == nullptr ? nullptr : row->className;
}

const char* notifyClass(int notifyId) {
    const HandlerClass* row = handlerClass(Way::kNotify, notifyId);
    return row == nullptr ? nullptr : row->className;
}

}  // namespace velar_sim
