// SPDX-License-Identifier: MIT
// The message of the exception type.
#include "features/TSDK3Exception.h"

#include <gtest/gtest.h>

namespace {

TEST(SDK3Exception, FormatsIntoAtMost511Characters)
{
  EXPECT_STREQ(TSDK3Exception("image %d of %s", 7, "run").what(), "image 7 of run");
  EXPECT_EQ(std::string(TSDK3Exception("%s", std::string(600, 'a').c_str()).what()), std::string(511, 'a'));
  EXPECT_EQ(std::string(TSDK3Exception(std::string(600, 'a')).what()).size(), 600u);
}

} // namespace
