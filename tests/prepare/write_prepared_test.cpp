#include "prepare/write_prepared.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/support/instances.h"
#include "tests/support/temp_dir.h"

namespace plenvorith {
namespace {

struct Output {
  std::string data;  // of the DATA section
  Written written;
};

struct Input : test::Instances {
  explicit Input(const std::string& data) : Instances(data) {
    decisions.fates.assign(table.size(), Fate::Kept);
  }
  /// Plans a face in one solid, in a place for all.
  void plan(std::uint64_t face, std::uint64_t list) {
    TessellationPlan& plan = decisions.plan;
    if (plan.placements.empty()) {
      plan.placements.emplace_back();
      plan.lists.push_back({(*this)[list], 0});
    }
    plan.firstSolids.push_back(plan.solidCount);
    plan.faces.push_back({(*this)[face], plan.solidCount++, 0});
    decisions.fates[(*this)[face]] = Fate::Dropped;
    decisions.fates[(*this)[list]] = Fate::Dropped;
  }
  /// Writes what stands at `from` by what is known of this.
  Output writeFrom(const std::string& from) {
    const test::TempDir directory;
    OutputFile output(directory / "out");
    StatementReader first(from);
    Output result;
    result.written = writePrepared(first, reader, table, decisions, output);
    EXPECT_TRUE(output.close());
    const std::string content = test::readFile(directory / "out");
    const std::string start = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AP242'));\nENDSEC;\nDATA;\n";
    EXPECT_THAT(content, testing::StartsWith(start));
    EXPECT_THAT(content, testing::EndsWith("ENDSEC;\nEND-ISO-10303-21;\n"));
    result.data = test::dataOf(content);
    return result;
  }
  Output write() {
    return writeFrom(path);
  }

  Decisions decisions;
};

const std::string kTriangle =
    "#1=COORDINATES_LIST('p',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"
    "#2=TRIANGULATED_FACE('',#1,3,(),$,(3,1,2),((1,2,3),(1,2,9)));\n";

const std::string kNewTriangle =
    "#10=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"
    "#11=COMPLEX_TRIANGULATED_FACE('',#10,3,(),$,(),((3,1,2)),());\n";

/// What holds it together.
const std::string kBehind =
    "#12=TESSELLATED_SOLID('',(#11),$);\n"
    "#13=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
    "#14=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#13))"
    "REPRESENTATION_CONTEXT('',''));\n"
    "#15=TESSELLATED_SHAPE_REPRESENTATION('',(#12),#14);\n";

TEST(WritePrepared, WritesOneInstanceALineByItsFate) {
  Input in(
      "#1 = A( 'x y', #2 );#2=B();\n #3=C((#2,#4),#1);#4=D();\n"
      "#5=TESSELLATED_SHAPE_REPRESENTATION('n',(#2,#4),#1);");
  in.decisions.fates[in[2]] = Fate::Dropped;
  in.decisions.fates[in[3]] = Fate::Changed;
  in.decisions.fates[in[5]] = Fate::Retyped;
  const Output output = in.write();
  EXPECT_EQ(output.data,
            "#1=A('x y',#2);\n#3=C((#4),#1);\n#4=D();\n#5=SHAPE_REPRESENTATION('n',(#4),#1);\n");
  EXPECT_EQ(output.written.error, "");
  EXPECT_EQ(output.written.triangles, 0U);
}

TEST(WritePrepared, WritesFacesUnderNewNamesOfOneLength) {
  Input in(kTriangle);
  in.plan(2, 1);
  const Output output = in.write();
  EXPECT_EQ(output.data, kNewTriangle + kBehind);
  EXPECT_EQ(output.written.triangles, 1U);
  EXPECT_EQ(output.written.skippedTriangles, 1U);
  // With an old name of two digits the new ones have three.
  Input larger(kTriangle + "#10=A();\n");
  larger.plan(2, 1);
  EXPECT_THAT(larger.write().data, testing::StartsWith("#100=COORDINATES_LIST("));
}

TEST(WritePrepared, GivesNoNewInstanceANumberThatTheFileNames) {
  // Or the definition would become that of the new list.
  Input in(kTriangle + "#3=SHAPE_DEFINITION_REPRESENTATION(#9,#10);\n");
  in.plan(2, 1);
  EXPECT_THAT(
      in.write().data,
      testing::StartsWith("#100=COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));\n"
                          "#101=COMPLEX_TRIANGULATED_FACE('',#100,"));
}

TEST(WritePrepared, MarksTessellationBesideExactGeometry) {
  Input in(kTriangle);
  in.plan(2, 1);
  in.decisions.mayHaveExact = true;
  EXPECT_EQ(in.write().data, kNewTriangle + kBehind +
                                 "/*\n#16=TESSELLATED_SHAPE_REPRESENTATION('',(),$);\n"
                                 "#17=SHAPE_REPRESENTATION('',(),$);\n"
                                 "#18=SHAPE_REPRESENTATION_RELATIONSHIP('','',#17,#16);\n*/\n");
}

TEST(WritePrepared, CountsTheTrianglesOfCopies) {
  Input in(kTriangle);
  in.decisions.plan.faces = {{in[2], PlannedFace::kNoSolid, 0}};
  in.decisions.fates = {Fate::Dropped, Fate::Dropped};
  const Output output = in.write();
  EXPECT_EQ(output.data, "");
  EXPECT_EQ(output.written.copiedTriangles, 1U);
  EXPECT_EQ(output.written.triangles, 0U);
  EXPECT_EQ(output.written.skippedTriangles, 0U);
}

TEST(WritePrepared, TiesOrphansToAProduct) {
  Input in("#1=SHAPE_REPRESENTATION('',(),$);\n#2=PRODUCT_DEFINITION_SHAPE('','',$);\n");
  const std::string before = in.write().data;
  in.decisions.orphans.representations = {in[1]};
  in.decisions.orphans.productShape = in[2];
  EXPECT_EQ(in.write().data, before + "#10=SHAPE_DEFINITION_REPRESENTATION(#2,#1);\n");
  in.decisions.orphans.productShape = kNoInstance;
  EXPECT_EQ(in.write().data,
            before +
                "#10=APPLICATION_CONTEXT('');\n#11=PRODUCT_CONTEXT('',#10,'mechanical');\n"
                "#12=PRODUCT('','','',(#11));\n#13=PRODUCT_DEFINITION_FORMATION('','',#12);\n"
                "#14=PRODUCT_DEFINITION_CONTEXT('part definition',#10,'design');\n"
                "#15=PRODUCT_DEFINITION('','',#13,#14);\n"
                "#16=PRODUCT_DEFINITION_SHAPE('','',#15);\n"
                "#17=SHAPE_DEFINITION_REPRESENTATION(#16,#1);\n");
}

TEST(WritePrepared, CountsTheStringsThatItEmpties) {
  const std::string name(9000, 'x');
  Input in("#1=A('" + name + "');\n#2=B('" + name + "');\n#3=C('','" + name + "');\n");
  in.decisions.fates[in[2]] = Fate::Dropped;
  const Output output = in.write();
  EXPECT_EQ(output.data, "#1=A('');\n#3=C('','');\n");
  EXPECT_EQ(output.written.emptiedStrings, 2U);
}

TEST(WritePrepared, RejectsWhatIsNoNumber) {
  Input list("#1=COORDINATES_LIST('',1,((0.,x,0.)));\n#2=TRIANGULATED_FACE('',#1,3,(),$,(),());\n");
  list.plan(2, 1);
  EXPECT_EQ(list.write().written.error, "no number where one has to be in #1");
  Input face(
      "#1=COORDINATES_LIST('',1,((0.,0.,0.)));\n#2=TRIANGULATED_FACE('',#1,3,(),$,(),((1,x)));\n");
  face.plan(2, 1);
  EXPECT_EQ(face.write().written.error, "no number where one has to be in #2");
}

TEST(WritePrepared, RejectsAFileThatHasChanged) {
  test::MemoryFile other;
  for (const char* data : {"#1=A();\n#3=B();\n", "#1=A();\n", "#1=A();\n#2=B();\n#3=C();\n"}) {
    Input in("#1=A();\n#2=B();\n");
    EXPECT_EQ(in.writeFrom(other.write(test::stepFile(data))).written.error,
              "changed while it was read")
        << data;
  }
}

}  // namespace
}  // namespace plenvorith
