// A short session as a driver logs it: the clock, the driver's load, frames both
// ways with their bulk, a transmission that fails, and a reload after which a
// later firmware speaks a later version of the protocol.

#include "session_log.h"

namespace {

constexpr std::uint32_t kMorning = 1780297200;  // 2026-06-01 07:00:00 UTC
constexpr std::uint32_t kAfterReload = kMorning + 65;

constexpr unsigned kVif = 1;
constexpr unsigned kAccessPoint = 1;  // the peer's index

constexpr unsigned kQosUp0 = 0;
constexpr unsigned kQosUp6 = 6;
constexpr unsigned kContention = 0x8000;
constexpr unsigned kIeee8023Frame = 1;
constexpr unsigned kInline = 0;
constexpr unsigned kSuccessful = 0;
constexpr unsigned kRetryLimit = 1;

// An ARP request and its answer, and a ping's first bytes.
constexpr const char* kWhoHas =
    "ffffffffffff 001122334455 0806 0001 0800 06 04 0001 001122334455 c0a80117 000000000000 "
    "c0a80101";
constexpr const char* kIsAt =
    "001122334455 0a0b0c0d0e0f 0806 0001 0800 06 04 0002 0a0b0c0d0e0f c0a80101 001122334455 "
    "c0a80117";
constexpr const char* kPing =
    "0a0b0c0d0e0f 001122334455 0800 4500 0054 0000 4000 40 01 b755 c0a80117 c0a80101 0800 f7ff "
    "0001 0001";

// ma_unitdata_req as versions from 14.0.0 on have it.
Fapi UnitdataReq(unsigned host_tag, unsigned priority, const char* frame) {
  return Fapi(0x1000)
      .U16(kVif)
      .U16(host_tag)
      .U16(priority)
      .U16(kAccessPoint)
      .U16(kIeee8023Frame)
      .U16(kInline)
      .Spares()
      .Bulk(frame);
}

Fapi UnitdataCfm(unsigned transmission_status, unsigned host_tag, unsigned sequence_number) {
  return Fapi(0x1100)
      .U16(kVif)
      .U16(transmission_status)
      .U16(host_tag)
      .U16(sequence_number)
      .U16(kAccessPoint)
      .Spares();
}

Fapi UnitdataInd(unsigned sequence_number, unsigned priority, const char* frame) {
  return Fapi(0x1300)
      .U16(kVif)
      .U16(kIeee8023Frame)
      .U16(sequence_number)
      .U16(priority)
      .U16(kAccessPoint)
      .U16(0)
      .U16(kInline)
      .Spares()
      .Bulk(frame);
}

}  // namespace

Log SessionLog() {
  return Log()
      .Header("14.3.10")
      .TimeRef(kMorning, 4711)
      .Load(12ms)
      .Signal(2100ms, UnitdataReq(0x0101, kQosUp0, kWhoHas))
      .Signal(2103ms, UnitdataCfm(kSuccessful, 0x0101, 17))
      .Signal(2107ms, UnitdataInd(402, kContention, kIsAt))
      .Signal(2110ms, UnitdataReq(0x0102, kQosUp6, kPing))
      .Signal(2181ms, UnitdataCfm(kRetryLimit, 0x0102, 18))
      // Cut short by the firmware: its line stays open.
      .Signal(2200ms, UnitdataCfm(kSuccessful, 0x0103, 19).PadTo(20))
      // A signal that no version knows, and one that never was a signal at all.
      .Signal(2250ms, Fapi(0x1077).PadTo(16))
      .Signal(2260ms, Fapi(0x0042).PadTo(12))
      .Unload(60000ms)
      .Load(64500ms)
      .Header("14.5.12")
      .TimeRef(kAfterReload, 3)
      .Signal(900ms, UnitdataReq(0x0201, kQosUp0, kWhoHas))
      .Signal(904ms, UnitdataCfm(kSuccessful, 0x0201, 1));
}
