// SPDX-License-Identifier: MIT
// The file that describes a spooled run: what it keeps, and how it is replaced.
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
#include <memory>
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
  int Save() const { return metadata_.SaveFile(directory_.Directory().c_str()); }

  /// What the file says, read anew.
  std::unique_ptr<TAcquisitionMetadata> Read() const
  {
    auto read = std::make_unique<TAcquisitionMetadata>();
    EXPECT_EQ(read->LoadFile(directory_.Directory().c_str()), 0);
    return read;
  }

  TScratchDirectory directory_;
  TAcquisitionMetadata metadata_;
};

} // namespace

TEST_F(AcquisitionMetadata, IsWrittenThroughNoLink)
{
  const TScratchDirectory other;
  const std::string victim = other.File("mine", "notes");
  fs::create_symlink(victim, File() + ".tmp");
  EXPECT_EQ(metadata_.SetImagesPerFile(32), 0);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(TextOf(victim), "mine");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(File())));
}

TEST_F(AcquisitionMetadata, IsAProfileFileThatReadsBack)
{
  const double reals[] = {0, 0.1, 1e22, std::numeric_limits<double>::max(),
                          std::numeric_limits<double>::denorm_min()};
  EXPECT_EQ(metadata_.SetImagesPerFile(32), 0);
  EXPECT_EQ(metadata_.SetImageSizeBytes(UINT_MAX), 0);
  EXPECT_EQ(metadata_.SetBoolean("run", "Completed", true), 0);
  EXPECT_EQ(metadata_.SetInteger("run", "FirstFrameTick", INT64_MIN), 0);
  for (std::size_t i = 0; i < std::size(reals); ++i)
    EXPECT_EQ(metadata_.SetReal("real", std::to_string(i).c_str(), reals[i]), 0);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Entries(), 1);
  EXPECT_THAT(TextOf(File()), HasSubstr("[multiimage]\nImagesPerFile = 32\n"));
  EXPECT_THAT(TextOf(File()), HasSubstr("1 = 0.10000000000000001\n"));

  const auto read = Read();
  unsigned int number = 0;
  EXPECT_EQ(read->GetImagesPerFile(number), 0);
  EXPECT_EQ(number, 32u);
  EXPECT_EQ(read->GetImageSizeBytes(number), 0);
  EXPECT_EQ(number, UINT_MAX);
  bool flag = false;
  EXPECT_EQ(read->GetBoolean("run", "Completed", flag), 0);
  EXPECT_TRUE(flag);
  std::int64_t tick = 0;
  EXPECT_EQ(read->GetInteger("run", "FirstFrameTick", tick), 0);
  EXPECT_EQ(tick, INT64_MIN);
  for (std::size_t i = 0; i < std::size(reals); ++i) {
    double real = -1;
    EXPECT_EQ(read->GetReal("real", std::to_string(i).c_str(), real), 0);
    EXPECT_EQ(real, reals[i]);
  }
}

TEST_F(AcquisitionMetadata, MakesOneLineOfAnyText)
{
  const std::string text = "  cannot write\r\n[run]\nState = complete\x01 \xc3\xa9\n";
  const std::string longText(3000, 'x');
  EXPECT_EQ(metadata_.SetText("run", "Failure", text), 0);
  EXPECT_EQ(metadata_.SetText("run", "Empty", " \n"), 0);
  for (const int size : {254, 255, 256, 257, 3000})
    EXPECT_EQ(metadata_.SetText("run", std::to_string(size).c_str(), longText.substr(0, size)), 0);
  ASSERT_EQ(Save(), 0);
  const auto read = Read();
  std::string value;
  EXPECT_EQ(read->GetText("run", "Failure", value), 0);
  EXPECT_EQ(value, "cannot write  [run] State = complete  \xc3\xa9");
  EXPECT_EQ(read->GetText("run", "State", value), 1);
  EXPECT_EQ(read->GetText("run", "Empty", value), 0);
  EXPECT_EQ(value, "");
  for (const int size : {254, 255, 256, 257, 3000}) {
    EXPECT_EQ(read->GetText("run", std::to_string(size).c_str(), value), 0);
    EXPECT_EQ(value, longText.substr(0, size));
  }
}

TEST_F(AcquisitionMetadata, RefusesValuesOfTheWrongKind)
{
  directory_.File("[multiimage]\nImagesPerFile = -1\n[data]\nImageSize = 4294967296\n"
                  "[x]\ntext = 1.5x\nwide = 9223372036854775808\nhuge = 1e999\nempty =\nflag = yes\n",
                  kFile);
  const auto read = Read();
  unsigned int count = 7;
  std::int64_t integer = 7;
  double real = 7;
  bool flag = true;
  EXPECT_EQ(read->GetImagesPerFile(count), 1);
  EXPECT_EQ(read->GetImageSizeBytes(count), 1);
  for (const char* key : {"text", "wide", "huge", "empty", "missing"})
    EXPECT_EQ(read->GetInteger("x", key, integer), 1) << key;
  for (const char* key : {"text", "huge", "empty", "missing"}) EXPECT_EQ(read->GetReal("x", key, real), 1) << key;
  EXPECT_EQ(read->GetBoolean("x", "flag", flag), 1);
  EXPECT_TRUE(count == 7u && integer == 7 && real == 7 && flag);
  EXPECT_EQ(metadata_.SetReal("x", "infinite", INFINITY), 1);
  EXPECT_EQ(metadata_.SetText(nullptr, "k", "v"), 1);
}

TEST_F(AcquisitionMetadata, KeepsTheOldFileWhenTheNewOneCannotBeWritten)
{
  fs::create_directory(File());
  EXPECT_EQ(Save(), 1) << "nothing has been set";
  EXPECT_EQ(metadata_.SetImagesPerFile(1), 0);
  EXPECT_EQ(Save(), 1);
  EXPECT_EQ(metadata_.SaveFile((directory_.Directory() + "/none").c_str()), 1);
  EXPECT_TRUE(fs::is_directory(File()));
  EXPECT_EQ(Entries(), 1) << "no temporary file is left";
}

TEST_F(AcquisitionMetadata, IsNeverSeenHalfWritten)
{
  for (int i = 0; i < 500; ++i) metadata_.SetInteger("many", ("key" + std::to_string(i)).c_str(), i);
  ASSERT_EQ(Save(), 0);
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (int round = 0; round < 40; ++round) EXPECT_EQ(Save(), 0);
    done = true;
  });
  do {
    std::int64_t last = -1;
    EXPECT_EQ(Read()->GetInteger("many", "key499", last), 0);
  } while (!done);
  writer.join();
}
