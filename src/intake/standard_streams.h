#ifndef VRKT_INTAKE_STANDARD_STREAMS_H_
#define VRKT_INTAKE_STANDARD_STREAMS_H_

// Occupies the descriptors of standard streams that were closed when the process
// started, so no file that the tool opens gets one of them: with standard output
// closed, the text would go into the capture file. Reads and writes of such a
// stream still fail, as they would have.
void OccupyClosedStandardStreams();

#endif  // VRKT_INTAKE_STANDARD_STREAMS_H_
