// The simulator's view of the stack's records: for each class, visitors over
// what its declaration lists (stack/velar_record.h), from which the JSON codec
// derives the record's JSON form and the controller reads and writes members
// by name.
//
// Each aspect is a template specialised per class with
//
//   template <class V> static void visit(Class& x, V& v);
//
// which calls v(name, member) for each listed member in declaration order
// (Calls: v.call(setter, its stored arguments) for each logged call). A class
// without a specialisation has nothing of that aspect, and the codec refuses
// to compile a class that has none at all: a class the lists below forget
// would otherwise show as an empty object.
//
// One line per class and aspect, taking the class's named list:
//
//   VELAR_SHAPE_FIELDS(Class)               VELAR_FIELDS_<Class>
//   VELAR_SHAPE_FIELDS_EXTEND(Class, Base)  Base's fields, then VELAR_FIELDS_<Class>
//   VELAR_SHAPE_MEMBERS(Class)              VELAR_MEMBERS_<Class>
//   VELAR_SHAPE_ARGS(Class)                 VELAR_ARGS_<Class>
//   VELAR_SHAPE_NO_ARGS(Class)              a constructor of the record id alone
//   VELAR_SHAPE_SETTER(Class, Setter)       VELAR_ARGS_<Class>_<Setter>
//   VELAR_SHAPE_CALLS(Class)                the setters VELAR_CALLS_<Class> names
//   VELAR_SHAPE_NESTED_FIELDS(Outer, Inner), VELAR_SHAPE_NESTED_ARGS(Outer, Inner)
//                                           Outer::Inner, from the list
//                                           VELAR_..._<Outer>_<Inner>
//
// The lines are used inside namespace velar_sim::shape. Classes whose
// declaration is written out by hand get their visitors written out here too.
#pragma once

#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "../velar.h"

namespace velar_sim {
namespace shape {

template <class T>
struct Fields {};  // members read or written directly
template <class T>
struct Args {};  // the constructor's (or a setter's) arguments, as stored
template <class T>
struct Members {};  // public members written after construction
template <class T>
struct Calls {};  // the setters called, in call order

}  // namespace shape
}  // namespace velar_sim

#define VELAR_STR(x) VELAR_STR_I(x)
#define VELAR_STR_I(x) #x
#define VELAR_SHAPE_VISIT_(c, pair) VELAR_SHAPE_VISIT_NAME_(c, VELAR_PAIR_NAME pair)
#define VELAR_SHAPE_VISIT_NAME_(c, name) v(VELAR_STR(name), x.name);
#define VELAR_SHAPE_CALL_(entry, Setter) \
    if (std::strcmp(entry, #Setter) == 0) v.call(#Setter, x.velar_##Setter);

// The indirection expands the list's name into its pairs before they are
// counted. First is a statement visited before the list (a base's fields);
// Visit visits one entry of the list.
#define VELAR_SHAPE_(Aspect, Type, First, List) \
    VELAR_SHAPE_I_(Aspect, Type, First, VELAR_SHAPE_VISIT_, List)
#define VELAR_SHAPE_I_(Aspect, Type, First, Visit, ...) \
    template <>                                         \
    struct Aspect<Type> {                               \
        template <class V>                              \
        static void visit(Type& x, V& v) {              \
            First VELAR_PP_EACH(Visit, ~, __VA_ARGS__)  \
        }                                               \
    };

#define VELAR_SHAPE_FIELDS(Class) VELAR_SHAPE_(Fields, Class, , VELAR_FIELDS_##Class)
#define VELAR_SHAPE_FIELDS_EXTEND(Class, Base) \
    VELAR_SHAPE_(Fields, Class, Fields<Base>::visit(x, v);, VELAR_FIELDS_##Class)
#define VELAR_SHAPE_MEMBERS(Class) VELAR_SHAPE_(Members, Class, , VELAR_MEMBERS_##Class)
#define VELAR_SHAPE_ARGS(Class) VELAR_SHAPE_(Args, Class, , VELAR_ARGS_##Class)
#define VELAR_SHAPE_SETTER(Class, Setter) \
    VELAR_SHAPE_(Args, Class::Setter##_args, , VELAR_ARGS_##Class##_##Setter)
#define VELAR_SHAPE_NESTED_FIELDS(Outer, Inner) \
    VELAR_SHAPE_(Fields, Outer::Inner, , VELAR_FIELDS_##Outer##_##Inner)
#define VELAR_SHAPE_NESTED_ARGS(Outer, Inner) \
    VELAR_SHAPE_(Args, Outer::Inner, , VELAR_ARGS_##Outer##_##Inner)

// For a class whose members are written out by hand rather than from a list:
// the names of the members to visit.
#define VELAR_SHAPE_OF(Aspect, Class, ...) \
    VELAR_SHAPE_I_(Aspect, Class, , VELAR_SHAPE_VISIT_NAME_, __VA_ARGS__)

#define VELAR_SHAPE_NO_ARGS(Class)       \
    template <>                          \
    struct Args<Class> {                 \
        template <class V>               \
        static void visit(Class&, V&) {} \
    };

#define VELAR_SHAPE_CALLS(Class) VELAR_SHAPE_CALLS_(Class, VELAR_CALLS_##Class)
#define VELAR_SHAPE_CALLS_(Class, List) VELAR_SHAPE_CALLS_I_(Class, List)
#define VELAR_SHAPE_CALLS_I_(Class, ...)                             \
    template <>                                                      \
    struct Calls<Class> {                                            \
        template <class V>                                           \
        static void visit(Class& x, V& v) {                          \
            for (const char* entry : x.velarCallLog) {               \
                VELAR_PP_EACH(VELAR_SHAPE_CALL_, entry, __VA_ARGS__) \
            }                                                        \
        }                                                            \
    };

namespace velar_sim {
namespace shape {

// ---------------------------------------------------------------------------
// Shared records. A one-value request goes down as its value and comes up as
// it; a pair or tuple goes down as its two values and comes up as the one
// value of its base.

template <class T>
struct Args<PrimitiveData<T>> {
    template <class V>
    static void visit(PrimitiveData<T>& x, V& v) {
        v("value", x.value);
    }
};
template <class T>
struct Fields<PrimitiveData<T>> : Args<PrimitiveData<T>> {};

template <class A, class B>
struct Args<PairData<A, B>> {
    template <class V>
    static void visit(PairData<A, B>& x, V& v) {
        v("first", x.value.first);
        v("second", x.value.second);
    }
};
template <class A, class B>
struct Fields<PairData<A, B>> : Fields<PrimitiveData<std::pair<A, B>>> {};

template <class A, class B>
struct Args<TupleData<A, B>> {
    template <class V>
    static void visit(TupleData<A, B>& x, V& v) {
        v("first", std::get<0>(x.value));
        v("second", std::get<1>(x.value));
    }
};
template <class A, class B>
struct Fields<TupleData<A, B>> : Fields<PrimitiveData<std::tuple<A, B>>> {};

VELAR_SHAPE_ARGS(CallSessionId)
VELAR_SHAPE_SETTER(CallSessionId, setExtraHeader)
VELAR_SHAPE_CALLS(CallSessionId)
VELAR_SHAPE_ARGS(AdditionalContents)
VELAR_SHAPE_FIELDS(GeneralResponseData)

// ---------------------------------------------------------------------------
// Registration.

VELAR_SHAPE_NESTED_FIELDS(ConfigData, RcsConfig)
VELAR_SHAPE_NO_ARGS(ConfigData)
VELAR_SHAPE_SETTER(ConfigData, SetXDMConfig)
VELAR_SHAPE_SETTER(ConfigData, SetRegiConfig)
VELAR_SHAPE_SETTER(ConfigData, SetSSConfig)
VELAR_SHAPE_SETTER(ConfigData, SetCallConfig)
VELAR_SHAPE_SETTER(ConfigData, SetSrvccConfig)
VELAR_SHAPE_SETTER(ConfigData, SetRcsConfig)
VELAR_SHAPE_SETTER(ConfigData, SetFeatureConfig)
VELAR_SHAPE_CALLS(ConfigData)
VELAR_SHAPE_ARGS(UAProfileData)
VELAR_SHAPE_SETTER(UAProfileData, SetTimer)
VELAR_SHAPE_SETTER(UAProfileData, SetMediaConfig)
VELAR_SHAPE_CALLS(UAProfileData)
VELAR_SHAPE_ARGS(RegiSetupData)
VELAR_SHAPE_ARGS(RegiAuth)
// The challenge comes up with the same members the response goes down with.
template <>
struct Fields<RegiAuth> : Args<RegiAuth> {};
VELAR_SHAPE_ARGS(UpdatePreferredImpu)
VELAR_SHAPE_ARGS(NetworkSuspended)
VELAR_SHAPE_FIELDS(RegiStatusData)
VELAR_SHAPE_FIELDS(SubscribeStatusData)
VELAR_SHAPE_FIELDS(RegInfoContact)
VELAR_SHAPE_FIELDS(RegInfoData)
VELAR_SHAPE_ARGS(DnsQueryData)
VELAR_SHAPE_MEMBERS(DnsQueryData)
VELAR_SHAPE_FIELDS(VceConfigData)
VELAR_SHAPE_ARGS(PaniData)
VELAR_SHAPE_ARGS(GeolocationData)
VELAR_SHAPE_ARGS(DeleteTcpClientSocket)
VELAR_SHAPE_FIELDS(DnsResponseData)
VELAR_SHAPE_FIELDS(AlarmData)
VELAR_SHAPE_FIELDS(X509VerifyData)
VELAR_SHAPE_ARGS(SendSipData)
VELAR_SHAPE_FIELDS(SipDialogResponseData)
VELAR_SHAPE_FIELDS(SipMessageData)
VELAR_SHAPE_FIELDS(DumpMessageData)
VELAR_SHAPE_FIELDS(EcholocateData)

// ---------------------------------------------------------------------------
// Call.

VELAR_SHAPE_ARGS(CallSetupData)
VELAR_SHAPE_MEMBERS(CallSetupData)
VELAR_SHAPE_ARGS(CallAcceptData)
VELAR_SHAPE_ARGS(StartCamera)
VELAR_SHAPE_NO_ARGS(StopCamera)
VELAR_SHAPE_ARGS(ModifyCallTypeData)
VELAR_SHAPE_ARGS(CallSendInfo)
VELAR_SHAPE_ARGS(ConfCallSetupData)
VELAR_SHAPE_ARGS(ConfCallUpdateSession)
VELAR_SHAPE_NESTED_FIELDS(CallEndData, Reason)
VELAR_SHAPE_FIELDS(CallEndData)
VELAR_SHAPE_FIELDS(CallRejectData)
VELAR_SHAPE_FIELDS(CallUpdateData)
VELAR_SHAPE_FIELDS(ReplyModifyCallType)
VELAR_SHAPE_FIELDS(RejectModifyCallType)
VELAR_SHAPE_FIELDS(CallSendDtmf)
VELAR_SHAPE_FIELDS(AudioInterfaceData)
VELAR_SHAPE_FIELDS(CallPublishData)
VELAR_SHAPE_FIELDS(CallTransferData)
VELAR_SHAPE_FIELDS(AcceptTransferData)
VELAR_SHAPE_FIELDS(CancelCallTransferData)
VELAR_SHAPE_FIELDS(CallPullingData)
VELAR_SHAPE_FIELDS(CallResponseData)
VELAR_SHAPE_FIELDS(CallStatusData)
VELAR_SHAPE_FIELDS(IncomingCallData)
VELAR_SHAPE_FIELDS(ConfParticipant)
VELAR_SHAPE_FIELDS(ConfCallChangedData)
VELAR_SHAPE_FIELDS(CdpnInfoData)
VELAR_SHAPE_FIELDS(ReferReceivedData)
VELAR_SHAPE_FIELDS(ReferStatusData)
VELAR_SHAPE_FIELDS(RouteTableData)
VELAR_SHAPE_FIELDS(ModifyVideoData)
VELAR_SHAPE_FIELDS(VideoEventData)
VELAR_SHAPE_FIELDS(DedicatedBearerData)
VELAR_SHAPE_FIELDS(RrcConnectionData)
VELAR_SHAPE_FIELDS(DtmfEventData)
VELAR_SHAPE_FIELDS(RtpLossRateData)
VELAR_SHAPE_FIELDS(DialogEventData)
VELAR_SHAPE_FIELDS(DialogSubscribeStatusData)

// The stack's word between the session and the types is never read: it has
// no JSON form.
VELAR_SHAPE_OF(Fields, ModifyCallData, mSession, mOldType, mNewType)

// ---------------------------------------------------------------------------
// Supplementary services.

VELAR_SHAPE_ARGS(SSInfo)
VELAR_SHAPE_ARGS(SSGetDivInfo)
VELAR_SHAPE_ARGS(SSGetBarrInfo)
VELAR_SHAPE_ARGS(SSSetDivInfo)
VELAR_SHAPE_ARGS(SSSetBarrInfo)
VELAR_SHAPE_ARGS(SSSetOIRInfo)
VELAR_SHAPE_ARGS(SSSetCommWaitInfo)
VELAR_SHAPE_ARGS(SSGbaKeyData)
VELAR_SHAPE_ARGS(SSGetDns)
VELAR_SHAPE_FIELDS(SSDivInfoResult)
VELAR_SHAPE_FIELDS(SSBarrInfoResult)
VELAR_SHAPE_FIELDS(SSFlagInfoResult)
VELAR_SHAPE_FIELDS(SSGenKeyData)
VELAR_SHAPE_FIELDS(XCapMessageData)

// ---------------------------------------------------------------------------
// SMS.

// The arguments of the constructor that built the message: inReplyTo only
// for the reply, so that an empty inReplyTo stays apart from none.
template <>
struct Args<SendMessageData> {
    template <class V>
    static void visit(SendMessageData& x, V& v) {
        v("handle", x.handle);
        v("smsc", x.smsc);
        v("localUri", x.localUri);
        v("contentType", x.contentType);
        v("contentSubType", x.contentSubType);
        v("contentLen", x.contentLen);
        v("contentBody", x.contentBody);
        if (x.withInReplyTo) v("inReplyTo", x.inReplyTo);
    }
};
VELAR_SHAPE_ARGS(RpAckResponse)
VELAR_SHAPE_ARGS(SmsReceiveResponse)
VELAR_SHAPE_FIELDS(SmsResponseData)
VELAR_SHAPE_FIELDS(SmsRpAckData)
VELAR_SHAPE_FIELDS(ReceiveSmsData)

// ---------------------------------------------------------------------------
// Messaging and file transfer.

VELAR_SHAPE_FIELDS(ImError)
VELAR_SHAPE_FIELDS(WarningHdr)
VELAR_SHAPE_FIELDS(RetryHdr)
VELAR_SHAPE_FIELDS(ReasonHdr)
VELAR_SHAPE_FIELDS(ImdnRecRoute)
VELAR_SHAPE_FIELDS(ImdnData)
VELAR_SHAPE_FIELDS(CpimNamespace)
VELAR_SHAPE_FIELDS(ImParticipant)
VELAR_SHAPE_FIELDS(ImMessage)
VELAR_SHAPE_FIELDS(FtSessionParam)
VELAR_SHAPE_FIELDS_EXTEND(ImSessionParam, FtSessionParam)
VELAR_SHAPE_FIELDS(FileAttr)
VELAR_SHAPE_FIELDS(FtPayload)
VELAR_SHAPE_FIELDS(ReportData)
VELAR_SHAPE_FIELDS(ImComposingData)
VELAR_SHAPE_NESTED_FIELDS(ImConferenceUser, Endpoint)
VELAR_SHAPE_NESTED_FIELDS(ImConferenceUser, JoiningInfo)
VELAR_SHAPE_NESTED_FIELDS(ImConferenceUser, DisconnectionInfo)
VELAR_SHAPE_FIELDS(ImConferenceUser)
VELAR_SHAPE_ARGS(ImStartSessionData)
VELAR_SHAPE_ARGS(RequestAcceptImSession)
VELAR_SHAPE_FIELDS(CloseImSessionData)
VELAR_SHAPE_FIELDS(RequestRejectImSession)
VELAR_SHAPE_FIELDS(RequestSendImMessage)
VELAR_SHAPE_FIELDS(RequestSendImComposingStatus)
VELAR_SHAPE_FIELDS(RequestSendImNotiStatus)
VELAR_SHAPE_FIELDS(RequestUpdateParticipants)
VELAR_SHAPE_FIELDS(StartSessionRespData)
VELAR_SHAPE_FIELDS(CloseSessionRespData)
VELAR_SHAPE_FIELDS(SendImMessageRespData)
VELAR_SHAPE_FIELDS(UpdateParticipantsRespData)
VELAR_SHAPE_FIELDS(SessionStartedData)
VELAR_SHAPE_FIELDS(SessionClosedData)
VELAR_SHAPE_FIELDS(SessionEstablishedData)
VELAR_SHAPE_FIELDS(ImSessionInvitedData)
VELAR_SHAPE_FIELDS(ImMessageReceivedData)
VELAR_SHAPE_FIELDS(ImdnReceivedData)
VELAR_SHAPE_FIELDS(ImComposingReceivedData)
VELAR_SHAPE_FIELDS(ImMessageReportData)
VELAR_SHAPE_FIELDS(ImConferenceInfoData)
VELAR_SHAPE_ARGS(FtStartSessionData)
VELAR_SHAPE_FIELDS(RequestAcceptFtSession)
VELAR_SHAPE_FIELDS(CancelFtSessionData)
VELAR_SHAPE_FIELDS(FtProgressData)
VELAR_SHAPE_FIELDS(FtIncomingData)
VELAR_SHAPE_FIELDS(RequestSendImSlmMessage)
VELAR_SHAPE_FIELDS(RequestSlmSendFile)
VELAR_SHAPE_FIELDS(SendImSlmMessageRespData)
VELAR_SHAPE_FIELDS(SendSlmFileRespData)
VELAR_SHAPE_FIELDS(SlmIncomingData)
VELAR_SHAPE_FIELDS(GroupListSubscribeData)
VELAR_SHAPE_FIELDS(GroupInfoSubscribeData)
VELAR_SHAPE_FIELDS(GroupSubscribeStatusData)
VELAR_SHAPE_FIELDS(GroupListEntry)
VELAR_SHAPE_FIELDS(GroupListUpdateData)
VELAR_SHAPE_FIELDS(GroupInfoUpdateData)

// ---------------------------------------------------------------------------
// Presence.

// An element is shown by its constructor's three strings and then the two
// sequences the daemon appends to, whatever order the library keeps them in.
VELAR_SHAPE_OF(Args, Element, name, value, nameSpace)
VELAR_SHAPE_OF(Members, Element, attributes, elements)
VELAR_SHAPE_NESTED_ARGS(Element, Attribute)
VELAR_SHAPE_ARGS(PersonTuple)
VELAR_SHAPE_NESTED_FIELDS(ServiceTuple, Status)
VELAR_SHAPE_ARGS(ServiceTuple)
VELAR_SHAPE_ARGS(DeviceTuple)
VELAR_SHAPE_ARGS(Presentity)
VELAR_SHAPE_FIELDS(PresencePublishData)
VELAR_SHAPE_FIELDS(PresenceSubscribeData)
VELAR_SHAPE_ARGS(OptionsData)
VELAR_SHAPE_FIELDS(PresencePublishStatusData)
VELAR_SHAPE_FIELDS(PresenceServiceData)
VELAR_SHAPE_FIELDS(PresenceContactData)
VELAR_SHAPE_FIELDS(PresenceNotifyData)
VELAR_SHAPE_FIELDS(PresenceSubscribeStatusData)
VELAR_SHAPE_FIELDS(OptionsReceivedData)

// ---------------------------------------------------------------------------
// XDM.

VELAR_SHAPE_FIELDS(ContactName)
VELAR_SHAPE_FIELDS(ContactAddress)
VELAR_SHAPE_FIELDS(ContactNumber)
VELAR_SHAPE_FIELDS(ContactUri)
VELAR_SHAPE_FIELDS(ContactOrg)
VELAR_SHAPE_FIELDS(Contact)
VELAR_SHAPE_ARGS(XdmData)
// The base's constructor arguments are its fields: the document fetch is shown
// by them and then its own fields, as the daemon fills them, and has no
// arguments of its own.
template <>
struct Fields<XdmData> : Args<XdmData> {};
VELAR_SHAPE_FIELDS(NodeSelectorData)
VELAR_SHAPE_FIELDS_EXTEND(XdmFetchDocumentData, XdmData)
VELAR_SHAPE_ARGS(XdmGbaData)
VELAR_SHAPE_ARGS(XdmKeyData)
VELAR_SHAPE_ARGS(XdmPresRuleData)
VELAR_SHAPE_ARGS(XdmContactData)
VELAR_SHAPE_ARGS(XdmModifyContactData)
VELAR_SHAPE_FIELDS(XdmResponseData)
VELAR_SHAPE_FIELDS(XdmAuthData)
VELAR_SHAPE_FIELDS(XdmContactListData)

// The string after rid is the library's own and never read: it has no JSON
// form.
VELAR_SHAPE_OF(Fields, XdmGbaRequestData, rid, nafFqdn, hexProtocolId)
VELAR_SHAPE_OF(Fields, XdmStoreGbaKeyData, rid, nonce, btid, lifetime, gbaType, nafFqdn,
               hexProtocolId)

// ---------------------------------------------------------------------------
// Content sharing.

VELAR_SHAPE_FIELDS(StartIshSession)
VELAR_SHAPE_FIELDS(StartVshSession)
VELAR_SHAPE_FIELDS(CshResultData)
VELAR_SHAPE_FIELDS(IshIncomingData)
VELAR_SHAPE_FIELDS(IshProgressData)
VELAR_SHAPE_FIELDS(VshIncomingData)

}  // namespace shape
}  // namespace velar_sim
