#include "tests/support/exact_item_file.h"

namespace plenvorith::test {

const std::vector<ExactItem>& deliveredItems() {
  static const std::vector<ExactItem> items = {
      {"MANIFOLD_SOLID_BREP", "#100=MANIFOLD_SOLID_BREP('',#36);\n"},
      {"BREP_WITH_VOIDS", "#100=BREP_WITH_VOIDS('',#36,(#47));\n"},
      {"FACETED_BREP", "#100=FACETED_BREP('',#81);\n"},
      {"FACETED_BREP complex",
       "#100=(BREP_WITH_VOIDS((#101))FACETED_BREP()GEOMETRIC_REPRESENTATION_ITEM()MANIFOLD_SOLID_"
       "BREP(#81)REPRESENTATION_ITEM('')SOLID_MODEL());\n"
       "#101=ORIENTED_CLOSED_SHELL('',*,#36,.F.);\n"},
      {"SHELL_BASED_SURFACE_MODEL open", "#100=SHELL_BASED_SURFACE_MODEL('',(#37));\n"},
      {"SHELL_BASED_SURFACE_MODEL closed", "#100=SHELL_BASED_SURFACE_MODEL('',(#36));\n"},
      {"SHELL_BASED_SURFACE_MODEL oriented open",
       "#100=SHELL_BASED_SURFACE_MODEL('',(#101));\n"
       "#101=ORIENTED_OPEN_SHELL('',*,#37,.T.);\n"},
      {"SHELL_BASED_SURFACE_MODEL oriented closed", "#100=SHELL_BASED_SURFACE_MODEL('',(#47));\n"},
      {"SHELL_BASED_SURFACE_MODEL polyhedron", "#100=SHELL_BASED_SURFACE_MODEL('',(#81));\n"},
      {"FACE_BASED_SURFACE_MODEL", "#100=FACE_BASED_SURFACE_MODEL('',(#38));\n"},
      {"FACE_BASED_SURFACE_MODEL open", "#100=FACE_BASED_SURFACE_MODEL('',(#37));\n"},
      {"FACE_BASED_SURFACE_MODEL sub",
       "#100=FACE_BASED_SURFACE_MODEL('',(#101));\n"
       "#101=CONNECTED_FACE_SUB_SET('',(#35),#38);\n"},
      {"shell of face surface",
       "#100=SHELL_BASED_SURFACE_MODEL('',(#101));\n"
       "#101=OPEN_SHELL('',(#39));\n"},
      {"ADVANCED_FACE", "#100=ADVANCED_FACE('',(#34),#30,.T.);\n"},
      {"FACE_SURFACE", "#100=FACE_SURFACE('',(#34),#30,.T.);\n"},
      {"FACE_SURFACE poly", "#100=FACE_SURFACE('',(#58),#66,.T.);\n"},
      {"MAPPED_ITEM of solid",
       "#100=MAPPED_ITEM('',#101,#20);\n"
       "#101=REPRESENTATION_MAP(#20,#102);\n"
       "#102=SHAPE_REPRESENTATION('',(#20,#124),#11);\n"},
      {"MAPPED_ITEM of GEOMETRIC_SET",
       "#100=MAPPED_ITEM('',#101,#20);\n"
       "#101=REPRESENTATION_MAP(#20,#102);\n"
       "#102=SHAPE_REPRESENTATION('',(#103),#11);\n"
       "#103=GEOMETRIC_SET('',(#97));\n"},
      {"MAPPED_ITEM of face",
       "#100=MAPPED_ITEM('',#101,#20);\n"
       "#101=REPRESENTATION_MAP(#20,#102);\n"
       "#102=SHAPE_REPRESENTATION('',(#35),#11);\n"},
      {"MAPPED_ITEM of SBSM",
       "#100=MAPPED_ITEM('',#101,#20);\n"
       "#101=REPRESENTATION_MAP(#20,#102);\n"
       "#102=SHAPE_REPRESENTATION('',(#103),#11);\n"
       "#103=SHELL_BASED_SURFACE_MODEL('',(#37));\n"},
      {"GEOMETRIC_SET of B_SPLINE_SURFACE_WITH_KNOTS",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=B_SPLINE_SURFACE_WITH_KNOTS('',1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U.,(2,"
       "2),(2,2),(0.,1.),(0.,1.),.UNSPECIFIED.);\n"},
      {"GEOMETRIC_SET of RATIONAL_B_SPLINE_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=(BOUNDED_SURFACE()B_SPLINE_SURFACE(1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U."
       ")B_SPLINE_SURFACE_WITH_KNOTS((2,2),(2,2),(0.,1.),(0.,1.),.UNSPECIFIED.)GEOMETRIC_"
       "REPRESENTATION_ITEM()RATIONAL_B_SPLINE_SURFACE(((1.,1.),(1.,1.)))REPRESENTATION_ITEM('')"
       "SURFACE());\n"},
      {"GEOMETRIC_SET of BEZIER_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=BEZIER_SURFACE('',1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U.);\n"},
      {"GEOMETRIC_SET of UNIFORM_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=UNIFORM_SURFACE('',1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U.);\n"},
      {"GEOMETRIC_SET of QUASI_UNIFORM_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=QUASI_UNIFORM_SURFACE('',1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U.);\n"},
      {"GEOMETRIC_SET of RATIONAL_QUASI_UNIFORM",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=(BOUNDED_SURFACE()B_SPLINE_SURFACE(1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U."
       ")GEOMETRIC_REPRESENTATION_ITEM()QUASI_UNIFORM_SURFACE()RATIONAL_B_SPLINE_SURFACE(((1.,1.),("
       "1.,1.)))REPRESENTATION_ITEM('')SURFACE());\n"},
      {"GEOMETRIC_SET of RATIONAL_UNIFORM",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=(BOUNDED_SURFACE()B_SPLINE_SURFACE(1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U."
       ")GEOMETRIC_REPRESENTATION_ITEM()RATIONAL_B_SPLINE_SURFACE(((1.,1.),(1.,1.)))REPRESENTATION_"
       "ITEM('')SURFACE()UNIFORM_SURFACE());\n"},
      {"GEOMETRIC_SET of RECTANGULAR_TRIMMED_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=RECTANGULAR_TRIMMED_SURFACE('',#26,0.,4.,0.,3.,.T.,.T.);\n"},
      {"GEOMETRIC_SET of RECTANGULAR_TRIMMED_SURFACE sphere",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=RECTANGULAR_TRIMMED_SURFACE('',#30,0.,1.,0.,1.,.T.,.T.);\n"},
      {"GEOMETRIC_SET of CURVE_BOUNDED_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=CURVE_BOUNDED_SURFACE('',#26,(#95),.F.);\n"},
      {"GEOMETRIC_SET of RECTANGULAR_COMPOSITE_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=RECTANGULAR_COMPOSITE_SURFACE('',((#102)));\n"
       "#102=SURFACE_PATCH(#129,.CONTINUOUS.,.CONTINUOUS.,.T.,.T.);\n"},
      {"GEOMETRIC_SET of MSB in set",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=MANIFOLD_SOLID_BREP('',#36);\n"},
      {"GEOMETRIC_SET of GEOMETRIC_SET in set",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=GEOMETRIC_SET('',(#97));\n"},
  };
  return items;
}

const std::vector<ExactItem>& undeliveredItems() {
  static const std::vector<ExactItem> items = {
      {"MANIFOLD_SOLID_BREP complex",
       "#100=(GEOMETRIC_REPRESENTATION_ITEM()MANIFOLD_SOLID_BREP(#36)REPRESENTATION_ITEM('')SOLID_"
       "MODEL());\n"},
      {"SOLID_MODEL", "#100=SOLID_MODEL('');\n"},
      {"CSG_SOLID",
       "#100=CSG_SOLID('',#101);\n"
       "#101=BOOLEAN_RESULT('',.UNION.,#126,#127);\n"},
      {"CSG_SOLID of BLOCK", "#100=CSG_SOLID('',#126);\n"},
      {"CSG_SOLID of BREPs",
       "#100=CSG_SOLID('',#101);\n"
       "#101=BOOLEAN_RESULT('',.UNION.,#124,#102);\n"
       "#102=MANIFOLD_SOLID_BREP('',#46);\n"},
      {"BOOLEAN_RESULT", "#100=BOOLEAN_RESULT('',.UNION.,#126,#127);\n"},
      {"BOOLEAN_RESULT of BREPs",
       "#100=BOOLEAN_RESULT('',.UNION.,#124,#102);\n"
       "#102=MANIFOLD_SOLID_BREP('',#46);\n"},
      {"BLOCK", "#100=BLOCK('',#20,1.,2.,3.);\n"},
      {"SPHERE", "#100=SPHERE('',2.,#21);\n"},
      {"TORUS", "#100=TORUS('',#24,5.,1.);\n"},
      {"ELLIPSOID", "#100=ELLIPSOID('',#20,5.,4.,3.);\n"},
      {"RIGHT_CIRCULAR_CONE", "#100=RIGHT_CIRCULAR_CONE('',#24,5.,1.,0.5);\n"},
      {"RIGHT_CIRCULAR_CYLINDER", "#100=RIGHT_CIRCULAR_CYLINDER('',#24,5.,1.);\n"},
      {"ECCENTRIC_CONE", "#100=ECCENTRIC_CONE('',#20,5.,4.,1.,1.,3.,0.5);\n"},
      {"RIGHT_ANGULAR_WEDGE", "#100=RIGHT_ANGULAR_WEDGE('',#20,5.,4.,3.,1.);\n"},
      {"RECTANGULAR_PYRAMID", "#100=RECTANGULAR_PYRAMID('',#20,5.,4.,3.);\n"},
      {"FACETED_PRIMITIVE", "#100=FACETED_PRIMITIVE('',(#50,#51,#52,#53));\n"},
      {"TETRAHEDRON", "#100=TETRAHEDRON('',(#50,#51,#52,#53));\n"},
      {"CONVEX_HEXAHEDRON", "#100=CONVEX_HEXAHEDRON('',(#50,#51,#52,#53,#31,#41,#21,#27));\n"},
      {"CYCLIDE_SEGMENT_SOLID", "#100=CYCLIDE_SEGMENT_SOLID('',#20,3.,3.,1.,1.,1.);\n"},
      {"EXTRUDED_AREA_SOLID", "#100=EXTRUDED_AREA_SOLID('',#125,#22,5.);\n"},
      {"EXTRUDED_FACE_SOLID", "#100=EXTRUDED_FACE_SOLID('',#62,#22,5.);\n"},
      {"REVOLVED_AREA_SOLID", "#100=REVOLVED_AREA_SOLID('',#125,#24,1.);\n"},
      {"REVOLVED_FACE_SOLID", "#100=REVOLVED_FACE_SOLID('',#62,#24,1.);\n"},
      {"SURFACE_CURVE_SWEPT_AREA_SOLID",
       "#100=SURFACE_CURVE_SWEPT_AREA_SOLID('',#125,#90,0.,1.,#26);\n"},
      {"SURFACE_CURVE_SWEPT_FACE_SOLID",
       "#100=SURFACE_CURVE_SWEPT_FACE_SOLID('',#62,#90,0.,1.,#26);\n"},
      {"SWEPT_AREA_SOLID", "#100=SWEPT_AREA_SOLID('',#125);\n"},
      {"SWEPT_FACE_SOLID", "#100=SWEPT_FACE_SOLID('',#62);\n"},
      {"SWEPT_DISK_SOLID", "#100=SWEPT_DISK_SOLID('',#90,1.,$,0.,1.);\n"},
      {"SOLID_REPLICA",
       "#100=SOLID_REPLICA('',#124,#101);\n"
       "#101=CARTESIAN_TRANSFORMATION_OPERATOR_3D('',$,$,$,#21,1.,$);\n"},
      {"HALF_SPACE_SOLID", "#100=HALF_SPACE_SOLID('',#26,.T.);\n"},
      {"BOXED_HALF_SPACE",
       "#100=BOXED_HALF_SPACE('',#26,.T.,#101);\n"
       "#101=BOX_DOMAIN(#21,1.,2.,3.);\n"},
      {"BOX_DOMAIN", "#100=BOX_DOMAIN(#21,1.,2.,3.);\n"},
      {"TRIMMED_VOLUME",
       "#100=TRIMMED_VOLUME('',#101,0.,1.,0.,1.,0.,1.);\n"
       "#101=BLOCK_VOLUME('',#20,1.,2.,3.);\n"},
      {"BLOCK_VOLUME", "#100=BLOCK_VOLUME('',#20,1.,2.,3.);\n"},
      {"SPHERICAL_VOLUME", "#100=SPHERICAL_VOLUME('',#20,3.);\n"},
      {"CYLINDRICAL_VOLUME", "#100=CYLINDRICAL_VOLUME('',#20,3.,4.);\n"},
      {"SURFACE_MODEL", "#100=SURFACE_MODEL('');\n"},
      {"CLOSED_SHELL", "#100=CLOSED_SHELL('',(#35));\n"},
      {"OPEN_SHELL", "#100=OPEN_SHELL('',(#35));\n"},
      {"ORIENTED_CLOSED_SHELL", "#100=ORIENTED_CLOSED_SHELL('',*,#36,.F.);\n"},
      {"ORIENTED_OPEN_SHELL", "#100=ORIENTED_OPEN_SHELL('',*,#37,.T.);\n"},
      {"CONNECTED_FACE_SET", "#100=CONNECTED_FACE_SET('',(#35));\n"},
      {"CONNECTED_FACE_SUB_SET", "#100=CONNECTED_FACE_SUB_SET('',(#35),#38);\n"},
      {"FACE", "#100=FACE('',(#58));\n"},
      {"ORIENTED_FACE", "#100=ORIENTED_FACE('',*,#35,.T.);\n"},
      {"SUBFACE", "#100=SUBFACE('',(#34),#35);\n"},
      {"EDGE_BASED_WIREFRAME_MODEL", "#100=EDGE_BASED_WIREFRAME_MODEL('',(#123));\n"},
      {"SHELL_BASED_WIREFRAME_MODEL",
       "#100=SHELL_BASED_WIREFRAME_MODEL('',(#101));\n"
       "#101=WIRE_SHELL('',(#102));\n"
       "#102=EDGE_LOOP('',(#103));\n"
       "#103=ORIENTED_EDGE('',*,*,#122,.T.);\n"},
      {"SHELL_BASED_WIREFRAME_MODEL VERTEX_SHELL",
       "#100=SHELL_BASED_WIREFRAME_MODEL('',(#101));\n"
       "#101=VERTEX_SHELL('',#33);\n"},
      {"GEOMETRIC_CURVE_SET", "#100=GEOMETRIC_CURVE_SET('',(#90,#98));\n"},
      {"GEOMETRIC_SET of curves", "#100=GEOMETRIC_SET('',(#90,#98));\n"},
      {"GEOMETRIC_SET of points", "#100=GEOMETRIC_SET('',(#50));\n"},
      {"GEOMETRIC_SET_REPLICA",
       "#100=GEOMETRIC_SET_REPLICA('',#102,#101);\n"
       "#101=CARTESIAN_TRANSFORMATION_OPERATOR_3D('',$,$,$,#21,1.,$);\n"
       "#102=GEOMETRIC_SET('',(#97));\n"},
      {"AXIS2_PLACEMENT_3D", "#100=AXIS2_PLACEMENT_3D('',#21,#22,#23);\n"},
      {"MAPPED_ITEM of CSG_SOLID",
       "#100=MAPPED_ITEM('',#101,#20);\n"
       "#101=REPRESENTATION_MAP(#20,#102);\n"
       "#102=SHAPE_REPRESENTATION('',(#103),#11);\n"
       "#103=CSG_SOLID('',#126);\n"},
      {"MAPPED_ITEM of shell",
       "#100=MAPPED_ITEM('',#101,#20);\n"
       "#101=REPRESENTATION_MAP(#20,#102);\n"
       "#102=SHAPE_REPRESENTATION('',(#36),#11);\n"},
      {"COMPOUND_REPRESENTATION_ITEM",
       "#100=COMPOUND_REPRESENTATION_ITEM('',LIST_REPRESENTATION_ITEM((#124)));\n"},
      {"STYLED_ITEM", "#100=STYLED_ITEM('',(),#124);\n"},
      {"OVER_RIDING_STYLED_ITEM",
       "#100=OVER_RIDING_STYLED_ITEM('',(),#124,#101);\n"
       "#101=STYLED_ITEM('',(),#124);\n"},
      {"GEOMETRIC_SET of PLANE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=PLANE('',#20);\n"},
      {"item PLANE", "#100=PLANE('',#20);\n"},
      {"GEOMETRIC_SET of CYLINDRICAL_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=CYLINDRICAL_SURFACE('',#20,3.);\n"},
      {"GEOMETRIC_SET of CONICAL_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=CONICAL_SURFACE('',#20,3.,0.5);\n"},
      {"GEOMETRIC_SET of SPHERICAL_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=SPHERICAL_SURFACE('',#20,3.);\n"},
      {"GEOMETRIC_SET of TOROIDAL_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=TOROIDAL_SURFACE('',#20,3.,1.);\n"},
      {"GEOMETRIC_SET of DEGENERATE_TOROIDAL_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=DEGENERATE_TOROIDAL_SURFACE('',#20,1.,3.,.T.);\n"},
      {"GEOMETRIC_SET of SURFACE_OF_LINEAR_EXTRUSION",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=SURFACE_OF_LINEAR_EXTRUSION('',#90,#25);\n"},
      {"GEOMETRIC_SET of SURFACE_OF_LINEAR_EXTRUSION of bounded",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=SURFACE_OF_LINEAR_EXTRUSION('',#98,#25);\n"},
      {"GEOMETRIC_SET of SURFACE_OF_REVOLUTION",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=SURFACE_OF_REVOLUTION('',#98,#24);\n"},
      {"GEOMETRIC_SET of OFFSET_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=OFFSET_SURFACE('',#30,1.,.F.);\n"},
      {"GEOMETRIC_SET of ORIENTED_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=ORIENTED_SURFACE('',.T.);\n"},
      {"item B_SPLINE_SURFACE_WITH_KNOTS",
       "#100=B_SPLINE_SURFACE_WITH_KNOTS('',1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U.,(2,"
       "2),(2,2),(0.,1.),(0.,1.),.UNSPECIFIED.);\n"},
      {"GEOMETRIC_SET of B_SPLINE_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=B_SPLINE_SURFACE('',1,1,((#50,#51),(#52,#53)),.UNSPECIFIED.,.F.,.F.,.U.);\n"},
      {"item RECTANGULAR_TRIMMED_SURFACE",
       "#100=RECTANGULAR_TRIMMED_SURFACE('',#26,0.,4.,0.,3.,.T.,.T.);\n"},
      {"item CURVE_BOUNDED_SURFACE", "#100=CURVE_BOUNDED_SURFACE('',#26,(#95),.F.);\n"},
      {"GEOMETRIC_SET of SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=SURFACE('');\n"},
      {"GEOMETRIC_SET of DUPIN_CYCLIDE_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=DUPIN_CYCLIDE_SURFACE('',#20,3.,1.,0.5);\n"},
      {"GEOMETRIC_SET of ADVANCED_FACE in set",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=ADVANCED_FACE('',(#34),#30,.T.);\n"},
      {"GEOMETRIC_SET of CLOSED_SHELL in set",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=CLOSED_SHELL('',(#35));\n"},
      {"GEOMETRIC_SET of MAPPED in set",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=MAPPED_ITEM('',#102,#20);\n"
       "#102=REPRESENTATION_MAP(#20,#103);\n"
       "#103=SHAPE_REPRESENTATION('',(#20,#124),#11);\n"},
  };
  return items;
}

const std::vector<ExactItem>& malformedItems() {
  static const std::vector<ExactItem> items = {
      {"FACETED_BREP of FACE", "#100=FACETED_BREP('',#83);\n"},
      {"SHELL_BASED_SURFACE_MODEL of CONNECTED_FACE_SET",
       "#100=SHELL_BASED_SURFACE_MODEL('',(#38));\n"},
      {"SHELL_BASED_SURFACE_MODEL of SURFACED_OPEN_SHELL",
       "#100=SHELL_BASED_SURFACE_MODEL('',(#101));\n"
       "#101=SURFACED_OPEN_SHELL('',(#35));\n"},
      {"shell of oriented face",
       "#100=SHELL_BASED_SURFACE_MODEL('',(#101));\n"
       "#101=OPEN_SHELL('',(#102));\n"
       "#102=ORIENTED_FACE('',*,#35,.F.);\n"},
      {"shell of subface",
       "#100=SHELL_BASED_SURFACE_MODEL('',(#101));\n"
       "#101=OPEN_SHELL('',(#102));\n"
       "#102=SUBFACE('',(#34),#35);\n"},
      {"shell of face",
       "#100=SHELL_BASED_SURFACE_MODEL('',(#101));\n"
       "#101=OPEN_SHELL('',(#82));\n"},
      {"GEOMETRIC_SET of BOUNDED_SURFACE",
       "#100=GEOMETRIC_SET('',(#101));\n"
       "#101=BOUNDED_SURFACE('');\n"},
  };
  return items;
}

const std::vector<std::string>& deliveredRepresentations() {
  static const std::vector<std::string> types = {
      "SHAPE_REPRESENTATION",
      "ADVANCED_BREP_SHAPE_REPRESENTATION",
      "FACETED_BREP_SHAPE_REPRESENTATION",
      "MANIFOLD_SURFACE_SHAPE_REPRESENTATION",
      "NON_MANIFOLD_SURFACE_SHAPE_REPRESENTATION",
      "GEOMETRICALLY_BOUNDED_SURFACE_SHAPE_REPRESENTATION",
      "GEOMETRICALLY_BOUNDED_WIREFRAME_SHAPE_REPRESENTATION",
      "EDGE_BASED_WIREFRAME_SHAPE_REPRESENTATION",
      "CSG_SHAPE_REPRESENTATION",
      "COMPOUND_SHAPE_REPRESENTATION",
      "TRANSITIONAL_SHAPE_REPRESENTATION",
  };
  return types;
}

const std::vector<std::string>& undeliveredRepresentations() {
  static const std::vector<std::string> types = {
      "SHELL_BASED_WIREFRAME_SHAPE_REPRESENTATION",
      "ELEMENTARY_BREP_SHAPE_REPRESENTATION",
      "CURVE_SWEPT_SOLID_SHAPE_REPRESENTATION",
      "CONNECTED_FACE_SHAPE_REPRESENTATION",
      "LOCATION_SHAPE_REPRESENTATION",
      "PLANAR_SHAPE_REPRESENTATION",
      "MANIFOLD_SUBSURFACE_SHAPE_REPRESENTATION",
      "REPRESENTATION",
      "CONSTRUCTIVE_GEOMETRY_REPRESENTATION",
      "DEFINITIONAL_REPRESENTATION",
      "DRAUGHTING_MODEL",
  };
  return types;
}

std::string exactItemContext() {
  return R"(#1=APPLICATION_CONTEXT('');
#2=PRODUCT_CONTEXT('',#1,'mechanical');
#3=PRODUCT('part','part','',(#2));
#4=PRODUCT_DEFINITION_FORMATION('','',#3);
#5=PRODUCT_DEFINITION_CONTEXT('part definition',#1,'design');
#6=PRODUCT_DEFINITION('design','',#4,#5);
#7=PRODUCT_DEFINITION_SHAPE('','',#6);
#8=SHAPE_DEFINITION_REPRESENTATION(#7,#9);
#11=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#12,#13,#14))REPRESENTATION_CONTEXT('',''));
#12=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));
#13=(NAMED_UNIT(*)PLANE_ANGLE_UNIT()SI_UNIT($,.RADIAN.));
#14=(NAMED_UNIT(*)SI_UNIT($,.STERADIAN.)SOLID_ANGLE_UNIT());
#20=AXIS2_PLACEMENT_3D('',#21,#22,#23);
#21=CARTESIAN_POINT('',(0.,0.,0.));
#22=DIRECTION('',(0.,0.,1.));
#23=DIRECTION('',(1.,0.,0.));
#24=AXIS1_PLACEMENT('',#27,#22);
#25=VECTOR('',#22,5.);
#26=PLANE('',#20);
#27=CARTESIAN_POINT('',(-20.,0.,0.));
#28=DIRECTION('',(0.,0.577,0.577));
#30=SPHERICAL_SURFACE('',#20,10.);
#31=CARTESIAN_POINT('',(0.,0.,10.));
#32=VERTEX_POINT('',#31);
#33=VERTEX_LOOP('',#32);
#34=FACE_BOUND('',#33,.T.);
#35=ADVANCED_FACE('',(#34),#30,.T.);
#36=CLOSED_SHELL('',(#35));
#37=OPEN_SHELL('',(#35));
#38=CONNECTED_FACE_SET('',(#35));
#39=FACE_SURFACE('',(#34),#30,.T.);
#40=SPHERICAL_SURFACE('',#20,5.);
#41=CARTESIAN_POINT('',(0.,0.,5.));
#42=VERTEX_POINT('',#41);
#43=VERTEX_LOOP('',#42);
#44=FACE_BOUND('',#43,.T.);
#45=ADVANCED_FACE('',(#44),#40,.T.);
#46=CLOSED_SHELL('',(#45));
#47=ORIENTED_CLOSED_SHELL('',*,#46,.F.);
#50=CARTESIAN_POINT('',(0.,0.,0.));
#51=CARTESIAN_POINT('',(4.,0.,0.));
#52=CARTESIAN_POINT('',(0.,4.,0.));
#53=CARTESIAN_POINT('',(0.,0.,4.));
#54=POLY_LOOP('',(#50,#52,#51));
#55=POLY_LOOP('',(#50,#51,#53));
#56=POLY_LOOP('',(#50,#53,#52));
#57=POLY_LOOP('',(#51,#52,#53));
#58=FACE_OUTER_BOUND('',#54,.T.);
#59=FACE_OUTER_BOUND('',#55,.T.);
#60=FACE_OUTER_BOUND('',#56,.T.);
#61=FACE_OUTER_BOUND('',#57,.T.);
#62=FACE_SURFACE('',(#58),#66,.T.);
#63=FACE_SURFACE('',(#59),#67,.T.);
#64=FACE_SURFACE('',(#60),#68,.T.);
#65=FACE_SURFACE('',(#61),#69,.T.);
#66=PLANE('',#70);
#67=PLANE('',#71);
#68=PLANE('',#72);
#69=PLANE('',#73);
#70=AXIS2_PLACEMENT_3D('',#50,#74,#75);
#71=AXIS2_PLACEMENT_3D('',#50,#76,#75);
#72=AXIS2_PLACEMENT_3D('',#50,#77,#78);
#73=AXIS2_PLACEMENT_3D('',#51,#79,#80);
#74=DIRECTION('',(0.,0.,-1.));
#75=DIRECTION('',(1.,0.,0.));
#76=DIRECTION('',(0.,-1.,0.));
#77=DIRECTION('',(-1.,0.,0.));
#78=DIRECTION('',(0.,1.,0.));
#79=DIRECTION('',(1.,1.,1.));
#80=DIRECTION('',(-1.,1.,0.));
#81=CLOSED_SHELL('',(#62,#63,#64,#65));
#82=FACE('',(#58));
#83=CLOSED_SHELL('',(#84,#85,#86,#87));
#84=FACE('',(#58));
#85=FACE('',(#59));
#86=FACE('',(#60));
#87=FACE('',(#61));
#90=CIRCLE('',#20,2.);
#91=LINE('',#50,#92);
#92=VECTOR('',#23,4.);
#93=POLYLINE('',(#50,#51,#52,#50));
#94=COMPOSITE_CURVE_SEGMENT(.CONTINUOUS.,.T.,#93);
#95=OUTER_BOUNDARY_CURVE('',(#94),.F.);
#96=BOUNDARY_CURVE('',(#94),.F.);
#97=RECTANGULAR_TRIMMED_SURFACE('',#26,0.,4.,0.,3.,.T.,.T.);
#98=TRIMMED_CURVE('',#91,(PARAMETER_VALUE(0.)),(PARAMETER_VALUE(1.)),.T.,.PARAMETER.);
#120=VERTEX_POINT('',#50);
#121=VERTEX_POINT('',#51);
#122=EDGE_CURVE('',#120,#121,#91,.T.);
#123=CONNECTED_EDGE_SET('',(#122));
#124=MANIFOLD_SOLID_BREP('',#36);
#125=CURVE_BOUNDED_SURFACE('',#26,(#95),.F.);
#126=BLOCK('',#20,1.,2.,3.);
#127=SPHERE('',2.,#21);
#128=OFFSET_SURFACE('',#30,1.,.F.);
#129=RECTANGULAR_TRIMMED_SURFACE('',#30,0.,1.,0.,1.,.T.,.T.);
)";
}

std::string stepFileOf(const std::string& instances) {
  return "ISO-10303-21;\n"
         "HEADER;\n"
         "FILE_DESCRIPTION((''),'2;1');\n"
         "FILE_NAME('','',(''),(''),'','','');\n"
         "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"
         "ENDSEC;\n"
         "DATA;\n" +
         instances +
         "ENDSEC;\n"
         "END-ISO-10303-21;\n";
}

std::string exactItemFile(const std::string& representationType, const ExactItem& item,
                          const std::string& further) {
  return stepFileOf(exactItemContext() + "#9=" + representationType + "('',(#20,#100),#11);\n" +
                    item.instances + further);
}

}  // namespace plenvorith::test
