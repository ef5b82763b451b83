// Group chat subscriptions: the list of the user's group chats and the
// details of one of them. Subscription ids, versions and modes pass through;
// the daemon keeps no subscription of its own.
#include "handlers/handlers.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

IMS_DISPATCH(DispatchGroupListSubscribe) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgrouplistsubscribe());
    auto* record = new GroupListSubscribeData(request.reqid());
    record->handle = body.handle();
    record->subscriptionId = body.subscriptionid();
    record->version = body.version();
    record->isIncrease = body.isincrease();
    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchGroupInfoSubscribe) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestgroupinfosubscribe());
    auto* record = new GroupInfoSubscribeData(request.reqid());
    record->handle = body.handle();
    record->subscriptionId = body.subscriptionid();
    record->uri = body.uri();
    s_velar->OnRequest(token, record);
}

IMS_NOTIFY(NotifyGroupChatSubscribeStatus) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<GroupSubscribeStatusData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_groupchatsubscribestatus();
    body->set_handle(record->handle);
    body->set_issuccess(record->isSuccess);
    body->set_siperrorcode(record->sipErrorCode);
    body->set_siperrorphrase(record->sipErrorPhrase);
    body->set_subscriptionid(record->subscriptionId);
    return 0;
}

IMS_NOTIFY(NotifyGroupListUpdate) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<GroupListUpdateData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_groupchatlistupdated();
    body->set_version(record->version);
    body->set_increasemode(record->increaseMode);
    for (const auto& group : record->groups) {
        auto* info = body->add_groupchats();
        info->set_method(group.method);
        info->set_uri(group.uri);
        info->set_conversationid(group.conversationId);
        info->set_subject(group.subject);
    }
    return 0;
}

IMS_NOTIFY(NotifyGroupInfoUpdate) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<GroupInfoUpdateData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_groupchatinfoupdated();
    body->set_uri(record->uri);
    auto* info = body->mutable_info();
    info->set_sessionid(record->sessionId);
    info->set_state(record->state);
    info->set_subject(record->subject);
    info->set_maxusercnt(record->maxUserCnt);
    for (const auto& user : record->users)
        protobuf_data_translation::translateStackConfUser(*info->add_users(), user, false);
    return 0;
}
