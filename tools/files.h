#ifndef VRKT_TOOLS_FILES_H_
#define VRKT_TOOLS_FILES_H_

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

// Returns the bytes of a file, none if it cannot be read.
inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

// Returns whether all bytes were written.
inline bool WriteFile(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return !file.fail();
}

#endif  // VRKT_TOOLS_FILES_H_
