// SPDX-License-Identifier: MIT
// Reads commands and options back from the parser.
#include "tools/OptionTable.h"

#include <CLI/CLI.hpp>

namespace vxtool {

namespace {

std::string Line(const std::vector<std::string>& fields)
{
  std::string line;
  for (const std::string& field : fields) line += (&field == &fields.front() ? "" : "\t") + field;
  return line + "\n";
}

std::string ArgumentText(const CLI::Option& option)
{
  if (option.get_items_expected_max() == 0) return "";
  const std::string text = option.get_type_name();
  if (option.get_positional()) {
    const std::string needed = option.get_required() ? text : "[" + text + "]";
    return needed + (option.get_items_expected_max() > 1 ? "..." : "");
  }
  const std::size_t words = text.find(":{"); // the parser has "TEXT:" before words to choose from
  return words == std::string::npos ? text : text.substr(words + 1);
}

std::string CommandLines(const CLI::App& command, const std::string& name)
{
  std::string text = Line({name, "", "", "", "", command.get_description()});
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_group().empty()) continue;
    const std::string group = option->get_group() == "Options" ? "" : option->get_group();
    std::vector<std::string> others;
    for (const CLI::Option* other : command.get_options()) // in the order of the help; the parser has no order
      if (option->get_excludes().count(const_cast<CLI::Option*>(other)) > 0) others.push_back(other->get_name());
    text += Line({name, option->get_name(option->get_positional(), true), ArgumentText(*option), group,
                  CLI::detail::join(others, ","), option->get_description()});
  }
  return text;
}

} // namespace

std::string OptionTable(const CLI::App& app)
{
  std::string text = CommandLines(app, "");
  for (const CLI::App* command : app.get_subcommands(nullptr)) {
    if (command->get_group().empty()) continue;
    text += CommandLines(*command, command->get_name());
    for (const CLI::App* part : command->get_subcommands(nullptr))
      text += CommandLines(*part, command->get_name() + " " + part->get_name());
  }
  return text;
}

} // namespace vxtool
