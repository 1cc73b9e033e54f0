// SPDX-License-Identifier: MIT
// The command line of call traces.
#include "tools/TraceOptions.h"

#include "tools/ArgumentForms.h"
#include "tools/Messages.h"
#include "trace/TTraceSettings.h"

#include <CLI/CLI.hpp>

namespace vxtool {

namespace {

CLI::App* AddCommand(CLI::App& trace, TTraceOptions& options, TraceCommand command, const char* name,
                     const char* help)
{
  CLI::App* const added = trace.add_subcommand(name, help);
  added->callback([&options, command] { options.command = command; });
  if (command != TraceCommand::Record)
    added->add_option("file", options.file, "The trace")->required()->type_name("FILE");
  return added;
}

void AddJson(CLI::App& command, TTraceOptions& options, const char* help)
{
  command.add_flag("--json", options.isJson, help);
}

CLI::Option* AddOutput(CLI::App& command, TTraceOptions& options, const char* help)
{
  return command.add_option("-o,--output", options.output, help)->type_name("FILE");
}

void AddLayers(CLI::App& command, TTraceOptions& options)
{
  CLI::Option* const api = command.add_flag("--api", options.isApiOnly, "Only calls of the program");
  command.add_flag("--core", options.isCoreOnly, "Only calls into the feature library")->excludes(api);
}

void AddTime(CLI::App& command, const char* name, std::optional<double>& target, const char* help)
{
  command.add_option(name, target, help)->type_name("SECONDS");
}

void AddRecord(CLI::App& record, TTraceOptions& options)
{
  record.positionals_at_end(); // the options of the program are its own
  AddOutput(record, options,
            "The trace; default: the name of the program with .vxtr. When the program starts others, "
            "their traces have -2, -3 and so on in their names");
  const auto flag = [&](const char* name, const char* option, const char* help) {
    return record.add_flag_callback(
        name, [&options, option] { options.recorderOptions += option; }, help);
  };
  CLI::Option* const api = flag("--api", ",api", "Only calls of the program");
  flag("--core", ",core", "Only calls into the feature library")->excludes(api);
  flag("--frames", ",frames", "Every call for a frame; else the first 100 of a run and those that fail");
  CLI::Option* const noPixels =
      flag("--no-pixels", ",pixels=none", "No checksums of images, which take time with large ones");
  flag("--store-pixels", ",pixels=store",
       "The images that the program gets, too: each takes its size and 2 % in the trace, see --limit")
      ->excludes(noPixels);
  flag("--registers", ",registers",
       "What the first four integer registers have in calls of functions whose arguments are not known: numbers, "
       "or "
       "addresses in memory");
  const auto limit = [&options](const std::string& text) {
    TTraceSettings settings;
    if (!settings.Parse("x,limit=" + text).empty())
      throw CLI::ValidationError("--limit", RefusedText(text, "a size from 1M to 1024G is"));
    options.recorderOptions += ",limit=" + text;
  };
  record
      .add_option_function<std::string>(
          "--limit", limit,
          "The longest size; then the oldest calls are dropped, but for the first 16M; default: 256M")
      ->type_name("SIZE");
  record.add_option("program", options.program, "The program and its arguments")->required()->type_name("PROGRAM");
}

void AddPrint(CLI::App& print, TTraceOptions& options)
{
  AddLayers(print, options);
  print.add_option("--function", options.function, "Only functions whose names match, for example 'Get*Image*'")
      ->type_name("PATTERN");
  print.add_option("--thread", options.thread, "Only the thread with this number, which is behind its T")
      ->type_name("N");
  print.add_flag("--errors", options.isErrorsOnly, "Only calls that failed");
  print.add_flag("--open", options.isOpenOnly, "Only calls that did not return");
  AddTime(print, "--from", options.fromSeconds, "Only calls from this time on, in s since the start of the trace");
  AddTime(print, "--to", options.toSeconds, "Only calls up to this time");
  print.add_option("--tail", options.tail, "Only the last N of these calls")->type_name("N");
  AddJson(print, options, "Print a line of JSON for each call");
}

void AddDiff(CLI::App& diff, TTraceOptions& options)
{
  diff.add_option("other", options.other, "The other trace")->required()->type_name("FILE");
  AddLayers(diff, options);
  diff.add_flag("--results-only", options.isResultsOnly,
                "Only other codes and outputs of calls that are in both, not calls that only one of them has");
  AddJson(diff, options, "Print one line of JSON on standard output");
}

void AddReplay(CLI::App& replay, TTraceOptions& options)
{
  CLI::Option* const config =
      replay.add_option("--config", options.config, "Simulated cameras that this file describes")
          ->type_name("INI");
  replay
      .add_flag("--like-recorded", options.isLikeRecorded,
                "Simulated cameras that are as the trace shows its cameras, as config prints them")
      ->excludes(config);
  replay
      .add_option_function<std::string>(
          "--speed",
          [&options](const std::string& speed) {
            if (speed != "as-fast" && speed != "recorded")
              throw CLI::ValidationError("--speed",
                                         RefusedText(speed, ChoiceText({"as-fast", "recorded"}) + " is"));
            options.isAtRecordedSpeed = speed == "recorded";
          },
          "as-fast: only the calls during a run keep their distance from its start; recorded: all calls "
          "keep their times; default: as-fast")
      ->type_name("SPEED");
  const auto timeout = [&options](const std::string& text) {
    if (!ParseSeconds(text, options.timeoutSeconds))
      throw CLI::ValidationError("--timeout", RefusedText(text, "a time in s, above 0 and at most 1e6, is"));
  };
  replay
      .add_option_function<std::string>(
          "--timeout", timeout,
          "End the replay when a call takes longer than this and ten times what it took; default: 30")
      ->type_name("SECONDS");
  replay.add_flag(
      "--same-paths", options.hasSamePaths,
      "Write files where the program wrote them, and replace those; else they are written to a temporary "
      "directory and removed");
  AddOutput(replay, options, "Record the replay in this trace");
  AddJson(replay, options, "Print one line of JSON on standard output");
}

} // namespace

CLI::App* AddTraceCommand(CLI::App& app, TTraceOptions& options)
{
  CLI::App* const trace = app.add_subcommand("trace", "Record the calls of a program, and show what it did");
  trace->require_subcommand(1);
  AddRecord(*AddCommand(*trace, options, TraceCommand::Record, "record", "Run a program and record its calls"),
            options);
  AddPrint(*AddCommand(*trace, options, TraceCommand::Print, "print", "Print the calls of a trace"), options);
  CLI::App* const stats =
      AddCommand(*trace, options, TraceCommand::Stats, "stats", "Sum a trace up, and say what stands out in it");
  AddJson(*stats, options, "Print one line of JSON on standard output");
  AddDiff(*AddCommand(*trace, options, TraceCommand::Diff, "diff", "Compare two traces: calls, codes, outputs"),
          options);
  CLI::App* const redact =
      AddCommand(*trace, options, TraceCommand::Redact, "redact",
                 "Make a trace without paths, names of user and computer, and serial numbers; print "
                 "what was replaced");
  redact->add_option("other", options.other, "The new trace")->required()->type_name("FILE");
  AddJson(*redact, options, "Print one line of JSON on standard output");
  AddCommand(*trace, options, TraceCommand::Config, "config",
             "Print a configuration of simulated cameras that are as the trace shows its cameras");
  AddCommand(*trace, options, TraceCommand::Images, "images",
             "Write the images of a trace that was recorded with --store-pixels, each to a file of raw pixels")
      ->add_option("other", options.other, "The directory; it is made")
      ->required()
      ->type_name("DIRECTORY");
  AddReplay(*AddCommand(*trace, options, TraceCommand::Replay, "replay",
                        "Make the calls of a trace again, and compare the answers"),
            options);
  return trace;
}

} // namespace vxtool
