// What the image and video share notifications share.
#pragma once

#include "handlers/common/record_head.h"

namespace ims_share {

// The session notifications that carry a CshResultData: the session, and the
// code as it stands in the enumeration field the notification names.
template <class Body, class Code>
int NotifyResult(imsCommonStruc::Notify& notify, ImsData* data,
                 Body* (imsCommonStruc::Notify::*body)(), void (Body::*setCode)(Code)) {
    const auto* record = RecordOf<CshResultData>(notify, data);
    if (record == nullptr) return -1;
    Body* wire = (notify.*body)();
    wire->set_sessionid(record->sessionId);
    (wire->*setCode)(static_cast<Code>(record->code));
    return 0;
}

}  // namespace ims_share
