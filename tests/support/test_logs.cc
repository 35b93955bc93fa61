#include "support/test_logs.h"

#include <random>

#include "session_log.h"

namespace {

constexpr std::uint16_t kTimeRef = 0;
constexpr std::uint16_t kLoad = 1;

}  // namespace

std::vector<std::string> MakeDamagedLogs(int count) {
  const std::string whole = SessionLog().Record(0ms, "", 0).Record(0ms, "\x42", 1).bytes();
  std::mt19937 random(20260601);
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  std::vector<std::string> logs;
  for (int i = 0; i < count; ++i) {
    std::string log = whole;
    const std::size_t at = below(log.size());
    switch (i % 6) {
      case 0:
        log.resize(at);
        break;
      case 1:
        log[at] = static_cast<char>(log[at] ^ 1 << below(8));
        break;
      case 2:
        log[at] = static_cast<char>(below(2) == 0 ? 0xFF : below(256));
        break;
      case 3:
        log.insert(at, ToBytes(static_cast<std::uint32_t>(random()), 1 + below(4)));
        break;
      case 4:
        log.replace(at, 4, ToBytes(static_cast<std::uint32_t>(below(64)), 4));
        break;
      default:
        log.erase(at, 1 + below(8));
    }
    logs.push_back(log);
  }
  return logs;
}

std::vector<ExchangeRecord> ListExchangeRecords() {
  const auto request = [](unsigned vif, unsigned tag) {
    return Fapi(0x1000).U16(vif, tag).PadTo(34);
  };
  const auto confirm = [](unsigned vif, unsigned tag) {
    return Fapi(0x1100).U16(vif, 0, tag).PadTo(32);
  };
  return {
      {0ms, request(1, 7), 7},
      {5ms, request(1, 7), 8},
      {10ms, request(1, 7), 9},
      {15ms, Fapi(kTimeRef)},  // no request is forgotten before the next Load
      {20ms, request(2, 7), 11},
      {30ms, confirm(1, 8)},
      {40ms, confirm(1, 7), 0, 1, 40},  // answers the oldest
      {55ms, confirm(1, 7), 0, 2, 50},
      {60ms, confirm(1, 7), 0, 3, 50},
      {65ms, confirm(1, 7)},
      {70ms, confirm(2, 7), 0, 5, 50},
      {80ms, Fapi(0x200B).U16(1).PadTo(34)},     // mlme_connect_req
      {90ms, Fapi(0x9007).PadTo(50), 15},        // wlanlite_tx_set_params_req
      {95ms, Fapi(0x9107).PadTo(24)},            // wlanlite_rx_start_cfm
      {96ms, Fapi(0x9102).PadTo(24), 0, 13, 6},  // wlanlite_tx_set_params_cfm
      {97ms, Fapi(kLoad)},
      {99ms, Fapi(0x210B).U16(1).PadTo(26)},  // mlme_connect_cfm
  };
}

Log MakeExchangeLog() {
  Log log = Log().Header("14.5.12");
  for (const ExchangeRecord& record : ListExchangeRecords()) {
    if (record.signal.signal() == Fapi(kTimeRef).signal()) {
      log.TimeRef(0, 1, record.time);
    } else if (record.signal.signal() == Fapi(kLoad).signal()) {
      log.Load(record.time);
    } else {
      log.Signal(record.time, record.signal);
    }
  }
  return log;
}
