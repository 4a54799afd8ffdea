#include "batch/report/report.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iostream>
#include <map>
#include <ostream>
#include <span>
#include <string_view>
#include <utility>

#include "batch/report/json_text.h"
#include "batch/report/reason_kinds.h"
#include "batch/report/report_page.h"
#include "batch/report/write_aside.h"

namespace plenvorith {
namespace {

/// The shortest digits that give the number back.
std::string jsonNumber(double number) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
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

void writeCheck(std::ostream& page, const MeshCheck& check) {
  page << ",\"check\":{\"parts\":" << check.parts << ",\"badParts\":" << check.badParts
       << ",\"openSolids\":" << check.openSolids
       << ",\"facesWithoutMesh\":" << check.facesWithoutMesh << ",\"facesOver\":" << check.facesOver
       << ",\"deviation\":" << jsonNumber(check.deviation)
       << ",\"volume\":" << jsonNumber(check.volume) << ",\"names\":" << jsonText(check.names)
       << '}';
}

void writeOutput(std::ostream& page, const OutputRecord& output, const Inspection& inspection) {
  page << "{\"path\":" << jsonText(output.path) << ",\"size\":" << output.size;
  if (inspection.check) {
    writeCheck(page, *inspection.check);
  }
  if (!inspection.picture.empty()) {
    page << ",\"picture\":\"" << base64(inspection.picture) << '"';
  }
  page << '}';
}

void writeBounds(std::ostream& page, const Bounds& bounds) {
  const char* separator = ",\"bounds\":[";
  for (const auto& corner : {bounds.low, bounds.high}) {
    for (const double value : corner) {
      page << separator << jsonNumber(value);
      separator = ",";
    }
  }
  page << ']';
}

void writeText(std::ostream& page, const char* key, const std::string& text) {
  if (!text.empty()) {
    page << ",\"" << key << "\":" << jsonText(text);
  }
}

void writeNumber(std::ostream& page, const char* key, const std::optional<int>& number) {
  if (number) {
    page << ",\"" << key << "\":" << *number;
  }
}

/// The counts above the files.
void writeTotals(std::ostream& page, const std::vector<Total>& totals) {
  const char* separator = ",\n\"totals\":{";
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
    page << std::exchange(separator, ",") << '"' << statusName(status)
         << "\":{\"files\":" << sum.files << ",\"size\":" << sum.size
         << ",\"triangles\":" << sum.triangles << ",\"seconds\":" << jsonNumber(sum.seconds) << '}';
  }
  page << '}';
}

/// A kind whose reasons name files may have as many of them as files: only the first are listed.
void writeKinds(std::ostream& page, const std::vector<ReasonKind>& kinds) {
  constexpr std::size_t kMostReasons = 10;
  page << ",\n\"kinds\":[";
  const char* separator = "\n";
  for (const ReasonKind& kind : kinds) {
    page << std::exchange(separator, ",\n") << "{\"title\":" << jsonText(kind.title)
         << ",\"count\":" << kind.count << ",\"reasons\":[";
    const char* comma = "";
    for (const auto& [reason, count] :
         std::span(kind.reasons).first(std::min(kMostReasons, kind.reasons.size()))) {
      page << std::exchange(comma, ",") << '[' << jsonText(reason) << ',' << count << ']';
    }
    page << "]}";
  }
  page << ']';
}

/// One file on a line. What is not known is left out.
void writeFile(std::ostream& page, const ReportFile& file, const std::string& base,
               const std::map<std::string_view, std::size_t>& kinds) {
  const FileRecord& record = file.record;
  page << "{\"name\":" << jsonText(record.name) << ",\"status\":\"" << statusName(record.status)
       << "\",\"size\":" << record.size << ",\"seconds\":" << jsonNumber(record.seconds)
       << ",\"triangles\":" << record.triangles << ",\"peakMemory\":" << record.peakMemory;
  // Nearly always the base and the name.
  writeText(page, "path", record.path == base + record.name ? "" : record.path);
  writeText(page, "reason", record.reason);
  if (const auto kind = kinds.find(beginningOf(record.reason)); kind != kinds.end()) {
    page << ",\"kind\":" << kind->second;
  }
  writeText(page, "transcriptEnd", file.transcriptEnd);
  writeNumber(page, "exitStatus", record.exitStatus);
  writeNumber(page, "signal", record.signal);
  writeText(page, "host", record.host);
  if (record.bounds) {
    writeBounds(page, *record.bounds);
  }
  const char* separator = ",\"outputs\":[";
  for (std::size_t i = 0; i < record.outputs.size(); ++i) {
    page << separator;
    writeOutput(page, record.outputs[i],
                i < file.inspections.size() ? file.inspections[i] : Inspection());
    separator = ",";
  }
  page << (record.outputs.empty() ? "}" : "]}");
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
void writeHead(std::ostream& page, const ReportHead& head, const std::vector<ReasonKind>& kinds) {
  page << "{\"about\":" << jsonText(head.about) << ",\"base\":" << jsonText(head.base)
       << ",\"notes\":[";
  const char* separator = "";
  for (const std::string& note : head.notes) {
    page << std::exchange(separator, ",") << jsonText(note);
  }
  page << ']';
  writeTotals(page, head.totals);
  writeKinds(page, kinds);
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
  writeHead(page, head, kinds);
  page << ",\n\"files\":[";
  const char* separator = "\n";
  const bool isWhole = files([&](const ReportFile& file) {
    page << std::exchange(separator, ",\n");
    writeFile(page, file, head.base, kindNumbers);
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
