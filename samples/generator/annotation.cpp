#include "samples/generator/annotation.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "common/triangle.h"

namespace plenvorith::samples {
namespace {

/// A plane to draw in: where it is, and which way is right and up.
struct Sheet {
  Point3 origin;
  Point3 right;
  Point3 up;
};

/// What is drawn: quadrangles as strips of four points, and single triangles.
struct Drawing {
  Sheet sheet;
  std::vector<Point3> points;
  std::vector<std::vector<std::size_t>> strips;
};

void addCorner(Drawing& drawing, double x, double y) {
  const auto& [o, r, u] = drawing.sheet;
  drawing.points.push_back(
      {o.x + x * r.x + y * u.x, o.y + x * r.y + y * u.y, o.z + x * r.z + y * u.z});
  drawing.strips.back().push_back(drawing.points.size());
}

void addBar(Drawing& drawing, double left, double bottom, double right, double top) {
  drawing.strips.emplace_back();
  addCorner(drawing, left, bottom);
  addCorner(drawing, right, bottom);
  addCorner(drawing, left, top);
  addCorner(drawing, right, top);
}

/// The tip of an arrow, `length` long to the right or, if that is negative, to the left.
void addArrow(Drawing& drawing, double x, double y, double length) {
  drawing.strips.emplace_back();
  addCorner(drawing, x, y);
  addCorner(drawing, x + length, y - 0.7);
  addCorner(drawing, x + length, y + 0.7);
}

/// A digit of seven bars: top, the two upper ones, middle, the two lower ones, bottom.
void addDigit(Drawing& drawing, std::size_t digit, double x, double y) {
  constexpr std::array<std::array<double, 4>, 7> kBars = {{{0, 4.6, 2.4, 5},
                                                           {0, 2.5, 0.4, 5},
                                                           {2, 2.5, 2.4, 5},
                                                           {0, 2.3, 2.4, 2.7},
                                                           {0, 0, 0.4, 2.5},
                                                           {2, 0, 2.4, 2.5},
                                                           {0, 0, 2.4, 0.4}}};
  constexpr std::array<const char*, 10> kDigits = {"1110111", "0010010", "1011101", "1011011",
                                                   "0111010", "1101011", "1101111", "1010010",
                                                   "1111111", "1111011"};
  for (std::size_t i = 0; i < kBars.size(); ++i) {
    const auto& [left, bottom, right, top] = kBars.at(i);
    if (kDigits.at(digit)[i] == '1') {
      addBar(drawing, x + left, y + bottom, x + right, y + top);
    }
  }
}

/// A length from 0 to `length` along the bottom of the sheet, `distance` below what it measures.
Drawing drawDimension(const Sheet& sheet, std::size_t length, double distance) {
  constexpr double kLine = 0.15;
  constexpr double kArrow = 3;
  const auto end = static_cast<double>(length);
  Drawing drawing{sheet, {}, {}};
  for (const double x : {0.0, end}) {
    addBar(drawing, x - kLine, -distance - 2, x + kLine, -1);
  }
  addBar(drawing, kArrow, -distance - kLine, end - kArrow, -distance + kLine);
  addArrow(drawing, 0, -distance, kArrow);
  addArrow(drawing, end, -distance, -kArrow);
  addDigit(drawing, length / 10, end / 2 - 3, -distance + 1);
  addDigit(drawing, length % 10, end / 2 + 0.5, -distance + 1);
  return drawing;
}

/// Appends a drawing with its style and gives the occurrence.
std::size_t addOccurrence(Entities& entities, const Drawing& drawing, const std::string& name,
                          std::size_t style) {
  const std::string count = std::to_string(drawing.points.size());
  const std::size_t points = add(
      entities, "COORDINATES_LIST(''," + count + "," + list(drawing.points, [](const Point3& p) {
                  return "(" + real(p.x) + "," + real(p.y) + "," + real(p.z) + ")";
                }) + ")");
  const std::string strips = list(drawing.strips, [](const auto& strip) {
    return list(strip, [](std::size_t index) { return std::to_string(index); });
  });
  const std::size_t set = add(entities, "COMPLEX_TRIANGULATED_SURFACE_SET(''," + ref(points) + "," +
                                            count + ",(),()," + strips + ",())");
  const std::size_t geometry =
      add(entities, "TESSELLATED_GEOMETRIC_SET('" + name + "',(" + ref(set) + "))");
  return add(entities, "TESSELLATED_ANNOTATION_OCCURRENCE('" + name + "',(" + ref(style) + ")," +
                           ref(geometry) + ")");
}

std::size_t addStyle(Entities& entities) {
  const std::size_t colour = add(entities, "DRAUGHTING_PRE_DEFINED_COLOUR('black')");
  const std::size_t fill = add(entities, "FILL_AREA_STYLE_COLOUR(''," + ref(colour) + ")");
  const std::size_t area = add(entities, "FILL_AREA_STYLE('',(" + ref(fill) + "))");
  return add(entities, "PRESENTATION_STYLE_ASSIGNMENT((" + ref(area) + "))");
}

}  // namespace

void addAnnotation(Entities& entities, const std::string& context) {
  const std::size_t style = addStyle(entities);
  const Sheet front = {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}};
  const Sheet side = {{0, 0, 46}, {0, 0, -1}, {1, 0, 0}};
  const Sheet bottom = {{60, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
  std::vector<std::size_t> occurrences;
  for (const auto& [sheet, length] :
       {std::pair{front, 60U}, std::pair{side, 46U}, std::pair{bottom, 40U}}) {
    occurrences.push_back(addOccurrence(entities, drawDimension(sheet, length, 8),
                                        std::to_string(length) + " mm", style));
  }
  add(entities, "DRAUGHTING_MODEL('dimensions'," + list(occurrences, ref) + "," + context + ")");
  add(entities, "TESSELLATED_SHAPE_REPRESENTATION('saved view'," + list(occurrences, ref) + "," +
                    context + ")");
}

}  // namespace plenvorith::samples
