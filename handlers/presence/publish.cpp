// Presence publication: the client's presence document goes to the stack as a
// tree of stack objects, whole and in wire order, and the stack's verdict
// comes back as a status notification.
#include <string>
#include <vector>

#include "handlers/common/record_head.h"
#include "handlers/common/take_fields.h"

namespace {

using WireElements = google::protobuf::RepeatedPtrField<imsCommonStruc::Element>;

// Attributes before children, children depth-first, so that the document's
// order survives at every level. The wire decoder's nesting limit bounds the
// recursion.
Element* ConvertElement(const imsCommonStruc::Element& wire) {
    auto* element = new Element(wire.name(), wire.value(), wire.namespace_());
    for (const auto& attribute : wire.attributes()) {
        element->attributes.push_back(
            new Element::Attribute(attribute.name(), attribute.value(), attribute.namespace_()));
    }
    for (const auto& child : wire.elements()) element->elements.push_back(ConvertElement(child));
    return element;
}

// The vector's pointers pass to whatever object it is given to.
std::vector<Element*> ConvertElements(const WireElements& wire) {
    std::vector<Element*> elements;
    elements.reserve(static_cast<size_t>(wire.size()));
    for (const auto& element : wire) elements.push_back(ConvertElement(element));
    return elements;
}

}  // namespace

IMS_DISPATCH(DispatchPresencePublish) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestpresencepublish());

    std::vector<PersonTuple*> persons;
    for (const auto& wire : body.persontuples()) {
        std::vector<Element*> extensions = ConvertElements(wire.extensions());
        std::vector<Element*> notes = ConvertElements(wire.notes());
        persons.push_back(new PersonTuple(wire.statusicon(), extensions, notes, wire.timestamp()));
    }

    std::vector<ServiceTuple*> services;
    for (const auto& wire : body.servicetuples()) {
        ServiceTuple::Status status;
        status.basic = wire.status().basic();
        std::vector<Element*> mediaCapabilities = ConvertElements(wire.mediacapabilities());
        std::vector<Element*> contacts = ConvertElements(wire.contacts());
        std::vector<Element*> extensions = ConvertElements(wire.extensions());
        std::vector<Element*> notes = ConvertElements(wire.notes());
        // The stack's order, not the wire's: tupleId comes second.
        services.push_back(new ServiceTuple(wire.serviceid(), wire.tupleid(), wire.version(),
                                            wire.description(), status, mediaCapabilities, contacts,
                                            extensions, notes, wire.timestamp()));
    }

    std::vector<DeviceTuple*> devices;
    for (const auto& wire : body.devicetuples()) {
        std::vector<Element*> capabilities = ConvertElements(wire.devicecapabilities());
        std::vector<Element*> descriptions = ConvertElements(wire.descriptions());
        std::vector<Element*> extensions = ConvertElements(wire.extensions());
        std::vector<Element*> notes = ConvertElements(wire.notes());
        devices.push_back(new DeviceTuple(wire.deviceid(), capabilities, descriptions, extensions,
                                          notes, wire.timestamp()));
    }

    std::vector<Element*> notes = ConvertElements(body.notes());
    auto* presentity =
        new Presentity(body.uri(), persons, services, devices, notes, TAKE_STRING(body, timestamp));
    auto* record = new PresencePublishData(request.reqid(), static_cast<int>(body.handle()),
                                           presentity, body.expiretime(), TAKE_STRING(body, etag));
    IMS_LOGI("%s() profile handle %d", __func__, static_cast<int>(body.handle()));
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchPresenceUnpublish) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestpresenceunpublish());
    // A withdrawal carries no document and no entity tag.
    auto* record =
        new PresencePublishData(request.reqid(), static_cast<int>(body.handle()), nullptr, 0, "");
    IMS_LOGI("%s() profile handle %d", __func__, static_cast<int>(body.handle()));
    s_velar->OnRequest(token, record);
}

IMS_NOTIFY(NotifyPresencePublishStatus) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<PresencePublishStatusData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_presencepublishstatus();
    // Every field is marked present, the optional ones included, whatever
    // the stack holds in them.
    body->set_handle(record->handle);
    body->set_issuccess(record->isSuccess);
    body->set_siperrorcode(record->sipErrorCode);
    body->set_siperrorphrase(record->sipErrorPhrase);
    body->set_etag(record->etag);
    body->set_remoteexpires(record->remoteExpires);
    body->set_minexpires(record->minExpires);
    body->set_isrefresh(record->isRefresh);
    body->set_retryafter(record->retryAfter);
    return 0;
}
