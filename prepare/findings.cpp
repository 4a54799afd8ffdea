#include "prepare/findings.h"

#include "product/attributes.h"
#include "product/occurrences.h"
#include "product/product_structure.h"

namespace plenvorith {
namespace {

/// Whether the shape of a product keeps an item of a type that nobody knows: it may be geometry.
bool keepsUnknown(const InstanceTable& table, const ProductStructure& structure,
                  const std::vector<Fate>& fates) {
  bool isKept = false;
  for (const Representation& representation : structure.representations) {
    if (representation.isOfProduct) {
      table.forEachItem(representation.instance, attributes::kItems, [&](InstanceIndex item) {
        isKept = isKept || (table.type(item).isOnly(Kind::Unknown) && fates[item] != Fate::Dropped);
      });
    }
  }
  return isKept;
}

}  // namespace

Findings decide(const InstanceTable& table, StatementReader& again) {
  Findings findings;
  InstanceReader instances(table, again);
  ProductStructure structure = readProductStructure(table);
  findings.decisions.orphans = tieOrphans(table, structure);
  Occurrences occurrences(structure, instances, findings.warnings);
  findings.part = findPartTessellation(table, structure, occurrences, findings.warnings);
  findings.decisions.plan = planTessellation(table, findings.part, occurrences, findings.warnings);
  findings.decisions.fates = decideFates(table, structure);
  findings.part.hasExact =
      findings.part.hasExact || keepsUnknown(table, structure, findings.decisions.fates);
  findings.decisions.mayHaveExact = findings.part.mayHaveExact || findings.part.hasExact;
  if (table.hasUnended()) {
    findings.warnings.insert("instances with a string that never ends are left out");
  }
  if (table.hasUnbalanced()) {
    findings.warnings.insert("instances whose parentheses do not balance are left out");
  }
  return findings;
}

}  // namespace plenvorith
