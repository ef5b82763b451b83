// Video share sessions: a start names only the remote party, accepting and
// stopping only the session.
#include "handlers/common/take_fields.h"
#include "handlers/share/share_common.h"

namespace ims = imsCommonStruc;

IMS_DISPATCH(DispatchVshStartSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestvshstartsession());
    // filePath, size and contentType are not the stack's concern here.
    auto* record = new StartVshSession;
    record->id = request.reqid();
    record->registrationHandle = body.registrationhandle();
    record->remoteUri = TAKE_STRING(body, remoteuri);
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchVshAcceptSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestvshacceptsession());
    s_velar->OnRequest(token,
                       new PrimitiveData<int>(request.reqid(), static_cast<int>(body.sessionid())));
}

IMS_DISPATCH(DispatchVshStopSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestvshstopsession());
    s_velar->OnRequest(token,
                       new PrimitiveData<int>(request.reqid(), static_cast<int>(body.sessionid())));
}

IMS_NOTIFY(NotifyVshIncomingSession) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<VshIncomingData>(notify, data);
    if (record == nullptr) return -1;
    // type and fileName stay absent: the stack has neither.
    auto* body = notify.mutable_vshincomingsession();
    body->set_sessionid(record->sessionId);
    body->set_remoteuri(record->remoteUri);
    return 0;
}

IMS_NOTIFY(NotifyVshSessionEstablished) {
    IMS_LOGV("%s()", __func__);
    // A VshResolution number, not a CshError.
    return ims_share::NotifyResult(notify, data, &ims::Notify::mutable_vshsessionestablished,
                                   &ims::Notify_VshSessionEstablished::set_resolution);
}

IMS_NOTIFY(NotifyVshSessionTerminated) {
    IMS_LOGV("%s()", __func__);
    return ims_share::NotifyResult(notify, data, &ims::Notify::mutable_vshsessionterminated,
                                   &ims::Notify_VshSessionTerminated::set_reason);
}
