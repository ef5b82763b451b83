// What the stack reports about chat sessions. The session notifications
// serve file-transfer sessions as well; notifyid tells them apart.
#include <string>

#include "handlers/handlers.h"
#include "handlers/messaging/protobuf_data_translation.h"
#include "handlers/common/record_head.h"

using protobuf_data_translation::translateStackImdnData;
using protobuf_data_translation::translateStackImdnNoti;
using protobuf_data_translation::translateStackImMessage;

IMS_NOTIFY(NotifySessionStarted) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<SessionStartedData>(notify, data, {"invalid notify: NULL"});
    if (record == nullptr) return -1;
    auto* body = notify.mutable_sessionstarted();
    body->set_sessionhandle(record->handle);
    SetImError(body->mutable_imerror(), record->error);
    body->set_sessionuri(record->sessionUri);
    if (record->retry.retryTimer != -1) SetRetryHdr(body->mutable_retryhdr(), record->retry);
    if (record->warning.code != -1) SetWarningHdr(body->mutable_warninghdr(), record->warning);
    return 0;
}

IMS_NOTIFY(NotifySessionClosed) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<SessionClosedData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_sessionclosed();
    body->set_sessionhandle(record->handle);
    SetImError(body->mutable_imerror(), record->error);
    if (record->reason.code != -1) SetReasonHdr(body->mutable_reasonhdr(), record->reason);
    return 0;
}

IMS_NOTIFY(NotifySessionEstablished) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<SessionEstablishedData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_sessionestablished();
    body->set_sessionhandle(record->handle);
    SetImError(body->mutable_imerror(), record->error);
    for (const std::string& content : record->acceptContent) body->add_acceptcontent(content);
    return 0;
}

IMS_NOTIFY(NotifyIncomingImChat) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<ImSessionInvitedData>(notify, data);
    if (record == nullptr) return -1;
    // The library never hands these pointers up null; should one be, it is
    // read as empty rather than taking the daemon down.
    const ImSessionParam noSession;
    const ImMessage noMessage;
    const ImSessionParam& session = record->session != nullptr ? *record->session : noSession;
    const ImMessage& message = record->message != nullptr ? *record->message : noMessage;

    auto* body = notify.mutable_imsessioninvited();
    body->set_remotemsrpaddr(record->remoteMsrpAddr);
    body->set_isdeferred(record->isDeferred);
    body->set_isforstorednoti(record->isForStoredNoti);

    auto* wireSession = body->mutable_session();
    auto* base = wireSession->mutable_basesessiondata();
    // The record's own handle names the session, not the one inside it.
    base->set_sessionhandle(record->handle);
    base->set_id(session.id);
    base->set_isconference(session.isConference);
    base->set_sessionuri(session.sessionUri);
    base->set_sdpcontenttype(session.sdpContentType);
    base->set_serviceid(session.serviceId);
    base->set_useralias(session.userAlias);
    for (const std::string& receiver : session.receivers) base->add_receivers(receiver);
    base->set_contributionid(session.contributionId);
    base->set_conversationid(session.conversationId);
    base->set_inreplytocontributionid(session.inReplyToContributionId);
    wireSession->set_sender(session.sender);
    wireSession->set_subject(session.subject);
    wireSession->set_isclosed(session.isClosed);

    // A first message counts only when it has an IMDN message id; without
    // one the invitation goes out without messageParam, whatever the body.
    if (!message.imdn.messageId.empty()) {
        auto* param = body->mutable_messageparam();
        param->set_sender(message.sender);
        param->set_body(message.body);
        param->set_contenttype(message.contentType);
        param->set_reliablemessage(message.reliableMessage);
        param->set_extraft(message.extraFt);
        translateStackImdnData(*param->mutable_imdn(), message.imdn);
    }
    base->set_preferredlineuri(session.preferredLineUri);
    return 0;
}

IMS_NOTIFY(NotifyMessageReceived) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<ImMessageReceivedData>(notify, data);
    if (record == nullptr) return -1;
    const ImMessage noMessage;  // see NotifyIncomingImChat
    auto* body = notify.mutable_immessagereceived();
    body->mutable_sessiondata()->set_sessionhandle(record->handle);
    translateStackImMessage(*body->mutable_messageparam(),
                            record->message != nullptr ? *record->message : noMessage);
    return 0;
}

IMS_NOTIFY(NotifyImdnReceived) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<ImdnReceivedData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_imnotificationstatusreceived();
    body->set_sessionid(record->handle);
    body->set_uri(record->uri);
    body->set_preferredlineuri(record->preferredLineUri);
    auto* status = body->mutable_status();
    status->set_imdnmessageid(record->imdn.messageId);
    status->set_imdndatetime(record->imdn.datetime);
    // The wire has room for one status: the highest of the set wins, and an
    // empty set leaves it unset.
    for (cpmim::ImNotificationStatus noti : record->imdn.noti)
        status->set_status(translateStackImdnNoti(noti));
    return 0;
}

IMS_NOTIFY(NotifyComposingStatusReceived) {
    IMS_LOGD("%s()", __func__);
    const auto* record = RecordOf<ImComposingReceivedData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_imcomposingstatusreceived();
    body->set_sessionid(record->handle);
    body->set_uri(record->uri);
    auto* status = body->mutable_status();
    status->set_contenttype(record->status.contentType);
    status->set_interval(record->status.interval);
    status->set_isactive(record->status.isActive);
    body->set_useralias(record->userAlias);
    return 0;
}

IMS_NOTIFY(PrepareNotifyImMessageReportReceived) {
    static constexpr const char* kSignature =
        "int PrepareNotifyImMessageReportReceived(imsCommonStruc::Notify&, "
        "ImsData*)";
    const char* name = IMS_METHOD_NAME(kSignature);
    IMS_LOGV("%s: ", name);
    const auto* record = RecordOf<ImMessageReportData>(notify, data, {kNullRecord, name});
    if (record == nullptr) return -1;
    auto* body = notify.mutable_immessagereportreceived();
    body->set_sessionid(record->handle);
    body->set_imdnmessageid(record->imdnMessageId);
    SetImError(body->mutable_imerror(), record->error);
    body->set_ischat(record->isChat);
    return 0;
}

IMS_NOTIFY(NotifyImConferenceInfoUpdate) {
    IMS_LOGV("%s()", __func__);
    const auto* record = RecordOf<ImConferenceInfoData>(notify, data);
    if (record == nullptr) return -1;
    auto* body = notify.mutable_imconfinfoupdated();
    body->set_sessionid(record->handle);
    body->set_state(record->state);
    body->set_subject(record->subject);
    body->set_maxusercnt(record->maxUserCnt);
    for (const ImConferenceUser& user : record->users)
        protobuf_data_translation::translateStackConfUser(*body->add_users(), user, true);
    return 0;
}
