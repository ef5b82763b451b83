// Requests that involve more than one call leg: conferences, transfers and
// pulling a call from another device.
#include <string>
#include <utility>
#include <vector>

#include "handlers/call/call_common.h"
#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"

namespace {

// A new conference (209) and a call extended to one (222) carry the same
// body; only the record id tells the stack which it is.
void SendConfCallSetup(uint32_t token, imsCommonStruc::Request& request) {
    auto& body = TakeBody(request.mutable_requestmakeconfcall());
    std::vector<int> sessions;
    for (int session : body.sessionid()) {
        if (logLevel > 1) IMS_LOGD("participants %d", session);
        sessions.push_back(session);
    }
    s_velar->OnRequest(
        token, new ConfCallSetupData(
                   request.reqid(), static_cast<int>(body.handle()), TAKE_STRING(body, confuri),
                   static_cast<int>(body.calltype()), static_cast<int>(body.conftype()),
                   TAKE_STRING(body, eventsubscribe), TAKE_STRING(body, dialogtype),
                   TAKE_STRING(body, origuri), TAKE_STRING(body, referuritype),
                   TAKE_STRING(body, referuriasserted), TAKE_STRING(body, useanonymousupdate),
                   std::move(sessions), TakeStrings(body.mutable_participants()),
                   ims_call::HeaderMap(body.mutable_extraheaders())));
}

}  // namespace

IMS_DISPATCH(DispatchMakeConfCall) {
    IMS_LOGI("%s()", __func__);
    SendConfCallSetup(token, request);
}

IMS_DISPATCH(DispatchExtendToConference) {
    IMS_LOGI("%s()", __func__);
    SendConfCallSetup(token, request);
}

IMS_DISPATCH(DispatchUpdateConfCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requestupdateconfcall());
    s_velar->OnRequest(token, new ConfCallUpdateSession(request.reqid(), body.session(), body.cmd(),
                                                        body.participantid(), body.participant()));
}

// A transfer the framework starts; replacingSession stays behind.
IMS_DISPATCH(DispatchTransferCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requesttransfercall());
    auto* record = ims_call::NewRecord<CallTransferData>(request.reqid());
    record->mHandle = static_cast<int>(body.handle());
    record->mSession = static_cast<int>(body.session());
    record->mExtraText = std::string();
    record->mTargetUri = body.targeturi();
    s_velar->OnRequest(token, record);
}

// The framework's answer to a transfer the peer asked for.
IMS_DISPATCH(DispatchAcceptTransferCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requestaccepttransfercall());
    auto* record = ims_call::NewRecord<AcceptTransferData>(request.reqid());
    record->mSession = static_cast<int>(body.session());
    record->mAccept = body.accept();
    record->mStatusCode = static_cast<int>(body.statuscode());
    record->mReasonPhrase = body.reasonphrase();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchCancelTransferCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requestcanceltransfercall());
    auto* record = ims_call::NewRecord<CancelCallTransferData>(request.reqid());
    record->mHandle = static_cast<int>(body.handle());
    record->mSession = static_cast<int>(body.session());
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchPullingCall) {
    IMS_LOGI("%s()", __func__);
    const auto& body = TakeBody(request.mutable_requestpullingcall());
    auto* record = ims_call::NewRecord<CallPullingData>(request.reqid());
    record->mHandle = static_cast<int>(body.handle());
    record->mPullingUri = body.pullinguri();
    record->mTargetUri = body.targeturi();
    record->mOrigUri = body.origuri();
    record->mCallType = static_cast<int>(body.calltype());
    record->mCodec = static_cast<int>(body.codec());
    record->mExtraValue = 0;
    record->mAudioDirection = static_cast<int>(body.audiodirection());
    record->mVideoDirection = static_cast<int>(body.videodirection());
    record->mIsVideoPortZero = body.isvideoportzero();
    record->mCallId = body.callid();
    record->mLocalTag = body.localtag();
    record->mRemoteTag = body.remotetag();
    record->mMdmnExtNumber = body.mdmnextnumber();
    s_velar->OnRequest(token, record);
}
