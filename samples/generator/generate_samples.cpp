// Writes the STEP files of samples/ into the directory that is its only argument. What is in the
// files depends on the release of the kernel and on nothing else.

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <IFSelect_ReturnStatus.hxx>
#include <Interface_Static.hxx>
#include <STEPControl_Controller.hxx>
#include <STEPControl_Writer.hxx>

#include "samples/generator/annotation.h"
#include "samples/generator/coupling.h"
#include "samples/generator/exact_shapes.h"
#include "samples/generator/facets.h"
#include "samples/generator/meshes.h"
#include "samples/generator/products.h"
#include "samples/generator/step_entities.h"

namespace plenvorith::samples {
namespace {

bool writeStep(const std::string& directory, const std::string& name,
               const std::string& description, std::string_view entities) {
  std::ofstream file(directory + "/" + name + ".step", std::ios::binary);
  file << "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('" << description << "'),'2;1');\nFILE_NAME('"
       << name << ".step','2024-01-01T00:00:00',('Plenvorith'),('Plenvorith'),\n"
       << "  '','Plenvorith samples','');\n"
       << "FILE_SCHEMA(('AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF "
       << "{ 1 0 10303 442 1 1 4 }'));\nENDSEC;\nDATA;\n"
       << entities << "ENDSEC;\nEND-ISO-10303-21;\n";
  file.close();
  if (!file) {
    std::cerr << "Cannot write " << name << ".step" << std::endl;
    return false;
  }
  return true;
}

// --- Exact shapes, through the kernel's writer ---

/// The entities that the kernel writes for a shape. The names are those of the whole and then
/// of its parts, where it is an assembly. Ends the program if the kernel fails.
Entities exactEntities(const TopoDS_Shape& shape, const std::vector<std::string>& productNames,
                       const std::string& directory) {
  STEPControl_Controller::Init();
  Interface_Static::SetCVal("write.step.schema", "AP242DIS");
  Interface_Static::SetCVal("write.step.product.name", "part");
  constexpr int kWithoutCurvesOnSurfaces = 0;
  Interface_Static::SetIVal("write.surfacecurve.mode", kWithoutCurvesOnSurfaces);
  const std::string path = directory + "/exact.kernel";
  STEPControl_Writer writer;
  if (writer.Transfer(shape, STEPControl_AsIs) != IFSelect_RetDone ||
      writer.Write(path.c_str()) != IFSelect_RetDone) {
    std::cerr << "The kernel cannot write " << productNames.front() << std::endl;
    std::exit(1);
  }

  Entities entities;
  std::size_t products = 0;
  std::ifstream file(path, std::ios::binary);
  std::string line;
  while (std::getline(file, line) && line != "DATA;") {
  }
  while (std::getline(file, line) && line != "ENDSEC;") {
    // The kernel puts blanks around the equals sign.
    const std::size_t equals = line.find(" = ");
    if (line[0] == '#' && equals != std::string::npos) {
      line.replace(equals, 3, "=");
      ++entities.last;
    }
    // Its own names of products carry numbers.
    const std::size_t product = line.find("=PRODUCT('");
    if (product != std::string::npos) {
      const std::string& name = productNames.at(products++);
      const std::size_t names = line.find('\'', product);
      line.replace(names, line.find("','',(", names) - names,
                   std::string("'").append(name).append("','").append(name));
    }
    entities.text += line + "\n";
  }
  file.close();
  (void)std::remove(path.c_str());
  return entities;
}

/// The instance name of the first entity of a type; it stands at the start of a line.
std::string nameOf(const Entities& entities, const std::string& type) {
  const std::size_t equals = entities.text.find("=" + type);
  const std::size_t start = entities.text.rfind('\n', equals) + 1;
  return entities.text.substr(start, equals - start);
}

// --- Tessellated shapes ---

std::size_t addFace(Entities& entities, const Facets& facets) {
  const std::string count = std::to_string(facets.points.size());
  const std::size_t points =
      add(entities, "COORDINATES_LIST(''," + count + "," + list(facets.points, [](const Point3& p) {
                      return "(" + real(p.x) + "," + real(p.y) + "," + real(p.z) + ")";
                    }) + ")");
  const std::string triangles = list(facets.triangles, [](const auto& triangle) {
    return list(triangle, [](std::size_t index) { return std::to_string(index); });
  });
  return add(entities, "COMPLEX_TRIANGULATED_FACE(''," + ref(points) + "," + count + ",(),$,()," +
                           triangles + ",())");
}

/// Appends one tessellated solid and the representation that holds it, and gives the
/// representation. `exactSolid` is the instance name of the solid that it is a copy of, or "$".
std::size_t addTessellation(Entities& entities, const std::vector<Facets>& faces,
                            const std::string& exactSolid, const std::string& context) {
  std::vector<std::size_t> faceNumbers;
  faceNumbers.reserve(faces.size());
  for (const Facets& face : faces) {
    faceNumbers.push_back(addFace(entities, face));
  }
  const std::size_t solid =
      add(entities, "TESSELLATED_SOLID(''," + list(faceNumbers, ref) + "," + exactSolid + ")");
  return add(entities, "TESSELLATED_SHAPE_REPRESENTATION('',(" + ref(solid) + ")," + context + ")");
}

/// Appends a tessellated copy of the one exact solid that `entities` hold, the way design systems
/// write it: the product's shape is a plain representation, and a relationship each ties the exact
/// and the tessellated one to it.
void addPairedCopy(Entities& entities, const TopoDS_Shape& shape, double deflection) {
  const std::string exact = nameOf(entities, "ADVANCED_BREP_SHAPE_REPRESENTATION(");
  const std::string context = nameOf(entities, "( GEOMETRIC_REPRESENTATION_CONTEXT(");
  const std::string axes = nameOf(entities, "AXIS2_PLACEMENT_3D(");
  const std::string plain =
      ref(add(entities, "SHAPE_REPRESENTATION('',(" + axes + ")," + context + ")"));
  const std::string ofProduct = nameOf(entities, "SHAPE_DEFINITION_REPRESENTATION(");
  const std::size_t shapeOfProduct =
      entities.text.find("," + exact + ")", entities.text.find(ofProduct + "="));
  entities.text.replace(shapeOfProduct + 1, exact.size(), plain);

  add(entities, "SHAPE_REPRESENTATION_RELATIONSHIP('',''," + plain + "," + exact + ")");
  const std::size_t copy = addTessellation(entities, meshFaces(shape, deflection),
                                           nameOf(entities, "MANIFOLD_SOLID_BREP("), context);
  add(entities, "SHAPE_REPRESENTATION_RELATIONSHIP('',''," + plain + "," + ref(copy) + ")");
}

// --- The files ---

bool writeExact(const std::string& directory, const std::string& name,
                const std::string& description, const TopoDS_Shape& shape,
                const std::vector<std::string>& productNames) {
  return writeStep(directory, name, description,
                   exactEntities(shape, productNames, directory).text);
}

bool writeTessellated(const std::string& directory) {
  Entities entities;
  const std::string context = addContext(entities, LengthUnit::Millimetre);
  const std::size_t shape = addTessellation(entities, {makeKnot()}, "$", context);
  (void)addProduct(entities, "knot", shape);
  return writeStep(directory, "tessellated", "A trefoil knot, tessellation only",
                   wrap(entities.text));
}

bool writePaired(const std::string& directory) {
  const TopoDS_Shape flange = makeFlange();
  Entities entities = exactEntities(flange, {"flange"}, directory);
  addPairedCopy(entities, flange, 0.1);
  return writeStep(directory, "paired", "A flange, exact with a tessellated copy", entities.text);
}

bool writeMixed(const std::string& directory) {
  const TopoDS_Shape ring = makeRing();
  Entities entities = exactEntities(ring, {"ring"}, directory);
  addPairedCopy(entities, ring, 0.05);
  const std::string context = nameOf(entities, "( GEOMETRIC_REPRESENTATION_CONTEXT(");
  (void)addProduct(entities, "gem", addTessellation(entities, {makeGem()}, "$", context));
  return writeStep(directory, "mixed",
                   "A ring, exact with a tessellated copy, and a gem, tessellation only",
                   entities.text);
}

bool writeCoupling(const std::string& directory) {
  return writeStep(directory, "coupling", "A flange coupling, tessellation only, in inches",
                   wrap(couplingEntities().text));
}

bool writeAnnotated(const std::string& directory) {
  Entities entities = exactEntities(makeBracket(), {"bracket"}, directory);
  addAnnotation(entities, nameOf(entities, "( GEOMETRIC_REPRESENTATION_CONTEXT("));
  return writeStep(directory, "annotated", "A bracket, exact, and its dimensions as triangles",
                   entities.text);
}

}  // namespace
}  // namespace plenvorith::samples

int main(int argc, char** argv) {
  using namespace plenvorith::samples;
  if (argc != 2) {
    std::cerr << "usage: plenvorith_samples DIRECTORY" << std::endl;
    return 2;
  }
  const std::string directory = argv[1];
  const bool written =
      writeExact(directory, "bracket", "A bracket, one solid", makeBracket(), {"bracket"}) &&
      writeExact(directory, "assembly", "A lamp, three solids and a sheet", makeLamp(),
                 {"lamp", "foot", "pole", "bulb", "shade"}) &&
      writeTessellated(directory) && writePaired(directory) && writeMixed(directory) &&
      writeCoupling(directory) && writeAnnotated(directory);
  return written ? 0 : 1;
}
