// Records of the presence family: the presence document as a tree of stack
// objects, subscriptions, capability exchange, and what the stack hands up.
#pragma once

#include <string>
#include <vector>

#include "shared_records.h"

// One node of a presence document. It owns its attributes and children, which
// the daemon appends after construction.
#define VELAR_ARGS_Element_Attribute \
    (name, const std::string&), (value, const std::string&), (nameSpace, const std::string&)
class Element {
public:
    class Attribute {
    public:
        VELAR_CONSTRUCTOR(Attribute, VELAR_ARGS_Element_Attribute)
    };

    // Written out rather than declared by the macros: the library holds the
    // two sequences between the name and the other two strings.
    Element(const std::string& name_, const std::string& value_, const std::string& nameSpace_);
    std::string name;
    std::vector<Attribute*> attributes;
    std::vector<Element*> elements;
    std::string value;
    std::string nameSpace;
    ~Element();
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;
};

// Each tuple takes over the elements of the vectors it is given.
#define VELAR_ARGS_PersonTuple                                              \
    (statusIcon, const std::string&), (extensions, std::vector<Element*>&), \
        (notes, std::vector<Element*>&), (timestamp, const std::string&)
class PersonTuple {
public:
    VELAR_CONSTRUCTOR(PersonTuple, VELAR_ARGS_PersonTuple)
    ~PersonTuple();
    PersonTuple(const PersonTuple&) = delete;
    PersonTuple& operator=(const PersonTuple&) = delete;
};

#define VELAR_FIELDS_ServiceTuple_Status (basic, std::string)
class ServiceTuple {
public:
    // Made by the daemon as a local value; the tuple keeps its own copy.
    class Status {
    public:
        virtual ~Status() = default;
        VELAR_FIELDS(VELAR_FIELDS_ServiceTuple_Status)
    };

#define VELAR_ARGS_ServiceTuple                                                                    \
    (serviceId, const std::string&), (tupleId, const std::string&), (version, const std::string&), \
        (description, const std::string&), (status, ServiceTuple::Status&),                        \
        (mediaCapabilities, std::vector<Element*>&), (contacts, std::vector<Element*>&),           \
        (extensions, std::vector<Element*>&), (notes, std::vector<Element*>&),                     \
        (timestamp, const std::string&)
    VELAR_CONSTRUCTOR(ServiceTuple, VELAR_ARGS_ServiceTuple)
    ~ServiceTuple();
    ServiceTuple(const ServiceTuple&) = delete;
    ServiceTuple& operator=(const ServiceTuple&) = delete;
};

#define VELAR_ARGS_DeviceTuple                                                        \
    (deviceId, const std::string&), (deviceCapabilities, std::vector<Element*>&),     \
        (descriptions, std::vector<Element*>&), (extensions, std::vector<Element*>&), \
        (notes, std::vector<Element*>&), (timestamp, const std::string&)
class DeviceTuple {
public:
    VELAR_CONSTRUCTOR(DeviceTuple, VELAR_ARGS_DeviceTuple)
    ~DeviceTuple();
    DeviceTuple(const DeviceTuple&) = delete;
    DeviceTuple& operator=(const DeviceTuple&) = delete;
};

// The root of a presence document; owns every tuple and note.
#define VELAR_ARGS_Presentity                                                                     \
    (uri, const std::string&), (personTuples, std::vector<PersonTuple*>&),                        \
        (serviceTuples, std::vector<ServiceTuple*>&), (deviceTuples, std::vector<DeviceTuple*>&), \
        (notes, std::vector<Element*>&), (timestamp, const std::string&)
class Presentity {
public:
    VELAR_CONSTRUCTOR(Presentity, VELAR_ARGS_Presentity)
    virtual ~Presentity();
    Presentity(const Presentity&) = delete;
    Presentity& operator=(const Presentity&) = delete;
};

// Requests 701 (publish) and 702 (withdrawal, with no presentity).
#define VELAR_FIELDS_PresencePublishData \
    (handle, int), (presentity, Presentity*), (expireTime, unsigned int), (eTag, std::string)
class PresencePublishData : public ImsData {
public:
    PresencePublishData(int recordId, int handle_, Presentity* presentity_,
                        unsigned int expireTime_, const std::string& eTag_)
        : ImsData(recordId),
          handle(handle_),
          presentity(presentity_),
          expireTime(expireTime_),
          eTag(eTag_) {}
    ~PresencePublishData() override { delete presentity; }
    PresencePublishData(const PresencePublishData&) = delete;
    PresencePublishData& operator=(const PresencePublishData&) = delete;
    VELAR_FIELDS(VELAR_FIELDS_PresencePublishData)
};

// Requests 711 and 712.
#define VELAR_FIELDS_PresenceSubscribeData                                                         \
    (handle, int), (uris, std::vector<std::string>), (isAnonymous, bool), (isListSubscribe, bool), \
        (subscriptionId, std::string), (gzipEnable, bool), (expires, unsigned int)
class PresenceSubscribeData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_PresenceSubscribeData)
};

// Request 751.
#define VELAR_ARGS_OptionsData \
    (handle, int), (uri, std::string), (features, const std::vector<unsigned int>&)
class OptionsData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(OptionsData, VELAR_ARGS_OptionsData)
};

// Notifications 13002 and 13003.
#define VELAR_FIELDS_PresencePublishStatusData                                             \
    (handle, unsigned int), (isSuccess, bool), (sipErrorCode, unsigned int),               \
        (sipErrorPhrase, std::string), (etag, std::string), (remoteExpires, unsigned int), \
        (minExpires, unsigned int), (isRefresh, bool), (retryAfter, unsigned int)
class PresencePublishStatusData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_PresencePublishStatusData)
};

#define VELAR_FIELDS_PresenceServiceData                                     \
    (serviceId, std::string), (version, std::string), (status, std::string), \
        (mediaCapabilities, std::vector<std::string>)
class PresenceServiceData {
public:
    VELAR_FIELDS(VELAR_FIELDS_PresenceServiceData)
};

#define VELAR_FIELDS_PresenceContactData                                                         \
    (uri, std::string), (subscriptionState, std::string),                                        \
        (subscriptionFailureReason, std::string), (services, std::vector<PresenceServiceData*>), \
        (rawPidf, std::string)
class PresenceContactData {
public:
    PresenceContactData() = default;
    ~PresenceContactData() {
        for (PresenceServiceData* s : services) delete s;
    }
    PresenceContactData(const PresenceContactData&) = delete;
    PresenceContactData& operator=(const PresenceContactData&) = delete;
    VELAR_FIELDS(VELAR_FIELDS_PresenceContactData)
};

// Notification 13001.
#define VELAR_FIELDS_PresenceNotifyData                    \
    (handle, unsigned int), (subscriptionId, std::string), \
        (contacts, std::vector<PresenceContactData*>)
class PresenceNotifyData : public ImsData {
public:
    PresenceNotifyData() = default;
    ~PresenceNotifyData() override {
        for (PresenceContactData* c : contacts) delete c;
    }
    PresenceNotifyData(const PresenceNotifyData&) = delete;
    PresenceNotifyData& operator=(const PresenceNotifyData&) = delete;
    VELAR_FIELDS(VELAR_FIELDS_PresenceNotifyData)
};

// Notification 13004.
#define VELAR_FIELDS_PresenceSubscribeStatusData                             \
    (handle, unsigned int), (isSuccess, bool), (sipErrorCode, unsigned int), \
        (sipErrorPhrase, std::string), (subscriptionId, std::string), (minExpires, unsigned int)
class PresenceSubscribeStatusData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_PresenceSubscribeStatusData)
};

// Notification 15001.
#define VELAR_FIELDS_OptionsReceivedData                                                      \
    (sessionId, unsigned int), (remoteUri, std::string), (isResponse, bool), (success, bool), \
        (reason, int), (tags, std::vector<unsigned int>)
class OptionsReceivedData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_OptionsReceivedData)
};
