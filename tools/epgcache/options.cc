#include "tools/epgcache/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr int kUsageStatus = 2;

constexpr const char* kAbout =
    "Makes listings for the guide plug-in out of XMLTV guides, plain, gzip or xz.";

constexpr const char* kFooter =
    "\nInputs merge: where two have something on a station at a time, the first one wins.\n"
    "\n"
    "  epgcache guide.xml.gz -o listings.xml\n"
    "  epgcache near.xml far.xml.xz --zone Europe/Rome --days 7 -o listings.xml\n"
    "  epgcache --check guide.xml\n"
    "\n"
    "Exit status: 0 when all is well, 1 when a guide or the output is not, 2 for wrong options.";

// As the options are written, before they are understood.
struct Texts {
  std::string zone = "UTC";
  std::string from;
  std::int32_t days = 0;
  std::string encoding = "utf-8";
  std::string overlaps = "keep";
  std::string max_size = "4G";
};

// A number of bytes above 0; K, M and G behind it multiply by powers of 1024.
std::optional<std::uint64_t> ReadSize(std::string_view text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc()) return std::nullopt;
  if (behind != end) {
    constexpr std::string_view kUnits = "kmgt";
    const std::size_t unit = kUnits.find(Lower(*behind));
    if (unit == std::string_view::npos || behind + 1 != end) return std::nullopt;
    number *= static_cast<double>(std::uint64_t{1024} << (10 * unit));
  }
  constexpr double kMost = 1e18;
  if (!(number >= 1 && number <= kMost)) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

void Declare(CLI::App& app, Options& options, Texts& texts) {
  constexpr std::int32_t kMostMinutes = 7 * 1440;
  app.set_version_flag("-V,--version", "epgcache " EPG_VERSION);
  app.add_option("INPUT", options.inputs, "XMLTV guides; - is standard input");
  auto* const output = app.add_option("-o,--output", options.output, "the listings file to write");
  auto* const check = app.add_flag("--check", options.check,
                                   "say whether the plug-in would take the file as it stands");
  output->excludes(check);
  app.add_option("--lang", options.reading.languages, "languages of texts, the best first: en,de")
      ->allow_extra_args(false);
  app.add_option("--encoding", texts.encoding, "of the output: utf-8 or windows-1252")
      ->check(CLI::IsMember({"utf-8", "windows-1252"}, CLI::ignore_case));
  app.add_flag("--episodes", options.reading.episodes, "episode numbers behind sub-titles");
  app.add_flag("--presenters", options.reading.presenters, "presenters among the actors");
  app.add_flag("--guests", options.reading.guests, "guests among the actors");
  app.add_option("--zone", texts.zone,
                 "of times without one: +0100, Europe/Rome, local (default UTC)");
  app.add_option("--default-length", options.guide.default_length,
                 "minutes that a programme lasts at most when it has no stop (default 240)")
      ->check(CLI::Range(1, kMostMinutes));
  app.add_option("--overlaps", texts.overlaps,
                 "keep them, or cut programmes where the next one begins (default keep)")
      ->check(CLI::IsMember({"keep", "cut"}));
  app.add_option("--from", texts.from,
                 "leave out what is over by then: 2026-11-23, \"2026-11-23 20:15\", today, now");
  app.add_option("--days", texts.days, "leave out what begins so many days later (from today)")
      ->check(CLI::Range(1, 3660));
  app.add_option("--stations", options.guide.stations,
                 "these alone, and in this order, by id or name: one.example,\"Two HD\"")
      ->allow_extra_args(false);
  app.add_flag("--keep-going", options.keep_going,
               "use what stands before the fault in a guide that is not well-formed");
  app.add_option("--max-size", texts.max_size,
                 "bytes of an input, unpacked: 500M, 1.5G (default 4G)");
  app.add_flag("-q,--quiet", options.quiet, "no summary and no progress");
}

// Parts an option's lists at commas; false when it was given and names nothing.
bool SplitList(std::vector<std::string>& list) {
  std::vector<std::string> entries;
  for (const std::string_view text : list) {
    for (std::size_t begin = 0; begin <= text.size();) {
      const std::size_t end = std::min(text.find(',', begin), text.size());
      const std::string_view entry = Trimmed(text.substr(begin, end - begin));
      if (!entry.empty()) entries.emplace_back(entry);
      begin = end + 1;
    }
  }
  const bool names_nothing = entries.empty() && !list.empty();
  list = std::move(entries);
  return !names_nothing;
}

void Interpret(const Texts& texts, Options& options) {
  if (options.check && options.inputs.size() != 1)
    throw CLI::ValidationError("--check", "it takes one FILE");
  if (!SplitList(options.reading.languages))
    throw CLI::ValidationError("--lang", "it names no language");
  if (!SplitList(options.guide.stations))
    throw CLI::ValidationError("--stations", "it names no station");
  if (options.inputs.empty()) throw CLI::RequiredError("INPUT");
  if (!options.check && options.output.empty())
    throw CLI::ValidationError("--output", "it says where to write to, and is missing");
  if (SameLetters(texts.encoding, "windows-1252")) options.encoding = Encoding::kWindows1252;
  if (options.output == "-") throw CLI::ValidationError("--output", "it is a file; - is none");
  if (options.inputs.size() > Guide::kMostInputs) throw CLI::ValidationError("INPUT", "too many");
  const auto size = ReadSize(texts.max_size);
  if (!size) throw CLI::ValidationError("--max-size", Shown(texts.max_size) + " is no size");
  options.max_size = *size;
  options.guide.cut_overlaps = texts.overlaps == "cut";
  const auto zone = Zone::Of(texts.zone);
  if (!zone) throw CLI::ValidationError("--zone", Shown(texts.zone) + " is no time zone");
  options.guide.zone = *zone;
  if (texts.from.empty() && texts.days == 0) return;
  const auto from = ParseTimeOfOption(texts.from.empty() ? "today" : texts.from, *zone);
  if (!from) throw CLI::ValidationError("--from", Shown(texts.from) + " is no time");
  options.guide.from = *from;
  if (texts.days != 0) {
    // Days of the zone, which may have an hour more or less.
    options.guide.to = zone->ToUtc(zone->ToClock(*from) + std::int64_t{texts.days} * 1440);
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
