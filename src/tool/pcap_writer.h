#ifndef VRKT_TOOL_PCAP_WRITER_H_
#define VRKT_TOOL_PCAP_WRITER_H_

#include <cstdint>
#include <cstdio>

#include "hip/log_item.h"

// A classic pcap file, version 2.4, little-endian. Failed writes are ignored: if the
// disk is full, the file is incomplete and decoding continues.

// Writes the 24 bytes of the global header. The caller writes one per epoch of the
// log, because an epoch can have its own link type. The pcap format has only one
// global header, at the start of the file: a reader takes any later one for record
// data.
void WritePcapGlobalHeader(std::FILE* pcap, std::uint32_t link_type);

// Writes a record header and the whole payload.
void WritePcapRecord(std::FILE* pcap, RecordTime time, SignalSpan payload);

#endif  // VRKT_TOOL_PCAP_WRITER_H_
