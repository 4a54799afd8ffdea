#include "brep/part_names.h"

#include <cstddef>
#include <iostream>
#include <map>
#include <utility>

#include <STEPControl_Reader.hxx>
#include <StepBasic_Product.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepBasic_ProductDefinitionFormation.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Iterator.hxx>
#include <TransferBRep.hxx>
#include <Transfer_TransientProcess.hxx>
#include <XSControl_TransferReader.hxx>
#include <XSControl_WorkSession.hxx>
#include <gp_Trsf.hxx>

namespace plenvorith {
namespace {

const char* kindOf(const TopoDS_Shape& shape) {
  switch (shape.ShapeType()) {
    case TopAbs_SOLID:
      return "solid";
    case TopAbs_SHELL:
      return "shell";
    case TopAbs_FACE:
      return "face";
    default:
      return "other";
  }
}

std::array<double, 12> placementOf(const TopoDS_Shape& shape) {
  const gp_Trsf transformation = shape.Location().Transformation();
  std::array<double, 12> matrix{};
  for (int i = 0; i < 12; ++i) {
    matrix[static_cast<std::size_t>(i)] = transformation.Value(i / 4 + 1, i % 4 + 1);
  }
  return matrix;
}

/// The geometry of a shape, wherever it stands.
const TopoDS_TShape* geometryOf(const TopoDS_Shape& shape) {
  return shape.TShape().get();
}

std::string textOf(const Handle(TCollection_HAsciiString) & text) {
  return text.IsNull() ? std::string() : std::string(text->ToCString());
}

std::string nameOf(const StepBasic_ProductDefinition& definition) {
  if (definition.Formation().IsNull() || definition.Formation()->OfProduct().IsNull()) {
    return {};
  }
  const Handle(StepBasic_Product) product = definition.Formation()->OfProduct();
  std::string name = textOf(product->Name());
  return name.empty() ? textOf(product->Id()) : name;
}

/// What the entities of the file have become.
struct Entities {
  std::map<const TopoDS_TShape*, std::string> products;
  std::map<const TopoDS_TShape*, std::string> items;
};

Entities entitiesOf(const STEPControl_Reader& reader) {
  Entities entities;
  const Handle(Transfer_TransientProcess) process =
      reader.WS()->TransferReader()->TransientProcess();
  for (int i = 1; i <= process->NbMapped(); ++i) {
    const Handle(Standard_Transient)& entity = process->Mapped(i);
    const auto* definition = dynamic_cast<const StepBasic_ProductDefinition*>(entity.get());
    const auto* item = dynamic_cast<const StepRepr_RepresentationItem*>(entity.get());
    if (definition == nullptr &&
        (item == nullptr || item->Name().IsNull() || item->Name()->IsEmpty())) {
      continue;
    }
    const TopoDS_Shape shape = TransferBRep::ShapeResult(process, entity);
    // Edges and vertices are no parts.
    if (shape.IsNull() || shape.ShapeType() > TopAbs_FACE) {
      continue;
    }
    if (definition != nullptr) {
      entities.products.emplace(geometryOf(shape), nameOf(*definition));
    } else {
      entities.items.emplace(geometryOf(shape), textOf(item->Name()));
    }
  }
  return entities;
}

/// The names of all shapes in a model that are no mere collections.
class NamedShapes {
 public:
  explicit NamedShapes(const Entities& entities) : entities_(entities) {}

  /// Adds a shape and what is in it; `name` is what stands above it.
  void add(const TopoDS_Shape& shape, PartName name) {
    if (const auto found = entities_.products.find(geometryOf(shape));
        found != entities_.products.end()) {
      name.path.push_back(found->second);
    }
    if (const auto found = entities_.items.find(geometryOf(shape));
        found != entities_.items.end()) {
      name.name = found->second;
    }
    if (shape.ShapeType() > TopAbs_COMPSOLID) {
      const auto place = static_cast<std::size_t>(shapes_.Add(shape)) - 1;
      names_.resize(static_cast<std::size_t>(shapes_.Extent()));
      names_[place].push_back(std::move(name));
      return;
    }
    for (TopoDS_Iterator child(shape); child.More(); child.Next()) {
      add(child.Value(), name);
    }
  }

  /// The name of a shape. One that the model uses several times at one place is asked for as often,
  /// in the order in which it was added.
  PartName take(const TopoDS_Shape& shape) {
    const int place = shapes_.FindIndex(shape);
    if (place == 0) {
      return {};
    }
    std::vector<PartName>& names = names_[static_cast<std::size_t>(place) - 1];
    PartName name = names.front();
    if (names.size() > 1) {
      names.erase(names.begin());
    }
    return name;
  }

 private:
  const Entities& entities_;
  TopTools_IndexedMapOfShape shapes_;
  std::vector<std::vector<PartName>> names_;
};

}  // namespace

bool readNamedShapes(const std::string& path, Shapes& shapes, std::vector<PartName>& names) {
  STEPControl_Reader reader;
  if (!readBrepShapes(reader, path, shapes, std::cout)) {
    return false;
  }
  names = namesOfParts(reader, shapes);
  return true;
}

std::vector<PartName> namesOfParts(const STEPControl_Reader& reader, const Shapes& shapes) {
  const Entities entities = entitiesOf(reader);
  NamedShapes named(entities);
  named.add(reader.OneShape(), {});
  std::vector<PartName> names;
  names.reserve(shapes.size());
  for (const TopoDS_Shape& shape : shapes) {
    PartName& name = names.emplace_back(named.take(shape));
    name.kind = kindOf(shape);
    name.placement = placementOf(shape);
  }
  return names;
}

}  // namespace plenvorith
