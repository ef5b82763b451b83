// Image share sessions, and the content-sharing answer shared with video
// share. Numbers (CshError, CshRejectReason) pass unchanged.
#include <string>

#include "handlers/common/take_fields.h"
#include "handlers/share/share_common.h"

namespace ims = imsCommonStruc;

IMS_DISPATCH(DispatchIshStartSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestishstartsession());
    auto* record = new StartIshSession;
    record->id = request.reqid();
    record->registrationHandle = body.registrationhandle();
    record->remoteUri = TAKE_STRING(body, remoteuri);
    record->filePath = TAKE_STRING(body, filepath);
    record->size = body.size();
    record->contentType = TAKE_STRING(body, contenttype);
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchIshAcceptSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestishacceptsession());
    s_velar->OnRequest(
        token, new TupleData<int, std::string>(request.reqid(), static_cast<int>(body.sessionid()),
                                               TAKE_STRING(body, filepath)));
}

IMS_DISPATCH(DispatchIshStopSession) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestishstopsession());
    // The stack takes no reason for stopping: the wire's reason stays here.
    s_velar->OnRequest(
        token, new TupleData<int, std::string>(request.reqid(), static_cast<int>(body.sessionid()),
                                               std::string()));
}

IMS_RESPONSE(ResponseCshGeneralResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<CshResultData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_cshgeneralresponse();
    body->set_sessionid(record->sessionId);
    body->set_error(static_cast<imsCommonStruc::CshError>(record->code));
    return 0;
}

IMS_NOTIFY(NotifyIshIncomingSession) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<IshIncomingData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_ishincomingsession();
    body->set_sessionid(record->sessionId);
    body->set_remoteuri(record->remoteUri);
    body->set_filename(record->fileName);
    body->set_size(record->size);
    body->set_contenttype(record->contentType);
    return 0;
}

IMS_NOTIFY(NotifyIshSessionEstablished) {
    IMS_LOGV("%s()", __func__);
    return ims_share::NotifyResult(notify, data, &ims::Notify::mutable_ishsessionestablished,
                                   &ims::Notify_IshSessionEstablished::set_error);
}

IMS_NOTIFY(NotifyIshSessionTerminated) {
    IMS_LOGV("%s()", __func__);
    return ims_share::NotifyResult(notify, data, &ims::Notify::mutable_ishsessionterminated,
                                   &ims::Notify_IshSessionTerminated::set_reason);
}

IMS_NOTIFY(NotifyIshTransferProgress) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<IshProgressData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_ishtransferprogress();
    body->set_sessionid(record->sessionId);
    body->set_total(record->total);
    body->set_transferred(record->transferred);
    return 0;
}
