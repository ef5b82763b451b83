// The provider's side of the sms records.
#include "velar_sim.h"

SendMessageData::SendMessageData(int recordId, int handle, const std::string& smsc,
                                 const std::string& localUri, const std::string& contentType,
                                 const std::string& contentSubType, int contentLen,
                                 const std::string& contentBody)
    : ImsData(recordId),
      handle(handle),
      smsc(smsc),
      localUri(localUri),
      contentType(contentType),
      contentSubType(contentSubType),
      contentLen(contentLen),
      contentBody(contentBody),
      withInReplyTo(false) {}

// The reply is the new message plus the message it answers.
SendMessageData::SendMessageData(int recordId, int handle, const std::string& smsc,
                                 const std::string& localUri, const std::string& contentType,
                                 const std::string& contentSubType, int contentLen,
                                 const std::string& contentBody, const std::string& inReplyTo)
    : SendMessageData(recordId, handle, smsc, localUri, contentType, contentSubType, contentLen,
                      contentBody) {
    this->inReplyTo = inReplyTo;
    withInReplyTo = true;
}

VELAR_DEFINE_RECORD_CONSTRUCTOR(RpAckResponse, VELAR_ARGS_RpAckResponse)
VELAR_DEFINE_RECORD_CONSTRUCTOR(SmsReceiveResponse, VELAR_ARGS_SmsReceiveResponse)

VELAR_SIM_CLASS(SendMessageData);
VELAR_SIM_CLASS(RpAckResponse);
VELAR_SIM_CLASS(SmsReceiveResponse);
VELAR_SIM_CLASS(SmsResponseData);
VELAR_SIM_CLASS(SmsRpAckData);
VELAR_SIM_CLASS(ReceiveSmsData);
