// XDM documents: fetching, uploading presence rules and contacts, changing
// and deleting a contact, and the XDM engine's answer to all of them.
#include <vector>

#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

namespace {

// Absent strings become empty ones; nothing is filtered or merged. The
// strings are moved out of a body that the handler owns.
Contact* ConvertContact(imsCommonStruc::Contact* wire) {
    auto* contact = new Contact;
    contact->contactId = TAKE_STRING(*wire, contactid);
    for (auto& n : *wire->mutable_contactnames()) {
        contact->contactNames.push_back(ContactName{
            TAKE_STRING(n, title), TAKE_STRING(n, givenname), TAKE_STRING(n, middlename),
            TAKE_STRING(n, familyname), TAKE_STRING(n, generationid), TAKE_STRING(n, displayname)});
    }
    for (auto& a : *wire->mutable_contactaddresses()) {
        contact->contactAddresses.push_back(ContactAddress{
            TAKE_STRING(a, type), TAKE_STRING(a, label), TAKE_STRING(a, addrstr),
            TAKE_STRING(a, country), TAKE_STRING(a, region), TAKE_STRING(a, locality),
            TAKE_STRING(a, street), TAKE_STRING(a, postcode)});
    }
    for (auto& n : *wire->mutable_contactnumbers()) {
        contact->contactNumbers.push_back(
            ContactNumber{TAKE_STRING(n, number), TAKE_STRING(n, type), TAKE_STRING(n, label)});
    }
    for (auto& u : *wire->mutable_contacturis()) {
        contact->contactUris.push_back(
            ContactUri{TAKE_STRING(u, uri), TAKE_STRING(u, type), TAKE_STRING(u, label)});
    }
    for (auto& o : *wire->mutable_contactorgs()) {
        contact->contactOrgs.push_back(
            ContactOrg{TAKE_STRING(o, displayname), TAKE_STRING(o, entity), TAKE_STRING(o, unit)});
    }
    return contact;
}

}  // namespace

IMS_DISPATCH(DispatchXdmFetchDocument) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmfetchdocument());
    NodeSelectorData selector;
    if (body.has_nodeselector()) {
        auto& wire = *body.mutable_nodeselector();
        selector.node = TAKE_STRING(wire, node);
        selector.pos = wire.pos();
        selector.attr = TAKE_STRING(wire, attr);
        selector.attrVal = TAKE_STRING(wire, attrval);
    }
    auto* record = new XdmFetchDocumentData(request.reqid(), static_cast<int>(body.rid()),
                                            TAKE_STRING(body, impu));
    record->type = static_cast<int>(protobuf_data_translation::translateXdmDocType(body.type()));
    record->name = TAKE_STRING(body, name);
    record->accessToken = TAKE_STRING(body, accesstoken);
    record->nodeSelector = selector;
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchXdmUploadPresRules) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmuploadpresrules());
    // The rules document itself is the stack's to build: rules is not read.
    s_velar->OnRequest(token, new XdmPresRuleData(request.reqid(), static_cast<int>(body.rid()),
                                                  TAKE_STRING(body, impu), TAKE_STRING(body, btid),
                                                  TAKE_STRING(body, gbakey)));
}

IMS_DISPATCH(DispatchXdmUploadContacts) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmuploadcontacts());
    std::vector<Contact*> contacts;
    contacts.reserve(static_cast<size_t>(body.contacts_size()));
    for (auto& wire : *body.mutable_contacts()) contacts.push_back(ConvertContact(&wire));
    s_velar->OnRequest(
        token, new XdmContactData(request.reqid(), static_cast<int>(body.rid()),
                                  TAKE_STRING(body, impu), contacts, TAKE_STRING(body, uuid),
                                  TAKE_STRING(body, etag), static_cast<int>(body.mtc())));
}

IMS_DISPATCH(DispatchXdmModifyContact) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmmodifycontact());
    // Without a contact on the wire the stack still gets one, empty.
    s_velar->OnRequest(
        token, new XdmModifyContactData(request.reqid(), static_cast<int>(body.rid()),
                                        TAKE_STRING(body, impu), TAKE_STRING(body, contactid),
                                        TAKE_STRING(body, uuid), TAKE_STRING(body, etag),
                                        ConvertContact(body.mutable_contact())));
}

IMS_DISPATCH(DispatchXdmDeleteContact) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmmodifycontact());
    s_velar->OnRequest(
        token, new XdmModifyContactData(request.reqid(), static_cast<int>(body.rid()),
                                        TAKE_STRING(body, impu), TAKE_STRING(body, contactid),
                                        TAKE_STRING(body, uuid), TAKE_STRING(body, etag), nullptr));
}

IMS_RESPONSE(ResponseXdmGeneralResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<XdmResponseData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_xdmgeneralresponse();
    body->set_rid(record->rid);
    body->set_success(record->success);
    body->set_statuscode(record->statusCode);
    if (!record->reason.empty()) body->set_reason(record->reason);
    if (!record->etag.empty()) body->set_etag(record->etag);
    if (!record->retryAfter.empty()) body->set_retryafter(record->retryAfter);
    for (const auto& [key, value] : record->result) {
        auto* pair = body->add_result();
        pair->set_key(key);
        pair->set_value(value);
    }
    return 0;
}
