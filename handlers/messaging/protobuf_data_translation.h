// Conversions between the messaging value types of the stack and their wire
// messages, shared by every messaging handler (and the XDM fetch). All enum
// tables of the family and their fallbacks for unknown values live here.
//
// translateStack* reads a stack value and fills a wire message; translateFw*
// reads a wire message (from the framework client) and builds a stack value.
// Every function is stateless and reentrant.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "imsCommonStruc.pb.h"
#include "stack/velar.h"

namespace protobuf_data_translation {

// Wire document type to the stack's numbering, which skips 1.
uint32_t translateXdmDocType(imsCommonStruc::XdmDocType type);
imsCommonStruc::ImError_Type translateImErrorType(ImError::Type type);
ImParticipant translateParticipant(const imsCommonStruc::Participant& participant);

// An unknown status goes to the client as DELIVERED...
imsCommonStruc::NotificationStatus translateStackImdnNoti(cpmim::ImNotificationStatus status);
// ...but is dropped on its way to the stack.
std::set<cpmim::ImNotificationStatus> translateFwImdnNoti(
    const google::protobuf::RepeatedField<int>& noti);

void translateStackImdnData(imsCommonStruc::ImdnParams& out, const ImdnData& imdn);
ImdnData translateFwImdnData(const imsCommonStruc::ImdnParams& params);
// Routes in wire order; also those of a delivery notification the client sends.
std::vector<ImdnRecRoute> translateFwImdnRecRoutes(
    const google::protobuf::RepeatedPtrField<imsCommonStruc::ImdnRecRoute>& routes);
void translateCpimNamespace(imsCommonStruc::CpimNamespace& out, const CpimNamespace& ns);
void translateStackImMessage(imsCommonStruc::ImMessageParam& out, const ImMessage& message);
// A conference participant as a chat's conference and a group chat's update
// both tell it; only the former carries the reason of a disconnection.
void translateStackConfUser(imsCommonStruc::ImConfUser& out, const ImConferenceUser& user,
                            bool withDisconnectionReason);

}  // namespace protobuf_data_translation

// These set every field, empty ones included, and never test for -1: the
// caller creates the sub-message only when the header is there.
void SetImError(imsCommonStruc::ImError* out, ImError error);
void SetWarningHdr(imsCommonStruc::WarningHdr* out, WarningHdr warning);
void SetRetryHdr(imsCommonStruc::RetryHdr* out, RetryHdr retry);
void SetReasonHdr(imsCommonStruc::ReasonHdr* out, ReasonHdr reason);
