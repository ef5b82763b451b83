// Supplementary-service answers: the results of the Get requests, the GBA key
// inputs and the XCAP traffic the stack reports.
#include "handlers/common/helpers.h"

namespace {

using imsCommonStruc::Media;

// Incoming and outgoing barring fill the same message; only the incoming
// answer carries the SIB target.
void fillBarr(const SSBarrInfoResult& r, imsCommonStruc::Response_ResponseSSbarrInfo* body,
              bool withSibTarget) {
    body->set_serviceactivation(r.mServiceActivation);
    body->set_ruleid(r.mRuleId);
    body->set_cbtype(r.mCbType);
    for (bool v : r.mSsStatus) body->add_ssstatus(v);
    for (int v : r.mMediaType) body->add_mediatype(static_cast<Media>(v));
    for (bool v : r.mAllow) body->add_allow(v);
    if (withSibTarget) body->set_sibtarget(r.mSibTarget);
    body->set_error(r.mError);
    body->set_errorstr(r.mErrorStr);
}

// ResponseSSGetOIPInfo and ResponseSSGetCWInfo have the same three fields.
template <class Body>
void fillFlag(const SSFlagInfoResult& r, Body* body) {
    body->set_serviceactivation(r.mServiceActivation);
    body->set_error(r.mError);
    body->set_errorstr(r.mErrorStr);
}

}  // namespace

IMS_RESPONSE(ResponseSSDivInfoResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* r = RecordOf<SSDivInfoResult>(response, data);
    if (r == nullptr) return -1;
    auto* body = response.mutable_responsessdivinfo();
    body->set_serviceactivation(r->mServiceActivation);
    body->set_noreplytimer(r->mNoReplyTimer);
    body->set_ruleid(r->mRuleId);
    body->set_cftype(r->mCfType);
    // Each list as long as the stack made it: the rules are not aligned here.
    for (bool v : r->mSsStatus) body->add_ssstatus(v);
    for (int v : r->mFwdElm) body->add_fwdelm(static_cast<imsCommonStruc::SSForwardTo>(v));
    for (const auto& v : r->mTarget) body->add_target(v);
    for (int v : r->mMediaType) body->add_mediatype(static_cast<Media>(v));
    body->set_error(r->mError);
    body->set_errorstr(r->mErrorStr);
    return 0;
}

IMS_RESPONSE(ResponseSSICBInfoResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<SSBarrInfoResult>(response, data);
    if (record == nullptr) return -1;
    fillBarr(*record, response.mutable_responsessicbinfo(), true);
    return 0;
}

IMS_RESPONSE(ResponseSSOCBInfoResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<SSBarrInfoResult>(response, data);
    if (record == nullptr) return -1;
    fillBarr(*record, response.mutable_responsessocbinfo(), false);
    return 0;
}

IMS_RESPONSE(ResponseSSOIPInfoResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<SSFlagInfoResult>(response, data);
    if (record == nullptr) return -1;
    fillFlag(*record, response.mutable_responsessgetoipinfo());
    return 0;
}

IMS_RESPONSE(ResponseSSOIRInfoResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<SSFlagInfoResult>(response, data);
    if (record == nullptr) return -1;
    fillFlag(*record, response.mutable_responsessgetoirinfo());
    return 0;
}

IMS_RESPONSE(ResponseSSCWInfoResponse) {
    IMS_LOGI("%s()", __func__);
    const auto* record = RecordOf<SSFlagInfoResult>(response, data);
    if (record == nullptr) return -1;
    fillFlag(*record, response.mutable_responsessgetcwinfo());
    return 0;
}

IMS_NOTIFY(NotifySsRequestGenKey) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<SSGenKeyData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_ssgetgbakey();
    body->set_gbatype(r->mGbatype);
    body->set_ck(r->mCk);
    body->set_ik(r->mIk);
    body->set_nonce(r->mNonce);
    body->set_lifetime(r->mLifetime);
    body->set_btid(r->mBtid);
    return 0;
}

IMS_NOTIFY(NotifyXCapMessage) {
    IMS_LOGV("%s()", __func__);
    const auto* r = RecordOf<XCapMessageData>(notify, data);
    if (r == nullptr) return -1;
    auto* body = notify.mutable_xcapmessage();
    body->set_handle(r->mHandle);
    body->set_direction(static_cast<imsCommonStruc::XCapDirection>(r->mDirection));
    body->set_xcapmessage(r->mXcapMessage);
    return 0;
}
