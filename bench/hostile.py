"""Inputs on which a careless program takes time that grows with the square of their size. Each form
is a function that gives the lines of a DATA section for a count, with which its bytes grow."""

from measuring import INPUTS

HEAD = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AP242'));\nENDSEC;\nDATA;\n"
TAIL = "ENDSEC;\nEND-ISO-10303-21;\n"

# A body of one triangle, #4 in #5, and what products and placements need.
BODY = """\
#1=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));
#2=TRIANGULATED_FACE('',#1,3,(),$,(),((1,2,3)));
#4=TESSELLATED_SOLID('',(#2),$);
#5=TESSELLATED_SHAPE_REPRESENTATION('',(#4),$);
#6=AXIS2_PLACEMENT_3D('',#7,$,$);
#7=CARTESIAN_POINT('',(1.,2.,3.));
#8=ITEM_DEFINED_TRANSFORMATION('','',#6,#6);
"""
START = 10


def product(first, shape):
    """Five numbers, the first of which is the definition."""
    return (f"#{first}=PRODUCT_DEFINITION('','',$,$);\n"
            f"#{first + 1}=PRODUCT_DEFINITION_SHAPE('',$,#{first});\n"
            f"#{first + 2}=SHAPE_DEFINITION_REPRESENTATION(#{first + 1},#{shape});\n")


def usage(first, whole, part, whole_shape=None, part_shape=None):
    """Four numbers; without shapes nothing says where the part stands."""
    text = f"#{first}=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','','',#{whole},#{part},$);\n"
    if whole_shape:
        text += (f"#{first + 1}=PRODUCT_DEFINITION_SHAPE('',$,#{first});\n"
                 f"#{first + 2}=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#{first + 3},#{first + 1});\n"
                 f"#{first + 3}=(REPRESENTATION_RELATIONSHIP('','',#{part_shape},#{whole_shape})"
                 "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#8)"
                 "SHAPE_REPRESENTATION_RELATIONSHIP());\n")
    return text


def layer_of_a_chain(count):
    yield BODY
    previous = 2
    for number in range(START, START + count):
        yield f"#{number}=A_STYLE('',#{previous});\n"
        previous = number
    names = ",".join(f"#{number}" for number in range(START, START + count))
    yield f"#{START + count}=PRESENTATION_LAYER_ASSIGNMENT('','',({names}));\n"


def lists_of_lists(count):
    """Each list holds the one before it and something that stays."""
    yield BODY
    previous = 2
    for number in range(START, START + count):
        yield f"#{number}=A_GROUP('',(#6,#{previous}),#{previous});\n"
        previous = number


def parts_without_shape(count):
    yield BODY + product(START, 5)
    for i in range(1, count):
        number = START + 5 * i
        yield f"#{number}=PRODUCT_DEFINITION('','',$,$);\n" + usage(number + 1, START, number)


def chain_of_parts_without_shape(count):
    yield BODY + product(START, 5)
    for i in range(1, count):
        number = START + 5 * i
        yield f"#{number}=PRODUCT_DEFINITION('','',$,$);\n" + usage(number + 1, number, number - 5)


def chain_of_parts_without_shape_backwards(count):
    """The whole first; the last part is the only one with a shape."""
    yield BODY
    for i in range(count):
        number = START + 5 * i
        yield f"#{number}=PRODUCT_DEFINITION('','',$,$);\n" + usage(number + 1, number, number + 5)
    yield product(START + 5 * count, 5)


def layered_parts_without_shape(count):
    """Two layers of parts, each of the lower ones used in two of the upper ones."""
    yield BODY + product(START, 5)
    for i in range(1, count):
        number = START + 10 * i
        yield (f"#{number}=PRODUCT_DEFINITION('','',$,$);\n"
               f"#{number + 1}=PRODUCT_DEFINITION('','',$,$);\n"
               + usage(number + 2, number, START) + usage(number + 3, number + 1, number))


def chain_of_parts(count):
    yield BODY + product(START, 5)
    shape = 5
    for i in range(1, count):
        number = START + 10 * i
        yield (product(number, number + 4) + f"#{number + 4}=SHAPE_REPRESENTATION('',(#6),$);\n"
               + usage(number + 5, number, number - 10, number + 4, shape))
        shape = number + 4


def part_used_often(count):
    yield BODY + product(START, 5) + product(START + 5, START + 9)
    yield f"#{START + 9}=SHAPE_REPRESENTATION('',(#6),$);\n"
    for i in range(1, count):
        yield usage(START + 10 * i, START + 5, START, START + 9, 5)


def assemblies_in_each_other(count):
    yield BODY + product(START, 5) + product(START + 5, START + 9)
    yield f"#{START + 9}=SHAPE_REPRESENTATION('',(#6),$);\n"
    for i in range(1, count):
        yield (usage(START + 10 * i, START + 5, START, START + 9, 5)
               + usage(START + 10 * i + 5, START, START + 5, 5, START + 9))


def chain_of_relationships(count):
    yield BODY
    previous = 5
    for i in range(count):
        number = START + 2 * i
        yield (f"#{number}=SHAPE_REPRESENTATION('',(#6),$);\n"
               f"#{number + 1}=SHAPE_REPRESENTATION_RELATIONSHIP('','',#{previous},#{number});\n")
        previous = number


def chain_of_relationships_backwards(count):
    """Each names what the one before it in the file is about."""
    end = START + 2 * count
    yield BODY + f"#{end}=SHAPE_REPRESENTATION('',(#6),$);\n"
    for number in range(end - 2, START - 2, -2):
        yield (f"#{number}=SHAPE_REPRESENTATION('',(#6),$);\n"
               f"#{number + 1}=SHAPE_REPRESENTATION_RELATIONSHIP('','',#{number},#{number + 2});\n")
    yield f"#{end + 1}=SHAPE_REPRESENTATION_RELATIONSHIP('','',#5,#{START});\n"


def chain_of_transformations(count):
    yield BODY
    previous = 5
    for i in range(count):
        number = START + 2 * i
        yield (f"#{number}=SHAPE_REPRESENTATION('',(#6),$);\n#{number + 1}="
               f"(REPRESENTATION_RELATIONSHIP('','',#{previous},#{number})"
               "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#8)"
               "SHAPE_REPRESENTATION_RELATIONSHIP());\n")
        previous = number


def chain_of_mappings(count):
    yield BODY
    previous = 5
    for i in range(count):
        number = START + 3 * i
        yield (f"#{number}=REPRESENTATION_MAP(#6,#{previous});\n"
               f"#{number + 1}=MAPPED_ITEM('',#{number},#6);\n"
               f"#{number + 2}=SHAPE_REPRESENTATION('',(#{number + 1}),$);\n")
        previous = number + 2


def products_of_one_shape(count):
    """And as many tessellated shapes that are equal in place to it."""
    yield BODY + f"#{START}=SHAPE_REPRESENTATION('',(#6),$);\n"
    for i in range(1, count):
        number = START + 10 * i
        yield (product(number, START)
               + f"#{number + 4}=TESSELLATED_SHAPE_REPRESENTATION('',(#4),$);\n#{number + 5}="
               f"SHAPE_REPRESENTATION_RELATIONSHIP('','',#{START},#{number + 4});\n")


def shapes_of_one_product(count):
    yield BODY + product(START, 5)
    for i in range(1, count):
        number = START + 5 * i
        yield (f"#{number}=TESSELLATED_SHAPE_REPRESENTATION('',(#4),$);\n"
               f"#{number + 1}=SHAPE_DEFINITION_REPRESENTATION(#{START + 1},#{number});\n")


def sets_in_sets(count):
    previous = 2
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=TESSELLATED_GEOMETRIC_SET('',(#{previous}));\n"
        previous = number
    yield f"#{START + count}=TESSELLATED_SHAPE_REPRESENTATION('',(#{previous}),$);\n"


def shells_in_shells(count):
    previous = 2
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=TESSELLATED_SHELL('',(#{previous}),$);\n"
        previous = number
    yield f"#{START + count}=TESSELLATED_SHAPE_REPRESENTATION('',(#{previous}),$);\n"


def bodies_of_one_shape(count):
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=TESSELLATED_SOLID('',(#2),$);\n"
    names = ",".join(f"#{number}" for number in range(START, START + count))
    yield f"#{START + count}=TESSELLATED_SHAPE_REPRESENTATION('',({names}),$);\n"


def chain_of_units(count):
    yield BODY.replace("(#4),$", f"(#4),#{START}")
    yield f"#{START}=(GLOBAL_UNIT_ASSIGNED_CONTEXT((#{START + 1}))REPRESENTATION_CONTEXT('',''));\n"
    for i in range(count):
        number = START + 1 + 2 * i
        yield (f"#{number}=(CONVERSION_BASED_UNIT('',#{number + 1})LENGTH_UNIT()NAMED_UNIT($));\n"
               f"#{number + 1}=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(1.),#{number + 2});\n")


def aggregate_in_aggregate(count):
    yield BODY + f"#{START}=A({'(' * count}#2{')' * count});\n"


def aggregate_in_aggregate_that_stays(count):
    yield BODY + f"#{START}=A({'(' * count}#2,#6{',#6)' * count});\n"


def aggregates_side_by_side(count):
    yield BODY + f"#{START}=A((" + "(#2)," * count + "()));\n"


def types_without_end(count):
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=TYPE_{number}('',#2);\n"


def records_without_end(count):
    yield BODY + f"#{START}=(" + "".join(f"R{i}(#2)" for i in range(count)) + ");\n"


def same_number(count):
    yield BODY
    for _ in range(count):
        yield f"#{START}=A_STYLE('',#2);\n"


def scope_in_scope(count):
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=&SCOPE\n"
    for number in range(START, START + count):
        yield f"#{number + count}=A();\nENDSCOPE A('');\n"


def exact_chain_of_mappings(count):
    yield (BODY + product(START, START + 9) + f"#{START + 5}=MANIFOLD_SOLID_BREP('',$);\n"
           f"#{START + 8}=SHAPE_REPRESENTATION('',(#{START + 5}),$);\n")
    previous = START + 8
    for i in range(1, count):
        number = START + 10 * i
        yield (f"#{number}=REPRESENTATION_MAP(#6,#{previous});\n"
               f"#{number + 1}=MAPPED_ITEM('',#{number},#6);\n"
               f"#{number + 2}=SHAPE_REPRESENTATION('',(#{number + 1}),$);\n")
        previous = number + 2
    yield f"#{START + 9}=SHAPE_REPRESENTATION('',(#6),$);\n"


def orphans(count):
    yield BODY + product(START, 5)
    for i in range(1, count):
        number = START + 2 * i + 5
        yield (f"#{number}=MANIFOLD_SOLID_BREP('',$);\n"
               f"#{number + 1}=ADVANCED_BREP_SHAPE_REPRESENTATION('',(#{number}),$);\n")


def annotation(count):
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=TESSELLATED_ANNOTATION_OCCURRENCE('',(),#4);\n"


def junk_in_front(count):
    yield BODY
    for number in range(START, START + count):
        yield f"junk #{number}=A_STYLE('',#2);\n"


def parentheses_that_never_close(count):
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=A_STYLE(('',#2);\n"


def strings_that_never_end(count):
    yield BODY
    for number in range(START, START + count):
        yield f"#{number}=A_STYLE(',#2);\n"


def blanks(count):
    yield BODY + f"#{START}=A({' ' * count}#2);\n"


def name_without_end(count):
    yield BODY + f"#{START}=A('{'x' * count}');\n"


def number_without_end(count):
    yield BODY.replace("(0.,1.,0.)", f"(0.,1.{'0' * count},0.)")


def reference_without_end(count):
    yield BODY + f"#{START}=A(#{'9' * count});\n"


FORMS = {  # by how many there are in the smaller file
    layer_of_a_chain: 50_000, lists_of_lists: 50_000, parts_without_shape: 50_000,
    chain_of_parts_without_shape: 50_000,
    chain_of_parts_without_shape_backwards: 50_000, layered_parts_without_shape: 50_000, chain_of_parts: 20_000, part_used_often: 20_000,
    assemblies_in_each_other: 20_000, chain_of_relationships: 50_000, chain_of_relationships_backwards: 50_000,
    chain_of_transformations: 50_000, chain_of_mappings: 40_000, products_of_one_shape: 20_000,
    shapes_of_one_product: 50_000, sets_in_sets: 50_000, shells_in_shells: 50_000,
    bodies_of_one_shape: 50_000, chain_of_units: 50_000, aggregate_in_aggregate: 2_000_000, aggregate_in_aggregate_that_stays: 500_000,
    aggregates_side_by_side: 500_000, types_without_end: 50_000, records_without_end: 200_000,
    same_number: 100_000, scope_in_scope: 50_000, exact_chain_of_mappings: 40_000,
    orphans: 50_000, annotation: 100_000, junk_in_front: 100_000,
    parentheses_that_never_close: 400_000, strings_that_never_end: 400_000, blanks: 20_000_000,
    name_without_end: 20_000_000, number_without_end: 20_000_000, reference_without_end: 20_000_000,
}


def hostile(form, count):
    path = INPUTS / f"hostile-{form.__name__}-{count}.stp"
    if not path.exists():
        with open(path, "w") as out:
            out.write(HEAD)
            out.writelines(form(count))
            out.write(TAIL)
    return path
