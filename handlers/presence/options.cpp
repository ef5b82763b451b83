// Capability exchange by OPTIONS: feature tags travel as plain numbers in
// both directions, in order, duplicates included.
#include <vector>

#include "handlers/common/record_head.h"

IMS_DISPATCH(DispatchOptionsCapExchange) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestoptionscapexchange());
    std::vector<unsigned int> features;
    features.reserve(static_cast<size_t>(body.myfeatures_size()));
    for (int feature : body.myfeatures()) features.push_back(static_cast<unsigned int>(feature));
    s_velar->OnRequest(token, new OptionsData(request.reqid(), static_cast<int>(body.handle()),
                                              body.uri(), features));
}

IMS_NOTIFY(NotifyOptionsReceived) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<OptionsReceivedData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_optionsreceivedinfo();
    body->set_sessionid(record->sessionId);
    body->set_remoteuri(record->remoteUri);
    body->set_isresponse(record->isResponse);
    body->set_success(record->success);
    // Present even when it is FAILURE_NONE.
    body->set_reason(
        static_cast<imsCommonStruc::Notify_OptionsReceivedInfo_ErrorReason>(record->reason));
    for (unsigned int tag : record->tags)
        body->add_tags(static_cast<imsCommonStruc::FeatureTag>(tag));
    return 0;
}
