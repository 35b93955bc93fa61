#ifndef VRKT_INTAKE_STANDARD_STREAMS_H_
#define VRKT_INTAKE_STANDARD_STREAMS_H_

// Sees to it that no file which the tool opens takes the place of a standard
// stream that it was started without: the text of a run with standard output
// closed would go into the capture file. Such a stream still fails to be read or
// written, as it would have.
void OccupyClosedStandardStreams();

#endif  // VRKT_INTAKE_STANDARD_STREAMS_H_
