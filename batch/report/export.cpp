#include "batch/report/export.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <utility>

#include <nlohmann/json.hpp>

#include "batch/report/write_aside.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 6> kBoundNames = {"low_x",  "low_y",  "low_z",
                                                    "high_x", "high_y", "high_z"};

Json numberOrNull(const std::optional<int>& number) {
  return number ? Json(*number) : Json();
}

Json objectFrom(const FileRecord& file) {
  Json object = {{"status", statusName(file.status)},
                 {"input", portable(file.path)},
                 {"reason", portable(file.reason)},
                 {"last_line", portable(file.lastLine)},
                 {"exit_status", numberOrNull(file.exitStatus)},
                 {"signal", numberOrNull(file.signal)},
                 {"triangles", file.triangles},
                 {"seconds", file.seconds},
                 {"cpu_seconds", file.cpuSeconds},
                 {"peak_memory", file.peakMemory},
                 {"size", file.size}};
  for (std::size_t i = 0; i < kBoundNames.size(); ++i) {
    object[kBoundNames[i]] =
        file.bounds ? Json((i < 3 ? file.bounds->low : file.bounds->high)[i % 3]) : Json();
  }
  object["host"] = portable(file.host);
  object["program"] = portable(file.program);
  object["settings"] = portable(file.settings);
  object["outputs"] = Json::array();
  for (const OutputRecord& output : file.outputs) {
    object["outputs"].push_back({{"path", portable(output.path)}, {"size", output.size}});
  }
  return object;
}

/// One value of a table: quoted where it has to be.
std::string fieldFrom(const Json& value) {
  if (value.is_null()) {
    return {};
  }
  if (!value.is_string()) {
    return value.dump();
  }
  const auto& text = value.get_ref<const std::string&>();
  if (text.find_first_of(",\"") == std::string::npos) {
    return text;
  }
  std::string quoted = "\"";
  for (const char c : text) {
    quoted.append(c == '"' ? 2 : 1, c);
  }
  return quoted + '"';
}

/// The outputs are a number in a table.
std::string rowFrom(const Json& object, bool isTitle) {
  std::string row;
  for (const auto& [name, value] : object.items()) {
    row += row.empty() ? "" : ",";
    if (isTitle) {
      row += name;
    } else {
      row += value.is_array() ? std::to_string(value.size()) : fieldFrom(value);
    }
  }
  return row + '\n';
}

}  // namespace

bool exportState(StateHandle& state, const std::string& path) {
  const bool isTable = path.ends_with(".csv");
  return writeAside(path, [&](std::ostream& file) {
    file << (isTable ? rowFrom(objectFrom(FileRecord()), true) : "[");
    const char* separator = "\n";
    const bool isRead = forEachFile(state, [&](const FileRecord& record) {
      const Json object = objectFrom(record);
      if (isTable) {
        file << rowFrom(object, false);
      } else {
        file << std::exchange(separator, ",\n") << object.dump();
      }
    });
    file << (isTable ? "" : "\n]\n");
    return isRead;
  });
}

}  // namespace plenvorith
