#ifndef VRKT_TESTS_SUPPORT_TEST_LOGS_H_
#define VRKT_TESTS_SUPPORT_TEST_LOGS_H_

#include <string>
#include <vector>

#include "log_builder.h"

// Logs that several outputs are tested with.

// Logs that are cut, and logs with a byte or a word changed, put in or taken out. The same
// at each call.
std::vector<std::string> MakeDamagedLogs(int count);

// A record of the log below, and what answers what. Records count from 1; 0 is none.
struct ExchangeRecord {
  Log::Time time;
  Fapi signal;                   // with id 0: a clock reference; with id 1: a Load event
  const char* answered_by = "";  // the records of all answers, as in "3,5"
  unsigned answers = 0;
  int response_ms = 0;
};

std::vector<ExchangeRecord> ListExchangeRecords();
Log MakeExchangeLog();

#endif  // VRKT_TESTS_SUPPORT_TEST_LOGS_H_
