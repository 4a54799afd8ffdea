#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace plenvorith::test {

/// A file of tests/data, whole.
std::string dataFile(std::string_view name);

/// A STEP file with these entities, each line ended by "\n", and an empty header.
std::string stepFile(std::string_view entities);

/// The file with more entities at the end of its last DATA section.
std::string appendEntities(const std::string& file, std::string_view entities);

/// One solid, 10 x 20 x 30 from the origin: 170 entities, 12 triangles at any deflection.
std::string box();

// Entities to append to the box, or to make a file of their own. #11 and #165 are a placement and
// the context of the box.

/// A plain representation, tied to a tessellated one with one face of one triangle: six entities,
/// four of them tessellation.
inline constexpr std::string_view kPaired =
    "#500=SHAPE_REPRESENTATION('',(#11),#165);\n"
    "#501=SHAPE_REPRESENTATION_RELATIONSHIP('','',#500,#510);\n"
    "#510=TESSELLATED_SHAPE_REPRESENTATION('',(#511),#165);\n"
    "#511=TESSELLATED_SOLID('',(#512),$);\n"
    "#512=COMPLEX_TRIANGULATED_FACE('',#513,3,(),$,(),((1,2,3)),());\n"
    "#513=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n";

/// A tessellated representation that nothing is tied to, a unit square at z = 50 in two triangles:
/// four entities.
inline constexpr std::string_view kUnique =
    "#520=TESSELLATED_SHAPE_REPRESENTATION('',(#521),#165);\n"
    "#521=TESSELLATED_SOLID('',(#522),$);\n"
    "#522=COMPLEX_TRIANGULATED_FACE('',#523,4,(),$,(),((1,2,3),(1,3,4)),());\n"
    "#523=COORDINATES_LIST('',4,((0.,0.,50.),(1.,0.,50.),(1.,1.,50.),(0.,1.,50.)));\n";

/// Normal x, y, z and three vertices, as in a record of an STL file.
using StlRecord = std::array<float, 12>;

/// The triangles of kUnique.
extern const std::vector<StlRecord> kUniqueTriangles;

/// A binary STL file as the program writes it.
std::string stlFile(const std::vector<StlRecord>& records);

/// The records of a binary STL file; a failure of the test, and none, if the length is not what the
/// count in it says.
std::vector<StlRecord> recordsOf(const std::string& file);

/// The volume that closed triangles with outward corners enclose.
double volumeOf(const std::vector<StlRecord>& records);

}  // namespace plenvorith::test
