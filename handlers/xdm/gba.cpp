// The client's answers to the XDM engine's authentication questions: GBA
// data, the AKA response and the GBA key.
#include "handlers/handlers.h"

IMS_DISPATCH(DispatchXdmUpdateGbaData) {
    IMS_LOGI("%s()", __func__);
    const auto body = request.requestxdmupdategbadata();
    s_velar->OnRequest(token, new XdmGbaData(801, static_cast<int>(body.rid()), body.imsi(),
                                             body.gbauiccsupported()));
}

IMS_DISPATCH(DispatchXdmUpdateGbaKey) {
    IMS_LOGI("%s()", __func__);
    const auto body = request.requestxdmupdategbakey();
    if (logLevel > 1) IMS_LOGD("%s() %s", __func__, body.gbakey().c_str());
    s_velar->OnRequest(
        token, new XdmKeyData(803, static_cast<int>(body.rid()), body.btid(), body.gbakey()));
}
