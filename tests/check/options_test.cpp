#include "check/options.h"

#include <gtest/gtest.h>

namespace plenvorith {
namespace {

TEST(CheckOptions, NameAFile) {
  const auto options = checkOptionsFrom({"part.step"});
  ASSERT_TRUE(options);
  EXPECT_EQ(options->input, "part.step");
  EXPECT_EQ(options->mesh, "");
  EXPECT_EQ(options->deflection, 0.1);
  EXPECT_FALSE(options->all || options->withExact || options->asText);
}

TEST(CheckOptions, NameAFileItsMeshAndTheDeflection) {
  const auto options =
      checkOptionsFrom({"--all", "part.step", "--exact", "out.stl", "0.25", "--text"});
  ASSERT_TRUE(options);
  EXPECT_EQ(options->input, "part.step");
  EXPECT_EQ(options->mesh, "out.stl");
  EXPECT_EQ(options->deflection, 0.25);
  EXPECT_TRUE(options->all && options->withExact && options->asText);
  EXPECT_EQ(checkOptionsFrom({"part.step", "a", "1e-3"})->deflection, 0.001);
}

TEST(CheckOptions, TakeADashForNoMesh) {
  const auto options = checkOptionsFrom({"part.step", "-", "0.5"});
  ASSERT_TRUE(options);
  EXPECT_EQ(options->mesh, "");
  EXPECT_EQ(options->deflection, 0.5);
}

TEST(CheckOptions, TellAMeshByItsName) {
  for (const char* name : {"out.stl", "OUT.STL", "a.b.Stl", ".stl"}) {
    const auto options = checkOptionsFrom({name});
    ASSERT_TRUE(options) << name;
    EXPECT_EQ(options->input, "");
    EXPECT_EQ(options->mesh, name);
  }
  EXPECT_EQ(checkOptionsFrom({"stl"})->input, "stl");
  EXPECT_EQ(checkOptionsFrom({"a.stlx"})->input, "a.stlx");
}

TEST(CheckOptions, EndWithTwoDashes) {
  EXPECT_EQ(checkOptionsFrom({"--all", "--", "--exact"})->input, "--exact");
}

TEST(CheckOptions, RejectWhatIsWrong) {
  EXPECT_FALSE(checkOptionsFrom({}));
  EXPECT_FALSE(checkOptionsFrom({"--all"}));
  EXPECT_FALSE(checkOptionsFrom({"--other", "part.step"}));
  EXPECT_FALSE(checkOptionsFrom({""}));
  EXPECT_FALSE(checkOptionsFrom({"part.step", ""}));
  EXPECT_FALSE(checkOptionsFrom({"part.step", "out.stl", "0.1", "more"}));
  EXPECT_FALSE(checkOptionsFrom({"out.stl", "other.stl"}));
  EXPECT_FALSE(checkOptionsFrom({"--all", "out.stl"}));
  EXPECT_FALSE(checkOptionsFrom({"--exact", "out.stl"}));
}

TEST(CheckOptions, RejectDeflectionsThatAreNone) {
  for (const char* text : {"0", "-1", "nan", "abc", "", "0.1x", " 0.1", "1e999"}) {
    EXPECT_FALSE(checkOptionsFrom({"part.step", "out.stl", text})) << text;
  }
}

}  // namespace
}  // namespace plenvorith
