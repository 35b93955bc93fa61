#include "cut_log.h"

#include <cstddef>
#include <string>
#include <utility>

#include "part_writer.h"

CutResult CutLog(const ByteSource::ReadFunction& read, const WriteFunction& write,
                 Selection& selection, std::optional<Redactor> redactor) {
  constexpr std::size_t kBlock = 65536;
  CutResult result;
  PartWriter part(std::move(redactor));
  const auto write_part = [&] {
    std::string& bytes = part.bytes();
    if (!bytes.empty() && result.write_error == 0) result.write_error = write(bytes);
    bytes.clear();
  };
  LogReader log([&](void* bytes, std::size_t size) {
    write_part();
    return read(bytes, size);
  });
  LogItem item;
  bool is_done = false;
  while (!is_done && result.write_error == 0 && log.Read(item)) {
    if (item.HasLine()) {
      result.last = item.time;
      if (result.count++ == 0) result.first = item.time;
      if (!selection.Contains(result.count, item.time)) continue;
      result.is_empty = false;
    }
    part.Add(item, log);
    if (part.bytes().size() >= kBlock) write_part();
    // If nothing is selected, all records are counted.
    is_done = !result.is_empty && selection.EndsAt(result.count);
  }
  part.Finish(log);
  write_part();
  if (!is_done && result.write_error == 0) result.end = log.end();
  return result;
}
