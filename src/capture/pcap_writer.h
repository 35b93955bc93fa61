#ifndef VRKT_CAPTURE_PCAP_WRITER_H_
#define VRKT_CAPTURE_PCAP_WRITER_H_

#include <cstdint>
#include <cstdio>

// A classic pcap file, version 2.4, little-endian. A failed write changes nothing:
// the file ends where the disk was full, and decoding continues.

// Writes the 24 bytes of the global header, once for each epoch of the log, in the
// middle of the file too, because each epoch has its own link type.
void WritePcapGlobalHeader(std::FILE* pcap, std::uint32_t link_type);

// Writes a record header and all `length` bytes of the payload. `timeBase` is
// in seconds, `time_word` in milliseconds from it.
void WritePcapRecord(std::FILE* pcap, std::uint32_t timeBase, std::int32_t time_word,
                     std::uint32_t length, const std::uint8_t* payload);

#endif  // VRKT_CAPTURE_PCAP_WRITER_H_
