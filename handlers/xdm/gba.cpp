// The client's answers to the XDM engine's authentication questions: GBA
// data, the AKA response and the GBA key.
#include <string>

#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"

IMS_DISPATCH(DispatchXdmUpdateGbaData) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmupdategbadata());
    s_velar->OnRequest(token, new XdmGbaData(request.reqid(), static_cast<int>(body.rid()),
                                             TAKE_STRING(body, imsi), body.gbauiccsupported()));
}

// The XDM engine takes its AKA answer in the registration's record, with sid
// where registration has its handle and no nonce.
IMS_DISPATCH(DispatchXdmUpdateAkaResp) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmupdateakaresp());
    if (logLevel > 1) IMS_LOGD("%s() %s", __func__, body.akaresp().c_str());
    s_velar->OnRequest(
        token,
        new RegiAuth(request.reqid(), static_cast<RegiAuth::AKA_RESP_RECV_MANAGER>(body.recvmng()),
                     static_cast<int>(body.sid()), std::string(), body.akaresp()));
}

IMS_DISPATCH(DispatchXdmUpdateGbaKey) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestxdmupdategbakey());
    if (logLevel > 1) IMS_LOGD("%s() %s", __func__, body.gbakey().c_str());
    s_velar->OnRequest(token, new XdmKeyData(request.reqid(), static_cast<int>(body.rid()),
                                             TAKE_STRING(body, btid), body.gbakey()));
}
