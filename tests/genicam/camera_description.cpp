// SPDX-License-Identifier: MIT
// Writes the description from a table of features.
#include "tests/genicam/camera_description.h"

#include <array>
#include <map>
#include <sstream>

namespace {

struct TText
{
  const char* name;
  int address;
  int length;
};
constexpr TText kTexts[] = {{"DeviceVendorName", 0x48, 32},
                            {"DeviceModelName", 0x68, 32},
                            {"DeviceFirmwareVersion", 0x88, 32},
                            {"DeviceSerialNumber", 0xD8, 16}};

/// A number in a register. Limits are numbers or names of others.
struct TNumber
{
  const char* kind; ///< Integer or Float
  const char* name;
  int address;
  const char* minimum;
  const char* maximum;
  bool hasIncrement = false;
};
constexpr TNumber kNumbers[] = {{"Integer", "SensorWidth", 0x11C, "1", "65535"},
                                {"Integer", "SensorHeight", 0x118, "1", "65535"},
                                {"Integer", "Width", 0x100, "1", "MaxWidth", true},
                                {"Integer", "Height", 0x104, "1", "MaxHeight", true},
                                {"Integer", "OffsetX", 0x130, "0", "MaxOffsetX", true},
                                {"Integer", "OffsetY", 0x134, "0", "MaxOffsetY", true},
                                {"Integer", "BinningHorizontal", 0x108, "1", "4"},
                                {"Integer", "BinningVertical", 0x10C, "1", "4"},
                                {"Float", "ExposureTime", 0x120, "10", "10000000"},
                                {"Integer", "FramePeriod", 0x138, "100", "10000000"},
                                {"Float", "Gain", 0x400, "0", "24"},
                                {"Integer", "BlackLevel", 0x404, "0", "1000"},
                                {"Float", "DeviceTemperature", 0x408, "-100", "100"},
                                {"Integer", "VendorTarget", 0x40C, "0", "1000"},
                                {"Integer", "VendorCooler", 0x410, "0", "1"},
                                {"Float", "SensorPixelWidth", 0x414, "0", "100"},
                                {"Float", "SensorPixelHeight", 0x414, "0", "100"},
                                {"Float", "SensorReadoutTime", 0x418, "0", "1000000"},
                                {"Float", "DeviceClockFrequency", 0x41C, "0", "1000000000"},
                                {"Integer", "TimestampValue", 0x948, "0", "4294967295"}};

constexpr std::array<std::pair<const char*, const char*>, 4> kRests = {
    {{"MaxWidth", "SensorWidth / BinningHorizontal - OffsetX"},
     {"MaxHeight", "SensorHeight / BinningVertical - OffsetY"},
     {"MaxOffsetX", "SensorWidth / BinningHorizontal - Width"},
     {"MaxOffsetY", "SensorHeight / BinningVertical - Height"}}};

/// An enumeration. Of the trigger each selector has its own register.
struct TEnumeration
{
  const char* name;
  int address;
  std::vector<std::pair<const char*, long>> entries;
  bool isOfTrigger = false;
};
const TEnumeration kEnumerations[] = {
    {"AcquisitionMode", 0x12C, {{"Continuous", 1}, {"SingleFrame", 2}}},
    {"TriggerSelector", 0x420, {{"FrameStart", 0}, {"AcquisitionStart", 1}}},
    {"TriggerMode", 0x300, {{"Off", 0}, {"On", 1}}, true},
    {"TriggerSource", 0x304, {{"Line0", 0}, {"Software", 1}, {"Line1", 2}}, true},
    {"TriggerActivation", 0x308, {{"RisingEdge", 0}}, true},
    {"TriggerOverlap", 0x310, {{"Off", 0}, {"ReadOut", 1}}, true},
    {"ExposureMode", 0x424, {{"Timed", 0}, {"TriggerWidth", 1}}},
    {"ExposureAuto", 0x428, {{"Off", 0}, {"Continuous", 1}}},
    {"GainAuto", 0x42C, {{"Off", 0}, {"Continuous", 1}}},
    {"SensorShutterMode", 0x430, {{"Rolling", 0}, {"GlobalReset", 1}}},
    {"VendorFan", 0x434, {{"Off", 0}, {"Low", 1}, {"Full", 2}}},
};

struct TCommand
{
  const char* name;
  int address;
  int value;
};
constexpr TCommand kCommands[] = {{"AcquisitionStart", 0x124, 1},
                                  {"AcquisitionStop", 0x124, 0},
                                  {"TriggerSoftware", 0x30C, 1},
                                  {"TimestampLatch", 0x944, 2}};

const std::map<std::string, long> kFormatCodes = {
    {"Mono8", Pfnc::kMono8},     {"Mono10", Pfnc::kMono10}, {"Mono12", Pfnc::kMono12},
    {"Mono14", Pfnc::kMono14},   {"Mono16", Pfnc::kMono16}, {"Mono12Packed", Pfnc::kMono12Packed},
    {"Mono12p", Pfnc::kMono12p}, {"RGB8", Pfnc::kRgb8}};

class TWriter
{
public:
  explicit TWriter(const TCameraTraits& traits) : traits_(traits) {}

  std::string Write()
  {
    for (const TText& text : kTexts)
      if (Has(text.name)) Register("StringReg", text.name, text.address, text.length, "RO", false);
    for (const TNumber& number : kNumbers)
      if (Has(number.name)) Number(number);
    for (const auto& [name, formula] : kRests) Rest(name, formula);
    for (const TEnumeration& one : kEnumerations)
      if (Has(one.name)) Enumeration(one);
    TEnumeration formats{"PixelFormat", 0x128, {}};
    for (const std::string& format : traits_.formats)
      formats.entries.emplace_back(format.c_str(), kFormatCodes.at(format));
    Enumeration(formats);
    for (const TCommand& command : kCommands)
      if (Has(command.name)) Command(command);
    if (Has("AcquisitionFrameRate"))
      body_ << "<Float Name=\"AcquisitionFrameRate\"><pValue>RateOfPeriod</pValue></Float>\n"
               "<Converter Name=\"RateOfPeriod\"><FormulaTo>(1000000 / FROM)</FormulaTo>"
               "<FormulaFrom>(1000000 / TO)</FormulaFrom><pValue>FramePeriod</pValue></Converter>\n";
    body_ << "<IntSwissKnife Name=\"PayloadSize\"><pVariable Name=\"W\">Width</pVariable><pVariable "
             "Name=\"H\">Height"
             "</pVariable><pVariable Name=\"F\">PixelFormat</pVariable><Formula>W * H * ((F &gt;&gt; 16) &amp; "
             "0xFF) / 8"
             "</Formula></IntSwissKnife>\n<Port Name=\"Device\"/>\n";
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<RegisterDescription ModelName=\"Test\" "
           "VendorName=\"vxmcd\" "
           "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"0\" "
           "SchemaSubMinorVersion=\"1\" "
           "MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\" ToolTip=\"\" ProductGuid=\"0\" "
           "VersionGuid=\"0\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_0\">\n<Category Name=\"Root\">" +
           features_.str() + "</Category>\n" + body_.str() + "</RegisterDescription>\n";
  }

private:
  bool Has(const std::string& name) const { return traits_.without.count(name) == 0; }
  void List(const std::string& name) { features_ << "<pFeature>" << name << "</pFeature>"; }

  void Register(const std::string& kind, const std::string& name, int address, int length, const char* access,
                bool isOfTrigger)
  {
    if (kind == "StringReg") List(name);
    body_ << "<" << kind << " Name=\"" << name << "\"><Address>" << address << "</Address>";
    if (isOfTrigger) body_ << "<pIndex Offset=\"32\">TriggerSelectorRegister</pIndex>";
    body_ << "<Length>" << length << "</Length><AccessMode>" << access << "</AccessMode><pPort>Device</pPort>";
    if (kind == "IntReg") body_ << "<Sign>Signed</Sign><Endianess>BigEndian</Endianess>";
    body_ << "</" << kind << ">\n";
  }

  void Limit(const char* tag, const std::string& value)
  {
    const bool isName = value[0] != '-' && !std::isdigit(static_cast<unsigned char>(value[0]));
    const std::string name = (isName ? "p" : "") + std::string(tag);
    body_ << "<" << name << ">" << value << "</" << name << ">";
  }

  void Number(const TNumber& number)
  {
    const std::string reg = std::string(number.name) + "Register";
    List(number.name);
    body_ << "<" << number.kind << " Name=\"" << number.name << "\"><pValue>" << reg << "</pValue>";
    Limit("Min",
          number.hasIncrement && number.minimum[0] == '1' ? std::to_string(traits_.increment) : number.minimum);
    Limit("Max", number.maximum);
    if (number.hasIncrement) body_ << "<Inc>" << traits_.increment << "</Inc>";
    body_ << "</" << number.kind << ">\n";
    Register("IntReg", reg, number.address, 4, "RW", false);
  }

  /// A length that others leave: variables are the words of the formula.
  void Rest(const char* name, std::string formula)
  {
    body_ << "<IntSwissKnife Name=\"" << name << "\">";
    for (const char* word : {"SensorWidth", "SensorHeight", "BinningHorizontal", "BinningVertical", "OffsetX",
                             "OffsetY", "Width", "Height"}) {
      const std::string spaced = std::string(word);
      if ((" " + formula + " ").find(" " + spaced + " ") == std::string::npos) continue;
      if (Has(word))
        body_ << "<pVariable Name=\"" << word << "\">" << word << "Register</pVariable>";
      else
        formula.replace(formula.find(spaced), spaced.size(),
                        spaced[0] == 'B'   ? "1"
                        : spaced[0] == 'S' ? "2048"
                                           : "0");
    }
    body_ << "<Formula>" << formula << "</Formula></IntSwissKnife>\n";
  }

  void Enumeration(const TEnumeration& one)
  {
    List(one.name);
    body_ << "<Enumeration Name=\"" << one.name << "\">";
    for (const auto& [entry, value] : one.entries)
      body_ << "<EnumEntry Name=\"" << entry << "\"><Value>" << value << "</Value></EnumEntry>";
    body_ << "<pValue>" << one.name << "Register</pValue></Enumeration>\n";
    Register("IntReg", std::string(one.name) + "Register", one.address, 4, "RW", one.isOfTrigger);
  }

  void Command(const TCommand& command)
  {
    List(command.name);
    body_ << "<Command Name=\"" << command.name << "\"><pValue>" << command.name
          << "Register</pValue><CommandValue>" << command.value << "</CommandValue></Command>\n";
    Register("IntReg", std::string(command.name) + "Register", command.address, 4, "WO", false);
  }

  const TCameraTraits& traits_;
  std::ostringstream features_;
  std::ostringstream body_;
};

} // namespace

std::string CameraDescription(const TCameraTraits& traits)
{
  return TWriter(traits).Write();
}
