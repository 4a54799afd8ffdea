#include "brep/stated_measures.h"

#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>

#include <Interface_EntityIterator.hxx>
#include <Interface_Graph.hxx>
#include <STEPConstruct_UnitContext.hxx>
#include <STEPConstruct_ValidationProps.hxx>
#include <STEPControl_Reader.hxx>
#include <StepBasic_DerivedUnit.hxx>
#include <StepBasic_DerivedUnitElement.hxx>
#include <StepBasic_MeasureValueMember.hxx>
#include <StepBasic_MeasureWithUnit.hxx>
#include <StepBasic_NamedUnit.hxx>
#include <StepBasic_Unit.hxx>
#include <StepRepr_CharacterizedDefinition.hxx>
#include <StepRepr_MeasureRepresentationItem.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_PropertyDefinitionRepresentation.hxx>
#include <StepRepr_Representation.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <StepRepr_RepresentedDefinition.hxx>
#include <StepRepr_ShapeAspect.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>
#include <TColStd_SequenceOfTransient.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Iterator.hxx>
#include <TransferBRep.hxx>
#include <Transfer_TransientProcess.hxx>
#include <XSControl_TransferReader.hxx>
#include <XSControl_WorkSession.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>

namespace plenvorith {
namespace {

using Geometry = const TopoDS_TShape*;

bool isText(const Handle(TCollection_HAsciiString) & text, std::string_view expected) {
  return !text.IsNull() && text->ToCString() == expected;
}

/// How many cubic or square millimetres a unit is; nothing if it is not built from lengths.
std::optional<double> factorOf(const StepBasic_Unit& unit) {
  const Handle(StepBasic_DerivedUnit) derived = unit.DerivedUnit();
  if (derived.IsNull() || derived->Elements().IsNull()) {
    return std::nullopt;
  }
  double factor = 1.0;
  for (int i = 1; i <= derived->NbElements(); ++i) {
    STEPConstruct_UnitContext length;
    const Handle(StepBasic_DerivedUnitElement) element = derived->ElementsValue(i);
    if (element.IsNull() || element->Unit().IsNull() ||
        length.ComputeFactors(element->Unit()) != 0 || !length.LengthDone()) {
      return std::nullopt;
    }
    factor *= std::pow(length.LengthFactor(), element->Exponent());
  }
  return factor;
}

void takeValue(const StepRepr_MeasureRepresentationItem& item, PartMeasures& measures) {
  const Handle(StepBasic_MeasureWithUnit) measure = item.Measure();
  if (measure.IsNull() || measure->ValueComponentMember().IsNull()) {
    return;
  }
  const std::optional<double> factor = factorOf(measure->UnitComponent());
  if (!factor) {
    return;
  }
  const double value = measure->ValueComponent() * *factor;
  const std::string_view type = measure->ValueComponentMember()->Name();
  // Of a solid, the area is called "wetted" by some.
  if (type == "VOLUME_MEASURE" && isText(item.Name(), "volume measure")) {
    measures.volume = value;
  } else if (type == "AREA_MEASURE" && (isText(item.Name(), "surface area measure") ||
                                        isText(item.Name(), "wetted area measure"))) {
    measures.area = value;
  }
}

void takeProperty(const STEPConstruct_ValidationProps& properties,
                  const StepRepr_Representation& representation, PartMeasures& measures) {
  for (int i = 1; i <= representation.NbItems(); ++i) {
    const Handle(StepRepr_RepresentationItem) item = representation.ItemsValue(i);
    if (const auto* value = dynamic_cast<const StepRepr_MeasureRepresentationItem*>(item.get())) {
      takeValue(*value, measures);
      continue;
    }
    gp_Pnt point;
    if (!item.IsNull() && isText(item->Name(), "centre point") &&
        properties.GetPropPnt(item, representation.ContextOfItems(), point)) {
      measures.centroid = Point3{point.X(), point.Y(), point.Z()};
    }
  }
}

/// The first shape that a representation is of.
TopoDS_Shape shapeOf(const STEPControl_Reader& reader,
                     const Handle(StepRepr_Representation) & representation) {
  if (!representation.IsNull() && !representation->Items().IsNull()) {
    for (int i = 1; i <= representation->NbItems(); ++i) {
      const TopoDS_Shape shape = TransferBRep::ShapeResult(
          reader.WS()->TransferReader()->TransientProcess(), representation->ItemsValue(i));
      if (!shape.IsNull()) {
        return shape;
      }
    }
  }
  return {};
}

/// The shape of one solid in a product: a second property of the same aspect is represented by it.
TopoDS_Shape shapeOfAspect(const STEPControl_Reader& reader,
                           const Handle(StepRepr_ShapeAspect) & aspect) {
  const Interface_Graph& graph = reader.WS()->Graph();
  for (Interface_EntityIterator property = graph.Sharings(aspect); property.More();
       property.Next()) {
    if (!property.Value()->IsKind(STANDARD_TYPE(StepRepr_PropertyDefinition))) {
      continue;
    }
    for (Interface_EntityIterator link = graph.Sharings(property.Value()); link.More();
         link.Next()) {
      const auto* definition =
          dynamic_cast<const StepShape_ShapeDefinitionRepresentation*>(link.Value().get());
      if (definition != nullptr) {
        return shapeOf(reader, definition->UsedRepresentation());
      }
    }
  }
  return {};
}

/// What a property is of.
TopoDS_Shape shapeOf(const STEPControl_Reader& reader,
                     const STEPConstruct_ValidationProps& properties,
                     const Handle(StepRepr_PropertyDefinition) & property) {
  const TopoDS_Shape shape = properties.GetPropShape(property);
  const Handle(StepRepr_ShapeAspect) aspect = property->Definition().ShapeAspect();
  return shape.IsNull() && !aspect.IsNull() ? shapeOfAspect(reader, aspect) : shape;
}

/// What is stated of geometry in its own frame.
std::map<Geometry, PartMeasures> readProperties(const STEPControl_Reader& reader) {
  std::map<Geometry, PartMeasures> stated;
  const STEPConstruct_ValidationProps properties(reader.WS());
  TColStd_SequenceOfTransient links;
  if (!properties.LoadProps(links)) {
    return stated;
  }
  for (int i = 1; i <= links.Length(); ++i) {
    const auto* link =
        dynamic_cast<const StepRepr_PropertyDefinitionRepresentation*>(links.Value(i).get());
    if (link == nullptr || link->UsedRepresentation().IsNull() ||
        link->UsedRepresentation()->Items().IsNull()) {
      continue;
    }
    const Handle(StepRepr_PropertyDefinition) property = link->Definition().PropertyDefinition();
    // Older files write the name with underscores.
    if (property.IsNull() || !(isText(property->Name(), "geometric validation property") ||
                               isText(property->Name(), "geometric_validation_property"))) {
      continue;
    }
    // The place of one use is no property of the part.
    if (!properties.GetPropNAUO(property).IsNull()) {
      continue;
    }
    const TopoDS_Shape shape = shapeOf(reader, properties, property);
    if (!shape.IsNull()) {
      takeProperty(properties, *link->UsedRepresentation(), stated[shape.TShape().get()]);
    }
  }
  return stated;
}

bool isCollection(const TopoDS_Shape& shape) {
  return shape.ShapeType() <= TopAbs_COMPSOLID;
}

std::size_t countPieces(const TopoDS_Shape& shape) {
  if (!isCollection(shape)) {
    // Curves and points beside a solid are no pieces.
    return shape.ShapeType() <= TopAbs_FACE ? 1 : 0;
  }
  std::size_t count = 0;
  for (TopoDS_Iterator child(shape); child.More(); child.Next()) {
    count += countPieces(child.Value());
  }
  return count;
}

PartMeasures placed(PartMeasures measures, const TopLoc_Location& place) {
  if (measures.centroid) {
    gp_Pnt centre(measures.centroid->x, measures.centroid->y, measures.centroid->z);
    centre.Transform(place.Transformation());
    measures.centroid = Point3{centre.X(), centre.Y(), centre.Z()};
  }
  return measures;
}

/// Finds what is stated of the pieces of a model.
class StatedPieces {
 public:
  explicit StatedPieces(const std::map<Geometry, PartMeasures>& stated) : stated_(stated) {}

  /// Looks at a shape and what is in it; `measures`: of the only piece in it, if so much is known.
  void add(const TopoDS_Shape& shape, PartMeasures measures) {
    if (const auto found = stated_.find(shape.TShape().get());
        found != stated_.end() && countPieces(shape) == 1) {
      measures = placed(found->second, shape.Location());
    }
    if (!isCollection(shape)) {
      const auto place = static_cast<std::size_t>(shapes_.Add(shape)) - 1;
      measures_.resize(static_cast<std::size_t>(shapes_.Extent()));
      measures_[place] = measures;
      return;
    }
    for (TopoDS_Iterator child(shape); child.More(); child.Next()) {
      add(child.Value(), measures);
    }
  }

  [[nodiscard]] PartMeasures of(const TopoDS_Shape& shape) const {
    const int place = shapes_.FindIndex(shape);
    return place == 0 ? PartMeasures{} : measures_[static_cast<std::size_t>(place) - 1];
  }

 private:
  const std::map<Geometry, PartMeasures>& stated_;
  TopTools_IndexedMapOfShape shapes_;
  std::vector<PartMeasures> measures_;
};

}  // namespace

StatedMeasures statedMeasures(const STEPControl_Reader& reader, const Shapes& shapes) {
  StatedMeasures result;
  result.parts.resize(shapes.size());
  const std::map<Geometry, PartMeasures> stated = readProperties(reader);
  if (stated.empty()) {
    return result;
  }
  const TopoDS_Shape model = reader.OneShape();
  StatedPieces pieces(stated);
  pieces.add(model, {});
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    result.parts[i] = pieces.of(shapes[i]);
  }
  if (const auto whole = stated.find(model.TShape().get());
      whole != stated.end() && shapes.size() > 1) {
    result.whole = placed(whole->second, model.Location());
  }
  return result;
}

}  // namespace plenvorith
