"""Makes the inputs of the measurements, each once, in build/bench."""

import re

from measuring import BENCH, INPUTS, run


def tessellation(kind, megabytes):
    path = INPUTS / f"tessellation-{kind}-{megabytes}.stp"
    if not path.exists():
        run(BENCH / "generate_tessellation", kind, megabytes, path)
    return path


def exact(kind, size):
    """As the kernel writes it, with "#1 = ". The size is in megabytes, or as generate_exact says."""
    path = INPUTS / f"exact-{kind}-{size}.stp"
    if not path.exists():
        run(BENCH / "generate_exact", kind, size, path)
    return path


def without_blanks(path):
    """The same file with "#1=" for the kernel's "#1 = ", as most systems write it."""
    result = path.with_suffix(".plain.stp")
    if not result.exists():
        with open(path, "rb") as source, open(result, "wb") as target:
            for line in source:
                target.write(re.sub(rb"^(#\d+) = ", rb"\1=", line))
    return result


def mixed():
    """Exact geometry and as many bytes of tessellation, by turns. Gives the path and the bytes that
    stripping leaves."""
    path = INPUTS / "mixed-100.stp"
    geometry = without_blanks(exact("plates", 50))
    if not path.exists():
        # One by one: the peak of this script would count as that of what it runs.
        faces = (line for line in open(tessellation("long", 100), "rb")
                 if line.startswith(b"#") and b"=CO" in line[:20])
        with open(geometry, "rb") as source, open(path, "wb") as target:
            exact_bytes = tessellated_bytes = 0
            for line in source:
                target.write(line)
                exact_bytes += len(line)
                if tessellated_bytes < exact_bytes:
                    face = next(faces)
                    target.write(face)
                    tessellated_bytes += len(face)
    return path, geometry.stat().st_size


def points_and_triangles(kind, path):
    """How much there is in a generated file: every face has (n + 1) x (n + 1) points and 2 x n x n
    triangles."""
    n = 2 if kind == "short" else 100
    faces = sum(b"=COMPLEX_TRIANGULATED_FACE(" in line[:60] for line in open(path, "rb"))
    return faces * (n + 1) ** 2, faces * 2 * n * n


# The part whose tessellation follows, in inches, and an assembly that holds it once, upside down.
PART_IN_INCHES = """\
#1000000001=(LENGTH_UNIT() NAMED_UNIT(*) SI_UNIT(.MILLI.,.METRE.));
#1000000002=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#1000000001);
#1000000003=DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.);
#1000000004=(CONVERSION_BASED_UNIT('INCH',#1000000002) LENGTH_UNIT() NAMED_UNIT(#1000000003));
#1000000005=(NAMED_UNIT(*) PLANE_ANGLE_UNIT() SI_UNIT($,.RADIAN.));
#1000000006=(NAMED_UNIT(*) SI_UNIT($,.STERADIAN.) SOLID_ANGLE_UNIT());
#1000000008=(GEOMETRIC_REPRESENTATION_CONTEXT(3) \
GLOBAL_UNIT_ASSIGNED_CONTEXT((#1000000004,#1000000005,#1000000006)) REPRESENTATION_CONTEXT('',''));
#1000000009=CARTESIAN_POINT('',(0.,0.,0.));
#1000000010=DIRECTION('',(0.,0.,1.));
#1000000011=DIRECTION('',(1.,0.,0.));
#1000000012=AXIS2_PLACEMENT_3D('',#1000000009,#1000000010,#1000000011);
#1000000034=TESSELLATED_SHAPE_REPRESENTATION('part',(#2),#1000000008);
#1000000035=SHAPE_REPRESENTATION('part',(#1000000012),#1000000008);
#1000000036=APPLICATION_CONTEXT('managed model based 3d engineering');
#1000000038=PRODUCT_CONTEXT('',#1000000036,'mechanical');
#1000000039=PRODUCT('part','part','',(#1000000038));
#1000000041=PRODUCT_DEFINITION_FORMATION('','',#1000000039);
#1000000042=PRODUCT_DEFINITION_CONTEXT('part definition',#1000000036,'design');
#1000000043=PRODUCT_DEFINITION('design','',#1000000041,#1000000042);
#1000000044=PRODUCT_DEFINITION_SHAPE('','',#1000000043);
#1000000045=SHAPE_DEFINITION_REPRESENTATION(#1000000044,#1000000035);
#1000000046=SHAPE_REPRESENTATION_RELATIONSHIP('','',#1000000035,#1000000034);
#1000000104=CARTESIAN_POINT('',(1.6142,0.,0.5512));
#1000000105=DIRECTION('',(0.,0.,-1.));
#1000000107=AXIS2_PLACEMENT_3D('',#1000000104,#1000000105,#1000000011);
#1000000152=SHAPE_REPRESENTATION('whole',(#1000000012,#1000000107),#1000000008);
#1000000156=PRODUCT('whole','whole','',(#1000000038));
#1000000158=PRODUCT_DEFINITION_FORMATION('','',#1000000156);
#1000000160=PRODUCT_DEFINITION('design','',#1000000158,#1000000042);
#1000000161=PRODUCT_DEFINITION_SHAPE('','',#1000000160);
#1000000162=SHAPE_DEFINITION_REPRESENTATION(#1000000161,#1000000152);
#1000000163=NEXT_ASSEMBLY_USAGE_OCCURRENCE('one','one','',#1000000160,#1000000043,$);
#1000000164=PRODUCT_DEFINITION_SHAPE('Placement','',#1000000163);
#1000000165=ITEM_DEFINED_TRANSFORMATION('','',#1000000012,#1000000107);
#1000000166=(REPRESENTATION_RELATIONSHIP('','',#1000000035,#1000000152) \
REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#1000000165) SHAPE_REPRESENTATION_RELATIONSHIP());
#1000000167=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#1000000166,#1000000164);
"""


def with_faces(path, source, first):
    """Generated tessellation as a body that names its faces, with `first` for the first entity, which
    is a representation without a unit."""
    if not path.exists():
        with open(source, "rb") as lines:
            faces = b",".join(line[:line.index(b"=")] for line in lines
                              if b"=COMPLEX_TRIANGULATED_FACE(" in line[:60])
        with open(source, "rb") as lines, open(path, "wb") as target:
            for line in lines:
                if line.startswith(b"#1="):
                    target.write(first.encode() if first else line)
                elif line.startswith(b"#2="):
                    target.write(b"#2=TESSELLATED_SOLID('',(" + faces + b"),$);\n")
                else:
                    target.write(line)
    return path


def body(megabytes):
    """Needs no preparing: in millimetres, in its place, plain triangles."""
    return with_faces(INPUTS / f"body-{megabytes}.stp", tessellation("long", megabytes), "")


def placed_in_inches(megabytes):
    """A part in inches, placed in an assembly, so that every coordinate has to be computed."""
    return with_faces(INPUTS / f"inches-{megabytes}.stp", tessellation("long", megabytes),
                      PART_IN_INCHES)


def annotated(triples):
    """A file with exact geometry, and the same with annotation of so many triples."""
    plain = without_blanks(exact("plates", 1))
    path = INPUTS / f"annotated-{triples}.stp"
    if not path.exists():
        text = plain.read_text()
        context = re.search(r"^(#\d+)=\( GEOMETRIC_REPRESENTATION_CONTEXT\(3\)", text, re.M)[1]
        points = ",".join(f"({i % 100}.,{i // 100}.5,0.)" for i in range(triples + 2))
        strips = ",".join(f"({i},{i + 1},{i + 2})" for i in range(1, triples + 1))
        annotation = f"""\
#900000001=DRAUGHTING_PRE_DEFINED_COLOUR('black');
#900000002=FILL_AREA_STYLE_COLOUR('',#900000001);
#900000003=FILL_AREA_STYLE('',(#900000002));
#900000004=PRESENTATION_STYLE_ASSIGNMENT((#900000003));
#900000005=COORDINATES_LIST('',{triples + 2},({points}));
#900000006=COMPLEX_TRIANGULATED_SURFACE_SET('',#900000005,{triples + 2},(),(),({strips}),());
#900000007=TESSELLATED_GEOMETRIC_SET('60 mm',(#900000006));
#900000008=TESSELLATED_ANNOTATION_OCCURRENCE('60 mm',(#900000004),#900000007);
#900000009=DRAUGHTING_MODEL('dimensions',(#900000008),{context});
"""
        before, after = text.rsplit("ENDSEC;", 1)
        path.write_text(f"{before}{annotation}ENDSEC;{after}")
    return plain, path
