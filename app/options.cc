#include "app/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "app/complain.h"
#include "app/load_report.h"
#include "app/local_time.h"
#include "app/run_command.h"

namespace shell {

namespace {

constexpr const char* kAbout =
    "Shows the programme guide of a listings file, searches it, or runs script calls,\n"
    "through the programme guide plug-in.";

constexpr const char* kFooter =
    "\nLISTINGS is a listings file, with or without its .xml; the environment variable\n"
    "EPG_LISTINGS names one where it is left out. Times are local: 20:15, \"tomorrow 8pm\",\n"
    "\"2026-11-23 20:15\", \"23 Nov\", Monday. LIST is stations by index (7, 0-9) or name, also "
    "in\n"
    "part, separated by commas.\n"
    "\n"
    "  epgshell guide samples/week --at 20:00\n"
    "  epgshell find samples/week orchard --in title\n"
    "\n"
    "Exit status: 0 all was shown or every call succeeded; 1 there is nothing to show, a call\n"
    "failed or the output could not be written; 2 nothing was done.";

// The parts of a list with commas, without the blanks around them.
std::vector<std::string> Split(std::string_view list) {
  std::vector<std::string> parts;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    std::string_view part = list.substr(0, end);
    part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
    part = part.substr(0, part.find_last_not_of(' ') + 1);
    if (!part.empty()) parts.emplace_back(part);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return parts;
}

// Lists as they are written, to be parsed when all options are read.
struct Lists {
  std::string stations;
  std::string fields;
};

void CheckTime(const char* option, const std::string& text) {
  if (text.empty() || ReadMoment(text, 0)) return;
  throw CLI::ValidationError(
      option, text +
                  " is not a time; write it as 20:15, \"tomorrow 20:15\", \"2026-11-23 20:15\" or "
                  "\"23 Nov 8pm\"");
}

void Interpret(const Lists& lists, Options& options) {
  options.stations = Split(lists.stations);
  if (options.stations.empty() && !lists.stations.empty())
    throw CLI::ValidationError("--stations", "it names no station");
  options.fields = Split(lists.fields);
  for (const std::string& field : options.fields) {
    constexpr std::string_view kFields[] = {"title", "episode", "people", "description"};
    if (std::find(std::begin(kFields), std::end(kFields), field) == std::end(kFields))
      throw CLI::ValidationError("--in",
                                 field +
                                     " is not a field; there are title, episode, people and "
                                     "description");
  }
  CheckTime("--at", options.at);
  CheckTime("--from", options.from);
  if (options.details.empty() && !options.program_template.empty())
    throw CLI::ValidationError("--template", "it goes with --details");
  if (options.command == Command::kRun) return;
  const char* const usual = std::getenv("EPG_LISTINGS");
  if (options.command == Command::kFind) {
    // All words are LISTINGS TEXT..., or TEXT... alone.
    if (!options.words.empty() && (usual == nullptr || IsListings(options.words[0]))) {
      options.listings = options.words[0];
      options.words.erase(options.words.begin());
    }
    if (options.words.empty()) throw CLI::RequiredError("TEXT");
  }
  if (options.listings.empty() && usual != nullptr) options.listings = usual;
  if (options.listings.empty()) throw CLI::RequiredError("LISTINGS");
}

void AddShared(CLI::App& command, Options& options, Lists& lists) {
  command.add_option("--stations", lists.stations, "these stations only: LIST");
  command.add_flag("--json", options.json, "print JSON instead");
}

void Declare(CLI::App& app, Options& options, Lists& lists) {
  app.set_version_flag("-V,--version", "epgshell " EPG_VERSION);
  app.set_help_flag("-h,--help", "print this help and exit");
  app.add_option("--plugin", options.plugin,
                 "the plug-in to load (default: " EPG_MODULE_FILE
                 " beside this program, or where it is installed)");
  app.require_subcommand(0, 1);
  app.allow_windows_style_options(false);  // the same command lines everywhere; / begins a path

  CLI::App& guide = *app.add_subcommand("guide", "show stations as rows and time as columns");
  guide.add_option("LISTINGS", options.listings, "the listings file");
  guide.add_option("--at", options.at, "start at this time (default: now)");
  guide.add_option("--hours", options.hours, "show so many hours (default 3)")
      ->check(CLI::Range(1, 24 * 14));
  guide.add_option("--details", options.details, "list this station's programmes instead");
  guide.add_option("--template", options.program_template,
                   "what to show of each, in the language of GetProgramData");
  AddShared(guide, options, lists);
  guide.add_option("--html", options.html, "write the whole guide as a web page to this file")
      ->excludes("--json");
  guide.callback([&options] { options.command = Command::kGuide; });

  CLI::App& now = *app.add_subcommand("now", "show what is on, and what follows");
  now.add_option("LISTINGS", options.listings, "the listings file");
  now.add_option("--at", options.at, "at this time (default: now)");
  AddShared(now, options, lists);
  now.callback([&options] { options.command = Command::kNow; });

  CLI::App& find = *app.add_subcommand("find", "search for programmes");
  find.add_option("LISTINGS", options.words, "the listings file, then the words to find")
      ->type_name("LISTINGS TEXT...");
  find.add_option("--in", lists.fields, "search title, episode, people, description only");
  find.add_option("--from", options.from, "search from this time (default: all)");
  find.add_option("--days", options.days, "search so many days")->check(CLI::Range(1, 3660));
  AddShared(find, options, lists);
  find.callback([&options] { options.command = Command::kFind; });

  CLI::App& stations = *app.add_subcommand("stations", "list the stations");
  stations.add_option("LISTINGS", options.listings, "the listings file");
  AddShared(stations, options, lists);
  stations.callback([&options] { options.command = Command::kStations; });

  CLI::App& run = *app.add_subcommand("run", "run the calls of a script, one a line");
  run.add_option("SCRIPT", options.script, "the script (default: -, standard input)");
  run.callback([&options] { options.command = Command::kRun; });

  for (CLI::App* const command : app.get_subcommands(nullptr)) {
    command->set_help_flag("-h,--help", "print this help and exit");
    command->footer("");
    command->fallthrough();  // --plugin may come after the command
  }
  app.footer(kFooter);
}

}  // namespace

std::optional<Options> ReadOptions(int count, const char* const* arguments, int& status) {
  Options options = {};
  options.script = "-";
  Lists lists;
  CLI::App app(kAbout, "epgshell");
  Declare(app, options, lists);
  try {
    const bool help = count == 2 && std::string_view(arguments[1]) == "help";
    if (help) throw CLI::CallForHelp();
    app.parse(count, arguments);
    if (app.get_subcommands().empty())
      throw CLI::ValidationError("name a command", "guide, now, find, stations or run");
    Interpret(lists, options);
    return options;
  } catch (const CLI::Success& asked_for) {
    status = app.exit(asked_for);
    if (!std::cout.flush()) {
      ComplainAsShell("cannot write to standard output");
      status = kCallFailed;
    }
  } catch (const CLI::Error& error) {
    ComplainAsShell(std::string(error.what()) + "\nTry epgshell --help.");
    status = kNotRun;
  }
  return std::nullopt;
}

}  // namespace shell
