#include "prepare/write_prepared.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "prepare/coordinates.h"
#include "prepare/expand_face.h"
#include "prepare/new_instances.h"
#include "prepare/rewrite_instance.h"
#include "prepare/stored_normals.h"

namespace plenvorith {
namespace {

class Writer {
 public:
  Writer(StatementReader& reader, StatementReader& again, const InstanceTable& table,
         const Decisions& decisions, OutputFile& output)
      : reader_(reader),
        again_(again),
        table_(table),
        decisions_(decisions),
        plan_(decisions.plan),
        output_(output),
        names_(largestNumberOf(table, decisions.fates), table.namedInStrings(), plan_,
               decisions.orphans),
        normals_(plan_.firstSolids.size(), NormalsVerdict::NoNormals) {
    for (const PlannedList& list : plan_.lists) {
      normalsBudget_ += table.pointCount(list.list);
    }
  }

  Written write();

 private:
  Statement writeHeader();
  void writeInstances(Statement statement);
  void writeNewInstances();
  void writeInstance(InstanceIndex index);
  void writeLists(InstanceIndex index);
  void writeFaces(InstanceIndex index);
  void writeFace(StatementReader& reader, std::size_t place);
  NormalsVerdict* normalsToLookAt(std::uint32_t solid);
  NormalsVerdict verdictOn(const PlannedFace& face, const ExpandedFace& expanded);
  void fail(InstanceIndex index, const char* what);
  /// The reader for one more look at an instance: the first look is that of the main one.
  StatementReader& readerFor(InstanceIndex index, bool isFirst) {
    if (!isFirst) {
      again_.seekBody(table_.offset(index));
    }
    return isFirst ? reader_ : again_;
  }

  StatementReader& reader_;
  StatementReader& again_;
  const InstanceTable& table_;
  const Decisions& decisions_;
  const TessellationPlan& plan_;
  OutputFile& output_;
  NewNames names_;
  std::vector<NormalsVerdict> normals_;  // of the bodies, so far
  // How much may be read for them: many bodies may lie far behind in one list of coordinates.
  std::uint64_t normalsBudget_ = 1'000'000;
  Written written_;
  std::size_t nextList_ = 0;
  std::size_t nextFace_ = 0;
};

void Writer::fail(InstanceIndex index, const char* what) {
  if (written_.error.empty()) {
    written_.error = what;
    written_.error += " in #" + std::to_string(table_.number(index));
  }
}

void Writer::writeLists(InstanceIndex index) {
  bool isFirst = true;
  for (; nextList_ < plan_.lists.size() && plan_.lists[nextList_].list == index; ++nextList_) {
    const PlannedPlacement& placement = plan_.placements[plan_.lists[nextList_].placement];
    ListTarget target;
    target.name = names_.list(nextList_);
    target.pointCount = table_.pointCount(index);
    target.isComplex = table_.type(index).isComplex;
    target.placement = placement.isIdentity ? nullptr : &placement.placement;
    std::vector<bool> huge;
    if (!writeCoordinates(readerFor(index, isFirst), target, output_, huge)) {
      fail(index, "no number where one has to be");
    }
    if (!huge.empty()) {
      written_.huge.emplace(nextList_, std::move(huge));
    }
    isFirst = false;
  }
}

void Writer::writeFaces(InstanceIndex index) {
  bool isFirst = true;
  for (; nextFace_ < plan_.faces.size() && plan_.faces[nextFace_].face == index; ++nextFace_) {
    writeFace(readerFor(index, isFirst), nextFace_);
    isFirst = false;
  }
}

/// What is known of the normals of the body that a solid shows; null where no more is wanted: once
/// one agrees, and in all places of the body but the first.
NormalsVerdict* Writer::normalsToLookAt(std::uint32_t solid) {
  const auto first = std::lower_bound(plan_.firstSolids.begin(), plan_.firstSolids.end(), solid);
  if (first == plan_.firstSolids.end() || *first != solid) {
    return nullptr;
  }
  NormalsVerdict& verdict = normals_[static_cast<std::size_t>(first - plan_.firstSolids.begin())];
  return verdict == NormalsVerdict::NotAgainst ? nullptr : &verdict;
}

/// Looks at the first triangle, as of nearly all faces that agrees; then at more.
NormalsVerdict Writer::verdictOn(const PlannedFace& face, const ExpandedFace& expanded) {
  const InstanceIndex list = plan_.lists[face.list].list;
  const NormalsVerdict first =
      compareNormals(again_, table_, face.face, list, expanded.samples, normalsBudget_);
  if (first == NormalsVerdict::NoNormals || first == NormalsVerdict::NotAgainst) {
    return first;
  }
  constexpr std::size_t kMaxSamples = 65'536;  // less than twenty megabytes
  FaceTarget target;
  target.maxSamples = kMaxSamples;
  again_.seekBody(table_.offset(face.face));
  const ExpandedFace more =
      expandFace(again_, table_.type(face.face), table_.pointCount(list), target, nullptr);
  return compareNormals(again_, table_, face.face, list, more.samples, normalsBudget_);
}

void Writer::writeFace(StatementReader& reader, std::size_t place) {
  const PlannedFace& face = plan_.faces[place];
  const EntityType& type = table_.type(face.face);
  ExpandedFace expanded;
  if (face.solid == PlannedFace::kNoSolid) {
    const FaceLinks links = readFaceLinks(table_, face.face);
    const std::uint64_t points =
        links.coordinates == kNoInstance ? 0 : table_.pointCount(links.coordinates);
    expanded = expandFace(reader, type, points, {}, nullptr);
    written_.copiedTriangles += expanded.triangles;
    return;  // whatever is wrong with it, it is left out
  }
  const PlannedList& list = plan_.lists[face.list];
  NormalsVerdict* const normals = normalsToLookAt(face.solid);
  FaceTarget target;
  target.name = names_.face(place);
  target.coordinates = names_.list(face.list);
  target.isMirrored = plan_.placements[list.placement].isMirrored;
  target.maxSamples = normals == nullptr ? 0 : 1;
  const auto huge = decisions_.huge.find(face.list);
  target.huge = huge == decisions_.huge.end() ? nullptr : &huge->second;
  expanded = expandFace(reader, type, table_.pointCount(list.list), target, &output_);
  written_.triangles += expanded.triangles;
  written_.skippedTriangles += expanded.skipped;
  if (expanded.hasFailed) {
    fail(face.face, "no number where one has to be");
  } else if (!expanded.samples.empty()) {
    *normals = std::max(*normals, verdictOn(face, expanded));
  }
}

void Writer::writeInstance(InstanceIndex index) {
  writeLists(index);
  writeFaces(index);
  const Fate fate = decisions_.fates[index];
  if (fate == Fate::Dropped) {
    return;
  }
  const auto isDropped = [this](std::uint64_t number) {
    const InstanceIndex named = table_.find(number);
    return named != kNoInstance && decisions_.fates[named] == Fate::Dropped;
  };
  const std::uint64_t emptiedBefore = reader_.emptiedStrings();
  startInstance(table_.number(index), output_);
  if (fate == Fate::Kept) {
    copyBody(reader_, output_);
  } else if (fate == Fate::Changed) {
    writeWithoutDropped(reader_, isDropped, output_);
  } else {
    writeRetyped(reader_, table_.type(index), isDropped, output_);
  }
  output_.put(";\n");
  written_.emptiedStrings += reader_.emptiedStrings() - emptiedBefore;
}

/// Writes the header, without what would keep the kernel from reading on. Gives what stands behind it.
Statement Writer::writeHeader() {
  output_.put("ISO-10303-21;\nHEADER;\n");
  Statement statement = reader_.next();
  for (; statement == Statement::HeaderEntity; statement = reader_.next()) {
    const BodyPlace start = reader_.place();
    const bool hasParameters = reader_.peek().starts_with('(');
    const Parentheses all = reader_.skipBody();
    if (!hasParameters || all.opened != all.closed || reader_.isMalformed()) {
      written_.hasMalformedHeader = true;
      continue;
    }
    reader_.goTo(start);
    const std::uint64_t emptiedBefore = reader_.emptiedStrings();
    output_.put(reader_.headerKeyword());
    copyBody(reader_, output_);
    output_.put(";\n");
    written_.emptiedStrings += reader_.emptiedStrings() - emptiedBefore;
  }
  output_.put("ENDSEC;\n");
  return statement;
}

/// Writes what stays of the instances, as long as they are those that were read before.
void Writer::writeInstances(Statement statement) {
  InstanceIndex index = 0;
  for (; statement != Statement::End && written_.error.empty() && output_.isGood();
       statement = reader_.next()) {
    if (statement != Statement::Instance) {
      continue;
    }
    if (index == table_.size() || table_.number(index) != reader_.number()) {
      written_.error = "changed while it was read";
      return;
    }
    writeInstance(index);
    ++index;
  }
  if (written_.error.empty()) {
    written_.error = !reader_.error().empty() ? reader_.error() : again_.error();
  }
  if (written_.error.empty() && output_.isGood() && index != table_.size()) {
    written_.error = "changed while it was read";
  }
}

void Writer::writeNewInstances() {
  writeOrphans(decisions_.orphans, table_, names_, output_);
  if (plan_.solidCount > 0) {
    writeSolids(plan_, names_, output_);
    if (decisions_.mayHaveExact) {
      writeMark(names_, output_);
    }
  }
}

Written Writer::write() {
  const Statement first = writeHeader();
  output_.put("DATA;\n");
  writeInstances(first);
  writeNewInstances();
  output_.put("ENDSEC;\nEND-ISO-10303-21;\n");
  written_.hasNormalsAgainst =
      std::find(normals_.begin(), normals_.end(), NormalsVerdict::Against) != normals_.end();
  return written_;
}

}  // namespace

Written writePrepared(StatementReader& reader, StatementReader& again, const InstanceTable& table,
                      const Decisions& decisions, OutputFile& output) {
  return Writer(reader, again, table, decisions, output).write();
}

}  // namespace plenvorith
