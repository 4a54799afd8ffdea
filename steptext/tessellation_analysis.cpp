#include "steptext/tessellation_analysis.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <set>
#include <string_view>

#include "common/ascii.h"

namespace plenvorith {
namespace {

/// Names that live in the table for as long as the analysis runs.
using NameViews = std::set<std::string_view>;

/// Calls `visit` with every reference ("#" and digits) in `text`, from left to right. References in
/// quoted strings count like any other.
template <typename Visit>
void forEachReference(std::string_view text, Visit visit) {
  std::size_t start = text.find('#');
  while (start != std::string_view::npos) {
    std::size_t end = start + 1;
    while (end < text.size() && isDigit(text[end])) {
      ++end;
    }
    if (end > start + 1) {
      visit(text.substr(start, end - start));
    }
    start = text.find('#', end);
  }
}

/// The type of an entity: its text up to the first "(", or all of it. Nothing is trimmed, so a
/// complex instance, whose text starts with "(", has an empty type.
std::string_view typeOf(std::string_view text) {
  return text.substr(0, text.find('('));
}

/// The shape representations of a file.
struct Representations {
  NameViews tessellated;
  NameViews exact;  // plain ones only
};

Representations representationsOf(const EntityTable& table) {
  Representations found;
  for (const auto& [name, text] : table) {
    const char first = text.empty() ? '\0' : text.front();
    if (first == 'T' && text.starts_with("TESSELLATED_SHAPE_REPRESENTATION(")) {
      found.tessellated.insert(found.tessellated.end(), name);
    } else if (first == 'S' && text.starts_with("SHAPE_REPRESENTATION(")) {
      found.exact.insert(found.exact.end(), name);
    }
  }
  return found;
}

/// Adds the tessellated representation that one relationship pairs with an exact one, if it does.
void collectPaired(std::string_view relationship, const NameViews& exact,
                   const NameViews& tessellated, InstanceNames& paired) {
  bool hasExactSide = false;
  std::string_view tessellatedSide;
  forEachReference(relationship, [&](std::string_view reference) {
    hasExactSide = hasExactSide || exact.contains(reference);
    if (tessellated.contains(reference)) {
      tessellatedSide = reference;
    }
  });
  if (hasExactSide && !tessellatedSide.empty()) {
    paired.emplace(tessellatedSide);
  }
}

InstanceNames pairedRepresentations(const EntityTable& table, const NameViews& exact,
                                    const NameViews& tessellated) {
  constexpr std::string_view kRelationship = "SHAPE_REPRESENTATION_RELATIONSHIP";
  // Skips up to the length of the pattern at once; the text of every entity is searched.
  const std::boyer_moore_horspool_searcher searcher(kRelationship.begin(), kRelationship.end());
  InstanceNames paired;
  if (exact.empty()) {
    return paired;  // without a look at all the text of a file that holds nothing but tessellation
  }
  for (const auto& [name, text] : table) {
    if (std::search(text.begin(), text.end(), searcher) != text.end()) {
      collectPaired(text, exact, tessellated, paired);
    }
  }
  return paired;
}

InstanceNames facesToParse(const EntityTable& table, const InstanceNames& representations) {
  // A solid that is named again adds no face; remembering it keeps a file that names one large
  // solid many times from taking quadratic time.
  NameViews solids;
  for (const std::string& representation : representations) {
    forEachReference(table.find(representation)->second, [&](std::string_view reference) {
      const auto entity = table.find(reference);
      if (entity != table.end() && typeOf(entity->second) == "TESSELLATED_SOLID") {
        solids.insert(entity->first);
      }
    });
  }
  InstanceNames faces;
  for (const std::string_view solid : solids) {
    forEachReference(table.find(solid)->second, [&](std::string_view reference) {
      const auto entity = table.find(reference);
      if (entity != table.end() && typeOf(entity->second) == "COMPLEX_TRIANGULATED_FACE") {
        faces.emplace(entity->first);
      }
    });
  }
  return faces;
}

}  // namespace

TessellationAnalysis analyzeTessellation(const EntityTable& table) {
  TessellationAnalysis analysis;
  const auto [tessellated, exact] = representationsOf(table);
  if (tessellated.empty()) {
    return analysis;
  }
  analysis.pairedReps = pairedRepresentations(table, exact, tessellated);
  for (const std::string_view name : tessellated) {
    if (!analysis.pairedReps.contains(name)) {
      analysis.uniqueReps.emplace_hint(analysis.uniqueReps.end(), name);
    }
  }
  analysis.uniqueFaces = facesToParse(table, analysis.uniqueReps);
  if (analysis.uniqueReps.empty()) {
    analysis.status = TessellationStatus::AllPaired;
  } else if (analysis.pairedReps.empty()) {
    analysis.status = TessellationStatus::TessellationOnly;
  } else {
    analysis.status = TessellationStatus::PartiallyUnique;
  }
  return analysis;
}

}  // namespace plenvorith
