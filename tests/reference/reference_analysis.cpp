#include "tests/reference/reference_analysis.h"

#include <regex>
#include <string>
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

InstanceNames pairedOnes(const EntityTexts& table, const InstanceNames& tessellated,
                         const InstanceNames& exact) {
  InstanceNames paired;
  for (const auto& [name, text] : table) {
    if (text.find("SHAPE_REPRESENTATION_RELATIONSHIP") == std::string::npos) {
      continue;
    }
    bool hasExact = false;
    bool hasTessellated = false;
    std::string remembered;
    for (const std::string& reference : referencesIn(text)) {
      if (exact.count(reference) == 1) {
        hasExact = true;
      }
      if (tessellated.count(reference) == 1) {
        hasTessellated = true;
        remembered = reference;
      }
    }
    if (hasExact && hasTessellated) {
      paired.insert(remembered);
    }
  }
  return paired;
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
  TessellationAnalysis analysis;
  const InstanceNames tessellated =
      namesOfTextsThatStartWith(table, "TESSELLATED_SHAPE_REPRESENTATION(");
  if (tessellated.empty()) {
    return analysis;
  }
  const InstanceNames exact = namesOfTextsThatStartWith(table, "SHAPE_REPRESENTATION(");
  analysis.pairedReps = pairedOnes(table, tessellated, exact);
  for (const std::string& name : tessellated) {
    if (analysis.pairedReps.count(name) == 0) {
      analysis.uniqueReps.insert(name);
    }
  }
  analysis.uniqueFaces = facesOf(table, analysis.uniqueReps);
  if (analysis.uniqueReps.empty()) {
    analysis.status = TessellationStatus::AllPaired;
  } else if (analysis.pairedReps.empty()) {
    analysis.status = TessellationStatus::TessellationOnly;
  } else {
    analysis.status = TessellationStatus::PartiallyUnique;
  }
  return analysis;
}

}  // namespace plenvorith::test
