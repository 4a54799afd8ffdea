#include "batch/report/export.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <utility>

#include <nlohmann/json.hpp>

#include "batch/report/inspection.h"
#include "batch/report/write_aside.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

using OrderedJson = nlohmann::ordered_json;

constexpr std::array<const char*, 6> kBoundNames = {"low_x",  "low_y",  "low_z",
                                                    "high_x", "high_y", "high_z"};

OrderedJson numberOrNull(const std::optional<int>& number) {
  return number ? OrderedJson(*number) : OrderedJson();
}

/// 16 bytes as 32 digits.
std::string hexFrom(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    text += {kDigits[byte >> 4U], kDigits[byte & 15U]};
  }
  return text;
}

/// The check of an input, which is kept with one of its outputs.
std::optional<MeshCheck> checkOf(const FileRecord& file, InspectionsHandle* inspections) {
  for (const OutputRecord& output : file.outputs) {
    std::optional<MeshCheck> check =
        inspections != nullptr ? findInspection(*inspections, output.path).check : std::nullopt;
    if (check) {
      return check;
    }
  }
  return std::nullopt;
}

/// What has not been checked has no values.
void addCheck(OrderedJson& object, const std::optional<MeshCheck>& check) {
  object["parts"] = check ? OrderedJson(check->parts) : OrderedJson();
  object["volume"] = check ? OrderedJson(check->volume) : OrderedJson();
  object["parts_with_problems"] = check ? OrderedJson(check->badParts) : OrderedJson();
  object["open_solids"] = check ? OrderedJson(check->openSolids) : OrderedJson();
  object["faces_without_mesh"] = check ? OrderedJson(check->facesWithoutMesh) : OrderedJson();
  object["faces_over"] = check ? OrderedJson(check->facesOver) : OrderedJson();
  object["deviation"] = check ? OrderedJson(check->deviation) : OrderedJson();
  object["problems"] = check ? OrderedJson(portable(check->names)) : OrderedJson();
}

OrderedJson objectFrom(const FileRecord& file, InspectionsHandle* inspections) {
  OrderedJson object = {{"status", statusName(file.status)},
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
        file.bounds ? OrderedJson((i < 3 ? file.bounds->low : file.bounds->high)[i % 3])
                    : OrderedJson();
  }
  object["host"] = portable(file.host);
  object["program"] = portable(file.program);
  object["settings"] = portable(file.settings);
  object["name"] = portable(file.name);
  object["mtime"] = file.mtime;
  object["hash"] = hexFrom(file.hash);
  object["run"] = file.run;
  object["schema"] = portable(file.header.schema);
  object["system"] = portable(file.header.system);
  object["time_stamp"] = portable(file.header.timeStamp);
  object["same_as"] = portable(file.sameAs);
  addCheck(object, checkOf(file, inspections));
  object["outputs"] = OrderedJson::array();
  for (const OutputRecord& output : file.outputs) {
    object["outputs"].push_back({{"path", portable(output.path)}, {"size", output.size}});
  }
  return object;
}

/// One value of a table: quoted where it has to be.
std::string fieldFrom(const OrderedJson& value) {
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
std::string rowFrom(const OrderedJson& object, bool isTitle) {
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

bool exportState(StateHandle& state, const std::string& path, InspectionsHandle* inspections) {
  const bool isTable = path.ends_with(".csv");
  return writeAside(path, [&](std::ostream& file) {
    file << (isTable ? rowFrom(objectFrom(FileRecord(), nullptr), true) : "[");
    const char* separator = "\n";
    const bool isRead = forEachFile(state, [&](const FileRecord& record) {
      const OrderedJson object = objectFrom(record, inspections);
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
