#include "samples/generator/products.h"

namespace plenvorith::samples {
namespace {

std::size_t addDirection(Entities& entities, const Point3& d) {
  return add(entities, "DIRECTION('',(" + real(d.x) + "," + real(d.y) + "," + real(d.z) + "))");
}

}  // namespace

std::string addContext(Entities& entities, LengthUnit unit) {
  std::size_t length = add(entities, "(LENGTH_UNIT() NAMED_UNIT(*) SI_UNIT(.MILLI.,.METRE.))");
  if (unit == LengthUnit::Inch) {
    const std::size_t measure =
        add(entities, "LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4)," + ref(length) + ")");
    const std::size_t exponents = add(entities, "DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.)");
    length = add(entities, "(CONVERSION_BASED_UNIT('INCH'," + ref(measure) +
                               ") LENGTH_UNIT() NAMED_UNIT(" + ref(exponents) + "))");
  }
  const std::size_t angle = add(entities, "(NAMED_UNIT(*) PLANE_ANGLE_UNIT() SI_UNIT($,.RADIAN.))");
  const std::size_t solidAngle =
      add(entities, "(NAMED_UNIT(*) SI_UNIT($,.STERADIAN.) SOLID_ANGLE_UNIT())");
  const std::size_t accuracy =
      add(entities, "UNCERTAINTY_MEASURE_WITH_UNIT(LENGTH_MEASURE(1.E-04)," + ref(length) +
                        ",'distance_accuracy_value','confusion accuracy')");
  return ref(
      add(entities, "(GEOMETRIC_REPRESENTATION_CONTEXT(3) GLOBAL_UNCERTAINTY_ASSIGNED_CONTEXT((" +
                        ref(accuracy) + ")) GLOBAL_UNIT_ASSIGNED_CONTEXT((" + ref(length) + "," +
                        ref(angle) + "," + ref(solidAngle) + ")) REPRESENTATION_CONTEXT('',''))"));
}

std::size_t addProduct(Entities& entities, const std::string& name, std::size_t shape) {
  const std::string application =
      ref(add(entities, "APPLICATION_CONTEXT('managed model based 3d engineering')"));
  add(entities,
      "APPLICATION_PROTOCOL_DEFINITION('international standard',"
      "'ap242_managed_model_based_3d_engineering',2014," +
          application + ")");
  const std::string productContext =
      ref(add(entities, "PRODUCT_CONTEXT(''," + application + ",'mechanical')"));
  const std::string product =
      ref(add(entities, "PRODUCT('" + name + "','" + name + "','',(" + productContext + "))"));
  add(entities, "PRODUCT_RELATED_PRODUCT_CATEGORY('part',$,(" + product + "))");
  const std::string formation =
      ref(add(entities, "PRODUCT_DEFINITION_FORMATION('',''," + product + ")"));
  const std::string definitionContext = ref(
      add(entities, "PRODUCT_DEFINITION_CONTEXT('part definition'," + application + ",'design')"));
  const std::size_t definition =
      add(entities, "PRODUCT_DEFINITION('design',''," + formation + "," + definitionContext + ")");
  const std::string definitionShape =
      ref(add(entities, "PRODUCT_DEFINITION_SHAPE('',''," + ref(definition) + ")"));
  add(entities, "SHAPE_DEFINITION_REPRESENTATION(" + definitionShape + "," + ref(shape) + ")");
  return definition;
}

std::size_t addAxes(Entities& entities, const Axes& axes) {
  const Point3& p = axes.origin;
  const std::size_t origin =
      add(entities, "CARTESIAN_POINT('',(" + real(p.x) + "," + real(p.y) + "," + real(p.z) + "))");
  const std::size_t z = addDirection(entities, axes.z);
  const std::size_t x = addDirection(entities, axes.x);
  return add(entities, "AXIS2_PLACEMENT_3D(''," + ref(origin) + "," + ref(z) + "," + ref(x) + ")");
}

void addUsage(Entities& entities, const Part& whole, const Part& part, const std::string& name,
              std::size_t axes, std::size_t axesOfPart) {
  const std::string usage =
      ref(add(entities, "NEXT_ASSEMBLY_USAGE_OCCURRENCE('" + name + "','" + name + "',''," +
                            ref(whole.definition) + "," + ref(part.definition) + ",$)"));
  const std::string shape =
      ref(add(entities, "PRODUCT_DEFINITION_SHAPE('Placement',''," + usage + ")"));
  const std::string transformation = ref(add(
      entities, "ITEM_DEFINED_TRANSFORMATION('',''," + ref(axesOfPart) + "," + ref(axes) + ")"));
  const std::string relation =
      ref(add(entities, "(REPRESENTATION_RELATIONSHIP('',''," + ref(part.representation) + "," +
                            ref(whole.representation) +
                            ") REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(" + transformation +
                            ") SHAPE_REPRESENTATION_RELATIONSHIP())"));
  add(entities, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(" + relation + "," + shape + ")");
}

}  // namespace plenvorith::samples
