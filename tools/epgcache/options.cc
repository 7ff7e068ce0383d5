#include "tools/epgcache/options.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr int kUsageStatus = 2;

constexpr const char* kAbout =
    "Makes listings for the guide plug-in out of XMLTV guides, plain or packed.";

constexpr const char* kFooter =
    "\nInputs merge: where two have something on a station at a time, the first one wins.\n"
    "\n"
    "  epgcache guide.xml.gz -o listings.xml\n"
    "  epgcache near.xml far.xml.xz --zone Europe/Rome --days 7 -o listings.xml\n"
    "  epgcache --list guide.xml.zst\n"
    "  epgcache --check guide.xml\n"
    "\n"
    "Exit status: 0 when all is well, 1 when a guide or the output is not, 2 for wrong options.";

// As the options are written, before they are understood.
struct Texts {
  std::string zone = "UTC";
  std::string from;
  std::int32_t days = 0;
};

void Declare(CLI::App& app, Options& options, Texts& texts) {
  constexpr std::int32_t kMostMinutes = 7 * 1440;
  const std::map<std::string, Encoding> encodings = {{"utf-8", Encoding::kUtf8},
                                                     {"windows-1252", Encoding::kWindows1252}};
  const std::map<std::string, bool> overlaps = {{"keep", false}, {"cut", true}};
  app.set_version_flag("-V,--version", "epgcache " EPG_VERSION);
  app.add_option("INPUT", options.inputs, "XMLTV guides; - is standard input");
  auto* const output = app.add_option("-o,--output", options.output, "the listings file to write")
                           ->type_name("FILE");
  auto* const check = app.add_flag("--check", options.check,
                                   "say whether the plug-in would take the file as it stands");
  auto* const list = app.add_flag("--list", options.list, "show the stations, and write nothing");
  auto* const elements =
      app.add_flag("--elements", options.elements, "show which element becomes which field");
  output->excludes(check, list, elements);
  check->excludes(list, elements);
  app.add_option("--lang", options.reading.languages, "languages of texts, the best first: en,de")
      ->allow_extra_args(false)
      ->type_name("LIST");
  app.add_option("--encoding", options.encoding, "of the output: utf-8 or windows-1252")
      ->transform(CLI::Transformer(encodings, CLI::ignore_case))
      ->type_name("NAME");
  app.add_flag("--episodes", options.reading.episodes, "episode numbers after sub-titles");
  app.add_flag("--presenters", options.reading.presenters, "presenters among the actors");
  app.add_flag("--guests", options.reading.guests, "guests among the actors");
  app.add_option("--zone", texts.zone,
                 "of times without one: +0100, Europe/Rome, local (default UTC)")
      ->type_name("ZONE");
  app.add_option("--default-length", options.guide.default_length,
                 "minutes that a programme lasts at most when it has no stop (default 240)")
      ->check(CLI::Range(1, kMostMinutes))
      ->type_name("MINUTES");
  app.add_option("--overlaps", options.guide.cut_overlaps,
                 "keep them, or cut programmes where the next one begins (default keep)")
      ->transform(CLI::Transformer(overlaps))
      ->type_name("keep|cut");
  app.add_option("--from", texts.from,
                 "leave out what is over by then: 2026-11-23, \"2026-11-23 20:15\", today, now")
      ->type_name("TIME");
  app.add_option("--days", texts.days, "leave out what begins so many days later (from today)")
      ->check(CLI::Range(1, 3660))
      ->type_name("N");
  app.add_option("--stations", options.guide.stations,
                 "these alone, and in this order, by id or name, of which * and ? stand for any "
                 "letters, or @FILE with one a line: one.example,\"Two*\"")
      ->allow_extra_args(false)
      ->type_name("LIST");
  app.add_flag("--keep-going", options.keep_going,
               "mend or pass over what is not well-formed in a guide");
  app.add_option("--max-size", options.max_size,
                 "bytes of an input, unpacked: 500M, 4G (default 4G)")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::PositiveNumber)
      ->type_name("SIZE");
  app.add_flag("-q,--quiet", options.quiet, "no summary and no progress");
}

// Parts a list at its commas.
void Split(const char* option, std::vector<std::string>& list) {
  std::vector<std::string> entries;
  for (const std::string& part : list) {
    std::istringstream text(part);
    for (std::string entry; std::getline(text, entry, ',');) {
      if (!IsBlank(entry)) entries.emplace_back(Trimmed(entry));
    }
  }
  if (entries.empty() && !list.empty()) throw CLI::ValidationError(option, "it names nothing");
  list = std::move(entries);
}

// Puts the lines of a file in the place of its name.
std::vector<std::string> WithFiles(const std::vector<std::string>& list) {
  std::vector<std::string> entries;
  for (const std::string& entry : list) {
    if (entry.front() != '@') {
      entries.push_back(entry);
      continue;
    }
    std::ifstream file(entry.substr(1));
    if (!file) throw CLI::ValidationError("--stations", Shown(entry.substr(1)) + " cannot be read");
    for (std::string line; std::getline(file, line);) {
      if (!IsBlank(line) && !line.starts_with('#')) entries.emplace_back(Trimmed(line));
    }
  }
  return entries;
}

void Interpret(const Texts& texts, Options& options) {
  Split("--lang", options.reading.languages);
  Split("--stations", options.guide.stations);
  options.guide.stations = WithFiles(options.guide.stations);
  if (options.check && options.inputs.size() != 1)
    throw CLI::ValidationError("--check", "it takes one FILE");
  if (options.inputs.empty() && !options.elements) throw CLI::RequiredError("INPUT");
  const bool shows = options.check || options.list || options.elements;
  if (!shows && options.output.empty())
    throw CLI::ValidationError("--output", "it says where to write to, and is missing");
  if (options.output == "-") throw CLI::ValidationError("--output", "it is a file; - is none");
  if (options.inputs.size() > Guide::kMostInputs) throw CLI::ValidationError("INPUT", "too many");
  const auto zone = Zone::Of(texts.zone);
  if (!zone) throw CLI::ValidationError("--zone", Shown(texts.zone) + " is not a time zone");
  options.guide.zone = *zone;
  if (texts.from.empty() && texts.days == 0) return;
  const auto from = ParseTimeOfOption(texts.from.empty() ? "today" : texts.from, *zone);
  if (!from) throw CLI::ValidationError("--from", Shown(texts.from) + " is not a time");
  options.guide.from = *from;
  if (texts.days != 0) {
    // Days of the zone, which may have an hour more or less.
    options.guide.to =
        zone->ToUtc(zone->ToClock(std::int64_t{*from} * 60) + std::int64_t{texts.days} * 86'400) /
        60;
  }
}

}  // namespace

CommandLine ReadCommandLine(int count, char** arguments) {
  Options options;
  options.guide.default_length = 240;
  Texts texts;
  CLI::App app(kAbout, "epgcache");
  app.footer(kFooter);
  Declare(app, options, texts);
  try {
    if (count == 2 && std::string_view(arguments[1]) == "help") throw CLI::CallForHelp();
    app.parse(count, arguments);
    options.guide.zone_is_chosen = app.count("--zone") != 0;
    Interpret(texts, options);
  } catch (const CLI::Success& asked_for) {
    const int status = app.exit(asked_for);
    if (!std::cout.flush()) throw Failure("the answer cannot be written");
    return {std::nullopt, status};
  } catch (const CLI::Error& error) {
    std::fprintf(stderr, "epgcache: %s\nTry epgcache --help.\n", Shown(error.what()).c_str());
    return {std::nullopt, kUsageStatus};
  }
  return {std::move(options), 0};
}

}  // namespace epgcache
