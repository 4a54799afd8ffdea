#pragma once

namespace plenvorith::test {

/// A STEP file of one triangle, which is converted without the kernel.
constexpr const char* kTriangleStep = R"(ISO-10303-21;
DATA;
#1=TESSELLATED_SHAPE_REPRESENTATION('',(#2),$);
#2=TESSELLATED_SOLID('',(#3),$);
#3=COMPLEX_TRIANGULATED_FACE('',#4,3,(),$,(),((1,2,3)),());
#4=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));
ENDSEC;
END-ISO-10303-21;
)";

}  // namespace plenvorith::test
