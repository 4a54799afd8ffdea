#include "product/units.h"

#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace plenvorith {
namespace {

/// The factor of an SI prefix.
std::optional<double> prefixFactor(std::string_view prefix) {
  using Named = std::pair<std::string_view, double>;
  static constexpr std::array kPrefixes = std::to_array<Named>({
      {".EXA.", 1e18},
      {".PETA.", 1e15},
      {".TERA.", 1e12},
      {".GIGA.", 1e9},
      {".MEGA.", 1e6},
      {".KILO.", 1e3},
      {".HECTO.", 1e2},
      {".DECA.", 1e1},
      {"$", 1e0},
      {".DECI.", 1e-1},
      {".CENTI.", 1e-2},
      {".MILLI.", 1e-3},
      {".MICRO.", 1e-6},
      {".NANO.", 1e-9},
      {".PICO.", 1e-12},
      {".FEMTO.", 1e-15},
      {".ATTO.", 1e-18},
  });
  for (const auto& [name, factor] : kPrefixes) {
    if (name == prefix) {
      return factor;
    }
  }
  return std::nullopt;
}

/// One link of a chain of conversions: how many of `base` make one unit.
struct Conversion {
  double factor = 1.0;
  InstanceIndex base = kNoInstance;
};

/// LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#12), or its parts.
std::optional<Conversion> readConversion(InstanceReader& reader, InstanceIndex measure) {
  Conversion conversion;
  for (const Record& record : reader.read(measure)) {
    if (record.parameters.size() == 2) {
      const Parameter& value = record.parameters[0];
      const std::optional<double> factor =
          numberOf(value.items.size() == 1 ? value.items[0] : value);
      if (!factor || !(*factor > 0)) {
        return std::nullopt;
      }
      conversion.factor *= *factor;
      conversion.base = reader.named(record.parameters[1]);
    }
  }
  return conversion;
}

/// The millimetres in a unit, which a chain of conversions may lead to.
std::optional<double> readLengthUnit(InstanceReader& reader, InstanceIndex unit) {
  constexpr int kLongestChain = 16;
  double factor = 1.0;
  for (int i = 0; i < kLongestChain; ++i) {
    InstanceIndex measure = kNoInstance;
    for (const Record& record : reader.read(unit)) {
      const std::size_t count = record.parameters.size();
      if (record.keyword == "SI_UNIT" && count >= 2) {
        const std::optional<double> prefix = prefixFactor(record.parameters[count - 2].text);
        // Multiplied before it is used, so that millimetres are exactly 1.
        return prefix && record.parameters[count - 1].text == ".METRE."
                   ? std::optional(factor * (*prefix * 1000.0))
                   : std::nullopt;
      }
      if (record.keyword == "CONVERSION_BASED_UNIT" && count >= 2) {
        measure = reader.named(record.parameters[count - 1]);
      }
    }
    const std::optional<Conversion> conversion = readConversion(reader, measure);
    if (!conversion) {
      return std::nullopt;
    }
    factor *= conversion->factor;
    unit = conversion->base;
  }
  return std::nullopt;
}

bool isLengthUnit(const std::vector<Record>& records) {
  for (const Record& record : records) {
    const bool isMetre = record.keyword == "SI_UNIT" && !record.parameters.empty() &&
                         record.parameters.back().text == ".METRE.";
    if (record.keyword == "LENGTH_UNIT" || isMetre) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::optional<double> readUnit(InstanceReader& reader, InstanceIndex context) {
  const std::optional<Record> record = reader.read(context, "GLOBAL_UNIT_ASSIGNED_CONTEXT");
  if (!record || record->parameters.empty()) {
    return std::nullopt;
  }
  for (const Parameter& parameter : record->parameters.back().items) {
    const InstanceIndex unit = reader.named(parameter);
    if (isLengthUnit(reader.read(unit))) {
      return readLengthUnit(reader, unit);
    }
  }
  return std::nullopt;
}

}  // namespace plenvorith
