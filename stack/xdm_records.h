// Records of the XDM family: documents, contacts, GBA and what the stack's
// XDM engine hands up.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "shared_records.h"

// The stack's contact: plain structures of strings, in the order of the
// wire fields of the same names.
#define VELAR_FIELDS_ContactName                                               \
    (title, std::string), (givenName, std::string), (middleName, std::string), \
        (familyName, std::string), (generationId, std::string), (displayName, std::string)
struct ContactName {
    VELAR_FIELDS(VELAR_FIELDS_ContactName)
};
#define VELAR_FIELDS_ContactAddress                                                            \
    (type, std::string), (label, std::string), (addrStr, std::string), (country, std::string), \
        (region, std::string), (locality, std::string), (street, std::string),                 \
        (postCode, std::string)
struct ContactAddress {
    VELAR_FIELDS(VELAR_FIELDS_ContactAddress)
};
#define VELAR_FIELDS_ContactNumber (number, std::string), (type, std::string), (label, std::string)
struct ContactNumber {
    VELAR_FIELDS(VELAR_FIELDS_ContactNumber)
};
#define VELAR_FIELDS_ContactUri (uri, std::string), (type, std::string), (label, std::string)
struct ContactUri {
    VELAR_FIELDS(VELAR_FIELDS_ContactUri)
};
#define VELAR_FIELDS_ContactOrg \
    (displayName, std::string), (entity, std::string), (unit, std::string)
struct ContactOrg {
    VELAR_FIELDS(VELAR_FIELDS_ContactOrg)
};
#define VELAR_FIELDS_Contact                                                                  \
    (contactId, std::string), (contactNames, std::vector<ContactName>),                       \
        (contactAddresses, std::vector<ContactAddress>),                                      \
        (contactNumbers, std::vector<ContactNumber>), (contactUris, std::vector<ContactUri>), \
        (contactOrgs, std::vector<ContactOrg>)
struct Contact {
    VELAR_FIELDS(VELAR_FIELDS_Contact)
};

// Base of the document fetch (804), which the daemon completes after this
// constructor.
#define VELAR_ARGS_XdmData (rid, int), (impu, const std::string&)
class XdmData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(XdmData, VELAR_ARGS_XdmData)
};

#define VELAR_FIELDS_NodeSelectorData \
    (node, std::string), (pos, unsigned int), (attr, std::string), (attrVal, std::string)
struct NodeSelectorData {
    VELAR_FIELDS(VELAR_FIELDS_NodeSelectorData)
};

// Request 804: the base's constructor, then the fields, which the daemon
// fills.
#define VELAR_FIELDS_XdmFetchDocumentData \
    (type, int), (name, std::string), (accessToken, std::string), (nodeSelector, NodeSelectorData)
class XdmFetchDocumentData : public XdmData {
public:
    XdmFetchDocumentData(int recordId, int rid_, const std::string& impu_)
        : XdmData(recordId, rid_, impu_) {}
    VELAR_FIELDS(VELAR_FIELDS_XdmFetchDocumentData)
};

// Request 801.
#define VELAR_ARGS_XdmGbaData (rid, int), (imsi, const std::string&), (gbaUiccSupported, bool)
class XdmGbaData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(XdmGbaData, VELAR_ARGS_XdmGbaData)
};

// Request 803.
#define VELAR_ARGS_XdmKeyData (rid, int), (btid, const std::string&), (gbaKey, const std::string&)
class XdmKeyData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(XdmKeyData, VELAR_ARGS_XdmKeyData)
};

// Request 805.
#define VELAR_ARGS_XdmPresRuleData \
    (rid, int), (impu, const std::string&), (btid, const std::string&), (gbaKey, const std::string&)
class XdmPresRuleData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(XdmPresRuleData, VELAR_ARGS_XdmPresRuleData)
};

// Request 806; owns the contacts it is given.
#define VELAR_ARGS_XdmContactData                                               \
    (rid, int), (impu, const std::string&), (contacts, std::vector<Contact*>&), \
        (uuid, const std::string&), (etag, const std::string&), (mtc, int)
class XdmContactData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(XdmContactData, VELAR_ARGS_XdmContactData)
    ~XdmContactData() override;
    XdmContactData(const XdmContactData&) = delete;
    XdmContactData& operator=(const XdmContactData&) = delete;
};

// Requests 807 and 808 (with no contact); owns the contact.
#define VELAR_ARGS_XdmModifyContactData                                      \
    (rid, int), (impu, const std::string&), (contactId, const std::string&), \
        (uuid, const std::string&), (etag, const std::string&), (contact, Contact*)
class XdmModifyContactData : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(XdmModifyContactData, VELAR_ARGS_XdmModifyContactData)
    ~XdmModifyContactData() override;
    XdmModifyContactData(const XdmModifyContactData&) = delete;
    XdmModifyContactData& operator=(const XdmModifyContactData&) = delete;
};

// The answer of requests 801 to 808.
#define VELAR_FIELDS_XdmResponseData                                                          \
    (rid, unsigned int), (success, bool), (reason, std::string),                              \
        (result, std::map<std::string, std::string>), (statusCode, int), (etag, std::string), \
        (retryAfter, std::string)
class XdmResponseData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_XdmResponseData)
};

// Notification 14001. The string after rid is the library's own: it keeps
// its place in the layout but the daemon never reads it.
class XdmGbaRequestData : public ImsData {
public:
    unsigned int rid{};
    std::string unread;
    std::string nafFqdn;
    std::string hexProtocolId;
};

// Notification 14002. The library holds one more field between nonce and
// sessionId, of a type not known here; it is left out, so a provider that
// keeps it must not rely on this declaration's layout.
#define VELAR_FIELDS_XdmAuthData \
    (recvMng, unsigned int), (nonce, std::string), (sessionId, unsigned int)
class XdmAuthData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_XdmAuthData)
};

// Notification 14003. As in 14001, an unread string follows rid.
class XdmStoreGbaKeyData : public ImsData {
public:
    unsigned int rid{};
    std::string unread;
    std::string nonce;
    std::string btid;
    std::string lifetime;
    std::string gbaType;
    std::string nafFqdn;
    std::string hexProtocolId;
};

// Notifications 14004 and 14005; owns the vector.
#define VELAR_FIELDS_XdmContactListData (rid, unsigned int), (contacts, std::vector<Contact>*)
class XdmContactListData : public ImsData {
public:
    XdmContactListData() = default;
    ~XdmContactListData() override { delete contacts; }
    XdmContactListData(const XdmContactListData&) = delete;
    XdmContactListData& operator=(const XdmContactListData&) = delete;
    VELAR_FIELDS(VELAR_FIELDS_XdmContactListData)
};
