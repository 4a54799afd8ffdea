#include "batch/records/file_record.h"

#include <gmock/gmock.h>

namespace plenvorith {
namespace {

TEST(StatusName, TellsThemApart) {
  EXPECT_STREQ(statusName(FileStatus::Converted), "converted");
  EXPECT_STREQ(statusName(FileStatus::Delivering), "delivering");
  EXPECT_STREQ(statusName(FileStatus::Failed), "failed");
}

}  // namespace
}  // namespace plenvorith
