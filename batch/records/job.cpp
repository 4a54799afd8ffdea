#include "batch/records/job.h"

#include <cmath>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

namespace plenvorith {

const char* const kNamesFile = "names.json";

namespace {

using Json = nlohmann::json;

/// Every byte as the character of its number, in UTF-8, which JSON asks for.
std::string textFrom(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0U | byte >> 6U);
      text += static_cast<char>(0x80U | (byte & 0x3FU));
    }
  }
  return text;
}

std::string bytesOf(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x80 || i + 1 == text.size()) {
      bytes += text[i];
    } else {
      const auto next = static_cast<unsigned char>(text[++i]);
      bytes += static_cast<char>((byte & 3U) << 6U | (next & 0x3FU));
    }
  }
  return bytes;
}

// Values that are missing or of another kind keep their defaults.
void get(const Json& object, const char* name, std::string& value) {
  const auto found = object.find(name);
  if (found != object.end() && found->is_string()) {
    value = bytesOf(found->get_ref<const std::string&>());
  }
}

void get(const Json& object, const char* name, bool& value) {
  const auto found = object.find(name);
  if (found != object.end() && found->is_boolean()) {
    value = found->get<bool>();
  }
}

/// A time in seconds.
void get(const Json& object, const char* name, double& value) {
  constexpr double kLongest = 1e12;
  const auto found = object.find(name);
  const double number = found != object.end() && found->is_number() ? found->get<double>() : -1.0;
  if (number >= 0.0 && number < kLongest) {
    value = number;
  }
}

void get(const Json& object, const char* name, std::int64_t& value) {
  const auto found = object.find(name);
  // Not a fraction or 1e300, which no integer can hold.
  if (found != object.end() && found->is_number_integer()) {
    value = found->get<std::int64_t>();
  }
}

void get(const Json& object, const char* name, std::optional<int>& value) {
  const auto found = object.find(name);
  // The status of a process, or a signal.
  const std::int64_t number =
      found != object.end() && found->is_number_integer() ? found->get<std::int64_t>() : -1;
  if (number >= 0 && number < 256) {
    value = static_cast<int>(number);
  }
}

std::optional<Json> objectFrom(const std::string& line) {
  constexpr bool kNoExceptions = false;
  Json object = Json::parse(line, nullptr, kNoExceptions);
  if (!object.is_object() || !object.contains("id")) {
    return std::nullopt;
  }
  return object;
}

std::string lineOf(const Json& object) {
  constexpr int kOneLine = -1;
  constexpr bool kAsciiOnly = true;
  return object.dump(kOneLine, ' ', kAsciiOnly);
}

Json boundsFrom(const Bounds& bounds) {
  return {bounds.low[0],  bounds.low[1],  bounds.low[2],
          bounds.high[0], bounds.high[1], bounds.high[2]};
}

std::optional<Bounds> boundsOf(const Json& object) {
  const auto found = object.find("bounds");
  if (found == object.end() || !found->is_array() || found->size() != 6) {
    return std::nullopt;
  }
  Bounds bounds;
  for (std::size_t i = 0; i < 6; ++i) {
    const Json& number = (*found)[i];
    const double value = number.is_number() ? number.get<double>() : NAN;
    if (!std::isfinite(value)) {
      return std::nullopt;
    }
    (i < 3 ? bounds.low : bounds.high)[i % 3] = value;
  }
  return bounds;
}

/// Whether a file may be an output of a job that was asked for one of this name. Triangles that
/// cannot go to the STEP file go beside it.
bool isOutputOf(const std::string& name, const std::string& path) {
  constexpr std::string_view kStep = ".stp";
  return path.starts_with(name) ||
         (name.ends_with(kStep) &&
          path == name.substr(0, name.size() - kStep.size()).append(".stl"));
}

/// The outputs in a result; nothing if one of them cannot come from a job that was asked for `name`.
std::optional<std::vector<OutputRecord>> outputsOf(const Json& object, const std::string& name) {
  std::vector<OutputRecord> outputs;
  const auto found = object.find("outputs");
  for (const Json& output : found == object.end() ? Json::array() : *found) {
    OutputRecord record;
    record.size = -1;
    get(output, "path", record.path);
    get(output, "size", record.size);
    if (!isOutputOf(name, record.path) || record.path.find('/') != std::string::npos ||
        record.path.find('\0') != std::string::npos || record.size < 0) {
      return std::nullopt;
    }
    outputs.push_back(std::move(record));
  }
  return outputs;
}

}  // namespace

std::string lineFrom(const Job& job) {
  const ConversionSettings& settings = job.settings;
  return lineOf({{"id", job.id},
                 {"input", textFrom(job.input)},
                 {"outFolder", textFrom(job.outFolder)},
                 {"temporaryFolder", textFrom(job.temporaryFolder)},
                 {"output", textFrom(job.outputName)},
                 {"transcript", textFrom(job.transcript)},
                 {"names", job.names},
                 {"to", textFrom(settings.to)},
                 {"deflection", textFrom(settings.deflection)},
                 {"split", settings.split},
                 {"parts", settings.parts},
                 {"prepare", settings.prepare},
                 {"program", textFrom(settings.program)},
                 {"timeLimit", settings.timeLimit.count()},
                 {"memoryLimit", settings.memoryLimit}});
}

std::optional<Job> jobFrom(const std::string& line) {
  const std::optional<Json> object = objectFrom(line);
  if (!object) {
    return std::nullopt;
  }
  Job job;
  std::int64_t timeLimit = 0;
  get(*object, "id", job.id);
  get(*object, "input", job.input);
  get(*object, "outFolder", job.outFolder);
  get(*object, "temporaryFolder", job.temporaryFolder);
  get(*object, "output", job.outputName);
  get(*object, "transcript", job.transcript);
  get(*object, "names", job.names);
  get(*object, "to", job.settings.to);
  get(*object, "deflection", job.settings.deflection);
  get(*object, "split", job.settings.split);
  get(*object, "parts", job.settings.parts);
  get(*object, "prepare", job.settings.prepare);
  get(*object, "program", job.settings.program);
  get(*object, "timeLimit", timeLimit);
  get(*object, "memoryLimit", job.settings.memoryLimit);
  job.settings.timeLimit = std::chrono::seconds(timeLimit);
  return job;
}

std::string lineFrom(const JobResult& result) {
  constexpr int kProtocol = 1;  // 2 once a reader of 1 would misread a line
  Json object = {{"protocol", kProtocol},
                 {"id", result.id},
                 {"converted", result.isConverted},
                 {"tried", result.isTried},
                 {"reason", textFrom(result.reason)},
                 {"lastLine", textFrom(result.lastLine)},
                 {"size", result.size},
                 {"mtime", result.mtime},
                 {"changed", result.changed},
                 {"inode", result.inode},
                 {"started", result.started},
                 {"hash", textFrom(result.hash)},
                 {"schema", textFrom(result.header.schema)},
                 {"system", textFrom(result.header.system)},
                 {"timeStamp", textFrom(result.header.timeStamp)},
                 {"triangles", result.triangles},
                 {"seconds", result.seconds},
                 {"cpuSeconds", result.cpuSeconds},
                 {"peakMemory", result.peakMemory},
                 {"host", textFrom(result.host)},
                 {"outputs", Json::array()}};
  if (result.exitStatus) {
    object["exitStatus"] = *result.exitStatus;
  }
  if (result.signal) {
    object["signal"] = *result.signal;
  }
  if (result.bounds) {
    object["bounds"] = boundsFrom(*result.bounds);
  }
  for (const OutputRecord& output : result.outputs) {
    object["outputs"].push_back({{"path", textFrom(output.path)}, {"size", output.size}});
  }
  return lineOf(object);
}

std::string lineFrom(const std::vector<ShapeName>& names) {
  Json shapes = Json::array();
  for (const ShapeName& name : names) {
    Json path = Json::array();
    for (const std::string& product : name.path) {
      path.push_back(textFrom(product));
    }
    shapes.push_back({{"number", name.number}, {"path", path}, {"name", textFrom(name.name)}});
  }
  return lineOf(shapes);
}

std::optional<JobResult> resultFrom(const std::string& line, const OpenJobs& open) {
  const std::optional<Json> object = objectFrom(line);
  if (!object || !object->contains("converted")) {
    return std::nullopt;
  }
  JobResult result;
  result.id = -1;
  get(*object, "id", result.id);
  const auto job = open.find(result.id);
  if (job == open.end()) {
    return std::nullopt;
  }
  get(*object, "converted", result.isConverted);
  get(*object, "tried", result.isTried);
  get(*object, "reason", result.reason);
  get(*object, "lastLine", result.lastLine);
  get(*object, "exitStatus", result.exitStatus);
  get(*object, "signal", result.signal);
  get(*object, "size", result.size);
  get(*object, "mtime", result.mtime);
  get(*object, "changed", result.changed);
  get(*object, "inode", result.inode);
  get(*object, "started", result.started);
  get(*object, "hash", result.hash);
  get(*object, "schema", result.header.schema);
  get(*object, "system", result.header.system);
  get(*object, "timeStamp", result.header.timeStamp);
  get(*object, "triangles", result.triangles);
  get(*object, "seconds", result.seconds);
  get(*object, "cpuSeconds", result.cpuSeconds);
  get(*object, "peakMemory", result.peakMemory);
  get(*object, "host", result.host);
  result.bounds = boundsOf(*object);
  std::optional<std::vector<OutputRecord>> outputs = outputsOf(*object, job->second);
  if (!outputs || (result.isConverted && outputs->empty())) {
    return std::nullopt;
  }
  result.outputs = std::move(*outputs);
  return result;
}

}  // namespace plenvorith
