#ifndef VRKT_TOOL_STANDARD_STREAMS_H_
#define VRKT_TOOL_STANDARD_STREAMS_H_

// Occupies the descriptors of standard streams that were closed when the process
// started, so that no opened file gets one of them. Otherwise, with standard output
// closed, the text would go into the capture file. Reads and writes of such a stream
// still fail.
void OccupyClosedStandardStreams();

#endif  // VRKT_TOOL_STANDARD_STREAMS_H_
