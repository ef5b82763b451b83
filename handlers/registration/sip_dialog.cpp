// The SIP dialog channel and its reports.
#include "handlers/handlers.h"

IMS_DISPATCH(DispatchOpenSipDialog) {
    IMS_LOGI("%s()", __func__);
    const imsCommonStruc::Request_RequestOpenSipDialog body =
        request.has_requestopensipdialog()
            ? request.requestopensipdialog()
            : imsCommonStruc::Request_RequestOpenSipDialog::default_instance();
    s_velar->OnRequest(token, new PrimitiveData<bool>(1201, body.isrequired()));
}
