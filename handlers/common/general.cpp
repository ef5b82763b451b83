// The two handlers that rows of every family share: the general answer and
// the request that goes nowhere.
#include "handlers/common/record_head.h"

// Its rows are taken in like any other, but nothing reaches the stack, so no
// answer ever follows.
IMS_DISPATCH(DispatchNoOperation) {}

IMS_RESPONSE(ResponseGeneralResponse) {
    IMS_LOGI("%s()", "ResponseGeneralResponse");
    const auto* record = RecordOf<GeneralResponseData>(response, data);
    if (record == nullptr) return -1;
    auto* body = response.mutable_generalresponse();
    IMS_LOGI("%s() handle:%0x", "ResponseGeneralResponse", record->handle);
    body->set_handle(record->handle);
    body->set_result(static_cast<imsCommonStruc::Result>(record->result));
    body->set_reason(static_cast<imsCommonStruc::GeneralReason>(record->reason));
    if (!record->errorStr.empty()) body->set_errorstr(record->errorStr);
    if (record->sipError > 0) body->set_siperror(record->sipError);
    return 0;
}
