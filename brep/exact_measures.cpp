#include "brep/exact_measures.h"

#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>
#include <gp_Pnt.hxx>

namespace plenvorith {

PartMeasures exactMeasures(const TopoDS_Shape& shape) {
  PartMeasures measures;
  GProp_GProps area;
  BRepGProp::SurfaceProperties(shape, area);
  measures.area = area.Mass();
  if (shape.ShapeType() == TopAbs_SOLID) {
    GProp_GProps volume;
    BRepGProp::VolumeProperties(shape, volume);
    measures.volume = volume.Mass();
    const gp_Pnt centre = volume.CentreOfMass();
    measures.centroid = Point3{centre.X(), centre.Y(), centre.Z()};
  }
  return measures;
}

}  // namespace plenvorith
