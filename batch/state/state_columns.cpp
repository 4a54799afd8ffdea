#include "batch/state/state_columns.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "batch/state/statement.h"
#include "batch/system/lines.h"

namespace plenvorith {
namespace {

void bindOptional(StatementUse& use, const std::optional<int>& value) {
  if (value) {
    use.bind(std::int64_t{*value});
  } else {
    use.bindNull();
  }
}

void bindBounds(StatementUse& use, const std::optional<Bounds>& bounds) {
  for (const auto corner : {&Bounds::low, &Bounds::high}) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      if (bounds) {
        use.bind(((*bounds).*corner)[axis]);
      } else {
        use.bindNull();
      }
    }
  }
}

std::optional<int> optionalFrom(StatementUse& use) {
  const bool isNull = use.isNull();
  const auto value = static_cast<int>(use.integer());
  return isNull ? std::nullopt : std::optional(value);
}

std::optional<Bounds> boundsFrom(StatementUse& use) {
  const bool isNull = use.isNull();
  Bounds bounds;
  for (const auto corner : {&Bounds::low, &Bounds::high}) {
    for (double& value : bounds.*corner) {
      value = use.real();
    }
  }
  return isNull ? std::nullopt : std::optional(bounds);
}

std::vector<std::string> cutApart(std::string_view text) {
  std::vector<std::string> arguments;
  while (!text.empty()) {
    arguments.emplace_back(cutOff(text, '\0'));
  }
  return arguments;
}

}  // namespace

FileStatus statusFrom(std::string_view name) {
  for (const FileStatus status : {FileStatus::Converted, FileStatus::Delivering}) {
    if (name == statusName(status)) {
      return status;
    }
  }
  return FileStatus::Failed;
}

void bindFile(StatementUse& use, const FileRecord& file) {
  use.bindBytes(file.path);
  use.bindBytes(file.name);
  use.bind(file.run);
  use.bindText(statusName(file.status));
  use.bindText(file.reason);
  use.bindBytes(file.lastLine);
  bindOptional(use, file.exitStatus);
  bindOptional(use, file.signal);
  use.bind(file.size);
  use.bind(file.mtime);
  use.bindBytes(file.hash);
  use.bindText(file.settings);
  use.bindText(file.program);
  use.bind(file.triangles);
  use.bind(file.seconds);
  use.bind(file.cpuSeconds);
  use.bind(file.peakMemory);
  bindBounds(use, file.bounds);
  use.bindText(file.host);
  use.bind(file.changed);
  use.bind(file.inode);
  use.bindBytes(file.header.schema);
  use.bindBytes(file.header.system);
  use.bindBytes(file.header.timeStamp);
  use.bindBytes(file.sameAs);
}

std::pair<FileRecord, std::int64_t> fileFrom(StatementUse& use) {
  FileRecord file;
  file.path = use.bytes();
  file.name = use.bytes();
  file.run = use.integer();
  file.status = statusFrom(use.bytes());
  file.reason = use.bytes();
  file.lastLine = use.bytes();
  file.exitStatus = optionalFrom(use);
  file.signal = optionalFrom(use);
  file.size = use.integer();
  file.mtime = use.integer();
  file.hash = use.bytes();
  file.settings = use.bytes();
  file.program = use.bytes();
  file.triangles = use.integer();
  file.seconds = use.real();
  file.cpuSeconds = use.real();
  file.peakMemory = use.integer();
  file.bounds = boundsFrom(use);
  file.host = use.bytes();
  file.changed = use.integer();
  file.inode = use.integer();
  file.header.schema = use.bytes();
  file.header.system = use.bytes();
  file.header.timeStamp = use.bytes();
  file.sameAs = use.bytes();
  return {std::move(file), use.integer()};
}

std::string argumentsText(const RunRecord& run) {
  std::string text;
  for (const std::string& argument : run.arguments) {
    text.append(argument).push_back('\0');
  }
  return text;
}

void bindRun(StatementUse& use, const RunRecord& run, std::string_view arguments) {
  if (run.id == 0) {
    use.bindNull();
  } else {
    use.bind(run.id);
  }
  use.bindText(run.start);
  use.bindText(run.end);
  use.bind(run.seconds);
  use.bindText(run.result);
  use.bindBytes(arguments);
  use.bindText(run.program);
  use.bindText(run.host);
  use.bindBytes(run.base);
  use.bindText(run.leftOut);
}

RunRecord runFrom(StatementUse& use) {
  RunRecord run;
  run.id = use.integer();
  run.start = use.bytes();
  run.end = use.bytes();
  run.seconds = use.real();
  run.result = use.bytes();
  run.arguments = cutApart(use.bytes());
  run.program = use.bytes();
  run.host = use.bytes();
  run.base = use.bytes();
  run.leftOut = use.bytes();
  return run;
}

}  // namespace plenvorith
