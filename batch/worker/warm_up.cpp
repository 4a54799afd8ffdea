#include "batch/worker/warm_up.h"

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "app/command_line.h"
#include "batch/system/descriptor.h"

namespace plenvorith {
namespace {

/// A cylinder.
constexpr const char* kPart = R"(ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('','',(''),(''),'','','');
FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));
ENDSEC;
DATA;
#1=APPLICATION_CONTEXT('');
#2=PRODUCT_CONTEXT('',#1,'mechanical');
#3=PRODUCT('','','',(#2));
#4=PRODUCT_DEFINITION_FORMATION('','',#3);
#5=PRODUCT_DEFINITION_CONTEXT('part definition',#1,'design');
#6=PRODUCT_DEFINITION('design','',#4,#5);
#7=PRODUCT_DEFINITION_SHAPE('','',#6);
#8=SHAPE_DEFINITION_REPRESENTATION(#7,#9);
#9=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#10),#11);
#10=MANIFOLD_SOLID_BREP('',#20);
#11=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNCERTAINTY_ASSIGNED_CONTEXT((#12))
GLOBAL_UNIT_ASSIGNED_CONTEXT((#13,#14,#15))REPRESENTATION_CONTEXT('',''));
#12=UNCERTAINTY_MEASURE_WITH_UNIT(LENGTH_MEASURE(1.E-07),#13,'','');
#13=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));
#14=(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.));
#15=(NAMED_UNIT(*)SI_UNIT($,.STERADIAN.)SOLID_ANGLE_UNIT());
#20=CLOSED_SHELL('',(#21,#22,#23));
#21=ADVANCED_FACE('',(#31),#24,.T.);
#22=ADVANCED_FACE('',(#32),#25,.F.);
#23=ADVANCED_FACE('',(#33),#26,.T.);
#24=CYLINDRICAL_SURFACE('',#50,1.);
#25=PLANE('',#50);
#26=PLANE('',#51);
#31=FACE_BOUND('',#34,.T.);
#32=FACE_BOUND('',#35,.T.);
#33=FACE_BOUND('',#36,.T.);
#34=EDGE_LOOP('',(#37,#38,#39,#40));
#35=EDGE_LOOP('',(#37));
#36=EDGE_LOOP('',(#41));
#37=ORIENTED_EDGE('',*,*,#42,.T.);
#38=ORIENTED_EDGE('',*,*,#44,.T.);
#39=ORIENTED_EDGE('',*,*,#43,.F.);
#40=ORIENTED_EDGE('',*,*,#44,.F.);
#41=ORIENTED_EDGE('',*,*,#43,.T.);
#42=EDGE_CURVE('',#45,#45,#47,.T.);
#43=EDGE_CURVE('',#46,#46,#48,.T.);
#44=EDGE_CURVE('',#45,#46,#49,.T.);
#45=VERTEX_POINT('',#52);
#46=VERTEX_POINT('',#53);
#47=CIRCLE('',#50,1.);
#48=CIRCLE('',#51,1.);
#49=LINE('',#52,#54);
#50=AXIS2_PLACEMENT_3D('',#56,#55,#58);
#51=AXIS2_PLACEMENT_3D('',#57,#55,#58);
#52=CARTESIAN_POINT('',(1.,0.,0.));
#53=CARTESIAN_POINT('',(1.,0.,1.));
#54=VECTOR('',#55,1.);
#55=DIRECTION('',(0.,0.,1.));
#56=CARTESIAN_POINT('',(0.,0.,0.));
#57=CARTESIAN_POINT('',(0.,0.,1.));
#58=DIRECTION('',(1.,0.,0.));
ENDSEC;
END-ISO-10303-21;
)";

/// Points a standard stream's descriptor at a file; gives a copy of what it was.
Descriptor turn(int stream, int file) {
  Descriptor before(fcntl(stream, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  dup2(file, stream);
  return before;
}

}  // namespace

void warmUp(const std::string& folder) {
  std::string input = folder + "/part.stp";
  std::string output = folder + "/part.stl";
  {
    const Descriptor file(open(input.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!file.isOpen() || !writeAll(file.get(), kPart)) {
      return;  // without it all goes the same way, more slowly
    }
  }
  const Descriptor nothing(open("/dev/null", O_WRONLY | O_CLOEXEC));
  const Descriptor out = turn(STDOUT_FILENO, nothing.get());
  const Descriptor err = turn(STDERR_FILENO, nothing.get());
  std::string name = "plenvorith";
  std::array<char*, 4> arguments = {name.data(), input.data(), output.data(), nullptr};
  (void)runConverter(3, arguments.data());  // what becomes of it says nothing about other files
  (void)std::fflush(nullptr);               // into the void, too
  dup2(out.get(), STDOUT_FILENO);
  dup2(err.get(), STDERR_FILENO);
}

}  // namespace plenvorith
