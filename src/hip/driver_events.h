#ifndef VRKT_HIP_DRIVER_EVENTS_H_
#define VRKT_HIP_DRIVER_EVENTS_H_

#include <cstdint>
#include <string_view>

// The events that the driver writes into the log beside signals. To add an event, add its type
// and its row. What it does to the state of the reader is in log_reader.cc.

enum class DriverEventType : std::uint32_t { kTimeRef = 0, kLoad = 1, kUnload = 2 };

struct DriverEvent {
  DriverEventType type;
  std::uint32_t size;                  // in bytes, of what follows the size word
  std::string_view text;               // of its line; empty if it has none
  std::string_view text_after_uptime;  // empty if the line has no uptime
  std::string_view wrong_size;         // the report of another size, after the number
};

namespace driver_events {
inline constexpr std::string_view kTimeRefSize =
    ") detected in TimeRef log entry. Expected size == 4 || Expected size == 8";
}

// An event of one type can have several sizes.
inline constexpr DriverEvent kDriverEvents[] = {
    // The clock reference in seconds of Unix time, and then the uptime in seconds.
    {DriverEventType::kTimeRef, 4, "", "", driver_events::kTimeRefSize},
    {DriverEventType::kTimeRef, 8, "Driver: Uptime: ", " seconds", driver_events::kTimeRefSize},
    {DriverEventType::kLoad, 0, "Driver: Loaded", "",
     ") detected in Driver Load log entry. Expected size == 0"},
    // Without the bracket. Intended.
    {DriverEventType::kUnload, 0, "Driver: Unloaded", "",
     " detected in Driver Unload log entry. Expected size == 0"},
};

// Returns the event of this type and size. If the type has no such size, returns one of the same
// type; if the type is unknown, null.
constexpr const DriverEvent* FindDriverEvent(std::uint32_t type, std::uint32_t size) {
  const DriverEvent* found = nullptr;
  for (const DriverEvent& event : kDriverEvents) {
    if (static_cast<std::uint32_t>(event.type) != type) continue;
    found = &event;
    if (event.size == size) break;
  }
  return found;
}

#endif  // VRKT_HIP_DRIVER_EVENTS_H_
