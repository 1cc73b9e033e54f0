// SPDX-License-Identifier: MIT
// Typed reading of profile files.
#include "ini/TIniFileParser.h"

#include "tests/support/TScratchDirectory.h"

#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

constexpr std::size_t kNameSize = 512;

class IniFileParser : public testing::Test
{
protected:
  void Use(const std::string& text) { file_ = directory_.File(text); }

  float Float(const char* key) const { return TIniFileParser::GetFloatFromSection(file_.c_str(), "N", key); }
  int Int(const char* key) const { return TIniFileParser::GetIntFromSection(file_.c_str(), "N", key); }
  unsigned int Hex(const char* key) const { return TIniFileParser::GetIntHexFromSection(file_.c_str(), "N", key); }

  /// The names that GetSections() stores into @p room buffers; one more buffer stands behind and must stay as it
  /// is.
  std::vector<std::string> Sections(int expectedResult, int room) const
  {
    std::vector<std::array<char, kNameSize>> buffers(static_cast<std::size_t>(room) + 1);
    std::vector<char*> pointers;
    for (auto& buffer : buffers) {
      buffer.fill('#');
      pointers.push_back(buffer.data());
    }
    EXPECT_EQ(TIniFileParser::GetSections(file_.c_str(), pointers.data(), room), expectedResult);
    EXPECT_EQ(buffers.back().front(), '#') << "a name was stored behind the caller's array";
    return {pointers.begin(), pointers.begin() + std::max(expectedResult, 0)};
  }

  TScratchDirectory directory_;
  std::string file_;
};

} // namespace

TEST_F(IniFileParser, ConvertsNumbersAndTakesZeroForMissingOnes)
{
  Use("[N]\nf=-2.5e1 V\nbig=1e300\ni=0x10\nh=1F\nx=0x1F\nl=1f\nwide=1FFFFFFFF\nt=text\n");
  EXPECT_EQ(Float("f"), -25.0F);
  EXPECT_EQ(Float("big"), std::numeric_limits<float>::infinity());
  EXPECT_EQ(Float("t"), 0.0F);
  EXPECT_EQ(Float("absent"), 0.0F);
  EXPECT_EQ(Int("i"), 16);
  EXPECT_EQ(Int("absent"), 0);
  for (const char* key : {"h", "x", "l"}) EXPECT_EQ(Hex(key), 31U) << key;
  EXPECT_EQ(Hex("wide"), 0xFFFFFFFFU);
  EXPECT_EQ(Hex("t"), 0U);
  EXPECT_EQ(Hex("absent"), 0U);
}

TEST_F(IniFileParser, TakesTheCallersDefaultsWhateverTheirLength)
{
  Use("[N]\nh=1F\n");
  const auto hex = [&](const char* key, const char* text) {
    return TIniFileParser::GetIntHexFromSectionDefault(file_.c_str(), "N", key, text);
  };
  EXPECT_EQ(hex("h", "0xFF"), 31U);
  EXPECT_EQ(hex("absent", "0xFF"), 255U);
  const std::string longText = std::string(100000, '0') + "1A";
  EXPECT_EQ(hex("absent", longText.c_str()), 26U);
  EXPECT_EQ(hex("absent", nullptr), 0U);

  std::vector<char> buffer(TIniFileParser::MAX_SIZE_CHAR_ARRAY - 1, '#');
  EXPECT_EQ(TIniFileParser::GetStringFromSection(file_.c_str(), "N", "h", buffer.data()), 2U);
  EXPECT_STREQ(buffer.data(), "1F");
  EXPECT_EQ(TIniFileParser::GetStringFromSection(file_.c_str(), "N", "absent", buffer.data()), 0U);
  EXPECT_STREQ(buffer.data(), "0");
}

TEST_F(IniFileParser, SurvivesNullArguments)
{
  Use("[N]\nf=1\n");
  EXPECT_EQ(TIniFileParser::GetFloatFromSection(nullptr, "N", "f"), 0.0F);
  EXPECT_EQ(TIniFileParser::GetIntFromSection(file_.c_str(), nullptr, "f"), 0);
  EXPECT_EQ(TIniFileParser::GetIntHexFromSection(nullptr, nullptr, nullptr), 0U);
  EXPECT_EQ(TIniFileParser::GetNumberOfSections(nullptr), 0);
  EXPECT_EQ(TIniFileParser::GetSections(nullptr, nullptr), 0);
}

TEST_F(IniFileParser, CountsAndNamesAllSectionsButTheLast)
{
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {"[A]\n", {}},
      {"[A]\n[B]\n", {"A"}},
      {"[]\n[A]\nk=1\n[]\n[ B C ]\n[D]\n", {"", "A", "", "BC"}},
  };
  for (const auto& [text, names] : cases) {
    Use(text);
    const int count = static_cast<int>(names.size());
    EXPECT_EQ(TIniFileParser::GetNumberOfSections(file_.c_str()), count) << text;
    EXPECT_EQ(Sections(count, count), names) << text;
  }
  file_ = directory_.Missing();
  EXPECT_EQ(TIniFileParser::GetNumberOfSections(file_.c_str()), 0);
}

TEST_F(IniFileParser, FillsNoMoreNamesThanThereIsRoomFor)
{
  Use("[A]\n[B]\n[C]\n[D]\n");
  EXPECT_EQ(Sections(2, 2), (std::vector<std::string>{"A", "B"}));
}

TEST_F(IniFileParser, ListsWhatFitsOfVeryManySections)
{
  // 64 bytes a name with its end: 1023 of them and 62 characters of the next fill the 65534 bytes of a cut list.
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "[" + std::to_string(1000000 + i) + std::string(56, 'n') + "]\n";
  Use(text);
  EXPECT_EQ(TIniFileParser::GetNumberOfSections(file_.c_str()), 1023);
  const auto names = Sections(1023, 1023);
  EXPECT_EQ(names.front(), "1000000" + std::string(56, 'n'));
  EXPECT_EQ(names.back(), "1001022" + std::string(56, 'n'));
}
