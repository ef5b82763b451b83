// XDM documents: fetching, uploading presence rules and contacts, changing
// and deleting a contact, and the XDM engine's answer to all of them.
#include <vector>

#include "handlers/handlers.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

namespace {

// Absent strings become empty ones; nothing is filtered or merged.
Contact* ConvertContact(const imsCommonStruc::Contact& wire) {
    auto* contact = new Contact;
    contact->contactId = wire.contactid();
    for (const auto& n : wire.contactnames()) {
        contact->contactNames.push_back(ContactName{n.title(), n.givenname(), n.middlename(),
                                                    n.familyname(), n.generationid(),
                                                    n.displayname()});
    }
    for (const auto& a : wire.contactaddresses()) {
        contact->contactAddresses.push_back(ContactAddress{a.type(), a.label(), a.addrstr(),
                                                           a.country(), a.region(), a.locality(),
                                                           a.street(), a.postcode()});
    }
    for (const auto& n : wire.contactnumbers())
        contact->contactNumbers.push_back(ContactNumber{n.number(), n.type(), n.label()});
    for (const auto& u : wire.contacturis())
        contact->contactUris.push_back(ContactUri{u.uri(), u.type(), u.label()});
    for (const auto& o : wire.contactorgs())
        contact->contactOrgs.push_back(ContactOrg{o.displayname(), o.entity(), o.unit()});
    return contact;
}

}  // namespace

IMS_DISPATCH(DispatchXdmFetchDocument) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestxdmfetchdocument());
    NodeSelectorData selector;
    if (body.has_nodeselector()) {
        const auto& wire = body.nodeselector();
        selector.node = wire.node();
        selector.pos = wire.pos();
        selector.attr = wire.attr();
        selector.attrVal = wire.attrval();
    }
    auto* record =
        new XdmFetchDocumentData(request.reqid(), static_cast<int>(body.rid()), body.impu());
    record->type = static_cast<int>(protobuf_data_translation::translateXdmDocType(body.type()));
    record->name = body.name();
    record->accessToken = body.accesstoken();
    record->nodeSelector = selector;
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchXdmUploadPresRules) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestxdmuploadpresrules());
    // The rules document itself is the stack's to build: rules is not read.
    s_velar->OnRequest(token, new XdmPresRuleData(request.reqid(), static_cast<int>(body.rid()),
                                                  body.impu(), body.btid(), body.gbakey()));
}

IMS_DISPATCH(DispatchXdmUploadContacts) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestxdmuploadcontacts());
    std::vector<Contact*> contacts;
    contacts.reserve(static_cast<size_t>(body.contacts_size()));
    for (const auto& wire : body.contacts()) contacts.push_back(ConvertContact(wire));
    s_velar->OnRequest(token, new XdmContactData(request.reqid(), static_cast<int>(body.rid()),
                                                 body.impu(), contacts, body.uuid(), body.etag(),
                                                 static_cast<int>(body.mtc())));
}

IMS_DISPATCH(DispatchXdmModifyContact) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestxdmmodifycontact());
    // Without a contact on the wire the stack still gets one, empty.
    s_velar->OnRequest(
        token, new XdmModifyContactData(request.reqid(), static_cast<int>(body.rid()), body.impu(),
                                        body.contactid(), body.uuid(), body.etag(),
                                        ConvertContact(body.contact())));
}

IMS_DISPATCH(DispatchXdmDeleteContact) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestxdmmodifycontact());
    s_velar->OnRequest(
        token, new XdmModifyContactData(request.reqid(), static_cast<int>(body.rid()), body.impu(),
                                        body.contactid(), body.uuid(), body.etag(), nullptr));
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
