// The provider's side of the XDM records.
#include "velar_sim.h"

VELAR_DEFINE_RECORD_CONSTRUCTOR(XdmData, VELAR_ARGS_XdmData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(XdmGbaData, VELAR_ARGS_XdmGbaData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(XdmKeyData, VELAR_ARGS_XdmKeyData)
VELAR_DEFINE_RECORD_CONSTRUCTOR(XdmPresRuleData, VELAR_ARGS_XdmPresRuleData)

VELAR_DEFINE_RECORD_CONSTRUCTOR(XdmContactData, VELAR_ARGS_XdmContactData)
XdmContactData::~XdmContactData() {
    for (Contact* c : contacts) delete c;
}

VELAR_DEFINE_RECORD_CONSTRUCTOR(XdmModifyContactData, VELAR_ARGS_XdmModifyContactData)
XdmModifyContactData::~XdmModifyContactData() {
    delete contact;
}

VELAR_SIM_CLASS(XdmFetchDocumentData);
VELAR_SIM_CLASS(XdmGbaData);
VELAR_SIM_CLASS(XdmKeyData);
VELAR_SIM_CLASS(XdmPresRuleData);
VELAR_SIM_CLASS(XdmContactData);
VELAR_SIM_CLASS(XdmModifyContactData);
VELAR_SIM_CLASS(XdmResponseData);
VELAR_SIM_CLASS(XdmGbaRequestData);
VELAR_SIM_CLASS(XdmAuthData);
VELAR_SIM_CLASS(XdmStoreGbaKeyData);
VELAR_SIM_CLASS(XdmContactListData);
