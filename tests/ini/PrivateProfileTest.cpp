// SPDX-License-Identifier: MIT
// The classic entry points for profile files, character by character.
#include "tests/support/TScratchDirectory.h"
#include "vxmcd.h"

#include <ctime>
#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

constexpr unsigned int kEmptyList = 0xFFFFFFFFU;
constexpr char kUntouched = '#';
// A time that grows with the square of a file's length would be hours.
constexpr std::clock_t kProcessorLimit = 10 * CLOCKS_PER_SEC;

/// What a call of GetPrivateProfileString() returned and left in a buffer of @p size bytes and more behind.
struct TAnswer
{
  unsigned int result;
  std::string bytes;

  bool operator==(const TAnswer&) const = default;
};

void PrintTo(const TAnswer& answer, std::ostream* stream)
{
  *stream << answer.result << " and " << testing::PrintToString(answer.bytes.substr(0, 80));
}

class PrivateProfile : public testing::Test
{
protected:
  /// The buffer beyond the size that the call was given is compared, too: nothing may be written there.
  static constexpr std::size_t kMoreBytes = 16;

  static TAnswer Whole(unsigned int result, std::string bytes, unsigned int size)
  {
    bytes.resize(size + kMoreBytes, kUntouched);
    return {result, bytes};
  }

  TAnswer Ask(const char* section, const char* key, unsigned int size = 64,
              const char* defaultValue = "dflt") const
  {
    std::string bytes(size + kMoreBytes, kUntouched);
    const unsigned int result =
        GetPrivateProfileString(section, key, defaultValue, bytes.data(), size, file_.c_str());
    return {result, bytes};
  }

  static TAnswer Value(const std::string& value, unsigned int size = 64)
  {
    const std::string kept = value.substr(0, size - 1);
    return Whole(static_cast<unsigned int>(kept.size()), kept + '\0', size);
  }

  static TAnswer Default(unsigned int size = 64, const std::string& text = "dflt")
  {
    return Whole(0, text + '\0', size);
  }

  static TAnswer List(const std::vector<std::string>& names, unsigned int size = 64)
  {
    std::string bytes;
    for (const std::string& name : names) bytes += name + '\0';
    const auto length = static_cast<unsigned int>(bytes.size());
    if (length > size - 2) return Whole(size - 2, bytes.substr(0, size - 2) + "\0\0"s, size);
    return Whole(length - 1, bytes + '\0', size);
  }

  int Number(const char* section, const char* key, int defaultValue = 7) const
  {
    return static_cast<int>(GetPrivateProfileInt(section, key, defaultValue, file_.c_str()));
  }

  void Use(const std::string& text) { file_ = directory_.File(text); }

  TScratchDirectory directory_;
  std::string file_;
};

} // namespace

TEST_F(PrivateProfile, RefusesNullPointersAndSizesBelowTwo)
{
  Use("[A]\nk=5\n");
  EXPECT_EQ(Number(nullptr, "k"), 0);
  EXPECT_EQ(Number("A", nullptr), 0);
  EXPECT_EQ(GetPrivateProfileInt("A", "k", 7, nullptr), 0U);
  EXPECT_EQ(Ask("A", "k", 1), Whole(0, "", 1));
  EXPECT_EQ(Ask("A", "k", 0), Whole(0, "", 0));
  EXPECT_EQ(Ask("A", "k", 8, nullptr), Whole(0, "", 8));
  EXPECT_EQ(GetPrivateProfileString("A", "k", "d", nullptr, 8, file_.c_str()), 0U);
  char untouched[] = "##";
  EXPECT_EQ(GetPrivateProfileString("A", "k", "d", untouched, 2, nullptr), 0U);
  EXPECT_STREQ(untouched, "##");
}

TEST_F(PrivateProfile, ReadsNumbersAsCDoes)
{
  Use("[N]\nhex = 0x1F ; note\nquoted=\"12\"\nsingle='12'\nspaced=1 2\noctal=010\nnegative=-3\nword=abc\nnone=\n"
      "tail=9 lives\nwide=4294967297\nhuge=99999999999999999999\ntab=\t5\n");
  const std::pair<const char*, int> cases[] = {
      {"hex", 31}, {"quoted", 12}, {"single", 12}, {"spaced", 12}, {"octal", 8}, {"negative", -3}, {"word", 0},
      {"none", 0}, {"tail", 9},    {"wide", 1},    {"huge", -1},   {"tab", 5},   {"absent", 7}};
  for (const auto& [key, number] : cases) EXPECT_EQ(Number("N", key), number) << key;
  EXPECT_EQ(Number("absent", "hex"), 7);
  EXPECT_EQ(Number("N", "absent", -1), -1);
}

TEST_F(PrivateProfile, DropsSpacesInNamesAndNothingElse)
{
  Use("[ My Section ]\n k e y =1\nKEY=2\n\ttabbed=3\n[My\tSection]\nk=4\n[Multi\nLine]\nk=5\n");
  EXPECT_EQ(Number("mysection", "Key"), 1);
  EXPECT_EQ(Number("My Section", "key"), 7); // only the file's spaces are dropped
  EXPECT_EQ(Number("MySection", "tabbed"), 7);
  EXPECT_EQ(Number("MySection", "\ttabbed"), 3);
  EXPECT_EQ(Number("my\tsection", "k"), 4);
  EXPECT_EQ(Number("multi\nline", "k"), 5);
  EXPECT_EQ(Ask(nullptr, nullptr), List({"MySection", "My\tSection", "Multi\nLine"}));
}

TEST_F(PrivateProfile, KeyNamesRunToTheNextEqualsSign)
{
  Use("[A] first=1\nno sign\nkey=2\n;comment=3\n=4\nnot;comment=5\n[B]\nx=6\nlost\n[C]\ny=7\n");
  EXPECT_EQ(Ask("A", "first"), Value("1"));
  EXPECT_EQ(Ask("A", "key"), Default());
  EXPECT_EQ(Ask("A", "nosign\nkey"), Value("2"));
  EXPECT_EQ(Ask("A", "comment"), Default());
  EXPECT_EQ(Ask("A", ""), Value("4"));
  EXPECT_EQ(Ask("A", "not;comment"), Value("5"));
  EXPECT_EQ(Ask("A", "x"), Default());
  EXPECT_EQ(Ask("B", "lost\n[C]\ny"), Value("7"));
  EXPECT_EQ(Ask("C", "y"), Value("7"));
  // The list leaves out what stands on the header's line.
  EXPECT_EQ(Ask("A", nullptr), List({"nosign\nkey", "", "not;comment"}));
}

TEST_F(PrivateProfile, SectionsBeginAtAnyBracketOutsideComments)
{
  Use("[A]\nk=v[inner]\nx=1\n;[hidden]\n[open;not a comment]\nk=2\n[unclosed\nk=3\n");
  EXPECT_EQ(Ask(nullptr, nullptr), List({"A", "inner", "open;notacomment"}));
  EXPECT_EQ(Ask("A", "k"), Value("v[inner]"));
  EXPECT_EQ(Number("inner", "x"), 1);
  EXPECT_EQ(Number("hidden", "x"), 7);
  EXPECT_EQ(Number("unclosed", "k"), 7);
}

TEST_F(PrivateProfile, AValueNeedsAnEndOfLineOrAComment)
{
  for (const char* end : {"\n", "\r\n", "\r", ";", "; no line break"}) {
    Use("[A]\nk=5"s + end);
    EXPECT_EQ(Number("A", "k"), 5) << end;
    EXPECT_EQ(Ask("A", "k"), Value("5")) << end;
  }
  Use("[A]\nk=5");
  EXPECT_EQ(Number("A", "k"), 7);
  EXPECT_EQ(Ask("A", "k"), Default());
}

TEST_F(PrivateProfile, CutsWhatDoesNotFit)
{
  const std::string longText(300, 'x');
  Use("[A]\nten=0123456789\nlong=" + longText + "\n" + longText + "=1\n[" + longText + "]\nk=2\n");
  EXPECT_EQ(Ask("A", "ten", 8), Value("0123456", 8));
  for (unsigned int size : {2U, 10U, 11U, 12U}) EXPECT_EQ(Ask("A", "ten", size), Value("0123456789", size));
  const std::string kept(255, 'x');
  EXPECT_EQ(Ask("A", "long", 600), Value(kept, 600));
  EXPECT_EQ(Number("A", kept.c_str()), 1);
  EXPECT_EQ(Number("A", longText.c_str()), 7);
  EXPECT_EQ(Number(kept.c_str(), "k"), 2);
  // The default alone is copied in its whole length.
  EXPECT_EQ(Ask("A", "absent", 3), Default(3));
}

TEST_F(PrivateProfile, ListsCountOneLessThanTheyHave)
{
  Use("[A]\n[B]\n");
  EXPECT_EQ(Ask(nullptr, nullptr), Whole(3, "A\0B\0\0"s, 64));
  EXPECT_EQ(Ask("A", nullptr), Whole(kEmptyList, "\0"s, 64));
  EXPECT_EQ(Ask("C", nullptr), Default());
  Use("");
  EXPECT_EQ(Ask(nullptr, nullptr), Whole(kEmptyList, "\0"s, 64));
  EXPECT_EQ(Ask(nullptr, "ignored", 2), Whole(kEmptyList, "\0"s, 2));
}

TEST_F(PrivateProfile, ListsAreCutTwoBytesBeforeTheEnd)
{
  Use("[AB]\nk=1\n[]\n[]\n[C]\n");
  EXPECT_EQ(Ask(nullptr, nullptr, 2), Whole(0, "\0\0"s, 2));
  EXPECT_EQ(Ask(nullptr, nullptr, 3), Whole(1, "A\0\0"s, 3));
  EXPECT_EQ(Ask(nullptr, nullptr, 4), Whole(2, "AB\0\0"s, 4));
  EXPECT_EQ(Ask(nullptr, nullptr, 5), Whole(3, "AB\0\0\0"s, 5));
  EXPECT_EQ(Ask(nullptr, nullptr, 6), Whole(4, "AB\0\0\0\0"s, 6));
  EXPECT_EQ(Ask(nullptr, nullptr, 8), Whole(6, "AB\0\0\0C\0\0"s, 8));
  EXPECT_EQ(Ask(nullptr, nullptr, 9), Whole(6, "AB\0\0\0C\0\0"s, 9));
  EXPECT_EQ(Ask("AB", nullptr, 2), Whole(0, "\0\0"s, 2));
  EXPECT_EQ(Ask("AB", nullptr, 4), Whole(1, "k\0\0"s, 4));
}

TEST_F(PrivateProfile, TakesOneArrayAsBufferAndDefault)
{
  Use("[A]\nk=value\n");
  char both[16] = "given";
  EXPECT_EQ(GetPrivateProfileString("A", "absent", both, both, sizeof both, file_.c_str()), 0U);
  EXPECT_STREQ(both, "given");
  EXPECT_EQ(GetPrivateProfileString("A", "absent", both + 2, both, sizeof both, file_.c_str()), 0U);
  EXPECT_STREQ(both, "ven");
  EXPECT_EQ(GetPrivateProfileString("A", "k", both, both, sizeof both, file_.c_str()), 5U);
  EXPECT_STREQ(both, "value");
}

TEST_F(PrivateProfile, Byte255IsACharacterAndAZeroByteEndsATextOnly)
{
  Use("\xff[A\xff]\nk\xff=v\xff\n\xff=\xff\n[Z\0gone]\nz\0gone=1\0gone\nafter=2\n"s);
  EXPECT_EQ(Ask("a\xff", "K\xff"), Value("v\xff"));
  EXPECT_EQ(Ask("A\xff", "\xff"), Value("\xff"));
  EXPECT_EQ(Ask("Z", "z"), Value("1"));
  EXPECT_EQ(Number("Z", "after"), 2);
  EXPECT_EQ(Ask(nullptr, nullptr), List({"A\xff", "Z"}));
}

TEST_F(PrivateProfile, AnythingButARegularFileIsMissing)
{
  const auto descriptors = OpenDescriptors();
  const std::string tooLong = directory_.Directory() + "/" + std::string(5000, 'n');
  for (const std::string& file : {directory_.Missing(), directory_.Directory(), directory_.Fifo(), "/dev/zero"s,
                                  ""s, directory_.File("x") + "/below", tooLong}) {
    file_ = file;
    EXPECT_EQ(Number("A", "k"), 7) << file;
    EXPECT_EQ(Ask("A", "k"), Default()) << file;
    EXPECT_EQ(Ask("A", nullptr), Default()) << file;
    EXPECT_EQ(Ask(nullptr, nullptr), Default()) << file;
  }
  const std::string longName(250, 'n'); // longer than old programs were used to
  file_ = directory_.File("[A]\nk=5\n", longName);
  EXPECT_EQ(Number("A", "k"), 5);
  EXPECT_EQ(OpenDescriptors(), descriptors) << "a file stayed open";
}

TEST_F(PrivateProfile, WritingLeavesTheFileAlone)
{
  const std::string text = "[A]\nk=5\n";
  Use(text);
  EXPECT_EQ(WritePrivateProfileString("A", "k", "6", file_.c_str()), 0U);
  EXPECT_EQ(TextOf(file_), text);
  EXPECT_EQ(WritePrivateProfileString("A", "k", "6", directory_.Missing().c_str()), 0U);
  EXPECT_FALSE(std::filesystem::exists(directory_.Missing()));
}

TEST_F(PrivateProfile, HugeFilesTakeNoLongerThanTheirLength)
{
  constexpr std::size_t kTenMegabytes = 10 * 1000 * 1000;
  std::string sections;
  for (int i = 0; i < 1000000; ++i) sections += "[s" + std::to_string(i) + "]\n";
  const std::string line(kTenMegabytes, 'x');
  const std::string texts[] = {sections,        "[" + line,
                               "[A]\n" + line,  "[A]\nk=" + line,
                               "[A]\n;" + line, "[A]\n" + std::string(line.size(), '='),
                               line + "\n[A]",  "[A]\n" + std::string(kTenMegabytes, '\n')};
  for (const std::string& text : texts) {
    Use(text);
    const std::clock_t begin = std::clock();
    EXPECT_EQ(Number("A", "k"), 7);
    EXPECT_EQ(Number("s999999", "k"), 7);
    EXPECT_NE(Ask(nullptr, nullptr).result, 0U);
    EXPECT_LT(std::clock() - begin, kProcessorLimit) << text.substr(0, 12);
  }
}
