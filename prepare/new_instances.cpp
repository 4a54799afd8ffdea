#include "prepare/new_instances.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace plenvorith {
namespace {

/// Instances that are neither of a list, a face nor a solid, orphans aside.
constexpr std::uint64_t kMaxOthers = 32;

void writeRepresentation(const TessellationPlan& plan, NewNames& names, OutputFile& output) {
  const std::uint64_t unit = names.next();
  const std::uint64_t context = names.next();
  startInstance(unit, output);
  output.put("(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n");
  startInstance(context, output);
  output.put("(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#");
  output.put(unit);
  output.put("))REPRESENTATION_CONTEXT('',''));\n");
  startInstance(names.next(), output);
  output.put("TESSELLATED_SHAPE_REPRESENTATION('',(");
  for (std::uint32_t solid = 0; solid < plan.solidCount; ++solid) {
    output.put(solid == 0 ? "#" : ",#");
    output.put(names.solid(solid));
  }
  output.put("),#");
  output.put(context);
  output.put(");\n");
}

}  // namespace

NewNames::NewNames(std::uint64_t largestOld, const NamedNumbers& inStrings,
                   const TessellationPlan& plan, const Orphans& orphans) {
  const std::uint64_t count = plan.lists.size() + plan.faces.size() + plan.solidCount + kMaxOthers +
                              orphans.representations.size();
  std::uint64_t first = 1;
  while (first <= largestOld || first * 9 < count || !inStrings.leaveFree(first, count)) {
    first *= 10;
  }
  lists_ = first;
  faces_ = lists_ + plan.lists.size();
  solids_ = faces_ + plan.faces.size();
  next_ = solids_ + plan.solidCount;
}

std::uint64_t largestNumberOf(const InstanceTable& table, const std::vector<Fate>& fates) {
  const auto isDropped = [&](const Reference& reference) {
    const InstanceIndex named = table.find(reference.number);
    return named != kNoInstance && fates[named] == Fate::Dropped;
  };
  std::uint64_t largest = 0;
  for (InstanceIndex index = 0; index < table.size(); ++index) {
    if (fates[index] == Fate::Dropped) {
      continue;
    }
    largest = std::max(largest, table.number(index));
    table.forEachReference(index, [&](const Reference& reference) {
      largest = isDropped(reference) ? largest : std::max(largest, reference.number);
    });
  }
  return largest;
}

void startInstance(std::uint64_t name, OutputFile& output) {
  output.put('#');
  output.put(name);
  output.put('=');
}

void writeSolids(const TessellationPlan& plan, NewNames& names, OutputFile& output) {
  std::vector<std::uint32_t> faces(plan.faces.size());
  for (std::uint32_t i = 0; i < faces.size(); ++i) {
    faces[i] = i;
  }
  std::sort(faces.begin(), faces.end(), [&plan](std::uint32_t a, std::uint32_t b) {
    const std::uint32_t first = plan.faces[a].solid;
    const std::uint32_t second = plan.faces[b].solid;
    return first != second ? first < second : a < b;
  });
  auto face = faces.begin();
  for (std::uint32_t solid = 0; solid < plan.solidCount; ++solid) {
    startInstance(names.solid(solid), output);
    output.put("TESSELLATED_SOLID('',(");
    for (bool isFirst = true; face != faces.end() && plan.faces[*face].solid == solid; ++face) {
      output.put(isFirst ? "#" : ",#");
      output.put(names.face(*face));
      isFirst = false;
    }
    output.put("),$);\n");
  }
  writeRepresentation(plan, names, output);
}

void writeMark(NewNames& names, OutputFile& output) {
  const std::uint64_t tessellated = names.next();
  const std::uint64_t exact = names.next();
  output.put("/*\n");
  startInstance(tessellated, output);
  output.put("TESSELLATED_SHAPE_REPRESENTATION('',(),$);\n");
  startInstance(exact, output);
  output.put("SHAPE_REPRESENTATION('',(),$);\n");
  startInstance(names.next(), output);
  output.put("SHAPE_REPRESENTATION_RELATIONSHIP('','',#");
  output.put(exact);
  output.put(",#");
  output.put(tessellated);
  output.put(");\n*/\n");
}

void writeOrphans(const Orphans& orphans, const InstanceTable& table, NewNames& names,
                  OutputFile& output) {
  if (orphans.representations.empty()) {
    return;
  }
  std::uint64_t shape = 0;
  const auto line = [&names, &output](std::string_view before, std::uint64_t named,
                                      std::string_view after) {
    const std::uint64_t name = names.next();
    startInstance(name, output);
    output.put(before);
    output.put(named);
    output.put(after);
    return name;
  };
  if (orphans.productShape != kNoInstance) {
    shape = table.number(orphans.productShape);
  } else {
    const std::uint64_t context = names.next();
    startInstance(context, output);
    output.put("APPLICATION_CONTEXT('');\n");
    const std::uint64_t ofProduct = line("PRODUCT_CONTEXT('',#", context, ",'mechanical');\n");
    const std::uint64_t product = line("PRODUCT('','','',(#", ofProduct, "));\n");
    const std::uint64_t formation = line("PRODUCT_DEFINITION_FORMATION('','',#", product, ");\n");
    const std::uint64_t ofDefinition =
        line("PRODUCT_DEFINITION_CONTEXT('part definition',#", context, ",'design');\n");
    const std::uint64_t definition = names.next();
    startInstance(definition, output);
    output.put("PRODUCT_DEFINITION('','',#");
    output.put(formation);
    output.put(",#");
    output.put(ofDefinition);
    output.put(");\n");
    shape = line("PRODUCT_DEFINITION_SHAPE('','',#", definition, ");\n");
  }
  for (const InstanceIndex representation : orphans.representations) {
    startInstance(names.next(), output);
    output.put("SHAPE_DEFINITION_REPRESENTATION(#");
    output.put(shape);
    output.put(",#");
    output.put(table.number(representation));
    output.put(");\n");
  }
}

}  // namespace plenvorith
