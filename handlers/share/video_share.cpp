// Video share sessions: a start names only the remote party, accepting and
// stopping only the session.
#include "handlers/handlers.h"

IMS_DISPATCH(DispatchVshStartSession) {
    IMS_LOGI("%s()", __func__);
    const auto body = request.requestvshstartsession();
    // filePath, size and contentType are not the stack's concern here.
    auto* record = new StartVshSession;
    record->id = 1101;
    record->registrationHandle = body.registrationhandle();
    record->remoteUri = body.remoteuri();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchVshAcceptSession) {
    IMS_LOGI("%s()", __func__);
    const auto body = request.requestvshacceptsession();
    s_velar->OnRequest(token, new PrimitiveData<int>(1102, static_cast<int>(body.sessionid())));
}

IMS_DISPATCH(DispatchVshStopSession) {
    IMS_LOGI("%s()", __func__);
    const auto body = request.requestvshstopsession();
    s_velar->OnRequest(token, new PrimitiveData<int>(1103, static_cast<int>(body.sessionid())));
}

IMS_NOTIFY(NotifyVshIncomingSession) {
    IMS_LOGV("%s()", __func__);
    if (data == nullptr) {
        IMS_LOGE("invalid response: NULL");
        return -1;
    }
    auto* record = static_cast<VshIncomingData*>(data);
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(data->GetId()));
    // type and fileName stay absent: the stack has neither.
    auto* body = notify.mutable_vshincomingsession();
    body->set_sessionid(record->sessionId);
    body->set_remoteuri(record->remoteUri);
    return 0;
}

IMS_NOTIFY(NotifyVshSessionEstablished) {
    IMS_LOGV("%s()", __func__);
    if (data == nullptr) {
        IMS_LOGE("invalid response: NULL");
        return -1;
    }
    auto* record = static_cast<CshResultData*>(data);
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(data->GetId()));
    auto* body = notify.mutable_vshsessionestablished();
    body->set_sessionid(record->sessionId);
    body->set_resolution(static_cast<imsCommonStruc::VshResolution>(record->code));
    return 0;
}

IMS_NOTIFY(NotifyVshSessionTerminated) {
    IMS_LOGV("%s()", __func__);
    if (data == nullptr) {
        IMS_LOGE("invalid response: NULL");
        return -1;
    }
    auto* record = static_cast<CshResultData*>(data);
    notify.set_notifyid(static_cast<imsCommonStruc::Id>(data->GetId()));
    auto* body = notify.mutable_vshsessionterminated();
    body->set_sessionid(record->sessionId);
    body->set_reason(static_cast<imsCommonStruc::CshError>(record->code));
    return 0;
}
