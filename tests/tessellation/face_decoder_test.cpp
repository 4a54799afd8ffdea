#include "tessellation/face_decoder.h"

#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/reference/reference_face_decoder.h"
#include "tests/support/outcome.h"
#include "tests/support/records.h"
#include "tests/support/rounds.h"
#include "tests/support/step_text.h"

namespace plenvorith {
namespace {

using test::EntityTexts;
using test::Outcome;
using test::outcomeOf;
using test::pick;
using test::randomText;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

const std::string kThreePoints = "COORDINATES_LIST('',3,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.)));";
const std::string kFourPoints =
    "COORDINATES_LIST('',4,((0.,0.,0.),(1.,0.,0.),(0.,1.,0.),(0.,0.,1.)));";

/// The triangles of the named faces of a table with these entities.
std::vector<Triangle> decodeNamed(const EntityTexts& entities, const InstanceNames& faceIds) {
  return decodeTriangulatedFaces(test::tableWith(entities), faceIds);
}

/// The triangles of all of its faces.
std::vector<Triangle> decodeAll(const EntityTexts& entities) {
  return decodeAllTriangulatedFaces(test::tableWith(entities));
}

constexpr Point3 kP1{0, 0, 0};
constexpr Point3 kP2{1, 0, 0};
constexpr Point3 kP3{0, 1, 0};
constexpr Point3 kP4{0, 0, 1};
constexpr Triangle kFirst{{0, 0, 1}, kP1, kP2, kP3};

/// A face that references the coordinates #2.
std::string face(const std::string& strips) {
  return "COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,()," + strips + ",());";
}

/// The triangles of the one face #1 of these strips, over three points.
std::vector<Triangle> trianglesOf(const std::string& strips) {
  return decodeNamed({{"#1", face(strips)}, {"#2", kThreePoints}}, {"#1"});
}

/// The triangles of the one face #1 with this text, over three points.
std::vector<Triangle> trianglesOfText(const std::string& text) {
  return decodeNamed({{"#1", text}, {"#2", kThreePoints}}, {"#1"});
}

TEST(FaceDecoder, DecodesATriangle) {
  EXPECT_THAT(trianglesOf("((1,2,3))"), ElementsAre(kFirst));
}

TEST(FaceDecoder, KeepsTheOrderOfTheIndices) {
  EXPECT_THAT(trianglesOf("((1,3,2))"), ElementsAre(Triangle{{0, 0, -1}, kP1, kP3, kP2}));
}

TEST(FaceDecoder, KeepsDegenerateTriangles) {
  EXPECT_THAT(trianglesOf("((1,1,2))"), ElementsAre(Triangle{{0, 0, 0}, kP1, kP1, kP2}));
}

TEST(FaceDecoder, DividesNormalsLongerThan1eMinus12Only) {
  const EntityTexts entities = {
      {"#1", face("((1,2,3),(1,4,3),(1,5,3))")},
      {"#2",
       "COORDINATES_LIST('',5,((0.,0.,0.),(1.E-12,0.,0.),(0.,1.,0.),(5.E-13,0.,0.),"
       "(2.E-12,0.,0.)));"}};
  const std::vector<Triangle> triangles = decodeNamed(entities, {"#1"});
  ASSERT_EQ(triangles.size(), 3U);
  EXPECT_EQ(triangles[0].normal, (Point3{0, 0, 1e-12}));
  EXPECT_EQ(triangles[1].normal, (Point3{0, 0, 5e-13}));
  EXPECT_EQ(triangles[2].normal, (Point3{0, 0, 1}));
}

TEST(FaceDecoder, SkipsIndicesThatFitNoPoint) {
  EXPECT_THAT(trianglesOf("((0,1,2))"), IsEmpty());
  EXPECT_THAT(trianglesOf("((1,2,4))"), IsEmpty());
  EXPECT_THAT(trianglesOf("((1,-2,3))"), IsEmpty());
  EXPECT_THAT(trianglesOf("((1,2,3000000000))"), IsEmpty());
  EXPECT_THAT(trianglesOf("((4,2,1),(1,2,3),(1,4,2))"), ElementsAre(kFirst));
}

TEST(FaceDecoder, TruncatesIndices) {
  EXPECT_THAT(trianglesOf("((1.9,2.,3.5))"), ElementsAre(kFirst));
  EXPECT_THAT(trianglesOf("((0.9,2,3))"), IsEmpty());
}

TEST(FaceDecoder, TakesThreeIndicesOfAStripAndEndsThere) {
  EXPECT_THAT(decodeNamed({{"#1", face("((1,2,3,4))")}, {"#2", kFourPoints}}, {"#1"}),
              ElementsAre(kFirst));
  const std::vector<Triangle> triangles =
      decodeNamed({{"#1", face("((1,2,3),(2,3,4,1),(1,3,4))")}, {"#2", kFourPoints}}, {"#1"});
  ASSERT_EQ(triangles.size(), 2U);
  EXPECT_EQ(triangles[0], kFirst);
  EXPECT_EQ(triangles[1].v1, kP2);
  EXPECT_EQ(triangles[1].v2, kP3);
  EXPECT_EQ(triangles[1].v3, kP4);
}

TEST(FaceDecoder, IgnoresTheIndexMapping) {
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(3,2,1),((1,2,3)),());"),
              ElementsAre(kFirst));
}

TEST(FaceDecoder, IgnoresStoredNormals) {
  EXPECT_THAT(
      trianglesOfText("COMPLEX_TRIANGULATED_FACE('',#2,3,((0.,0.,-1.)),$,(),((1,2,3)),());"),
      ElementsAre(kFirst));
}

TEST(FaceDecoder, IgnoresTheFans) {
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),(),((1,2,3)));"),
              IsEmpty());
}

TEST(FaceDecoder, IgnoresAGeometricLink) {
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE('',#2,3,(),#9,(),((1,2,3)),());"),
              ElementsAre(kFirst));
}

TEST(FaceDecoder, IgnoresTheNameAndTheNumberOfPoints) {
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE('#9,(',#2,-99.5,(),$,(),((1,2,3)),());"),
              ElementsAre(kFirst));
}

TEST(FaceDecoder, AllowsBlanksBetweenParameters) {
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE( '' , #2 , 3 ,\r\n ( ) , $ , ( ) ,"
                              " ( ( 1 , 2 , 3 ) ) , ( ) ) ;"),
              ElementsAre(kFirst));
}

TEST(FaceDecoder, AllowsMissingParametersAndSeparators) {
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE(#2 3 ()$()((1 2 3"), ElementsAre(kFirst));
}

TEST(FaceDecoder, SkipsNamesThatAreNotThere) {
  EXPECT_THAT(decodeNamed({{"#2", kThreePoints}}, {"#1", "#3"}), IsEmpty());
  EXPECT_THAT(decodeNamed({{"#1", face("((1,2,3))")}, {"#2", kThreePoints}}, {}), IsEmpty());
}

TEST(FaceDecoder, SkipsEntitiesOfOtherTypes) {
  EXPECT_THAT(trianglesOfText("TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)));"), IsEmpty());
  EXPECT_THAT(trianglesOfText(" COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,3)),());"),
              IsEmpty());
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE ('',#2,3,(),$,(),((1,2,3)),());"),
              IsEmpty());
  EXPECT_THAT(trianglesOfText("complex_triangulated_face('',#2,3,(),$,(),((1,2,3)),());"),
              IsEmpty());
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE"), IsEmpty());
  EXPECT_THAT(trianglesOfText(""), IsEmpty());
}

TEST(FaceDecoder, SkipsAFaceWithoutCoordinates) {
  EXPECT_THAT(decodeNamed({{"#1",
                            "COMPLEX_TRIANGULATED_FACE('',#9,3,(),$,(),"
                            "((1,2,3)),());"},
                           {"#2", kThreePoints},
                           {"#3", face("((1,2,3))")}},
                          {"#1", "#3"}),
              ElementsAre(kFirst));
}

TEST(FaceDecoder, SkipsAFaceWithAnEmptyCoordinatesReference) {
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE('',,3,(),$,(),((1,2,3)),());"), IsEmpty());
  EXPECT_THAT(trianglesOfText("COMPLEX_TRIANGULATED_FACE('',#,3,(),$,(),((1,2,3)),());"),
              IsEmpty());
}

TEST(FaceDecoder, DoesNotCheckTheTypeOfTheCoordinates) {
  const EntityTexts entities = {{"#1", face("((1,2,3))")},
                                {"#2", "ABCDEFGHIJKLMNOPQ'',3,((0,0,0),(1,0,0),(0,1,0)));"}};
  EXPECT_THAT(decodeNamed(entities, {"#1"}), ElementsAre(kFirst));
}

TEST(FaceDecoder, MakesRoomForTrianglesNotForNormals) {
  std::string normals = "(0.,0.,1.)";
  for (int i = 0; i < 1000; ++i) {
    normals += ",(0.,0.,1.)";
  }
  const std::vector<Triangle> triangles = trianglesOfText(
      "COMPLEX_TRIANGULATED_FACE('',#2,3,(" + normals + "),$,(),((1,2,3)),(" + normals + "));");
  EXPECT_THAT(triangles, ElementsAre(kFirst));
  EXPECT_LE(triangles.capacity(), 2U);
}

TEST(FaceDecoder, RaisesTheErrorOfTheIndicesBeforeThatOfThePoints) {
  const std::string tooLarge = "COORDINATES_LIST('',1,((1E400,0.,0.)));";
  EXPECT_THAT(([&] {
                decodeAll({{"#1", face("((1,2))")}, {"#2", tooLarge}});
              }),
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
  EXPECT_THAT(([&] {
                decodeAll({{"#1", face("((1,2))")}, {"#2", "A"}});
              }),
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
  EXPECT_THAT(([&] {
                decodeAll({{"#1", face("((1,2,3))")}, {"#2", tooLarge}});
              }),
              ThrowsMessage<std::out_of_range>("stod argument out of range"));
}

TEST(FaceDecoder, RaisesTheErrorOfTheFirstFaceThatHasOne) {
  const std::string tooLarge = "COMPLEX_TRIANGULATED_FACE('',#2,3,(),$,(),((1,2,1E400)),());";
  const std::string noCount = "COMPLEX_TRIANGULATED_FACE('',#2,,(),$,(),((1,2,3)),());";
  EXPECT_THAT(([&] {
                decodeAll({{"#1", tooLarge}, {"#2", kThreePoints}, {"#3", noCount}});
              }),
              ThrowsMessage<std::out_of_range>("stod argument out of range"));
  EXPECT_THAT(([&] {
                decodeAll({{"#1", noCount}, {"#2", kThreePoints}, {"#3", tooLarge}});
              }),
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
}

TEST(FaceDecoder, SharesCoordinatesBetweenFaces) {
  const EntityTexts entities = {
      {"#1", face("((1,2,3))")}, {"#2", kThreePoints}, {"#3", face("((1,3,2))")}};
  EXPECT_THAT(decodeNamed(entities, {"#1", "#3"}),
              ElementsAre(kFirst, Triangle{{0, 0, -1}, kP1, kP3, kP2}));
}

TEST(FaceDecoder, GivesEachOfManyFacesThePointsOfItsList) {
  constexpr int kLists = 1000;
  EntityTexts entities;
  std::map<std::string, Point3> firstPoints;  // of faces, in the order in which they are decoded
  for (int i = 1; i <= kLists; ++i) {
    const std::string list = "#" + std::to_string(i);
    entities[list] =
        "COORDINATES_LIST('',3,((" + std::to_string(i) + ".,0.,0.),(0.,0.,0.),(0.,1.,0.)));";
    // The lists of some faces are those of others, too, near by or far away.
    const bool isShared = i % 3 == 0;
    for (const int number : {10'000 + i, isShared ? 10'000 * (2 + i % 2) - i : 10'000 + i}) {
      const std::string name = "#" + std::to_string(number);
      entities[name] = "COMPLEX_TRIANGULATED_FACE('',";
      entities[name] += list + ",3,(),$,(),((1,2,3)),());";
      firstPoints[name] = {static_cast<double>(i), 0, 0};
    }
  }
  const std::vector<Triangle> triangles = decodeAll(entities);
  ASSERT_EQ(triangles.size(), firstPoints.size());
  std::size_t place = 0;
  for (const auto& [name, point] : firstPoints) {
    EXPECT_EQ(triangles[place++].v1, point) << name;
  }
}

TEST(FaceDecoder, DecodesOnlyTheNamedFaces) {
  const EntityTexts entities = {
      {"#1", face("((1,2,3))")}, {"#2", kThreePoints}, {"#3", face("((1,3,2))")}};
  EXPECT_THAT(decodeNamed(entities, {"#3"}), ElementsAre(Triangle{{0, 0, -1}, kP1, kP3, kP2}));
}

TEST(FaceDecoder, DecodesAllFacesInTextOrderOfTheirNames) {
  const std::vector<Triangle> triangles = decodeAll({{"#2", kThreePoints},
                                                     {"#3", face("((3,1,2))")},
                                                     {"#20", face("((2,3,1))")},
                                                     {"#100", face("((1,2,3))")},
                                                     {"#4", "TRIANGULATED_FACE("}});
  ASSERT_EQ(triangles.size(), 3U);
  EXPECT_EQ(triangles[0].v1, kP1);
  EXPECT_EQ(triangles[1].v1, kP2);
  EXPECT_EQ(triangles[2].v1, kP3);
}

TEST(FaceDecoder, DecodesAllOfNoFacesToNothing) {
  EXPECT_THAT(decodeAll({}), IsEmpty());
  EXPECT_THAT(decodeAll({{"#2", kThreePoints}}), IsEmpty());
}

TEST(FaceDecoder, RejectsANumberOfPointsThatIsNoNumber) {
  EXPECT_THAT([] { trianglesOfText("COMPLEX_TRIANGULATED_FACE('',#2,$,(),$,(),((1,2,3)),());"); },
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
}

TEST(FaceDecoder, RejectsADollarForTheName) {
  EXPECT_THAT([] { trianglesOfText("COMPLEX_TRIANGULATED_FACE($,#2,3,(),$,(),((1,2,3)),());"); },
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
}

TEST(FaceDecoder, RejectsAStripOfFewerThanThreeEvenWithoutCoordinates) {
  EXPECT_THAT([] { trianglesOf("((1,2))"); },
              ThrowsMessage<std::invalid_argument>("invalid stod argument"));
  EXPECT_THAT(
      [] {
        decodeNamed({{"#1", face("((1,2))")}}, {"#1"});
      },
      ThrowsMessage<std::invalid_argument>("invalid stod argument"));
}

TEST(FaceDecoder, RejectsAnIndexOutOfTheRangeOfDoubles) {
  EXPECT_THAT([] { trianglesOf("((1,2,3),(1,2,1E400))"); },
              ThrowsMessage<std::out_of_range>("stod argument out of range"));
}

/// Decodes two faces, the second of which references this text.
void decodeWithCoordinates(const std::string& text) {
  (void)decodeAll({{"#1", face("((1,2,3))")},
                   {"#2", kThreePoints},
                   {"#3", "COMPLEX_TRIANGULATED_FACE('',#4,3,(),$,(),(),());"},
                   {"#4", text}});
}

TEST(FaceDecoder, RejectsACoordinatesEntityShorterThanItsKeyword) {
  EXPECT_THAT([] { decodeWithCoordinates("COORDINATES_LIST"); },
              ThrowsMessage<std::out_of_range>("invalid string position"));
  EXPECT_THAT([] { decodeWithCoordinates(""); },
              ThrowsMessage<std::out_of_range>("invalid string position"));
}

TEST(FaceDecoder, RejectsMalformedCoordinates) {
  for (const std::string text :
       {"COORDINATES_LIST(", "COORDINATES_LIST('',$,((0,0,0)));",
        "COORDINATES_LIST($,1,((0,0,0)));", "COORDINATES_LIST('',1,((0,0)));",
        "COORDINATES_LIST('',1,((0,0,.T.)));"}) {
    EXPECT_THAT([&text] { decodeWithCoordinates(text); },
                ThrowsMessage<std::invalid_argument>("invalid stod argument"))
        << text;
  }
  EXPECT_THAT([] { decodeWithCoordinates("COORDINATES_LIST('',1,((0,0,1E-400)));"); },
              ThrowsMessage<std::out_of_range>("stod argument out of range"));
}

TEST(FaceDecoder, ReadsCoordinatesThatAreShorterThanTheirNumber) {
  EXPECT_THAT(
      decodeNamed({{"#1", face("((1,2,3))")}, {"#2", "COORDINATES_LIST('',3,((0.,0.,0.)));"}},
                  {"#1"}),
      IsEmpty());
  EXPECT_THAT(decodeNamed({{"#1", face("((1,2,3))")},
                           {"#2", "COORDINATES_LIST('',1,((0,0,0),(1,0,0),(0,1,0)));"}},
                          {"#1"}),
              ElementsAre(kFirst));
}

TEST(FaceDecoder, PrintsNothing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  trianglesOf("((1,2,3),(0,1,2))");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

/// One of the usual texts for a parameter most of the time, anything at others.
std::string parameter(std::mt19937& random, const std::vector<std::string>& usual) {
  const std::vector<std::string> unusual = {
      "",      " ", ",",   "$",  "'",    "('", "((",      "))",   "((1,2))",
      "1E400", "#", ".T.", "\r", "\xFF", "*",  "-1E-320", "#4#2", "(1,(2),3)"};
  return pick(random, 12) == 0 ? unusual[pick(random, unusual.size())]
                               : usual[pick(random, usual.size())];
}

std::string randomFace(std::mt19937& random) {
  std::string text = "COMPLEX_TRIANGULATED_FACE(" + parameter(random, {"''", "'a,b'", "' ('"}) +
                     "," + parameter(random, {"#2", "#4", "#2 ", "#9"}) + "," +
                     parameter(random, {"3", "0", "4.", "1.E"}) + "," +
                     parameter(random, {"()", "((0.,0.,1.))", "(('))'))"}) + "," +
                     parameter(random, {"$", "#1", "#"}) + "," +
                     parameter(random, {"()", "(1,2,3)"}) + ",(";
  for (std::size_t i = pick(random, 5); i > 0; --i) {
    text += parameter(random, {"(1,2,3)", "(1,3,2),", "(2,2,2)", "(1,2,5),", "(1, 2,3 ),",
                               "(1,2,3,4)", "(3.9,1,2)", "(-1,1,2)"});
  }
  return text + "),());";
}

std::string randomCoordinates(std::mt19937& random) {
  std::string text = parameter(random, {"COORDINATES_LIST(", "COORDINATES_LIST("}) +
                     parameter(random, {"''", "'('"}) + "," + parameter(random, {"3", "4"}) + ",(";
  for (std::size_t i = pick(random, 6); i > 0; --i) {
    text += parameter(random, {"(0.,0.,0.),", "(1.,0.,0.),", "(0.,1.E-7,0.)", "(.1,-.2,3.E2) ,",
                               "(1E300,0,0),", "(1E-6,2E-6,3E-6),", "(0,0,-1E300)"});
  }
  return text + "));";
}

TEST(FaceDecoderAgainstReference, AgreesOnRandomTables) {
  std::mt19937 random(8);
  for (int i = 0; i < test::rounds(50'000); ++i) {
    const EntityTexts entities = {{"#1", randomFace(random)},
                                  {"#10", randomFace(random)},
                                  {"#3", randomFace(random)},
                                  {"#2", randomCoordinates(random)},
                                  {"#4", randomCoordinates(random)}};
    const InstanceNames faceIds = {"#1", "#3", "#4", "#5"};
    const Outcome expected = outcomeOf([&] { return test::referenceDecode(entities, faceIds); });
    ASSERT_EQ(outcomeOf([&] { return decodeNamed(entities, faceIds); }), expected)
        << testing::PrintToString(entities);
    const Outcome expectedAll = outcomeOf([&] { return test::referenceDecodeAll(entities); });
    ASSERT_EQ(outcomeOf([&] { return decodeAll(entities); }), expectedAll)
        << testing::PrintToString(entities);
  }
}

TEST(FaceDecoderAgainstReference, AgreesOnTextsInWhichNothingIsInPlace) {
  const std::vector<std::string> pieces = {"(", ")",  "((", "))", ",", "#2",      "#",
                                           "1", "2.", "'",  "$",  " ", "(1,2,3)", "E"};
  std::mt19937 random(9);
  for (int i = 0; i < test::rounds(50'000); ++i) {
    const EntityTexts entities = {
        {"#1", "COMPLEX_TRIANGULATED_FACE(" + randomText(random, pieces, 20)},
        {"#2", "COORDINATES_LIST(" + randomText(random, pieces, 20)}};
    const Outcome expected = outcomeOf([&] { return test::referenceDecodeAll(entities); });
    ASSERT_EQ(outcomeOf([&] { return decodeAll(entities); }), expected)
        << testing::PrintToString(entities);
  }
}

}  // namespace
}  // namespace plenvorith
