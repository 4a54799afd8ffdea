#include "check/text_report.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

#include "check/counted.h"
#include "check/problems.h"
#include "common/escaped_text.h"

namespace plenvorith {
namespace {

constexpr std::size_t kColumns = 7;
using Row = std::array<std::string, kColumns>;

/// In six digits at most, whatever the locale.
std::string shortNumber(double number) {
  constexpr int kDigits = 6;
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number,
                                 std::chars_format::general, kDigits);
  return {text.data(), end.ptr};
}

/// What a part is called, from the root down.
std::string nameOf(const BrepPart& part) {
  std::string name;
  for (const std::string& step : part.path) {
    name += portable(step) + " / ";
  }
  name += portable(part.name);
  // A part without a name of its own goes by that of its product.
  return part.name.empty() && !part.path.empty() ? name.substr(0, name.size() - 3) : name;
}

Row rowOf(const CheckedPart& checked) {
  const BrepPart& part = checked.part;
  return {checked.number ? std::to_string(*checked.number) : "-",
          part.kind,
          std::to_string(checked.mesh.openEdges),
          std::to_string(part.faces.withoutMesh),
          std::to_string(part.faces.overDeflection),
          shortNumber(part.faces.deviation),
          shortNumber(volumeOf(checked.mesh.measure))};
}

/// Rows in columns, the names behind them.
std::vector<std::string> table(const std::vector<const CheckedPart*>& parts) {
  std::vector<Row> rows = {{"part", "kind", "open", "no mesh", "over", "deviation", "volume"}};
  std::vector<std::string> names = {"name"};
  for (const CheckedPart* part : parts) {
    rows.push_back(rowOf(*part));
    names.push_back(nameOf(part->part));
  }
  std::array<std::size_t, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      widths[i] = std::max(widths[i], row[i].size());
    }
  }
  std::vector<std::string> lines;
  for (std::size_t line = 0; line < rows.size(); ++line) {
    std::string text;
    for (std::size_t i = 0; i < kColumns; ++i) {
      text += std::string(widths[i] - rows[line][i].size(), ' ') + rows[line][i] + "  ";
    }
    lines.push_back(text + names[line]);
  }
  return lines;
}

/// Whether one part is worse than another: first the holes, then the distances.
bool isWorse(const CheckedPart* a, const CheckedPart* b) {
  const auto badness = [](const CheckedPart& part) {
    const FaceFacts& faces = part.part.faces;
    const bool isSolid = std::string_view(part.part.kind) == "solid";
    return std::array<double, 5>{hasProblem(part) ? 1.0 : 0.0,
                                 static_cast<double>(faces.withoutMesh),
                                 isSolid ? static_cast<double>(part.mesh.openEdges) : 0.0,
                                 static_cast<double>(faces.overDeflection), faces.deviation};
  };
  return badness(*a) > badness(*b);
}

}  // namespace

std::vector<std::string> textReport(const CheckedModel& model, Reported reported) {
  std::vector<const CheckedPart*> parts;
  for (const CheckedPart& part : model.parts) {
    if (reported == Reported::All || hasProblem(part)) {
      parts.push_back(&part);
    }
  }
  const ModelTotals totals = totalsOf(model);
  std::stable_sort(parts.begin(), parts.end(), isWorse);
  std::vector<std::string> lines;
  if (!parts.empty()) {
    lines = table(parts);
  }
  lines.push_back((totals.partsWithProblems == 0
                       ? "No problem"
                       : counted(totals.partsWithProblems, "part") + " with problems") +
                  " in " + counted(totals.parts, "part") + ", " +
                  counted(totals.triangles, "triangle") + ", deflection " +
                  shortNumber(model.deflection));
  if (model.hasMesh) {
    lines.emplace_back("The mesh is that of the file.");
  }
  if (hasProblemOfTheWhole(model)) {
    lines.emplace_back("The file states other measures of the whole than it has.");
  }
  return lines;
}

std::vector<std::string> textReport(const MeshFacts& mesh) {
  const MeshMeasure& measure = mesh.measure;
  const auto pointText = [](const Point3& point) {
    return '(' + shortNumber(point.x) + ", " + shortNumber(point.y) + ", " + shortNumber(point.z) +
           ')';
  };
  return {isClosed(mesh) ? "closed" : "open: " + counted(mesh.openEdges, "edge"),
          counted(measure.triangles, "triangle") + ", " + std::to_string(measure.degenerate) +
              " of them without area, in " + counted(mesh.pieces, "piece"),
          "volume " + shortNumber(volumeOf(measure)) + ", area " + shortNumber(measure.area),
          "from " + pointText(measure.low) + " to " + pointText(measure.high)};
}

}  // namespace plenvorith
