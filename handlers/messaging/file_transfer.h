// What a transfer in a session and a standalone file or message take from
// the wire alike. Each request then adds or overrides what is its own.
#pragma once

#include "imsCommonStruc.pb.h"
#include "stack/velar.h"

namespace file_transfer {

// All seven fields, as the client gave them.
FileAttr fileAttrFromWire(const imsCommonStruc::ImFileAttr& wire);

// The alias, the three conversation ids and the line: the part of a session
// that every request of this kind forwards.
void copySessionIds(FtSessionParam& session, const imsCommonStruc::BaseSessionData& wire);

// The IMDN block, the device and the three message flags of a payload; the
// files, the icon and the push flag are the caller's.
void copyPayloadContent(FtPayload& payload, const imsCommonStruc::FtPayloadParam& wire);

}  // namespace file_transfer
