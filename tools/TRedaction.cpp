// SPDX-License-Identifier: MIT
// Finding names and paths in texts.
#include "tools/TRedaction.h"

#include "tools/Environment.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <pwd.h>
#include <sstream>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr std::size_t kShortestName = 3;
// What stands between the word "serial" and its number: "Serial number ", "SerialNumber(".
constexpr std::size_t kLongestLead = 24;

// Names of accounts and machines that say nothing of anybody, and the words that stand for others.
constexpr const char* kCommonNames[] = {"root",   "localhost", "nobody",  "user",   "host",
                                        "serial", "path",      "setting", "address"};
// They are the same on every machine, and say which package a file is from.
constexpr const char* kSystemPaths[] = {"/usr/",  "/lib/", "/lib64/", "/bin/", "/sbin/",   "/etc/",
                                        "/proc/", "/sys/", "/dev/",   "/tmp",  "/var/tmp", "/dev/shm"};
constexpr const char* kUsersPaths[] = {"/home/", "/Users/", "/media/", "\\Users\\"};

bool IsLetter(char letter)
{
  return std::isalpha(static_cast<unsigned char>(letter)) != 0 || static_cast<signed char>(letter) < 0;
}

bool IsDigit(char letter)
{
  return letter >= '0' && letter <= '9';
}

// A name inside a longer word is not that name: "ana" in "analysis". In "ana_1" it is.
bool IsInsideWord(char inside, char outside)
{
  return (IsLetter(inside) && IsLetter(outside)) || (IsDigit(inside) && IsDigit(outside));
}

bool StandsAlone(std::string_view text, std::size_t at, std::size_t length)
{
  const std::size_t end = at + length;
  return (at == 0 || !IsInsideWord(text[at], text[at - 1])) &&
         (end == text.size() || !IsInsideWord(text[end - 1], text[end]));
}

bool IsSystemPath(const std::string& path)
{
  if (path.starts_with("/dev/shm/")) return false;
  return std::any_of(std::begin(kSystemPaths), std::end(kSystemPaths), [&](const std::string& known) {
    return known.ends_with('/') ? path.starts_with(known) || path + "/" == known : path == known;
  });
}

bool BeginsPath(std::string_view text, std::size_t at)
{
  const bool isHome = text[at] == '~' && at + 1 < text.size() && text[at + 1] == '/';
  if (text[at] != '/' && !isHome) return false;
  if (at == 0) return true;
  const char before = text[at - 1];
  return !IsLetter(before) && !IsDigit(before) &&
         std::string_view("._-/~>)").find(before) == std::string_view::npos;
}

template <typename Values, typename Value>
void AddLongestFirst(Values& values, Value value)
{
  values.push_back(std::move(value));
  const auto length = [](const auto& one) {
    if constexpr (requires { one.name; })
      return one.name.size();
    else
      return one.size();
  };
  std::stable_sort(values.begin(), values.end(),
                   [&](const auto& one, const auto& other) { return length(one) > length(other); });
}

} // namespace

TRedaction TRedaction::OfThisMachine()
{
  TRedaction redaction;
  redaction.home_ = Variable("HOME");
  while (redaction.home_.ends_with('/')) redaction.home_.pop_back();
  redaction.LearnUsers(redaction.home_ + "/");
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  if (const passwd* const user = getpwuid(getuid())) redaction.Hide(user->pw_name, "user");
  for (const char* name : {"USER", "LOGNAME", "SUDO_USER"}) redaction.Hide(Variable(name), "user");
  char host[256] = "";
  if (gethostname(host, sizeof host - 1) == 0) {
    const std::string name = host;
    redaction.Hide(name, "host");
    redaction.Hide(name.substr(0, name.find('.')), "host");
  }
  redaction.LearnPath(Variable("VXCORE_CONFIG"));
  redaction.LearnDevices(Variable("VXCORE_GENICAM"));
  redaction.LearnPath(LogFile());
  std::istringstream directories(Variable("LD_LIBRARY_PATH"));
  for (std::string directory; std::getline(directories, directory, ':');) redaction.LearnPath(directory);
  if (char* const directory = getcwd(nullptr, 0)) {
    redaction.LearnPath(directory);
    std::free(directory);
  }
  return redaction;
}

void TRedaction::Hide(const std::string& name, const std::string& kind)
{
  if (name.size() < kShortestName ||
      std::find(std::begin(kCommonNames), std::end(kCommonNames), name) != std::end(kCommonNames) ||
      std::any_of(names_.begin(), names_.end(), [&](const TName& known) { return known.name == name; }))
    return;
  AddLongestFirst(names_, TName{name, kind});
}

void TRedaction::HideSerialNumber(long long number)
{
  const std::string digits = std::to_string(number);
  if (std::find(serials_.begin(), serials_.end(), digits) == serials_.end()) AddLongestFirst(serials_, digits);
}

void TRedaction::LearnUsers(std::string_view path)
{
  for (const std::string_view users : kUsersPaths) {
    const std::size_t at = path.find(users);
    if (at == std::string_view::npos) continue;
    const std::string_view rest = path.substr(at + users.size());
    const std::size_t end = rest.find_first_of("/\\");
    if (end != std::string_view::npos) Hide(std::string(rest.substr(0, end)), "user");
  }
}

void TRedaction::LearnPath(const std::string& path)
{
  LearnUsers(path);
  if (path.size() < kShortestName || IsSystemPath(path) || path.find_first_of("/ ") == std::string::npos ||
      std::find(paths_.begin(), paths_.end(), path) != paths_.end())
    return;
  AddLongestFirst(paths_, path);
}

// Addresses and serial numbers, with commas between.
void TRedaction::LearnDevices(const std::string& devices)
{
  constexpr std::string_view kUsb = "usb:";
  std::istringstream words(devices);
  for (std::string word; std::getline(words, word, ',');) {
    word.erase(0, std::min(word.find_first_not_of(" \t"), word.size()));
    word.erase(word.find_last_not_of(" \t\r") + 1);
    if (word.starts_with(kUsb))
      Hide(word.substr(kUsb.size()), "serial");
    else if (word != "discover" && !word.starts_with("Fake_"))
      Hide(word, "address");
  }
}

void TRedaction::Learn(std::string_view text)
{
  for (std::size_t at = 0; at < text.size(); ++at)
    if (BeginsPath(text, at)) LearnUsers(text.substr(at, EndOfPath(text, at) - at));
  std::istringstream lines{std::string(text)};
  bool isSerialNumber = false;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t sign = line.find('=');
    if (line.starts_with("Devices") && sign != std::string::npos)
      LearnDevices(line.substr(sign + 1));
    else if (line.starts_with("["))
      isSerialNumber = line.find(".SerialNumber]") != std::string::npos;
    else if (isSerialNumber && line.starts_with("Value") && sign != std::string::npos)
      Hide(line.substr(std::min(line.find_first_not_of(" \t", sign + 1), line.size())), "serial");
  }
}

std::string TRedaction::Word(const std::string& text, const std::string& kind)
{
  const auto [found, isNew] = words_.emplace(text, "");
  if (isNew) found->second = "<" + kind + std::to_string(++counts_[kind]) + ">";
  return found->second;
}

std::string TRedaction::Path(const std::string& path)
{
  if (path.empty() || IsSystemPath(path)) return path;
  std::string known = path;
  while (known.size() > 1 && known.ends_with('/')) known.pop_back();
  if (home_.size() > 1 && known.starts_with(home_) && (known.size() == home_.size() || known[home_.size()] == '/'))
    known.replace(0, home_.size(), "~"); // as traces have it
  return known == "~" ? known : Word(known, "path");
}

// A path with spaces is seen as a whole when it begins with one that is known, or stands in quotation marks that are not
// those of a JSON text.
std::size_t TRedaction::EndOfPath(std::string_view text, std::size_t begin) const
{
  std::size_t end = begin;
  for (const std::string& known : paths_)
    if (text.substr(begin).starts_with(known) && StandsAlone(text, begin, known.size())) {
      end = begin + known.size();
      break;
    }
  const char quote = begin > 0 ? text[begin - 1] : '\0';
  const bool isQuoted =
      quote == '\'' ||
      (quote == '"' && begin > 1 && std::string_view(":[,{").find(text[begin - 2]) == std::string_view::npos);
  if (const std::size_t close = text.find_first_of(std::string{quote, '\n'}, begin);
      isQuoted && close != std::string_view::npos && text[close] == quote)
    return close;
  end = std::min(text.find_first_of(" \t\r\n\"'`,;:()[]{}<>|\\*?", end), text.size());
  while (end > begin + 1 && text[end - 1] == '.') --end;
  return end;
}

std::string TRedaction::WithoutPaths(std::string_view text)
{
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const auto isHere = [&](const std::string& known) {
      return text.substr(at).starts_with(known) && StandsAlone(text, at, known.size());
    };
    const bool isKnown = std::any_of(paths_.begin(), paths_.end(), isHere); // a relative one may be
    std::size_t end = isKnown || BeginsPath(text, at) ? EndOfPath(text, at) : at;
    const std::string path(text.substr(at, end - at));
    // "/" alone, and "/s" behind a number, are no paths.
    if (path.size() <= 2 ||
        std::none_of(path.begin(), path.end(), [](char c) { return IsLetter(c) || IsDigit(c); })) {
      end = std::max(end, at + 1);
      result += text.substr(at, end - at);
    } else {
      result += Path(path);
    }
    at = end;
  }
  return result;
}

void TRedaction::ReplaceNames(std::string& text)
{
  for (const TName& hidden : names_) {
    for (std::size_t at = text.find(hidden.name); at != std::string::npos; at = text.find(hidden.name, at)) {
      if (StandsAlone(text, at, hidden.name.size())) {
        const std::string word = Word(hidden.name, hidden.kind);
        text.replace(at, hidden.name.size(), word);
        at += word.size();
      } else {
        ++at;
      }
    }
  }
}

void TRedaction::ReplaceSerialNumbers(std::string& text)
{
  for (const std::string& serial : serials_) {
    for (std::size_t at = text.find(serial); at != std::string::npos; at = text.find(serial, at)) {
      const std::size_t begin = at - std::min(at, kLongestLead);
      std::string lead = text.substr(begin, at - begin);
      std::transform(lead.begin(), lead.end(), lead.begin(), [](unsigned char c) { return std::tolower(c); });
      const std::size_t word = lead.rfind("serial");
      const bool isSerial = StandsAlone(text, at, serial.size()) && word != std::string::npos &&
                            lead.find_first_of("0123456789,;\n", word) == std::string::npos &&
                            !lead.ends_with("<serial"); // one of our own words
      // A number in JSON cannot become a word.
      const std::string stands = !isSerial ? serial : lead.ends_with("\":") ? "null" : Word(serial, "serial");
      text.replace(at, serial.size(), stands);
      at += stands.size();
    }
  }
}

std::string TRedaction::Text(const std::string& text)
{
  std::string result = WithoutPaths(text);
  ReplaceNames(result);
  ReplaceSerialNumbers(result);
  return result;
}

} // namespace vxtool
