// SPDX-License-Identifier: MIT
// The file that describes a spooled run: what it keeps, and what is said when it cannot be read or written.
#include "spool/TAcquisitionMetadata.h"
#include "tests/support/TScratchDirectory.h"

#include <atomic>
#include <climits>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <thread>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr const char* kFile = "acquisitionmetadata.ini";

class AcquisitionMetadata : public testing::Test
{
protected:
  std::string File() const { return directory_.Directory() + "/" + kFile; }
  std::ptrdiff_t Entries() const { return std::distance(fs::directory_iterator(directory_.Directory()), {}); }

  TScratchDirectory directory_;
  TAcquisitionMetadata metadata_;
};

} // namespace

TEST_F(AcquisitionMetadata, IsWrittenThroughNoLink)
{
  const TScratchDirectory other;
  const std::string victim = other.Directory() + "/notes";
  std::ofstream(victim) << "mine";
  fs::create_symlink(victim, File() + ".tmp");
  EXPECT_EQ(metadata_.SetImagesPerFile(32), 0);
  EXPECT_EQ(metadata_.SaveFile(directory_.Directory().c_str()), 0);
  EXPECT_EQ(TextOf(victim), "mine");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(File())));
}

TEST_F(AcquisitionMetadata, IsAProfileFileThatReadsBack)
{
  EXPECT_EQ(metadata_.SetImagesPerFile(32), 0);
  EXPECT_EQ(metadata_.SetImageSizeBytes(UINT_MAX), 0);
  EXPECT_EQ(metadata_.SetText("run", "State", "complete"), 0);
  EXPECT_EQ(metadata_.SetBoolean("run", "Completed", true), 0);
  EXPECT_EQ(metadata_.SetReal("acquisition", "ExposureTime", 0.01), 0);
  EXPECT_EQ(metadata_.SetInteger("run", "FirstFrameTick", INT64_MIN), 0);
  EXPECT_EQ(metadata_.SaveFile((directory_.Directory() + "/").c_str()), 0);
  EXPECT_EQ(metadata_.SetText("run", "State", "aborted"), 0);
  EXPECT_EQ(metadata_.SaveFile(directory_.Directory().c_str()), 0);
  EXPECT_EQ(Entries(), 1);
  EXPECT_THAT(TextOf(File()), HasSubstr("[multiimage]\nImagesPerFile = 32\n"));

  TAcquisitionMetadata read;
  unsigned int number = 0;
  EXPECT_EQ(read.LoadFile(directory_.Directory().c_str()), 0);
  EXPECT_EQ(read.GetImagesPerFile(number), 0);
  EXPECT_EQ(number, 32u);
  EXPECT_EQ(read.GetImageSizeBytes(number), 0);
  EXPECT_EQ(number, UINT_MAX);
  std::string text;
  EXPECT_EQ(read.GetText("run", "State", text), 0);
  EXPECT_EQ(text, "aborted");
  bool flag = false;
  EXPECT_EQ(read.GetBoolean("run", "Completed", flag), 0);
  EXPECT_TRUE(flag);
  double real = 0;
  EXPECT_EQ(read.GetReal("acquisition", "ExposureTime", real), 0);
  EXPECT_EQ(real, 0.01);
  std::int64_t tick = 0;
  EXPECT_EQ(read.GetInteger("run", "FirstFrameTick", tick), 0);
  EXPECT_EQ(tick, INT64_MIN);
}

TEST_F(AcquisitionMetadata, KeepsRealNumbersToTheLastBit)
{
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> mantissa(-1, 1);
  std::uniform_int_distribution<int> exponent(-1000, 1000);
  std::vector<double> numbers{0, 0.1, 1e22, std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::denorm_min()};
  while (numbers.size() < 300) numbers.push_back(std::ldexp(mantissa(random), exponent(random)));
  for (std::size_t i = 0; i < numbers.size(); ++i)
    EXPECT_EQ(metadata_.SetReal("real", ("n" + std::to_string(i)).c_str(), numbers[i]), 0);
  ASSERT_EQ(metadata_.SaveFile(directory_.Directory().c_str()), 0);
  EXPECT_THAT(TextOf(File()), HasSubstr("n1 = 0.10000000000000001\n"));
  TAcquisitionMetadata read;
  ASSERT_EQ(read.LoadFile(directory_.Directory().c_str()), 0);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    double number = -1;
    EXPECT_EQ(read.GetReal("real", ("n" + std::to_string(i)).c_str(), number), 0);
    EXPECT_EQ(number, numbers[i]);
  }
}

TEST_F(AcquisitionMetadata, MakesOneLineOfAnyText)
{
  const std::string text = "  cannot write\r\n[run]\nState = complete\x01 \xc3\xa9\n";
  const std::string expected = "cannot write  [run] State = complete  \xc3\xa9";
  const std::string longText(3000, 'x');
  EXPECT_EQ(metadata_.SetText("run", "Failure", text), 0);
  EXPECT_EQ(metadata_.SetText("run", "Empty", " \n"), 0);
  for (const int size : {254, 255, 256, 257, 3000})
    EXPECT_EQ(metadata_.SetText("run", ("n" + std::to_string(size)).c_str(), longText.substr(0, size)), 0);
  ASSERT_EQ(metadata_.SaveFile(directory_.Directory().c_str()), 0);
  TAcquisitionMetadata read;
  ASSERT_EQ(read.LoadFile(directory_.Directory().c_str()), 0);
  std::string value;
  EXPECT_EQ(read.GetText("run", "Failure", value), 0);
  EXPECT_EQ(value, expected);
  EXPECT_EQ(read.GetText("run", "State", value), 1);
  EXPECT_EQ(read.GetText("run", "Empty", value), 0);
  EXPECT_EQ(value, "");
  for (const int size : {254, 255, 256, 257, 3000}) {
    EXPECT_EQ(read.GetText("run", ("n" + std::to_string(size)).c_str(), value), 0);
    EXPECT_EQ(value, longText.substr(0, size));
  }
}

TEST_F(AcquisitionMetadata, RefusesValuesOfTheWrongKind)
{
  directory_.File("[multiimage]\nImagesPerFile = -1\n[data]\nImageSize = 4294967296\n"
                  "[x]\ntext = 1.5x\nwide = 9223372036854775808\nhuge = 1e999\nempty =\nflag = yes\n",
                  kFile);
  ASSERT_EQ(metadata_.LoadFile(directory_.Directory().c_str()), 0);
  unsigned int count = 7;
  std::int64_t integer = 7;
  double real = 7;
  bool flag = true;
  EXPECT_EQ(metadata_.GetImagesPerFile(count), 1);
  EXPECT_EQ(metadata_.GetImageSizeBytes(count), 1);
  for (const char* key : {"text", "wide", "huge", "empty", "missing"})
    EXPECT_EQ(metadata_.GetInteger("x", key, integer), 1) << key;
  for (const char* key : {"text", "huge", "empty", "missing"})
    EXPECT_EQ(metadata_.GetReal("x", key, real), 1) << key;
  EXPECT_EQ(metadata_.GetBoolean("x", "flag", flag), 1);
  EXPECT_EQ(count, 7u);
  EXPECT_EQ(integer, 7);
  EXPECT_EQ(real, 7);
  EXPECT_TRUE(flag);
  EXPECT_EQ(metadata_.SetReal("x", "nan", std::nan("")), 1);
  EXPECT_EQ(metadata_.SetReal("x", "infinite", INFINITY), 1);
  EXPECT_EQ(metadata_.SetText(nullptr, "k", "v"), 1);
  EXPECT_EQ(metadata_.SetInteger("s", nullptr, 1), 1);
  EXPECT_EQ(metadata_.GetReal("x", "nan", real), 1);
}

TEST_F(AcquisitionMetadata, KeepsTheOldFileWhenTheNewOneCannotBeWritten)
{
  fs::create_directory(File());
  EXPECT_EQ(metadata_.SaveFile(directory_.Directory().c_str()), 1) << "nothing has been set";
  EXPECT_EQ(metadata_.SetImagesPerFile(1), 0);
  EXPECT_EQ(metadata_.SaveFile(directory_.Directory().c_str()), 1);
  EXPECT_EQ(metadata_.SaveFile((directory_.Directory() + "/none").c_str()), 1);
  EXPECT_TRUE(fs::is_directory(File()));
  EXPECT_EQ(Entries(), 1) << "no temporary file is left";
}

TEST_F(AcquisitionMetadata, IsNeverSeenHalfWritten)
{
  const std::string directory = directory_.Directory();
  for (int i = 0; i < 500; ++i) metadata_.SetInteger("many", ("key" + std::to_string(i)).c_str(), i);
  ASSERT_EQ(metadata_.SaveFile(directory.c_str()), 0);
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (int round = 0; round < 40; ++round) {
      metadata_.SetInteger("many", "key499", round);
      EXPECT_EQ(metadata_.SaveFile(directory.c_str()), 0);
    }
    done = true;
  });
  do {
    TAcquisitionMetadata read;
    std::int64_t last = -1;
    EXPECT_EQ(read.LoadFile(directory.c_str()), 0);
    EXPECT_EQ(read.GetInteger("many", "key499", last), 0);
  } while (!done);
  writer.join();
}
