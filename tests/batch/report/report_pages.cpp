// Writes the report of made files for the tests in the browser.
//
//   report_pages odd FILE           names of any bytes
//   report_pages many FILE COUNT    COUNT files of all kinds
//   report_pages part FILE COUNT    the first four of them, as of a run of very many
//   report_pages doubts FILE        files of which some are doubtful, and one is a copy
//   report_pages reasons FILE       files that failed for all kinds of reasons
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "batch/report/report.h"

namespace {

using plenvorith::ReportFile;

constexpr std::size_t kNames = 8;
const std::string kOddNames[kNames] = {
    "</script><img src=x onerror=document.title='broken'>.stp",
    "new\nline.stp",
    "not \xff utf-8.stp",
    "percent%20 and ? and #.stp",
    "quote\"'&lt;.stp",
    "sub folder/größe 部品.stp",
    "turned \u202epts.gpj.stp",  // from here on to be read from right to left
    "javascript:alert(1)/a\\b.stp",
};

ReportFile oddFile(std::size_t i) {
  ReportFile file;
  file.record.name = kOddNames[i];
  file.record.status = plenvorith::FileStatus::Converted;
  file.record.outputs = {{kOddNames[i] + ".stl", 134}};
  return file;
}

const std::vector<std::string> kReasons = {
    "cannot be read: Permission denied",
    "ends in the middle (no END-ISO-10303-21)",
    "ends in the middle (no END-ISO-10303-21)",
    "ends in the middle (no END-ISO-10303-21); kernel crashed (signal 11, SIGSEGV)",
    "exit status 3",
    "exit status 4",
    "incomplete: a: (1).stl",
    "incomplete: b\n.stl",
    "incomplete: c.stl",
    "incomplete: c.stl",
    "incomplete: d.stl",
    "tessellation of a form that the converter does not decode: try without --as-is",
    "time limit of 6 s",
    "time limit of 6 s",
};

ReportFile failedFile(std::size_t i) {
  ReportFile file;
  file.record.name = std::to_string(100 + i) + ".stp";
  file.record.reason = kReasons[i];
  return file;
}

/// Every tenth file has failed; sizes go up, seconds go down, triangles go up and down.
ReportFile plainFile(std::size_t i, std::size_t count) {
  const std::string number = std::to_string(100000 + i).substr(1);
  ReportFile file;
  file.record.name = "group " + std::to_string(i / 1000) + "/part-" + number + ".step";
  file.record.size = static_cast<std::int64_t>(1000 * (i + 1));
  file.record.seconds = static_cast<double>(count - i) / 8;
  if (i % 10 == 3) {
    file.record.reason = i % 20 == 3 ? "ends in the middle" : "kernel crashed (signal 11)";
    file.transcriptEnd = "Reading: part\n  \x1b[31mError: <none>\nFailed";
    file.record.exitStatus = 1;
    return file;
  }
  file.record.status = plenvorith::FileStatus::Converted;
  file.record.exitStatus = 0;
  file.record.triangles = static_cast<std::int64_t>(i * 7919 % 10007);
  file.record.bounds = {{-1.77636e-15, 0, 0}, {10, 20, 30.5}};
  file.record.outputs = {{file.record.name + ".stl", 84 + 50 * file.record.triangles}};
  plenvorith::MeshCheck check{.parts = 5, .deviation = static_cast<double>(i % 8) / 8};
  check.badParts = static_cast<std::int64_t>(i % 4);
  check.openSolids = check.badParts;
  check.facesOver = check.badParts == 2 ? 1 : 0;
  check.volume = 1.5;
  check.names = check.badParts > 0 ? "lamp / \\xff\nlamp / foot\n" : "";
  file.inspections = {{check, i == 0 ? "picture" : ""}};
  return file;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: report_pages odd|many|part|doubts|reasons FILE [COUNT]" << std::endl;
    return 2;
  }
  const std::string kind = argv[1];
  const std::size_t count = kind == "odd" ? kNames
                            : kind == "reasons"
                                ? kReasons.size()
                                : std::strtoul(argc > 3 ? argv[3] : "30", nullptr, 10);
  plenvorith::ReportHead head{"Plenvorith of the tests", "/in/", {}, {}};
  std::vector<ReportFile> files;
  for (std::size_t i = 0; i < count; ++i) {
    files.push_back(kind == "odd"       ? oddFile(i)
                    : kind == "reasons" ? failedFile(i)
                                        : plainFile(i, count));
    const plenvorith::FileRecord& file = files.back().record;
    head.totals.push_back({file.status, file.reason, 1, file.size, file.triangles, file.seconds});
  }
  if (kind == "doubts") {  // of files that were converted, and one that was only copied
    files[1].record.reason = files[4].record.reason = "preparing would change the mesh (units)";
    files[2].record.sameAs = "/in/one\n.stp";
  }
  if (kind == "part") {
    files.erase(files.begin() + 4, files.end());
    head.notes = {"3 files that end in .zip: a.zip, <b>.zip, ...", "folder cannot be read: /x"};
  }
  const auto visitAll = [&files](const std::function<void(const ReportFile&)>& visit) {
    std::ranges::for_each(files, visit);
    return true;
  };
  return plenvorith::writeReport(argv[2], head, visitAll) ? 0 : 1;
}
