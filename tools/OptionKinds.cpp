// SPDX-License-Identifier: MIT
// Kinds of options that commands share.
#include "tools/OptionKinds.h"

#include "tools/ArgumentForms.h"
#include "tools/Messages.h"

#include <algorithm>

namespace vxtool {

CLI::Validator OneOf(const std::vector<std::string>& words)
{
  const auto check = [words](const std::string& text) -> std::string {
    const bool isOne = std::find(words.begin(), words.end(), text) != words.end();
    return isOne ? "" : RefusedText(text, ChoiceText(words) + " is");
  };
  return {check, "{" + CLI::detail::join(words, ",") + "}"};
}

CLI::Validator WholeNumber(long lowest, long highest)
{
  const auto rewrite = [lowest, highest](std::string& text) -> std::string {
    long value = 0;
    if (!ParseWholeNumber(text, value) || value < lowest || value > highest)
      return RefusedText(text, "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
                                   " is");
    text = std::to_string(value);
    return "";
  };
  return {rewrite, ""};
}

CLI::Option* AddText(CLI::App& app, const std::string& name, std::string& target, const std::string& help,
                     const char* accepted)
{
  const auto check = [accepted](const std::string& text) {
    return text.empty() ? RefusedText(text, accepted) : "";
  };
  return app.add_option(name, target, help)->check(CLI::Validator(check, ""));
}

CLI::Option* AddBundle(CLI::App& app, TBundleOptions& target, const std::string& help)
{
  CLI::Option* const bundle =
      AddText(app, "--bundle", target.file, help + " into this .tar.gz file, to send to somebody", kFileNameForm)
          ->type_name("FILE");
  app.add_flag("--keep-names", target.keepsNames,
               "Leave the names of users and machine, serial numbers and paths in it")
      ->needs(bundle);
  return bundle;
}

CLI::Option* AddSeconds(CLI::App& app, const std::string& name, std::optional<double>& target,
                        const std::string& help)
{
  const auto isTime = [](const std::string& text) -> std::string {
    double value = 0.0;
    return ParseSeconds(text, value) ? "" : RefusedText(text, kSecondsForm);
  };
  return app.add_option(name, target, help)->check(CLI::Validator(isTime, ""))->type_name("SECONDS");
}

CLI::Option* AddForm(CLI::App& app, const std::string& name, const std::function<bool(const std::string&)>& parse,
                     const std::string& form, const std::string& help)
{
  const auto take = [name, parse, form](const std::string& text) {
    if (!parse(text)) throw CLI::ValidationError(name, RefusedText(text, form + " is"));
  };
  return app.add_option_function<std::string>(name, take, help)->type_name("");
}

CLI::Option* AddWordList(CLI::App& app, const std::string& name, std::vector<std::string>& target,
                         const std::vector<std::string>& words, const std::string& help)
{
  const CLI::Validator check = OneOf(words);
  return app.add_option(name, target, help + ": " + CLI::detail::join(words, ", "))
      ->delimiter(',')
      ->check(CLI::Validator([check](std::string& text) { return check(text); }, ""));
}

} // namespace vxtool
