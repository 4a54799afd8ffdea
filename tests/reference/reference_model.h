#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "tests/reference/reference_instances.h"
#include "tests/reference/reference_prepare.h"

namespace plenvorith::test {

using Names = std::set<std::string>;

/// A relationship of two representations; it has a transformation or makes them equal in place.
struct Relation {
  std::string first;
  std::string second;
  std::string transformation;
};

/// The whole file, and what is known of it by name.
struct Model {
  ExchangeInstances instances{};
  std::map<std::string, Parameters> representations{};  ///< name, items, context
  std::map<std::string, std::string> groups{};          ///< by representation: those equal in place
  std::map<std::string, Names> products{};              ///< by group: product definitions
  Names featured{};                                     ///< groups that a property or feature uses
  std::map<std::string, Relation> relations{};
  Names usedRelations{};  ///< those that place a usage
  Names annotated{};      ///< items that an annotation styles
  Names exactParts{};     ///< solids, shells and faces of exact representations
  Names exactGroups{};
  ReferencePreparation result{};
};

/// Everything but the result.
Model referenceModel(std::string_view step);

/// An instance, or nullptr where there is none of that name.
const ExchangeInstance* find(const Model& model, const std::string& name);

bool isA(const Model& model, const std::string& name, const std::string& type);
bool isOneOf(const Model& model, const std::string& name, const Names& types);

/// The parameters of a type, in a simple instance or without the leading name in a complex one.
Parameters own(const Model& model, const std::string& name, const std::string& type);

/// Whether it is a representation that parts can be in; drawings are none.
bool mayHoldParts(const Model& model, const std::string& representation);

inline const Names kTessellatedRepresentations = {
    "TESSELLATED_SHAPE_REPRESENTATION",
    "TESSELLATED_SHAPE_REPRESENTATION_WITH_ACCURACY_PARAMETERS"};

}  // namespace plenvorith::test
