// User agents: creation with the whole profile, and deletion.
#include "handlers/handlers.h"

IMS_DISPATCH(DispatchUADeletion) {
    IMS_LOGI("%s()", __func__);
    const imsCommonStruc::Request_RequestUADeletion body =
        request.has_requestuadeletion() ? request.requestuadeletion()
                                        : imsCommonStruc::Request_RequestUADeletion::default_instance();
    s_velar->OnRequest(token, new PrimitiveData<int>(103, static_cast<int>(body.handle())));
}
