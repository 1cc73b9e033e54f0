// SPDX-License-Identifier: MIT
// INI documents: codes, conversions, and what a file keeps.
#include "ini/TQuorinIniParser.h"

#include "tests/support/TScratchDirectory.h"

#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <map>

using QuorinUtility::TQuorinIniParser;
using namespace std::string_literals;

namespace {

using Code = TQuorinIniParser;

class QuorinIniParser : public testing::Test
{
protected:
  /// Loads the text into the document.
  void Load(const std::string& text)
  {
    ini_.ResetIni();
    ASSERT_EQ(ini_.LoadIni(directory_.File(text).c_str()), Code::INI_OK);
  }

  std::string String(const char* key) const
  {
    char text[512] = "unread";
    const unsigned int code = ini_.ReadString("s", key, text, sizeof text);
    return code == Code::INI_OK ? text : "code " + std::to_string(code);
  }

  TScratchDirectory directory_;
  TQuorinIniParser ini_;
};

} // namespace

TEST_F(QuorinIniParser, SaysWhatIsWrongInAFixedOrder)
{
  char text[8] = "kept";
  long number = 3;
  const std::string file = directory_.File("[s]\nk=v\n");
  EXPECT_EQ(ini_.SaveIni(nullptr), Code::INI_NOT_LOADED);
  EXPECT_EQ(ini_.ResetIni(), Code::INI_NOT_LOADED);
  EXPECT_EQ(ini_.doesKeyExist("s", "k"), Code::INI_NOT_LOADED);
  EXPECT_EQ(ini_.ReadString("s", "k", nullptr, 8), Code::INI_FAILED);
  EXPECT_EQ(ini_.ReadString("s", "k", text, sizeof text), Code::INI_NOT_LOADED);
  EXPECT_EQ(ini_.ReadLong("s", "k", number), Code::INI_NOT_LOADED);
  EXPECT_EQ(ini_.LoadIni(nullptr), Code::INI_NULL_FILE_NAME);
  EXPECT_EQ(ini_.LoadIni(file.c_str()), Code::INI_OK);
  EXPECT_EQ(ini_.LoadIni(nullptr), Code::INI_ALREADY_LOADED);
  EXPECT_EQ(ini_.SaveIni(nullptr), Code::INI_NULL_FILE_NAME);

  EXPECT_EQ(ini_.WriteString(nullptr, nullptr, nullptr), Code::INI_NULL_SECTION);
  EXPECT_EQ(ini_.WriteString("s", nullptr, nullptr), Code::INI_NULL_KEY);
  EXPECT_EQ(ini_.WriteString("s", "k", nullptr), Code::INI_NULL_VALUE);
  EXPECT_EQ(ini_.WriteDouble(nullptr, "k", 1e300), Code::INI_NULL_SECTION);
  EXPECT_EQ(ini_.ReadString(nullptr, nullptr, nullptr, 0), Code::INI_NULL_SECTION);
  EXPECT_EQ(ini_.ReadString("s", nullptr, nullptr, 0), Code::INI_NULL_KEY);
  EXPECT_EQ(ini_.ReadLong("absent", "k", number), Code::INI_NO_SUCH_KEY);
  EXPECT_EQ(ini_.ReadString("s", "absent", text, sizeof text), Code::INI_NO_SUCH_KEY);
  EXPECT_EQ(ini_.doesKeyExist(nullptr, "k"), Code::INI_NO_SUCH_KEY);
  EXPECT_EQ(ini_.doesKeyExist("s", nullptr), Code::INI_NO_SUCH_KEY);
  EXPECT_STREQ(text, "kept");
  EXPECT_EQ(number, 3);
  EXPECT_EQ(ini_.ResetIni(), Code::INI_OK);
  EXPECT_EQ(ini_.ResetIni(), Code::INI_NOT_LOADED);
}

TEST_F(QuorinIniParser, DistinguishesKeysByCaseButNotSections)
{
  Load("[s]\nFoo=1\n");
  EXPECT_EQ(ini_.doesKeyExist("S", "Foo"), Code::INI_OK);
  EXPECT_EQ(ini_.doesKeyExist("s", "foo"), Code::INI_NO_SUCH_KEY);
  EXPECT_EQ(String("foo"), "code 4");
  // The document itself has one key of that name: it is written, and found as it was written first.
  EXPECT_EQ(ini_.WriteString("S", "FOO", "2"), Code::INI_OK);
  EXPECT_EQ(String("Foo"), "2");
  EXPECT_EQ(String("FOO"), "code 4");
}

TEST_F(QuorinIniParser, WritesNumbersInOneForm)
{
  EXPECT_EQ(ini_.WriteLong("s", "min", LONG_MIN), Code::INI_OK);
  EXPECT_EQ(ini_.WriteDouble("s", "half", 0.5), Code::INI_OK);
  EXPECT_EQ(ini_.WriteDouble("s", "small", -1e-9), Code::INI_OK);
  EXPECT_EQ(ini_.WriteDouble("s", "nan", std::nan("")), Code::INI_OK);
  EXPECT_EQ(ini_.WriteBoolean("s", "yes", true), Code::INI_OK);
  EXPECT_EQ(ini_.WriteBoolean("s", "no", false), Code::INI_OK);
  EXPECT_EQ(String("min"), std::to_string(LONG_MIN));
  EXPECT_EQ(String("half"), "0.500000");
  EXPECT_EQ(String("small"), "-0.000000");
  EXPECT_EQ(String("nan"), "nan");
  EXPECT_EQ(String("yes"), "true");
  EXPECT_EQ(String("no"), "false");
  // 63 characters are the most.
  EXPECT_EQ(ini_.WriteDouble("s", "wide", 1e55), Code::INI_OK);
  EXPECT_EQ(String("wide").size(), 63U);
  EXPECT_EQ(ini_.WriteDouble("s", "wide", 1e56), Code::INI_FAILED);
  EXPECT_EQ(ini_.WriteDouble("s", "never", std::numeric_limits<double>::max()), Code::INI_FAILED);
  EXPECT_EQ(String("wide").size(), 63U);
  EXPECT_EQ(String("never"), "code 4");
}

TEST_F(QuorinIniParser, ReadsStringsIntoWhatRoomThereIs)
{
  Load("[s]\nk = two words ; no comment\nempty=\n");
  char text[] = "########";
  EXPECT_EQ(ini_.ReadString("s", "k", text, 4), Code::INI_OK);
  EXPECT_EQ(std::string(text, 8), "two\0####"s);
  EXPECT_EQ(ini_.ReadString("s", "k", text + 4, 0), Code::INI_OK);
  EXPECT_EQ(std::string(text, 8), "two\0####"s);
  EXPECT_EQ(String("k"), "two words ; no comment");
  EXPECT_EQ(String("empty"), "");
}

TEST_F(QuorinIniParser, TakesZeroForTextsThatAreNoNumbers)
{
  const std::string wide = "0." + std::string(61, '1');
  Load("[s]\na=42\nb=0x1F\nc=42x\nd=\ne=1.5\nf=1.5abc\ng= -2e3\nh=0x\ni=inf\nwide=" + wide + "\nwider=" + wide +
       "1\n");
  const std::map<const char*, std::pair<long, double>> cases = {
      {"a", {42, 42.0}}, {"b", {31, 31.0}}, {"c", {0, 0.0}},     {"d", {0, 0.0}},     {"e", {0, 1.5}},
      {"f", {0, 0.0}},   {"h", {0, 0.0}},   {"g", {0, -2000.0}}, {"wider", {0, 0.0}}, {"i", {0, HUGE_VAL}}};
  for (const auto& [key, numbers] : cases) {
    long whole = -1;
    double real = -1.0;
    EXPECT_EQ(ini_.ReadLong("s", key, whole), Code::INI_OK);
    EXPECT_EQ(ini_.ReadDouble("s", key, real), Code::INI_OK);
    EXPECT_EQ(whole, numbers.first) << key;
    EXPECT_EQ(real, numbers.second) << key;
  }
  double real = -1.0;
  EXPECT_EQ(ini_.ReadDouble("s", "wide", real), Code::INI_OK);
  EXPECT_NEAR(real, 1.0 / 9.0, 1e-15);
}

TEST_F(QuorinIniParser, KnowsTrueByItsFirstLetters)
{
  for (const char* text : {"1", "10", "T", "true", "Y", "yes", "on", "On", "oN", "ONE"}) {
    bool value = false;
    Load("[s]\nk="s + text + "\n");
    EXPECT_EQ(ini_.ReadBoolean("s", "k", value), Code::INI_OK);
    EXPECT_TRUE(value) << text;
  }
  for (const char* text : {"", "0", "2", "-1", "false", "no", "off", "o", "n", "[1", "?"}) {
    bool value = true;
    Load("[s]\nk="s + text + "\n");
    EXPECT_EQ(ini_.ReadBoolean("s", "k", value), Code::INI_OK);
    EXPECT_FALSE(value) << text;
  }
}

TEST_F(QuorinIniParser, SavesWithAMarkInFrontAndKeepsTheOrder)
{
  Load("; about z\n[z]\nb = 1\na = 2\n");
  EXPECT_EQ(ini_.WriteLong("z", "b", 3), Code::INI_OK);
  EXPECT_EQ(ini_.WriteString("new", "k", "v"), Code::INI_OK);
  const std::string file = directory_.Directory() + "/saved.ini";
  EXPECT_EQ(ini_.SaveIni(file.c_str()), Code::INI_OK);
  EXPECT_EQ(TextOf(file), "\xEF\xBB\xBF; about z\n\n\n[z]\nb = 3\na = 2\n\n\n[new]\nk = v\n");
}

TEST_F(QuorinIniParser, ReportsFilesThatCannotBeReadOrWritten)
{
  const auto descriptors = OpenDescriptors();
  for (const std::string& file :
       {directory_.Missing(), directory_.Directory(), directory_.Fifo(), "/dev/zero"s, ""s}) {
    EXPECT_EQ(ini_.LoadIni(file.c_str()), Code::INI_FAILED) << file;
  }
  EXPECT_EQ(ini_.WriteLong("s", "k", 1), Code::INI_OK);
  for (const std::string& file : {directory_.Directory(), directory_.Missing() + "/below", "/dev/full"s}) {
    EXPECT_EQ(ini_.SaveIni(file.c_str()), Code::INI_FAILED) << file;
  }
  EXPECT_EQ(OpenDescriptors(), descriptors) << "a file stayed open";
}
