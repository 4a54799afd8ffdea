#include "brep/brep_reader.h"

#include <iostream>

#include <IFSelect_ReturnStatus.hxx>
#include <Message_ProgressRange.hxx>
#include <STEPControl_Reader.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>

namespace plenvorith {
namespace {

/// Calls `visit` with every occurrence of a kind of shape in `shape`, placed and oriented in it.
template <typename Visit>
void forEachPart(const TopoDS_Shape& shape, TopAbs_ShapeEnum kind, Visit visit) {
  for (TopExp_Explorer explorer(shape, kind); explorer.More(); explorer.Next()) {
    visit(explorer.Current());
  }
}

void addParts(const TopoDS_Shape& shape, TopAbs_ShapeEnum kind, TopTools_IndexedMapOfShape& parts) {
  forEachPart(shape, kind, [&parts](const TopoDS_Shape& part) { parts.Add(part); });
}

/// Takes a model apart and prints how many pieces of each kind it has.
void collectPieces(const TopoDS_Shape& model, Shapes& shapes, std::ostream& log) {
  // In these sets two shapes are one when they share geometry and place, whatever their
  // orientation.
  TopTools_IndexedMapOfShape solids;
  TopTools_IndexedMapOfShape shellsInSolids;
  TopTools_IndexedMapOfShape facesInShells;

  forEachPart(model, TopAbs_SOLID, [&](const TopoDS_Shape& solid) {
    solids.Add(solid);
    shapes.push_back(solid);
  });
  for (int i = 1; i <= solids.Extent(); ++i) {
    addParts(solids(i), TopAbs_FACE, facesInShells);
    addParts(solids(i), TopAbs_SHELL, shellsInSolids);
  }
  int freeShells = 0;
  forEachPart(model, TopAbs_SHELL, [&](const TopoDS_Shape& shell) {
    if (!shellsInSolids.Contains(shell)) {
      shapes.push_back(shell);
      ++freeShells;
      addParts(shell, TopAbs_FACE, facesInShells);
    }
  });
  int freeFaces = 0;
  forEachPart(model, TopAbs_FACE, [&](const TopoDS_Shape& face) {
    if (!facesInShells.Contains(face)) {
      shapes.push_back(face);
      ++freeFaces;
    }
  });
  log << "  Solids: " << solids.Extent() << ", free shells: " << freeShells
      << ", free faces: " << freeFaces << std::endl;
}

}  // namespace

bool readBrepShapes(const std::string& path, Shapes& shapes) {
  STEPControl_Reader reader;
  return readBrepShapes(reader, path, shapes, std::cout);
}

bool readBrepShapes(STEPControl_Reader& reader, const std::string& path, Shapes& shapes,
                    std::ostream& log) {
  shapes.clear();
  if (reader.ReadFile(path.c_str()) != IFSelect_RetDone) {
    return false;
  }
  const int roots = reader.TransferRoots(Message_ProgressRange());
  log << "  BRep: roots=" << roots << ", shapes=" << reader.NbShapes() << std::endl;
  if (reader.NbShapes() == 0) {
    return false;
  }
  const TopoDS_Shape model = reader.OneShape();
  if (model.IsNull()) {
    return false;
  }
  collectPieces(model, shapes, log);
  if (shapes.empty()) {
    shapes.push_back(model);
  }
  return true;
}

}  // namespace plenvorith
