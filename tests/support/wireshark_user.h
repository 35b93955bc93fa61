#ifndef VRKT_TESTS_SUPPORT_WIRESHARK_USER_H_
#define VRKT_TESTS_SUPPORT_WIRESHARK_USER_H_

#include <unistd.h>

#include <filesystem>
#include <string>

#include "files.h"
#include "support/process.h"

// A user of Wireshark who has copied the plugin and its profile, and who has frames of
// Ethernet with the plugin's link types.
class WiresharkUser {
 public:
  WiresharkUser() {
    std::filesystem::permissions(home(), std::filesystem::perms::all);
    std::filesystem::create_directories(PathOf(kPlugins));
    std::filesystem::copy_file(VRKT_PLUGIN, PathOf(kPlugins) + "/udi.lua");
    const std::string settings = PathOf(".config/wireshark");
    std::filesystem::create_directories(settings);
    std::filesystem::copy(VRKT_SOURCE "/wireshark/profiles", settings + "/profiles",
                          std::filesystem::copy_options::recursive);
    std::string link_types;
    for (const char* name : {"User 0 (DLT=147)", "User 1 (DLT=148)"}) {
      link_types += "\"" + std::string(name) + "\",\"eth_withoutfcs\",\"0\",\"\",\"0\",\"\"\n";
    }
    WriteFile(settings + "/user_dlts", link_types);
    LinkScripts();
  }

  const std::string& home() const { return home_.path(); }
  std::string PathOf(const std::string& name) const { return home() + "/" + name; }

  // Returns a shell command that runs a program as this user. Not as root: Wireshark
  // would warn about that, and later versions of it then load no plugin.
  std::string Command(const std::string& program) const {
    std::string command = "env -u XDG_CONFIG_HOME TZ=UTC0 HOME=" + QuoteForShell(home());
    if (std::filesystem::exists(PathOf("data"))) {
      command += " WIRESHARK_DATA_DIR=" + QuoteForShell(PathOf("data"));
    }
    if (geteuid() == 0) command += " setpriv --reuid=65534 --regid=65534 --clear-groups";
    return command + " " + program;
  }

 private:
  static constexpr const char* kPlugins = ".local/lib/wireshark/plugins";

  // Wireshark 4.0 reads long lists of addresses and services at each start and again for
  // each file, which takes longer than most tests. A plugin needs only the scripts.
  void LinkScripts() const {
    const std::string installed = "/usr/share/wireshark";
    if (!std::filesystem::exists(installed + "/init.lua")) return;
    std::filesystem::create_directory(PathOf("data"));
    for (const char* script : {"/console.lua", "/dtd_gen.lua", "/init.lua"}) {
      std::filesystem::create_symlink(installed + script, PathOf("data") + script);
    }
  }

  TemporaryDirectory home_;
};

#endif  // VRKT_TESTS_SUPPORT_WIRESHARK_USER_H_
