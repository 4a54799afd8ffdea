#pragma once

#include <string_view>

namespace plenvorith {

/// The sources of the report's page, report.html, report.css and report.js. The first has the hashes
/// of the others in its policy, and @STYLE@, @DATA@ and @SCRIPT@, each once and in this order, where
/// the others and the files go.
extern const std::string_view kReportHtml;
extern const std::string_view kReportStyle;
extern const std::string_view kReportScript;

}  // namespace plenvorith
