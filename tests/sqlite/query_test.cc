// Runs the query script as a user does, in a directory with logs of all kinds.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "files.h"
#include "log_builder.h"
#include "session_log.h"
#include "support/process.h"

namespace {

constexpr const char* kAccessPoint = "0a:0b:0c:0d:0e:0f";
constexpr const char* kOther = "0a:0b:0c:0d:0e:1f";
constexpr const char* kPeer = "0a:0b:0c:0d:0e:2f";

Fapi ConnectReq(unsigned vif, const char* bssid = kAccessPoint) {
  return Fapi(0x200B).U16(vif).Mac(bssid).U16(0, 0x130A, 0).Spares();
}
// The layout of mlme_connect_cfm (0x210B), mlme_connect_ind (0x2303) and others.
Fapi Result(std::uint16_t id, unsigned vif, unsigned result) {
  return Fapi(id).U16(vif, result).Spares();
}
// mlme_disconnect_req (0x200E), mlme_disconnected_ind (0x2309) and others.
Fapi Disconnect(std::uint16_t id, unsigned vif, unsigned reason, const char* peer = kAccessPoint) {
  return Fapi(id).U16(vif).Mac(peer).U16(reason).Spares();
}
Fapi RoamedInd(const std::string& bssid) {
  return Result(0x2307, 1, 1).Bulk("30000000 001122334455" + bssid + bssid + "0000");
}

// Two interfaces in one log of the oldest or the newest version.
Log Connections(const char* version) {
  return Log()
      .Header(version)
      .TimeRef(1000)
      .Signal(0ms, ConnectReq(1))
      .Signal(1ms, ConnectReq(2))
      .Signal(2ms, Result(0x210B, 1, 0))
      .Signal(3ms, Result(0x210B, 2, 0x800C))
      .Signal(50ms, Result(0x2303, 1, 0))
      .Signal(60ms, ConnectReq(2))                // the one before failed
      .Signal(70ms, Disconnect(0x200E, 1, 3))     // by the host
      .Signal(71ms, Disconnect(0x210E, 1, 0))     //
      .Signal(80ms, ConnectReq(1))                // without indication
      .Signal(81ms, Result(0x210B, 1, 0))         //
      .Signal(90ms, ConnectReq(1))                // rejected by an indication
      .Signal(91ms, Result(0x210B, 1, 0))         //
      .Signal(92ms, Result(0x2303, 1, 1))         //
      .Signal(93ms, Disconnect(0x2309, 1, 0x27))  // not the end of a connection
      .Signal(100ms, ConnectReq(1))               // up to the reload
      .Signal(101ms, Result(0x210B, 1, 0))        //
      .Signal(140ms, Result(0x2303, 1, 0))        //
      .Signal(150ms, Result(0x2307, 1, 1))        // mlme_roamed_ind
      .Signal(151ms, Result(0x2306, 1, 0))        // mlme_roam_ind
      .Signal(152ms, Result(0x2306, 1, 1))        // one that failed
      .Unload(200ms)
      .Load(300ms)
      .Header(version)
      .TimeRef(1000)
      .Signal(301ms, Disconnect(0x2309, 1, 0x27))  // of no connection
      .Signal(310ms, ConnectReq(1))
      .Signal(311ms, Result(0x210B, 1, 0))
      .Signal(330ms, Result(0x2303, 1, 0));  // up to the end of the log
}

// One interface that moves between access points.
Log Moves() {
  return Log()
      .Header("14.5.12")
      .TimeRef(1000)
      .Signal(0ms, ConnectReq(1))
      .Signal(1ms, Result(0x2303, 1, 0))
      .Signal(2ms, Disconnect(0x2309, 1, 1, kPeer))    // a TDLS peer
      .Signal(10ms, ConnectReq(1, kOther))             //
      .Signal(11ms, Disconnect(0x2309, 1, 0x27))       // the end of the first connection
      .Signal(12ms, Result(0x2303, 1, 0))              //
      .Signal(13ms, RoamedInd(kAccessPoint))           //
      .Signal(14ms, Disconnect(0x2309, 1, 1, kOther))  // of the access point before the roam
      .Signal(15ms, Disconnect(0x2309, 1, 3))          // the end of the second
      .Signal(16ms, RoamedInd(kOther))                 // after it
      .Signal(20ms, ConnectReq(1))                     //
      .Signal(21ms, Result(0x2303, 1, 0))              //
      .Signal(22ms, Fapi(0x200D).U16(1).Mac(kOther).U16(0).Spares())  // mlme_roam_req
      .Signal(23ms, Result(0x2306, 1, 0))                             //
      .Signal(24ms, Disconnect(0x2309, 1, 1))          // of the access point before the roam
      .Signal(30ms, ConnectReq(1))                     // rejected
      .Signal(31ms, Result(0x210B, 1, 1))              //
      .Signal(32ms, Disconnect(0x2309, 1, 3, kOther))  // the end of the third
      .Signal(40ms, ConnectReq(1))                     // the host gives up
      .Signal(41ms, Result(0x210B, 1, 0))              //
      .Signal(42ms, Disconnect(0x200E, 1, 3))          //
      .Signal(50ms, ConnectReq(1))                     //
      .Signal(51ms, Result(0x2303, 1, 0))              //
      .Signal(52ms, Result(0x2307, 1, 1))              // a roam to an unknown address
      .Signal(53ms, Disconnect(0x2309, 1, 1, kPeer))   //
      .Signal(60ms, ConnectReq(1))                     //
      .Signal(61ms, Result(0x2303, 1, 0))              //
      .Signal(62ms, Fapi(0x2008).U16(1).Spares())      // mlme_del_vif_req
      .Signal(63ms, Disconnect(0x2309, 1, 1));
}

Fapi AddScan(unsigned scan, unsigned type) {
  return Fapi(0x2005).U16(0, scan, type).Mac("ff:ff:ff:ff:ff:ff").U16(0).Spares();
}
// mlme_add_scan_cfm (0x2105) and mlme_scan_done_ind (0x2301), which has no result.
Fapi Scan(std::uint16_t id, unsigned scan, unsigned result = 0) {
  return id == 0x2301 ? Fapi(id).U16(0, scan).Spares() : Fapi(id).U16(0, result, scan).Spares();
}
Fapi ScanInd(unsigned scan, int rssi, const std::string& sender) {
  return Fapi(0x2300)
      .U16(0, 0x130A, rssi, scan, 0, 0, 0, 0)
      .Spares()
      .Bulk("80000000 ffffffffffff" + sender + sender);
}
Fapi RssiReport(unsigned vif, const char* bssid, int rssi) {
  return Fapi(0x2312).U16(vif).Mac(bssid).U16(rssi).Spares();
}
Fapi SendData(unsigned vif, const std::string& data) {  // ma_unitdata_req
  return Fapi(0x1000).U16(vif, 1, 0, 1, 1, 0).Spares().Bulk(data);
}
Fapi DataSent(unsigned vif, unsigned status) {  // ma_unitdata_cfm
  return Fapi(0x1100).U16(vif, status, 1, 0, 1).Spares();
}

// Starts while the first interface is connected and the second serves a station.
Log Air() {
  return Log()
      .Header("14.5.12")
      .TimeRef(1000)
      .Signal(5ms, RssiReport(1, kAccessPoint, -80))
      .Signal(6ms, Result(0x2304, 2, 1))              // mlme_connected_ind
      .Signal(7ms, Disconnect(0x2309, 2, 1, kOther))  // of a station
      .Signal(8ms, Disconnect(0x2309, 3, 1, kOther))  // of a link from before the log
      .Signal(10ms, AddScan(1, 1))                    //
      .Signal(11ms, Scan(0x2105, 1))                  //
      .Signal(20ms, ScanInd(1, -48, kAccessPoint))    //
      .Signal(21ms, ScanInd(2, -71, kOther))          // of another scan
      .Signal(30ms, Scan(0x2301, 1))                  //
      .Signal(40ms, AddScan(1, 2))                    // rejected
      .Signal(41ms, Scan(0x2105, 1, 1))               //
      .Signal(50ms, AddScan(2, 2))                    // without a confirm
      .Signal(60ms, AddScan(2, 2))                    // up to the reload
      .Signal(61ms, Scan(0x2105, 2))                  //
      .Signal(70ms, RoamedInd(kOther))                //
      .Signal(500ms, SendData(1, "010203"))           //
      .Signal(999ms, DataSent(1, 0))                  //
      .Signal(1000ms, DataSent(1, 1))                 //
      .Signal(1100ms, DataSent(1, 2))                 //
      .Signal(1200ms, DataSent(1, 6))                 //
      .Signal(1300ms, SendData(2, "01"))              //
      .Signal(1400ms, Fapi(0x1300).U16(1, 1, 0, 0, 0, 0, 0).Spares().Bulk("0102"))
      .Unload(1490ms)
      .Load(1500ms)
      .Header("14.5.12")
      .TimeRef(1002)
      .Signal(0ms, RssiReport(1, kOther, -60));  // of no link that the log shows
}

class Query : public testing::Test {
 protected:
  void SetUp() override {
#ifdef VRKT_SANITIZED
    GTEST_SKIP() << "sqlite3 has no sanitizer, so it cannot load the extension";
#endif
    if (!IsInstalled("sqlite3")) {
      EXPECT_EQ(std::getenv("CI"), nullptr) << "sqlite3 is not installed";
      GTEST_SKIP() << "sqlite3 is not installed";
    }
    const std::string log = SessionLog().bytes();
    const std::string start = log.substr(0, 500);
    WriteFile(directory() + "/good.udi", log);
    WriteFile(directory() + "/cut.udi", log.substr(0, 1300));
    WriteFile(directory() + "/damaged.udi", start + std::string(100, 'x'));
    WriteFile(directory() + "/text.udi", "This is a text and no log.\n");
    WriteFile(directory() + "/empty.udi", "");
    WriteFile(directory() + "/-\"it's\"\n(1) \\$HOME.udi", log.substr(0, 1300));
    WriteFile(directory() + "/old.udi", Connections("13.1.0").bytes());
    WriteFile(directory() + "/new.udi", Connections("14.5.12").bytes());
    WriteFile(directory() + "/moves.udi", Moves().bytes());
    WriteFile(directory() + "/air.udi", Air().bytes());
  }

  const std::string& directory() const { return directory_.path(); }

  // Runs a command in which `query` is the script. Returns its status, output and errors.
  std::string Run(const std::string& command, const std::string& script = VRKT_QUERY) const {
    WriteFile(directory() + "/command",
              "exec >output 2>errors\nexport TZ=UTC0 script=" + QuoteForShell(script) +
                  "\nquery() { \"$script\" \"$@\"; }\n" + command);
    const int status =
        std::system(("cd " + QuoteForShell(directory()) + " && exec bash command").c_str());
    return std::to_string(WEXITSTATUS(status)) + '\n' + ReadFile(directory() + "/output") +
           ReadFile(directory() + "/errors");
  }

 private:
  TemporaryDirectory directory_;
};

TEST_F(Query, CommandLines) {
  const std::string kSay = "vrkt_wlan_udi_log_query: ";
  const std::string kUsage = "vrkt_wlan_udi_log_query QUERY LOG...\n";
  const struct {
    std::string command;
    std::string expected;  // status, output, errors
  } kCases[] = {
      {"query 'SELECT count(*), min(path) FROM log' good.udi", "0\n76|good.udi\n"},
      {"query 'SELECT count(*), min(path) FROM log' <good.udi", "0\n76|/dev/stdin\n"},
      {"cat good.udi | query 'SELECT signal, vif FROM log WHERE rssi = -77'",
       "0\nmlme_rssi_report_ind|1\n"},
      {"cat good.udi | query 'SELECT path, count(*) FROM log GROUP BY 1' - <(cat good.udi) | "
       "cut -d'|' -f2",
       "0\n76\n76\n"},
      {"query -csv -header -separator ';' -nullvalue - -cmd 'SELECT 1' "
       "'SELECT information_elements f, NULL n FROM log WHERE scan_type = \"full_scan\"' "
       "good.udi",
       "0\n1\n1\nf;n\n0004686f6d65;-\n"},
      {"query 'SELECT count(*) FROM log WHERE signal = \"mlme_connect_ind\"' cut.udi good.udi -",
       "2\n2\n" + kSay + "cut.udi: cut\n"},
      {"query --json -- '-- a comment\nSELECT 1 a' good.udi", "0\n[{\"a\":1}]\n"},
      {"echo 'SELECT 5;' >more; query -init more 'SELECT 6' good.udi", "0\n5\n6\n"},
      // Logs that are not good.
      {"query 'SELECT path, records, ending FROM logs' nowhere text.udi good.udi empty.udi "
       "cut.udi damaged.udi damaged.udi",
       "2\ngood.udi|76|complete\nempty.udi|0|empty\ncut.udi|20|cut\n"
       "damaged.udi|8|Bad Magic number detected in log. magic:0x78787878\n" +
           kSay + "nowhere: No such file or directory\n" + kSay + "text.udi: not a UDI log\n" +
           kSay + "cut.udi: cut\n" + kSay +
           "damaged.udi: Bad Magic number detected in log. magic:0x78787878\n"},
      {"query 'SELECT count(*) FROM log UNION ALL SELECT records FROM logs' -*",
       "2\n20\n20\n" + kSay + "-\"it's\"\n(1) \\$HOME.udi: cut\n"},
      {"query 'SELECT path FROM log LIMIT 1' -*", "0\n-\"it's\"\n(1) \\$HOME.udi\n"},
      {"query 'SELECT 1' text.udi | wc -l; (exit ${PIPESTATUS[0]})",
       "2\n0\n" + kSay + "text.udi: not a UDI log\n"},
      {"mkdir logs; gzip -k good.udi; query 'SELECT 1' good.udi.gz logs -box",
       "2\n" + kSay + "good.udi.gz: compressed. To read it: gzip -dc good.udi.gz | " +
           "vrkt_wlan_udi_log_query QUERY\n" + kSay +
           "logs: Is a directory. Name the logs in it\n" + kSay +
           "-box: No such file or directory. Options come before the query\n"},
      {"query 'SELECT nonsense FROM log' cut.udi",
       "1\nError: in prepare, no such column: nonsense\n  SELECT nonsense FROM log\n"
       "         ^--- error here\n"},
      // Rows of a live log: the pipe stays open.
      {"mkfifo live; exec 9<>live; cat good.udi >&9; query 'SELECT record FROM log LIMIT 2' live",
       "0\n1\n2\n"},
      {"mkfifo pipe; exec 9<>pipe; : >rows; query 'SELECT record FROM log' pipe 9>&- >rows &\n"
       "cat good.udi >&9; for i in {1..500}; do [ $(wc -l <rows) = 76 ] && echo live && break; "
       "sleep .02; done; exec 9>&-; wait",
       "0\nlive\n"},
      {"long=$(printf 'd%.0s' {1..200}); mkdir $long; cp cut.udi $long\n"
       "query 'SELECT count(*) FROM log' $long/cut.udi 2>&1 | sed s/$long/long/",
       "0\n20\n" + kSay + "long/cut.udi: cut\n"},
      {"printf 'This is no log.' | query 'SELECT records, ending FROM logs' good.udi -",
       "2\n76|complete\n0|Bad Magic number detected in log file header. magic:0x73696854\n" + kSay +
           "/dev/stdin: Bad Magic number detected in log file header. magic:0x73696854\n"},
      {"cat good.udi | query 'SELECT (SELECT count(*) FROM log), (SELECT count(*) FROM logs)' 2>&1 "
       "| "
       "grep -o '/dev/stdin.*file'; (exit ${PIPESTATUS[1]})",
       "1\n/dev/stdin: a pipe can be read only once; save it in a file\n"},
      // Wrong arguments.
      {"query 'SELECT count(*) FROM log' -- good.udi", "0\n76\n"},
      {"query good.udi </dev/null",
       "1\n" + kSay + "the query is missing. It comes before the logs: " + kUsage},
      {"query good.udi 'SELECT 1' </dev/null",
       "1\n" + kSay + "the query comes before the logs: " + kUsage},
      {"echo 'SELECT count(*) FROM log' >q.sql; query '.read q.sql' good.udi; query q.sql good.udi",
       "1\n76\n" + kSay +
           "the query is missing. To run the queries in a file: "
           "vrkt_wlan_udi_log_query '.read q.sql' LOG...\n"},
      {"script -qec '\"$script\" \"SELECT 1 FROM log\"' /dev/null | tr -d '\\r'",
       "0\n" + kSay + "the log is missing. It comes after the query: " + kUsage},
      {"query --help | head -n 1",
       "0\nusage: vrkt_wlan_udi_log_query [SQLITE3-OPTION...] SQL [LOG...]\n"},
      {"query -separator", "1\n" + kSay + "option -separator needs an argument\n"},
      {"mkdir bin; for p in bash cat dirname readlink; do ln -s $(command -v $p) bin; done\n"
       "PATH=$PWD/bin query 'SELECT 1' good.udi",
       "1\n" + kSay + "sqlite3 is missing. On Debian, this installs it: apt-get install sqlite3\n"},
      // Output that cannot be written.
      {"query 'SELECT line FROM log' good.udi >/dev/full",
       "1\n" + kSay + "standard output: No space left on device\n"},
      {"query 'SELECT 1' good.udi >&-", "1\n" + kSay + "standard output is closed\n"},
      // What ends the script ends SQLite's shell, which has the other end of `got`.
      {"mkfifo sent got; exec 9<>sent; \"$script\" 'SELECT record FROM log' sent 9>&- >got &\n"
       "exec 8<got; cat good.udi >&9; head -n 76 <&8 | tail -n 1; kill $!; wait $!; echo $?\n"
       "timeout 60 cat <&8",
       "0\n76\n143\n"},
      // An interrupt that the caller ignores, with half of the log still to come.
      {"mkfifo live2; exec 9<>live2; setsid \"$script\" 'SELECT record FROM log' live2 9>&- >half "
       "&\n"
       "head -c 1300 good.udi >&9; for i in {1..500}; do [ $(wc -l <half) = 20 ] && break; "
       "sleep .02; done; kill -INT -- -$!; tail -c +1301 good.udi >&9; exec 9>&-; wait $!; "
       "echo $?; wc -l <half",
       "0\n0\n76\n"},
      // The shell, which is left after the report.
      {": >screen; { echo 'SELECT count(*) FROM log;'; for i in {1..500}; do grep -q ': cut' "
       "screen && "
       "break; sleep .02; done; echo .quit; } | TERM=dumb script -qefc '\"$script\" -list cut.udi' "
       "screen >/dev/null; tr -d '\\r' <screen | grep -o -e '^20$' -e 'vrkt_.*: cut$' | sort",
       "0\n20\n" + kSay + "cut.udi: cut\n"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Run(c.command), c.expected) << c.command;
}

TEST_F(Query, Views) {
  const std::string kConnections =
      "0\nvif,ms,result,ms,roams,ended_by,reason,end_time_ms\n"
      "1,1000000,success,50,0,mlme_disconnect_req,REASON,1000070\n"
      "2,1000001,host_request_failed,,0,,,\n"
      "2,1000060,\"no confirm\",,0,\"Driver: Unloaded\",,1000200\n"
      "1,1000080,\"no indication\",,0,mlme_connect_req,,1000090\n"
      "1,1000090,unspecified_failure,2,0,,,\n"
      "1,1000100,success,40,2,\"Driver: Unloaded\",,1000200\n"
      "1,1000310,success,20,0,,,\n";
  const std::string kAskConnections =
      "query -csv -header 'SELECT vif, time_ms AS ms, result, ms, roams, ended_by, reason, "
      "end_time_ms FROM connections' ";
  const auto with_reason = [&](const char* reason) {
    return std::string(kConnections).replace(kConnections.find("REASON"), 6, reason);
  };
  // Through pipes, which can be read only once.
  EXPECT_EQ(Run(kAskConnections + "<(cat old.udi)"), with_reason("deauthenticated_leaving_ess"));
  EXPECT_EQ(Run(kAskConnections + "new.udi"), with_reason("deauthenticated_leaving"));
  EXPECT_EQ(Run("query 'SELECT time_ms, result, roams, ended_by, reason, end_time_ms "
                "FROM connections' moves.udi"),
            "0\n1000000|success|0|mlme_disconnected_ind|timeout|1000011\n"
            "1000010|success|1|mlme_disconnected_ind|deauthenticated_leaving|1000015\n"
            "1000020|success|1|mlme_disconnected_ind|deauthenticated_leaving|1000032\n"
            "1000030|unspecified_failure|0|||\n"
            "1000040|no indication|0|mlme_disconnect_req|deauthenticated_leaving|1000042\n"
            "1000050|success|1|mlme_disconnected_ind|unspecified_reason|1000053\n"
            "1000060|success|0|mlme_del_vif_req||1000062\n");
  EXPECT_EQ(
      Run("query 'SELECT vif, time_ms, substr(bssid, 13), started_by, ended_by, reason, "
          "end_time_ms, end_record FROM links' moves.udi"),
      "0\n"
      "1|1000001|0e:0f|mlme_connect_ind|mlme_disconnected_ind|timeout|1000011|5\n"
      "1|1000012|0e:1f|mlme_connect_ind|mlme_roamed_ind||1000013|7\n"
      "1|1000013|0e:0f|mlme_roamed_ind|mlme_disconnected_ind|deauthenticated_leaving|1000015|9\n"
      "1|1000016|0e:1f|mlme_roamed_ind|mlme_connect_ind||1000021|12\n"
      "1|1000021|0e:0f|mlme_connect_ind|mlme_roam_ind||1000023|14\n"
      "1|1000023|0e:1f|mlme_roam_ind|mlme_disconnected_ind|deauthenticated_leaving|1000032|18\n"
      "1|1000051|0e:0f|mlme_connect_ind|mlme_roamed_ind||1000052|24\n"
      "1|1000052||mlme_roamed_ind|mlme_disconnected_ind|unspecified_reason|1000053|25\n"
      "1|1000061|0e:0f|mlme_connect_ind|mlme_del_vif_req||1000062|28\n");
  EXPECT_EQ(
      Run("query 'SELECT vif, time_ms, substr(bssid, 13), started_by, ended_by, reason, "
          "end_time_ms, end_record FROM links' air.udi new.udi"),
      "0\n"
      "1||0e:0f||mlme_roamed_ind||1000070|15\n"
      "3||0e:1f||mlme_disconnected_ind|unspecified_reason|1000008|4\n"
      "1|1000070|0e:1f|mlme_roamed_ind|Driver: Unloaded||1001490|23\n"
      "1|1000050|0e:0f|mlme_connect_ind|mlme_disconnect_req|deauthenticated_leaving|1000070|7\n"
      "1|1000140|0e:0f|mlme_connect_ind|mlme_roamed_ind||1000150|18\n"
      "1|1000150||mlme_roamed_ind|mlme_roam_ind||1000151|19\n"
      "1|1000151||mlme_roam_ind|Driver: Unloaded||1000200|21\n"
      "1|1000330|0e:0f|mlme_connect_ind||||\n");
  EXPECT_EQ(Run("query 'SELECT record, scan_id, type, results, result, ended_by, ms, end_time_ms "
                "FROM scans' air.udi"),
            "0\n"
            "5|1|initial_scan|1|success|mlme_scan_done_ind|20|1000030\n"
            "10|1|full_scan|0|unspecified_failure|||\n"
            "12|2|full_scan|0|no confirm|mlme_add_scan_req|10|1000060\n"
            "13|2|full_scan|0|success|Driver: Unloaded|1430|1001490\n");
  EXPECT_EQ(Run("query 'SELECT record, signal, vif, peer, rssi FROM signal_strength' air.udi"),
            "0\n"
            "1|mlme_rssi_report_ind|1|0a:0b:0c:0d:0e:0f|-80\n"
            "7|mlme_scan_ind|0|0a:0b:0c:0d:0e:0f|-48\n"
            "8|mlme_scan_ind|0|0a:0b:0c:0d:0e:1f|-71\n"
            "25|mlme_rssi_report_ind|1|0a:0b:0c:0d:0e:1f|-60\n");
  EXPECT_EQ(Run("query 'SELECT path, time_ms, vif, sent, received, bytes, not_sent, retry_limit, "
                "tx_lifetime, "
                "no_bss FROM traffic' air.udi good.udi"),
            "0\n"
            "air.udi|1000000|1|1|0|3|0|0|0|0\n"
            "air.udi|1001000|1|0|1|2|3|1|1|0\n"
            "air.udi|1001000|2|1|0|1|0|0|0|0\n"
            "good.udi|1780297200000|1|0|4|966|0|0|0|0\n"
            "good.udi|1780297202000|1|2|1|182|1|1|0|0\n"
            "good.udi|1780297209000|1|0|2|282|0|0|0|0\n");
  // Logs do not mix.
  EXPECT_EQ(Run("query 'SELECT count(*), count(end_stamp) FROM connections' old.udi new.udi"),
            "0\n14|8\n");
  EXPECT_EQ(Run("query 'SELECT record, stamp, result, end_stamp FROM connections' good.udi"),
            "0\n10|2026/06/01-07:00:00.500|success|2026/06/01-07:00:42.000\n"
            "64|2026/06/01-07:00:42.010|host_request_failed|\n");
  EXPECT_EQ(Run("query 'SELECT record, signal, vif, peer, failure FROM failures' <(cat good.udi)"),
            "0\n45|ma_unitdata_cfm|1|1|retry_limit\n"
            "63|mlme_disconnected_ind|1|0a:0b:0c:0d:0e:1f|timeout\n"
            "65|mlme_connect_cfm|1||host_request_failed\n");
  EXPECT_EQ(Run("query 'SELECT request, record, signal, ms, result FROM exchanges WHERE ms > 3 "
                "UNION ALL SELECT count(*), sum(ms), max(time_ms), NULL, NULL FROM exchanges' "
                "good.udi"),
            "0\n5|9|mlme_scan_done_ind|320|\n10|19|mlme_connect_ind|60|success\n"
            "44|45|ma_unitdata_cfm|71|retry_limit\n30|494|1780297265911||\n");
}

// The directories of an installation.
TEST_F(Query, Installed) {
  const std::string prefix = directory() + "/it's installed";
  ASSERT_EQ(std::system((std::string(VRKT_CMAKE) + " --install " + QuoteForShell(VRKT_BUILD) +
                         " --prefix " + QuoteForShell(prefix) + " >/dev/null")
                            .c_str()),
            0);
  std::filesystem::create_symlink(prefix + "/bin/vrkt_wlan_udi_log_query", directory() + "/link");
  EXPECT_EQ(Run("query 'SELECT count(*) FROM failures' good.udi", directory() + "/link"), "0\n3\n");
}

}  // namespace
