#include "tests/reference/reference_analysis.h"

#include <algorithm>
#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace plenvorith::test {
namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

std::string typeOf(const EntityTexts& table, const std::string& name) {
  const auto entry = table.find(name);
  return entry == table.end() ? "" : entry->second.substr(0, entry->second.find('('));
}

std::vector<std::string> referencesIn(const std::string& text) {
  static const std::regex pattern("#\\d+");
  std::vector<std::string> references;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    references.push_back(match->str());
  }
  return references;
}

InstanceNames namesOfTextsThatStartWith(const EntityTexts& table, const std::string& prefix) {
  InstanceNames names;
  for (const auto& [name, text] : table) {
    if (startsWith(text, prefix)) {
      names.insert(name);
    }
  }
  return names;
}

/// The tessellated representation that a relationship pairs with an exact one; empty if it pairs none.
std::string pairedBy(const std::string& relationship, const InstanceNames& tessellated,
                     const InstanceNames& exact) {
  const std::vector<std::string> references = referencesIn(relationship);
  const auto isIn = [](const InstanceNames& names) {
    return [&names](const std::string& name) { return names.count(name) == 1; };
  };
  // Of several tessellated ones the last counts.
  const auto last = std::find_if(references.rbegin(), references.rend(), isIn(tessellated));
  const bool hasExact = std::any_of(references.begin(), references.end(), isIn(exact));
  return hasExact && last != references.rend() ? *last : "";
}

/// Whether there is a relationship that pairs the representation.
bool isPaired(const EntityTexts& table, const std::string& representation,
              const InstanceNames& tessellated, const InstanceNames& exact) {
  return std::any_of(table.begin(), table.end(), [&](const auto& entity) {
    const std::string& text = entity.second;
    return text.find("SHAPE_REPRESENTATION_RELATIONSHIP") != std::string::npos &&
           pairedBy(text, tessellated, exact) == representation;
  });
}

InstanceNames facesOf(const EntityTexts& table, const InstanceNames& representations) {
  InstanceNames faces;
  for (const std::string& representation : representations) {
    for (const std::string& item : referencesIn(table.at(representation))) {
      if (typeOf(table, item) != "TESSELLATED_SOLID") {
        continue;
      }
      for (const std::string& face : referencesIn(table.at(item))) {
        if (typeOf(table, face) == "COMPLEX_TRIANGULATED_FACE") {
          faces.insert(face);
        }
      }
    }
  }
  return faces;
}

}  // namespace

TessellationAnalysis referenceAnalysis(const EntityTexts& table) {
  // What a status means: whether some representation is paired, and whether some is not.
  const std::map<std::pair<bool, bool>, TessellationStatus> statuses = {
      {{false, false}, TessellationStatus::NoTessellation},
      {{true, false}, TessellationStatus::AllPaired},
      {{true, true}, TessellationStatus::PartiallyUnique},
      {{false, true}, TessellationStatus::TessellationOnly},
  };
  const InstanceNames tessellated =
      namesOfTextsThatStartWith(table, "TESSELLATED_SHAPE_REPRESENTATION(");
  const InstanceNames exact = namesOfTextsThatStartWith(table, "SHAPE_REPRESENTATION(");
  TessellationAnalysis analysis;
  for (const std::string& name : tessellated) {
    (isPaired(table, name, tessellated, exact) ? analysis.pairedReps : analysis.uniqueReps)
        .insert(name);
  }
  analysis.uniqueFaces = facesOf(table, analysis.uniqueReps);
  analysis.status = statuses.at({!analysis.pairedReps.empty(), !analysis.uniqueReps.empty()});
  return analysis;
}

}  // namespace plenvorith::test
