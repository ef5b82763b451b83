// Services the stack asks of the platform: DNS, alarms, certificates, access
// network, location.
#include <string>

#include "handlers/common/helpers.h"
#include "handlers/common/take_fields.h"

IMS_DISPATCH(DispatchDnsQuery) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestdnsquery());
    const int handle = static_cast<int>(body.handle());
    auto* record = new DnsQueryData(request.reqid(), handle, TAKE_STRING(body, interface),
                                    TAKE_STRING(body, hostname), body.type(),
                                    TAKE_STRING(body, transport), TAKE_STRING(body, family));
    for (const auto& server : body.dnsserverlist()) record->dnsServers.push_back(server);
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchUpdateVceConfig) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdatevceconfig());
    auto* record = new VceConfigData;
    record->SetId(request.reqid());
    record->handle = static_cast<int>(body.handle());
    record->vceConfig = body.vceconfig();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchUpdatePani) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdatepani());
    s_velar->OnRequest(token, new PaniData(request.reqid(), static_cast<int>(body.handle()),
                                           TAKE_STRING(body, pani), TAKE_STRING(body, lastpani)));
}

IMS_DISPATCH(DispatchUpdateGeolocation) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdategeolocation());
    // Only what the client sent; a field left out is an empty string.
    auto sent = [](bool present, const std::string& value) {
        return present ? value : std::string();
    };
    s_velar->OnRequest(
        token,
        new GeolocationData(request.reqid(), static_cast<int>(body.handle()),
                            sent(body.has_latitude(), TAKE_STRING(body, latitude)),
                            sent(body.has_longitude(), TAKE_STRING(body, longitude)),
                            sent(body.has_altitude(), TAKE_STRING(body, altitude)),
                            sent(body.has_accuracy(), TAKE_STRING(body, accuracy)),
                            sent(body.has_providertype(), TAKE_STRING(body, providertype)),
                            sent(body.has_retentionexpires(), TAKE_STRING(body, retentionexpires)),
                            sent(body.has_srsname(), TAKE_STRING(body, srsname)),
                            sent(body.has_radiusuom(), TAKE_STRING(body, radiusuom)),
                            sent(body.has_os(), TAKE_STRING(body, os)),
                            sent(body.has_deviceid(), TAKE_STRING(body, deviceid)),
                            sent(body.has_country(), TAKE_STRING(body, country)),
                            sent(body.has_a1(), TAKE_STRING(body, a1)),
                            sent(body.has_a3(), TAKE_STRING(body, a3)),
                            sent(body.has_a6(), TAKE_STRING(body, a6)),
                            sent(body.has_hno(), TAKE_STRING(body, hno)),
                            sent(body.has_pc(), TAKE_STRING(body, pc)),
                            sent(body.has_locationtime(), TAKE_STRING(body, locationtime))));
}

IMS_DISPATCH(DispatchAlarmWakeUp) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestalarmwakeup());
    s_velar->OnRequest(token, new PrimitiveData<int>(request.reqid(), static_cast<int>(body.id())));
}

IMS_DISPATCH(DispatchX509CertVerifyResult) {
    auto& body = TakeBody(request.mutable_requestx509certverifyresult());
    IMS_LOGI("%s() result %d", __func__, body.result() ? 1 : 0);
    // The client's reason stays here: the stack takes the verdict alone.
    s_velar->OnRequest(token, new PrimitiveData<bool>(request.reqid(), body.result()));
}

IMS_DISPATCH(DispatchDeleteTcpClientSocket) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestdeletetcpclientsocket());
    s_velar->OnRequest(token,
                       new DeleteTcpClientSocket(request.reqid(), static_cast<int>(body.handle())));
}

IMS_NOTIFY(NotifyDnsResponse) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<DnsResponseData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_dnsresponse();
    body->set_hostname(record->hostname);
    for (const auto& address : record->ipAddrList) body->add_ipaddrlist(address);
    body->set_port(record->port);
    body->set_handle(record->handle);
    return 0;
}

IMS_NOTIFY(NotifyAlarmWakeUp) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<AlarmData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_alarmwakeup();
    body->set_id(record->id);
    body->set_delay(record->delay);
    return 0;
}

IMS_NOTIFY(NotifyCancelAlarm) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<PrimitiveData<int>>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_cancelalarm();
    body->set_id(static_cast<uint32_t>(record->value));
    return 0;
}

IMS_NOTIFY(NotifyX509CertVerifyRequest) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<X509VerifyData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_x509certverifyrequest();
    for (const std::string* certificate : record->certificates) {
        // A hole in the chain stays a hole: an empty entry keeps the place of
        // every certificate after it, and an empty certificate never verifies.
        if (certificate == nullptr)
            body->add_cert(std::string());
        else
            body->add_cert(certificate->data(), certificate->size());
    }
    return 0;
}
