// IMS registration through a user agent: start and end, feature tags, the
// AKA answer, the preferred identity, network suspension, and what the stack
// reports back about them.
#include <list>
#include <string>
#include <vector>

#include "handlers/common/helpers.h"
#include "handlers/common/take_fields.h"

namespace {

// Notifications 10001 and 10023 carry the same record and the same message;
// only the name in the log tells them apart.
int fillRegistrationStatus(const char* name, imsCommonStruc::Notify& notify, ImsData* data) {
    IMS_LOGV("%s()", name);
    const auto* record = RecordOf<RegiStatusData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_registrationstatus();
    body->set_handle(record->handle);
    body->set_regitype(static_cast<imsCommonStruc::RegiType>(record->regiType));
    for (const auto& service : record->serviceList) body->add_servicelist(service);
    for (const auto& impu : record->impuList) body->add_impulist(impu);
    IMS_LOGV("%s() size:%d", name, static_cast<int>(record->impuList.size()));
    // Optional on the wire, yet always sent: a 0 or an empty reason is news.
    body->set_respcode(record->respCode);
    body->set_respreason(record->respReason);
    body->set_retryafter(record->retryAfter);
    body->set_ecmpmode(record->ecmpMode);
    return 0;
}

}  // namespace

IMS_DISPATCH(DispatchRegistration) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestregistration());
    const std::list<std::string> pcscfAddrList(body.pcscfaddrlist().begin(),
                                               body.pcscfaddrlist().end());
    // An absent isExplicitDeregi reads as the schema's default, true.
    auto* record = new RegiSetupData(
        request.reqid(), static_cast<int>(body.handle()), pcscfAddrList,
        static_cast<int>(body.pcscfport()), helpers::toVector(body.servicelist()),
        static_cast<int>(body.regexp()), helpers::toVector(body.impulist()),
        helpers::toTags(body.featuretaglist()), body.isexplicitderegi(),
        helpers::toVector(body.thirdpartyfeaturelist()), TAKE_STRING(body, accesstoken));
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchUpdateAkaResp) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdateakaresp());
    // The AKA response is a credential: never in a production log.
    if (!IsShipBuild() && logLevel >= 2) IMS_LOGD("%s() %s", __func__, body.akaresp().c_str());
    auto* record =
        new RegiAuth(request.reqid(), static_cast<RegiAuth::AKA_RESP_RECV_MANAGER>(body.recvmng()),
                     static_cast<int>(body.handle()), std::string(), body.akaresp());
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchSetPreferredImpu) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsetpreferredimpu());
    s_velar->OnRequest(token,
                       new UpdatePreferredImpu(request.reqid(), static_cast<int>(body.handle()),
                                               TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchNetworkSuspended) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestnetworksuspended());
    s_velar->OnRequest(token, new NetworkSuspended(request.reqid(), static_cast<int>(body.handle()),
                                                   body.state()));
}

IMS_DISPATCH(DispatchUpdateFeatureTag) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdatefeaturetag());
    s_velar->OnRequest(token, new PairData<int, std::vector<unsigned int>>(
                                  request.reqid(), static_cast<int>(body.handle()),
                                  helpers::toTags(body.featuretaglist())));
}

IMS_NOTIFY(NotifyRegiStatus) {
    return fillRegistrationStatus(__func__, notify, data);
}

IMS_NOTIFY(NotifyStackUpdatePaniNoti) {
    return fillRegistrationStatus(__func__, notify, data);
}

IMS_NOTIFY(NotifyRegiAuth) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<RegiAuth>(notify, data);
    if (record == nullptr) return -1;
    if (logLevel > 1) IMS_LOGD("nonce %s", record->nonce.c_str());
    auto* body = notify.mutable_registrationauth();
    body->set_handle(static_cast<uint32_t>(record->handle));
    body->set_nonce(record->nonce);
    body->set_recvmng(static_cast<uint32_t>(record->recvMng));
    return 0;
}

IMS_NOTIFY(NotifySubscribeStatus) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<SubscribeStatusData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_subscribestatus();
    body->set_handle(record->handle);
    body->set_respcode(record->respCode);
    body->set_respreason(record->respReason);
    return 0;
}

IMS_NOTIFY(NotifyRegInfoChanged) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<RegInfoData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_reginfochanged();
    body->set_handle(record->handle);
    for (const auto& contact : record->contacts) {
        auto* entry = body->add_contacts();
        entry->set_uri(contact.uri);
        entry->set_displayname(contact.displayName);
        entry->set_state(static_cast<imsCommonStruc::Notify_RegInfoChanged_State>(contact.state));
        entry->set_event(static_cast<imsCommonStruc::Notify_RegInfoChanged_Event>(contact.event));
    }
    return 0;
}
