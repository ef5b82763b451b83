// The records' layout as the library's binary interface has it. How a record
// is declared may change (its member list, the reflection the simulator
// takes from it); where its members sit may not, since the library reads
// them at these places. A few records of every kind of declaration: fields,
// constructor arguments, setters with their call log, members written after
// construction, a base's fields extended, held objects, templates.
//
// The figures are this host's ABI (x86-64, libstdc++); elsewhere the check
// is left out rather than rewritten.
#include <cstddef>
#include <string>

#include "stack/velar.h"

#if defined(__x86_64__) && defined(__GLIBCXX__)

// The records have virtual functions, so offsetof is only conditionally
// supported for them; GCC and Clang support it for classes without virtual
// bases, which is all that is asked here.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace {

using TextTuple = TupleData<int, std::string>;
using IntValue = PrimitiveData<int>;
using EndReason = CallEndData::Reason;
using TupleStatus = ServiceTuple::Status;

[[maybe_unused]] void recordLayout() {
    static_assert(sizeof(GeneralResponseData) == 72);
    static_assert(offsetof(GeneralResponseData, handle) == 16);
    static_assert(offsetof(GeneralResponseData, result) == 20);
    static_assert(offsetof(GeneralResponseData, reason) == 24);
    static_assert(offsetof(GeneralResponseData, errorStr) == 32);
    static_assert(offsetof(GeneralResponseData, sipError) == 64);
    static_assert(sizeof(CallSetupData) == 416);
    static_assert(offsetof(CallSetupData, handle) == 16);
    static_assert(offsetof(CallSetupData, peeruri) == 24);
    static_assert(offsetof(CallSetupData, additionalContents) == 200);
    static_assert(offsetof(CallSetupData, photoRing) == 352);
    static_assert(offsetof(CallSetupData, mEcscfList) == 384);
    static_assert(offsetof(CallSetupData, mEcscfPort) == 408);
    static_assert(sizeof(CallEndData) == 32);
    static_assert(offsetof(CallEndData, mSession) == 16);
    static_assert(offsetof(CallEndData, mReason) == 24);
    static_assert(sizeof(EndReason) == 112);
    static_assert(offsetof(EndReason, mProtocol) == 8);
    static_assert(offsetof(EndReason, mCause) == 40);
    static_assert(offsetof(EndReason, mIsLocalRelease) == 104);
    static_assert(sizeof(CallSessionId) == 96);
    static_assert(offsetof(CallSessionId, session) == 16);
    static_assert(offsetof(CallSessionId, velar_setExtraHeader) == 24);
    static_assert(offsetof(CallSessionId, velarCallLog) == 72);
    static_assert(sizeof(ConfigData) == 688);
    static_assert(offsetof(ConfigData, velar_SetXDMConfig) == 16);
    static_assert(offsetof(ConfigData, velar_SetFeatureConfig) == 616);
    static_assert(offsetof(ConfigData, velarCallLog) == 664);
    static_assert(sizeof(RegiSetupData) == 200);
    static_assert(offsetof(RegiSetupData, handle) == 16);
    static_assert(offsetof(RegiSetupData, pcscfAddrList) == 24);
    static_assert(offsetof(RegiSetupData, accessToken) == 168);
    static_assert(sizeof(IntValue) == 24);
    static_assert(offsetof(IntValue, value) == 16);
    static_assert(sizeof(TextTuple) == 56);
    static_assert(offsetof(TextTuple, value) == 16);
    static_assert(sizeof(XdmFetchDocumentData) == 232);
    static_assert(offsetof(XdmFetchDocumentData, type) == 56);
    static_assert(offsetof(XdmFetchDocumentData, name) == 64);
    static_assert(offsetof(XdmFetchDocumentData, accessToken) == 96);
    static_assert(offsetof(XdmFetchDocumentData, nodeSelector) == 128);
    static_assert(sizeof(ImMessage) == 520);
    static_assert(offsetof(ImMessage, sender) == 0);
    static_assert(offsetof(ImMessage, imdn) == 128);
    static_assert(offsetof(ImMessage, cpimNamespaces) == 432);
    static_assert(offsetof(ImMessage, ccParticipants) == 496);
    static_assert(sizeof(Element) == 144);
    static_assert(offsetof(Element, name) == 0);
    static_assert(offsetof(Element, attributes) == 32);
    static_assert(offsetof(Element, elements) == 56);
    static_assert(offsetof(Element, value) == 80);
    static_assert(offsetof(Element, nameSpace) == 112);
    static_assert(sizeof(TupleStatus) == 40);
    static_assert(offsetof(TupleStatus, basic) == 8);
    static_assert(sizeof(AdditionalContents) == 80);
    static_assert(offsetof(AdditionalContents, mimeType) == 16);
    static_assert(offsetof(AdditionalContents, contents) == 48);
}

}  // namespace

#endif
