// Supplementary-service requests: reading and writing the subscriber's
// diversion, barring, identity and waiting settings, and the upkeep the stack
// needs for them (GBA key, DNS servers, route result, reset, simservs).
#include <list>
#include <string>

#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"

IMS_DISPATCH(DispatchSSGetDivInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgetssdivinfo());
    s_velar->OnRequest(token, new SSGetDivInfo(request.reqid(), body.sstype(), body.mediatype(),
                                               TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSGetICBInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgetssicbinfo());
    s_velar->OnRequest(token, new SSGetBarrInfo(request.reqid(), body.sstype(), body.mediatype(),
                                                TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSGetOCBInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgetssocbinfo());
    s_velar->OnRequest(token, new SSGetBarrInfo(request.reqid(), body.sstype(), body.mediatype(),
                                                TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSGetOIPInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgetssoipinfo());
    s_velar->OnRequest(token, new SSInfo(request.reqid(), TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSGetOIRInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgetssoirinfo());
    s_velar->OnRequest(token, new SSInfo(request.reqid(), TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSGetCommWaitInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgetsscwinfo());
    s_velar->OnRequest(token, new SSInfo(request.reqid(), TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSGetSDInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgetsssdinfo());
    s_velar->OnRequest(token, new SSInfo(request.reqid(), TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSSetDivInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsetssdivinfo());
    // In wire order, duplicates kept: the forwarding targets are the
    // framework's list, not a set.
    std::list<SS_FORWARD_TO> fwdElm(body.fwdelm().begin(), body.fwdelm().end());
    s_velar->OnRequest(
        token, new SSSetDivInfo(request.reqid(), body.serviceactivation(),
                                static_cast<int>(body.noreplytimer()), body.ruleid(),
                                static_cast<int>(body.cftype()), fwdElm, body.target(),
                                body.mediatype(), TAKE_STRING(body, impu), body.deleterule()));
}

namespace {

// Incoming and outgoing barring share one wire body; the record id tells them
// apart. The wire's deleteRule has no place in the record and stays behind.
void dispatchSetBarr(uint32_t token, imsCommonStruc::Request& request) {
    const auto& body = TakeBody(request.mutable_requestsetssbarrinfo());
    s_velar->OnRequest(
        token, new SSSetBarrInfo(request.reqid(), body.serviceactivation(), body.ruleid(),
                                 static_cast<int>(body.cbtype()), body.mediatype(), body.allow(),
                                 body.impu(), body.sibtarget()));
}

}  // namespace

IMS_DISPATCH(DispatchSSSetICBInfo) {
    IMS_LOGI("%s()", __func__);
    dispatchSetBarr(token, request);
}

IMS_DISPATCH(DispatchSSSetOCBInfo) {
    IMS_LOGI("%s()", __func__);
    dispatchSetBarr(token, request);
}

IMS_DISPATCH(DispatchSSSetOIRInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsetssoirinfo());
    s_velar->OnRequest(token, new SSSetOIRInfo(request.reqid(), body.serviceactivation(),
                                               TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSSetCommWaitInfo) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestsetsscwinfo());
    s_velar->OnRequest(token, new SSSetCommWaitInfo(request.reqid(), body.serviceactivation(),
                                                    TAKE_STRING(body, impu)));
}

IMS_DISPATCH(DispatchSSUpdateGbaKey) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestssupdategbakey());
    if (logLevel > 1) IMS_LOGD("%s() %s", __func__, body.gbakey().c_str());
    s_velar->OnRequest(token, new SSGbaKeyData(request.reqid(), body.gbakey()));
}

IMS_DISPATCH(DispatchSSUpdateDns) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestssupdatedns());
    std::list<std::string> dnsList(body.dnslist().begin(), body.dnslist().end());
    if (logLevel > 1) IMS_LOGD("%s() %s", __func__, body.iface().c_str());
    s_velar->OnRequest(token, new SSGetDns(request.reqid(), dnsList, body.iface()));
}

IMS_DISPATCH(DispatchSSUpdateRouteResult) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestssupdaterouteresult());
    s_velar->OnRequest(token, new PrimitiveData<bool>(request.reqid(), body.result()));
}

IMS_DISPATCH(DispatchSSResetConfigure) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestssresetconfigure());
    s_velar->OnRequest(token, new PrimitiveData<bool>(request.reqid(), body.reset()));
}
