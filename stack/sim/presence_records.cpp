// The provider's side of the presence records: the exported constructors and
// the destructors that free a presence document's tree.
#include "velar_sim.h"

namespace {
template <class T>
void deleteAll(std::vector<T*>& items) {
    for (T* item : items) delete item;
    items.clear();
}
}  // namespace

// A nested class: the definition macro would spell its name twice.
Element::Attribute::Attribute(const std::string& name_, const std::string& value_,
                              const std::string& nameSpace_)
    : name(name_), value(value_), nameSpace(nameSpace_) {}

Element::Element(const std::string& name_, const std::string& value_,
                 const std::string& nameSpace_)
    : name(name_), value(value_), nameSpace(nameSpace_) {}
Element::~Element() {
    deleteAll(attributes);
    deleteAll(elements);
}

VELAR_DEFINE_CONSTRUCTOR(PersonTuple, VELAR_ARGS_PersonTuple)
PersonTuple::~PersonTuple() {
    deleteAll(extensions);
    deleteAll(notes);
}

VELAR_DEFINE_CONSTRUCTOR(ServiceTuple, VELAR_ARGS_ServiceTuple)
ServiceTuple::~ServiceTuple() {
    deleteAll(mediaCapabilities);
    deleteAll(contacts);
    deleteAll(extensions);
    deleteAll(notes);
}

VELAR_DEFINE_CONSTRUCTOR(DeviceTuple, VELAR_ARGS_DeviceTuple)
DeviceTuple::~DeviceTuple() {
    deleteAll(deviceCapabilities);
    deleteAll(descriptions);
    deleteAll(extensions);
    deleteAll(notes);
}

VELAR_DEFINE_CONSTRUCTOR(Presentity, VELAR_ARGS_Presentity)
Presentity::~Presentity() {
    deleteAll(personTuples);
    deleteAll(serviceTuples);
    deleteAll(deviceTuples);
    deleteAll(notes);
}

VELAR_DEFINE_RECORD_CONSTRUCTOR(OptionsData, VELAR_ARGS_OptionsData)

VELAR_SIM_CLASS(PresencePublishData);
VELAR_SIM_CLASS(PresenceSubscribeData);
VELAR_SIM_CLASS(OptionsData);
VELAR_SIM_CLASS(PresencePublishStatusData);
VELAR_SIM_CLASS(PresenceNotifyData);
VELAR_SIM_CLASS(PresenceSubscribeStatusData);
VELAR_SIM_CLASS(OptionsReceivedData);
