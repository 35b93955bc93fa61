#ifndef VRKT_CUT_FRAME_REDACTION_H_
#define VRKT_CUT_FRAME_REDACTION_H_

#include "piece.h"
#include "pseudonyms.h"

// What a redacted log keeps of frames. Everything else stays zero, and so does what is not well
// formed.

// A frame of Ethernet: its header, and of EAPOL the number of the message.
void RedactEthernet(Piece frame, Pseudonyms& pseudonyms);

// An A-MSDU: the same of each of its frames.
void RedactAmsdu(Piece frames, Pseudonyms& pseudonyms);

// A frame of IEEE 802.11: its header, of a management frame the fixed parameters and
// the elements as below, of data the protocol.
void RedactWlan(Piece frame, Pseudonyms& pseudonyms);

// The same if it is a management frame.
void RedactManagementFrame(Piece frame, Pseudonyms& pseudonyms);

// Information elements, if they end where the piece does: ids and lengths, and the contents
// that say what a network can do.
void RedactElements(Piece elements);

#endif  // VRKT_CUT_FRAME_REDACTION_H_
