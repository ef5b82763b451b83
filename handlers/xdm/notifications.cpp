// What the stack's XDM engine asks or delivers on its own: GBA data requests,
// authentication challenges, bootstrapped data and downloaded contacts.
#include <string>

#include "handlers/common/record_head.h"

IMS_NOTIFY(NotifyXdmGbaKey) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<XdmGbaRequestData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_xdmreqgbadata();
    body->set_rid(record->rid);
    body->set_naffqdn(record->nafFqdn);
    body->set_hexprotocolid(record->hexProtocolId);
    return 0;
}

IMS_NOTIFY(NotifyXdmAuth) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<XdmAuthData>(notify, data);
    if (record == nullptr) return -1;
    if (logLevel > 1) IMS_LOGD("nonce %s", record->nonce.c_str());
    auto* body = notify.mutable_xdmauth();
    body->set_sessionid(record->sessionId);
    body->set_nonce(record->nonce);
    body->set_recvmng(record->recvMng);
    return 0;
}

IMS_NOTIFY(NotifyXdmStoreGbaAndGenKey) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<XdmStoreGbaKeyData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_xdmstoregbadata();
    body->set_rid(record->rid);
    body->set_nonce(record->nonce);
    body->set_btid(record->btid);
    body->set_lifetime(record->lifetime);
    body->set_gbatype(record->gbaType);
    body->set_naffqdn(record->nafFqdn);
    body->set_hexprotocolid(record->hexProtocolId);
    return 0;
}

namespace {

// Empty strings stay absent on the wire; the entry itself always stays.
#define SET_IF_NOT_EMPTY(message, field, value) \
    if (!(value).empty()) (message)->set_##field(value)

void FillContact(imsCommonStruc::Contact* wire, const Contact& contact) {
    // Required on the wire, so present even when empty.
    wire->set_contactid(contact.contactId);
    for (const ContactName& n : contact.contactNames) {
        auto* w = wire->add_contactnames();
        SET_IF_NOT_EMPTY(w, title, n.title);
        SET_IF_NOT_EMPTY(w, givenname, n.givenName);
        SET_IF_NOT_EMPTY(w, middlename, n.middleName);
        SET_IF_NOT_EMPTY(w, familyname, n.familyName);
        SET_IF_NOT_EMPTY(w, generationid, n.generationId);
        SET_IF_NOT_EMPTY(w, displayname, n.displayName);
    }
    for (const ContactAddress& a : contact.contactAddresses) {
        auto* w = wire->add_contactaddresses();
        SET_IF_NOT_EMPTY(w, type, a.type);
        SET_IF_NOT_EMPTY(w, label, a.label);
        SET_IF_NOT_EMPTY(w, addrstr, a.addrStr);
        SET_IF_NOT_EMPTY(w, country, a.country);
        SET_IF_NOT_EMPTY(w, region, a.region);
        SET_IF_NOT_EMPTY(w, locality, a.locality);
        SET_IF_NOT_EMPTY(w, street, a.street);
        SET_IF_NOT_EMPTY(w, postcode, a.postCode);
    }
    for (const ContactNumber& n : contact.contactNumbers) {
        auto* w = wire->add_contactnumbers();
        SET_IF_NOT_EMPTY(w, number, n.number);
        SET_IF_NOT_EMPTY(w, type, n.type);
        SET_IF_NOT_EMPTY(w, label, n.label);
    }
    for (const ContactUri& u : contact.contactUris) {
        auto* w = wire->add_contacturis();
        SET_IF_NOT_EMPTY(w, uri, u.uri);
        SET_IF_NOT_EMPTY(w, type, u.type);
        SET_IF_NOT_EMPTY(w, label, u.label);
    }
    for (const ContactOrg& o : contact.contactOrgs) {
        auto* w = wire->add_contactorgs();
        SET_IF_NOT_EMPTY(w, displayname, o.displayName);
        SET_IF_NOT_EMPTY(w, entity, o.entity);
        SET_IF_NOT_EMPTY(w, unit, o.unit);
    }
}

#undef SET_IF_NOT_EMPTY

}  // namespace

IMS_NOTIFY(NotifyXdmContactDownload) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<XdmContactListData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_contactdownloadnotify();
    body->set_rid(record->rid);
    // A stack that hands up no vector at all has downloaded no contact.
    if (record->contacts != nullptr) {
        for (const Contact& contact : *record->contacts) FillContact(body->add_contacts(), contact);
    }
    if (logLevel >= 2) {
        const char* name =
            IMS_METHOD_NAME("int NotifyXdmContactDownload(imsCommonStruc::Notify&, ImsData*)");
        IMS_LOGD("%s: ContactDownloadNotify size: %d", name,
                 static_cast<int>(notify.ByteSizeLong()));
    }
    return 0;
}
