#ifndef VRKT_LOG_LOG_WRITER_H_
#define VRKT_LOG_LOG_WRITER_H_

#include <cstdint>
#include <initializer_list>
#include <string>

#include "log/log_reader.h"

// Encodes what LogReader reads. All functions append to `log`.

// 32-bit words, little-endian.
void AppendWords(std::initializer_list<std::uint32_t> words, std::string& log);

// The header of an epoch. The version is packed, as in HipVersionEntry.
void AppendHeader(std::uint32_t hip_version, std::string& log);

// A driver event with the words that follow its size. The time is in milliseconds from the
// clock reference.
void AppendEvent(DriverEventType type, std::int32_t time,
                 std::initializer_list<std::uint32_t> words, std::string& log);

// The four words of a signal record. Its payload of `length` bytes follows them.
void AppendSignalHeader(std::int32_t time, std::uint32_t length, std::uint32_t signal_length,
                        std::string& log);

// An item as in the log, of a payload at most the first `max_payload` bytes. An item of the
// kind kHeader appends nothing.
void AppendItem(const LogItem& item, std::string& log, std::uint32_t max_payload = UINT32_MAX);

#endif  // VRKT_LOG_LOG_WRITER_H_
