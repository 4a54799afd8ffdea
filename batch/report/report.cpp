#include "batch/report/report.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <map>
#include <ostream>
#include <span>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include "batch/report/reason_kinds.h"
#include "batch/report/report_page.h"
#include "batch/report/write_aside.h"
#include "batch/system/lines.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

using OrderedJson = nlohmann::ordered_json;

/// As text for the script element of a page, which a "<" could end.
std::string pageText(const OrderedJson& json) {
  constexpr int kOneLine = -1;
  constexpr bool kAsciiOnly = false;
  std::string text;
  for (const char c : json.dump(kOneLine, ' ', kAsciiOnly, OrderedJson::error_handler_t::replace)) {
    text += c == '<' ? "\\u003c" : std::string(1, c);
  }
  return text;
}

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned group = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      group = group << 8U | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    }
    const std::size_t known = bytes.size() - i;
    text += kDigits[group >> 18U];
    text += kDigits[group >> 12U & 63U];
    text += known > 1 ? kDigits[group >> 6U & 63U] : '=';
    text += known > 2 ? kDigits[group & 63U] : '=';
  }
  return text;
}

OrderedJson splitLines(std::string_view text) {
  OrderedJson lines = OrderedJson::array();
  while (!text.empty()) {
    lines.push_back(cutOff(text, '\n'));
  }
  return lines;
}

OrderedJson jsonOf(const MeshCheck& check) {
  // The names come with escapes already.
  return {{"parts", check.parts},           {"badParts", check.badParts},
          {"openSolids", check.openSolids}, {"facesWithoutMesh", check.facesWithoutMesh},
          {"facesOver", check.facesOver},   {"deviation", check.deviation},
          {"volume", check.volume},         {"names", splitLines(check.names)}};
}

OrderedJson jsonOf(const OutputRecord& output, const Inspection& inspection) {
  OrderedJson object = {{"path", portable(output.path)}, {"size", output.size}};
  if (inspection.check) {
    object["check"] = jsonOf(*inspection.check);
  }
  if (!inspection.picture.empty()) {
    object["picture"] = base64(inspection.picture);
  }
  return object;
}

/// The counts above the files.
OrderedJson jsonOf(const std::vector<Total>& totals) {
  OrderedJson object;
  for (const FileStatus status :
       {FileStatus::Converted, FileStatus::Failed, FileStatus::Delivering}) {
    Total sum;
    for (const Total& total : totals) {
      if (total.status == status) {
        sum.files += total.files;
        sum.size += total.size;
        sum.triangles += total.triangles;
        sum.seconds += total.seconds;
      }
    }
    object[statusName(status)] = {{"files", sum.files},
                                  {"size", sum.size},
                                  {"triangles", sum.triangles},
                                  {"seconds", sum.seconds}};
  }
  return object;
}

/// A kind whose reasons name files may have as many of them as files: only the first are listed.
OrderedJson jsonOf(const ReasonKind& kind) {
  constexpr std::size_t kMostReasons = 10;
  OrderedJson reasons = OrderedJson::array();
  for (const auto& [reason, count] :
       std::span(kind.reasons).first(std::min(kMostReasons, kind.reasons.size()))) {
    reasons.push_back(OrderedJson::array({portable(reason), count}));
  }
  return {{"title", portable(kind.title)}, {"count", kind.count}, {"reasons", std::move(reasons)}};
}

void addText(OrderedJson& object, const char* key, const std::string& text) {
  if (!text.empty()) {
    object[key] = portable(text);
  }
}

/// What is not known is left out.
OrderedJson jsonOf(const ReportFile& file, const std::string& base,
                   const std::map<std::string_view, std::size_t>& kinds) {
  const FileRecord& record = file.record;
  OrderedJson object = {{"name", portable(record.name)}, {"status", statusName(record.status)},
                        {"size", record.size},           {"seconds", record.seconds},
                        {"triangles", record.triangles}, {"peakMemory", record.peakMemory}};
  // Nearly always the base and the name.
  addText(object, "path", record.path == base + record.name ? "" : record.path);
  addText(object, "reason", record.reason);
  addText(object, "sameAs", record.sameAs);
  if (const auto kind = kinds.find(beginningOf(record.reason)); kind != kinds.end()) {
    object["kind"] = kind->second;
  }
  for (const OrderedJson& line : splitLines(file.transcriptEnd)) {
    object["transcriptEnd"].push_back(portable(line.get_ref<const std::string&>()));
  }
  if (record.exitStatus) {
    object["exitStatus"] = *record.exitStatus;
  }
  if (record.signal) {
    object["signal"] = *record.signal;
  }
  addText(object, "host", record.host);
  if (record.bounds) {
    const auto& [low, high] = *record.bounds;
    object["bounds"] = {low[0], low[1], low[2], high[0], high[1], high[2]};
  }
  for (std::size_t i = 0; i < record.outputs.size(); ++i) {
    object["outputs"].push_back(jsonOf(
        record.outputs[i], i < file.inspections.size() ? file.inspections[i] : Inspection()));
  }
  return object;
}

/// Writes the page up to a mark, and leaves what follows the mark.
void writeUpTo(std::ostream& page, std::string_view mark, std::string_view& rest) {
  const std::size_t place = rest.find(mark);
  page << rest.substr(0, place);
  rest.remove_prefix(place + mark.size());
}

std::vector<ReasonKind> kindsIn(const std::vector<Total>& totals) {
  ReasonCounts counts;
  for (const Total& total : totals) {
    if (!total.reason.empty()) {
      counts[total.reason] += total.files;
    }
  }
  return kindsOf(counts);
}

/// What stands before the files.
std::string pageText(const ReportHead& head, const std::vector<ReasonKind>& kinds) {
  OrderedJson object = {
      {"about", head.about}, {"base", portable(head.base)}, {"notes", head.notes}};
  object["totals"] = jsonOf(head.totals);
  object["kinds"] = OrderedJson::array();
  for (const ReasonKind& kind : kinds) {
    object["kinds"].push_back(jsonOf(kind));
  }
  std::string text = pageText(object);
  text.pop_back();
  return text + ",\n\"files\":[";
}

/// False if not all files could be read.
bool writePage(std::ostream& page, const ReportHead& head, const ReportFiles& files) {
  const std::vector<ReasonKind> kinds = kindsIn(head.totals);
  std::map<std::string_view, std::size_t> kindNumbers;
  for (const ReasonKind& kind : kinds) {
    kindNumbers.emplace(kind.beginning, kindNumbers.size());
  }
  std::string_view rest = kReportHtml;
  writeUpTo(page, "@STYLE@", rest);
  page << kReportStyle;
  writeUpTo(page, "@DATA@", rest);
  page << pageText(head, kinds);
  const char* separator = "\n";
  const bool isWhole = files([&](const ReportFile& file) {
    page << std::exchange(separator, ",\n") << pageText(jsonOf(file, head.base, kindNumbers));
  });
  page << "\n]}\n";
  writeUpTo(page, "@SCRIPT@", rest);
  page << kReportScript << rest;
  return isWhole;
}

}  // namespace

bool writeReport(const std::string& path, const ReportHead& head, const ReportFiles& files) {
  if (!writeAside(path, [&](std::ostream& page) { return writePage(page, head, files); })) {
    std::cerr << "plenvorith-batch: the report could not be written: " << path << std::endl;
    return false;
  }
  return true;
}

}  // namespace plenvorith
