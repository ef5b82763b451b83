// Presence subscription: subscribing to and leaving the presence of contacts,
// and the decoded presence the stack learns about them.
#include <string>
#include <vector>

#include "handlers/common/record_head.h"
#include "handlers/common/take_fields.h"

IMS_DISPATCH(DispatchPresenceSubscribe) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestpresencesubscribe());
    auto* record = new PresenceSubscribeData;
    record->id = request.reqid();
    record->handle = static_cast<int>(body.handle());
    record->uris = TakeStrings(body.mutable_uri());
    record->isAnonymous = body.isanonymous();
    record->isListSubscribe = body.islistsubscribe();
    record->subscriptionId = body.subscriptionid();
    // Absent optional fields reach the stack as their defaults.
    record->gzipEnable = body.gzipenable();
    record->expires = body.expires();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchPresenceUnsubscribe) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestpresenceunsubscribe());
    auto* record = new PresenceSubscribeData;
    record->id = request.reqid();
    record->handle = static_cast<int>(body.handle());
    // The stack expects an unsubscription to be anonymous and single.
    record->isAnonymous = true;
    record->isListSubscribe = false;
    record->subscriptionId = body.subscriptionid();
    record->gzipEnable = false;
    record->expires = 0;
    s_velar->OnRequest(token, record);
}

IMS_NOTIFY(NotifyPresenceSubscribe) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<PresenceNotifyData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_newpresenceinfo();
    body->set_handle(record->handle);
    body->set_subscriptionid(record->subscriptionId);
    for (const PresenceContactData* contact : record->contacts) {
        // A null entry has nothing to tell; skipping it keeps the others.
        if (contact == nullptr) continue;
        auto* info = body->add_contactinfo();
        info->set_uri(contact->uri);
        info->set_subscriptionstate(contact->subscriptionState);
        if (!contact->subscriptionFailureReason.empty())
            info->set_subscriptionfailurereason(contact->subscriptionFailureReason);
        for (const PresenceServiceData* service : contact->services) {
            if (service == nullptr) continue;
            auto* status = info->add_servicestatus();
            status->set_serviceid(service->serviceId);
            status->set_version(service->version);
            status->set_status(service->status);
            IMS_LOGD("%s() %s %s %s", __func__, service->serviceId.c_str(),
                     service->version.c_str(), service->status.c_str());
            for (const std::string& capability : service->mediaCapabilities)
                status->add_mediacapabilities(capability);
        }
        if (!contact->rawPidf.empty()) info->set_rawpidf(contact->rawPidf);
    }
    return 0;
}

IMS_NOTIFY(NotifyPresenceSubscribeStatus) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<PresenceSubscribeStatusData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_presencesubscribestatus();
    body->set_handle(record->handle);
    body->set_issuccess(record->isSuccess);
    body->set_siperrorcode(record->sipErrorCode);
    body->set_siperrorphrase(record->sipErrorPhrase);
    body->set_subscriptionid(record->subscriptionId);
    body->set_minexpires(record->minExpires);
    return 0;
}
