#include "batch/records/job.h"

#include <algorithm>
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

void get(const Json& object, const char* name, std::chrono::seconds& value) {
  std::int64_t seconds = value.count();
  get(object, name, seconds);
  value = std::chrono::seconds(seconds);
}

void get(const Json& object, const char* name, std::optional<Bounds>& value) {
  const auto found = object.find(name);
  if (found == object.end() || !found->is_array() || found->size() != 6) {
    return;
  }
  Bounds bounds;
  for (std::size_t i = 0; i < 6; ++i) {
    const Json& number = (*found)[i];
    (i < 3 ? bounds.low : bounds.high)[i % 3] = number.is_number() ? number.get<double>() : NAN;
  }
  const auto isFinite = [](double number) { return std::isfinite(number); };
  if (std::ranges::all_of(bounds.low, isFinite) && std::ranges::all_of(bounds.high, isFinite)) {
    value = bounds;
  }
}

void put(Json& object, const char* name, const std::string& value) {
  object[name] = textFrom(value);
}

void put(Json& object, const char* name, const std::chrono::seconds& value) {
  object[name] = value.count();
}

void put(Json& object, const char* name, const std::optional<int>& value) {
  if (value) {
    object[name] = *value;
  }
}

void put(Json& object, const char* name, const std::optional<Bounds>& value) {
  if (value) {
    const auto& [low, high] = *value;
    object[name] = {low[0], low[1], low[2], high[0], high[1], high[2]};
  }
}

template <typename Value>
void put(Json& object, const char* name, const Value& value) {
  object[name] = value;
}

/// Calls `visit` with the name and the value of each field of a job, to be read or to be set.
template <typename AnyJob, typename Visit>
void visitJob(AnyJob& job, const Visit& visit) {
  visit("id", job.id);
  visit("input", job.input);
  visit("outFolder", job.outFolder);
  visit("temporaryFolder", job.temporaryFolder);
  visit("output", job.outputName);
  visit("transcript", job.transcript);
  visit("names", job.names);
  visit("to", job.settings.to);
  visit("deflection", job.settings.deflection);
  visit("split", job.settings.split);
  visit("parts", job.settings.parts);
  visit("prepare", job.settings.prepare);
  visit("program", job.settings.program);
  visit("timeLimit", job.settings.timeLimit);
  visit("memoryLimit", job.settings.memoryLimit);
}

/// The same with a result, but for its outputs.
template <typename AnyResult, typename Visit>
void visitResult(AnyResult& result, const Visit& visit) {
  visit("id", result.id);
  visit("converted", result.isConverted);
  visit("tried", result.isTried);
  visit("reason", result.reason);
  visit("lastLine", result.lastLine);
  visit("exitStatus", result.exitStatus);
  visit("signal", result.signal);
  visit("size", result.size);
  visit("mtime", result.mtime);
  visit("changed", result.changed);
  visit("inode", result.inode);
  visit("started", result.started);
  visit("hash", result.hash);
  visit("schema", result.header.schema);
  visit("system", result.header.system);
  visit("timeStamp", result.header.timeStamp);
  visit("triangles", result.triangles);
  visit("bounds", result.bounds);
  visit("seconds", result.seconds);
  visit("cpuSeconds", result.cpuSeconds);
  visit("peakMemory", result.peakMemory);
  visit("host", result.host);
}

auto putInto(Json& object) {
  return [&object](const char* name, const auto& value) { put(object, name, value); };
}

auto getFrom(const Json& object) {
  return [&object](const char* name, auto& value) { get(object, name, value); };
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
  Json object;
  visitJob(job, putInto(object));
  return lineOf(object);
}

std::optional<Job> jobFrom(const std::string& line) {
  const std::optional<Json> object = objectFrom(line);
  if (!object) {
    return std::nullopt;
  }
  Job job;
  job.settings.timeLimit = std::chrono::seconds(0);
  visitJob(job, getFrom(*object));
  return job;
}

std::string lineFrom(const JobResult& result) {
  constexpr int kProtocol = 1;  // 2 once a reader of 1 would misread a line
  Json object = {{"protocol", kProtocol}, {"outputs", Json::array()}};
  visitResult(result, putInto(object));
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
  visitResult(result, getFrom(*object));
  std::optional<std::vector<OutputRecord>> outputs = outputsOf(*object, job->second);
  if (!outputs || (result.isConverted && outputs->empty())) {
    return std::nullopt;
  }
  result.outputs = std::move(*outputs);
  return result;
}

}  // namespace plenvorith
