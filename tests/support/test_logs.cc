#include "support/test_logs.h"

#include <random>

#include "session_log.h"

namespace {

constexpr std::uint16_t kTimeRef = 0;
constexpr std::uint16_t kLoad = 1;

}  // namespace

std::vector<std::string> MakeDamagedLogs(int count) {
  Log session = SessionLog().Record(0ms, "", 0).Record(0ms, "\x42", 1);
  // Events that print nothing. An output that knows one of them prints a line more or less.
  for (std::uint32_t type = 3; type < 8; ++type) session.Words({kDriverEventMagic, 0, type, 0});
  const std::string& whole = session.bytes();
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
  enum Id : std::uint16_t {
    kUnitdataReq = 0x1000,
    kUnitdataCfm = 0x1100,
    kAddScanReq = 0x2005,
    kConnectReq = 0x200B,
    kReassociateReq = 0x200C,
    kRoamReq = 0x200D,
    kSendFrameReq = 0x2010,
    kAddRangeReq = 0x2029,
    kConnectCfm = 0x210B,
    kSendFrameCfm = 0x2110,
    kConnectRes = 0x2200,
    kScanDoneInd = 0x2301,
    kConnectInd = 0x2303,
    kReassociateInd = 0x2305,
    kRoamInd = 0x2306,
    kFrameTransmissionInd = 0x230C,
    kRangeDoneInd = 0x2315,
    kTxSetParamsReq = 0x9007,
    kPktGenReportReq = 0x9019,
    kTxSetParamsCfm = 0x9102,
    kRxStartCfm = 0x9107,
    kPktGenReportInd = 0x9303,
  };
  // Long enough for all of them.
  const auto make = [](Id id, unsigned first, unsigned second = 0, unsigned third = 0) {
    return Fapi(id).U16(first, second, third).PadTo(60);
  };
  return {
      // A confirm answers the oldest request with the same vif and host_tag.
      {0ms, make(kUnitdataReq, 1, 7), "7"},
      {5ms, make(kUnitdataReq, 1, 7), "8"},
      {10ms, make(kUnitdataReq, 1, 7), "9"},
      {15ms, Fapi(kTimeRef)},  // no request is forgotten before the next Load
      {20ms, make(kUnitdataReq, 2, 7), "11"},
      {30ms, make(kUnitdataCfm, 1, 0, 8)},
      {40ms, make(kUnitdataCfm, 1, 0, 7), "", 1, 40},
      {55ms, make(kUnitdataCfm, 1, 0, 7), "", 2, 50},
      {60ms, make(kUnitdataCfm, 1, 0, 7), "", 3, 50},
      {65ms, make(kUnitdataCfm, 1, 0, 7)},
      {70ms, make(kUnitdataCfm, 2, 0, 7), "", 5, 50},
      {90ms, make(kTxSetParamsReq, 0), "14"},
      {95ms, make(kRxStartCfm, 0)},
      {96ms, make(kTxSetParamsCfm, 0), "", 12, 6},
      // Without a confirm, the indication.
      {97ms, make(kPktGenReportReq, 1), "19"},
      {98ms, make(kPktGenReportReq, 2), "18"},
      {99ms, make(kPktGenReportReq, 1), "20"},
      {100ms, make(kPktGenReportInd, 2), "", 16, 2},
      {101ms, make(kPktGenReportInd, 1), "", 15, 4},
      {102ms, make(kPktGenReportInd, 1), "", 17, 3},
      // A request is confirmed and completed. One that is only confirmed does not shift later
      // ones. The indication is itself answered, the oldest first.
      {110ms, make(kConnectReq, 1), "22"},
      {111ms, make(kConnectCfm, 1), "", 21, 1},
      {112ms, make(kConnectReq, 1), "26,28"},
      {113ms, make(kConnectInd, 2), "29"},
      {114ms, make(kConnectReq, 2), "27"},
      {115ms, make(kConnectCfm, 1), "", 23, 3},
      {116ms, make(kConnectInd, 2), "31", 25, 2},
      {117ms, make(kConnectInd, 1), "30", 23, 5},
      {118ms, make(kConnectRes, 2), "", 24, 5},
      {119ms, make(kConnectRes, 1), "", 28, 2},
      {120ms, make(kConnectRes, 2), "", 27, 4},
      {121ms, make(kConnectRes, 1)},
      // Both requests are confirmed, but the newest is completed.
      {130ms, make(kSendFrameReq, 1, 7), "36"},
      {131ms, make(kSendFrameReq, 1, 7), "37,38"},
      {132ms, make(kSendFrameReq, 1, 8), "40"},
      {133ms, make(kSendFrameCfm, 1, 7), "", 33, 3},
      {134ms, make(kFrameTransmissionInd, 2, 7), "", 34, 3},  // whatever the vif
      {135ms, make(kSendFrameCfm, 1, 7), "", 34, 4},
      {136ms, make(kFrameTransmissionInd, 1, 7)},
      {137ms, make(kFrameTransmissionInd, 1, 8), "", 35, 5},
      // The other completions have their keys.
      {140ms, make(kAddScanReq, 0, 7), "45"},
      {141ms, make(kAddScanReq, 0, 8), "44"},
      {142ms, make(kScanDoneInd, 0, 9)},
      {143ms, make(kScanDoneInd, 1, 8), "", 42, 2},
      {144ms, make(kScanDoneInd, 1, 7), "", 41, 4},
      {150ms, make(kAddRangeReq, 1, 7), "50"},
      {151ms, make(kAddRangeReq, 1, 8), "49"},
      {152ms, make(kRangeDoneInd, 1, 9)},
      {153ms, make(kRangeDoneInd, 2, 8), "", 47, 2},
      {154ms, make(kRangeDoneInd, 2, 7), "", 46, 4},
      {160ms, make(kReassociateReq, 1), "54"},
      {161ms, make(kReassociateReq, 2), "53"},
      {162ms, make(kReassociateInd, 2), "", 52, 1},
      {163ms, make(kReassociateInd, 1), "", 51, 3},
      {170ms, make(kRoamReq, 1), "58"},
      {171ms, make(kRoamReq, 2), "57"},
      {172ms, make(kRoamInd, 2), "", 56, 1},
      {173ms, make(kRoamInd, 1), "", 55, 3},
      // Nothing answers a signal from before a Load.
      {180ms, make(kConnectReq, 1)},
      {181ms, make(kConnectInd, 3)},
      {182ms, Fapi(kLoad)},
      {183ms, make(kConnectCfm, 1)},
      {184ms, make(kConnectRes, 3)},
      {185ms, make(kConnectInd, 1), "65"},
      {186ms, make(kConnectRes, 1), "", 64, 1},
      // The clock was set back between a request and its answer.
      {200ms, make(kUnitdataReq, 1), "67"},
      {-300ms, make(kUnitdataCfm, 1), "", 66, -500},
      {200ms, make(kUnitdataReq, 1), "69"},
      {-800ms, make(kUnitdataCfm, 1), "", 68, -1000},
      {200ms, make(kUnitdataReq, 1), "71"},
      {-1300ms, make(kUnitdataCfm, 1), "", 70, -1500},
      // A request that waits for more than 5 s, forward or backward, when the next one is sent
      // is given up.
      {1000ms, make(kUnitdataReq, 3), "74"},
      {6000ms, make(kUnitdataReq, 3)},
      {6002ms, make(kUnitdataCfm, 3), "", 72, 5002},
      {11001ms, make(kUnitdataReq, 3), "76"},
      {11002ms, make(kUnitdataCfm, 3), "", 75, 1},
      {20000ms, make(kUnitdataReq, 3)},
      {20000ms, make(kUnitdataReq, 3)},
      {14999ms, make(kUnitdataReq, 3), "80"},
      {25000ms, make(kUnitdataCfm, 3), "", 79, 10001},
      {25001ms, make(kUnitdataCfm, 3)},
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
