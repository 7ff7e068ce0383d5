#include "tools/epgcache/make_listings.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "tools/epgcache/byte_source.h"
#include "tools/epgcache/cache_writer.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/guide.h"
#include "tools/epgcache/output_file.h"
#include "tools/epgcache/progress.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

void Tell(const std::string& text) {
  const std::string line = "epgcache: " + text + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

// A number and what it counts, as one and as several.
struct Count {
  std::uint64_t number;
  const char* one;
  const char* several;
};

std::string TextOf(const Count& count) {
  return std::to_string(count.number) + " " + (count.number == 1 ? count.one : count.several);
}

// The counts that are not 0, a line each; the first one begins with the heading.
void AppendCounts(const char* heading, const std::vector<Count>& counts, std::string& text) {
  for (const Count& count : counts) {
    if (count.number == 0) continue;
    text += heading + TextOf(count) + "\n";
    heading = "            ";
  }
}

struct References {
  std::uint64_t of_html = 0;
  std::uint64_t unknown = 0;
};

std::string Summary(const Options& options, const GuideTally& tally, const References& references,
                    const Written& written) {
  std::string text = Shown(options.output) + ": " +
                     TextOf({written.stations, "station", "stations"}) + ", " +
                     TextOf({written.programmes, "programme", "programmes"}) + ", " +
                     TextOf({written.items, "item", "items"}) + "\n";
  const auto& repaired = tally.repaired;
  AppendCounts(
      "  repaired: ",
      {{tally.undeclared_stations, "station made that no channel element declares",
        "stations made that no channel element declares"},
       {repaired[kUnreadableStop], "stop that is no time", "stops that are no times"},
       {repaired[kStopNotAfterStart], "stop not after its start", "stops not after their starts"},
       {repaired[kEndedByNext], "missing end set to where the next programme begins",
        "missing ends set to where the next programme begins"},
       {repaired[kEndedByLength], "missing end set by --default-length",
        "missing ends set by --default-length"},
       {repaired[kCutByEarlierInput], "programme cut where an earlier input has something on",
        "programmes cut where an earlier input has something on"},
       {options.guide.cut_overlaps ? repaired[kOverlap] : 0, "overlap cut", "overlaps cut"},
       {repaired[kUnknownZone], "programme in a zone that nobody knows, taken as --zone",
        "programmes in zones that nobody knows, taken as --zone"},
       {references.of_html, "reference to a character by its HTML name",
        "references to characters by their HTML names"},
       {written.unencodable.transliterated, "character transliterated",
        "characters transliterated"}},
      text);
  AppendCounts("  kept:     ",
               {{options.guide.cut_overlaps ? 0 : repaired[kOverlap],
                 "programme that overlaps the next one", "programmes that overlap the next one"}},
               text);
  AppendCounts(
      "  dropped:  ",
      {{tally.channels_without_id, "channel without an id", "channels without an id"},
       {tally.without_channel, "programme without a channel", "programmes without a channel"},
       {tally.without_start, "programme without a readable start",
        "programmes without a readable start"},
       {tally.same_start, "programme with the start of a richer one",
        "programmes with the start of a richer one"},
       {tally.in_earlier_input, "programme where an earlier input has something on",
        "programmes where an earlier input has something on"},
       {tally.outside_time, "programme outside --from and --days",
        "programmes outside --from and --days"},
       {tally.other_stations, "programme of other stations", "programmes of other stations"},
       {references.unknown, "reference to an unknown entity", "references to unknown entities"},
       {written.unencodable.lost, "character that the encoding lacks, written as ?",
        "characters that the encoding lacks, written as ?"}},
      text);
  text.pop_back();
  return text;
}

class Converter {
 public:
  explicit Converter(const Options& options)
      : options_(options),
        progress_(!options.quiet),
        text_(options.encoding),
        guide_(options.guide, text_) {}

  int Run() {
    bool first = true;
    for (const std::string& input : options_.inputs) {
      if (!std::exchange(first, false)) guide_.NextInput();
      if (!Read(input)) return 1;
    }
    guide_.Finish();
    for (const std::string& name : guide_.MissingStations())
      Tell("no station has the id or name \"" + Shown(name) + "\"");
    bool has_items = false;
    for (const Guide::Station& station : guide_.Stations())
      has_items = has_items || !station.items.empty();
    if (!has_items) throw Failure(Shown(options_.output) + ": not written: " + WhyEmpty());
    OutputFile file(options_.output);
    const Written written =
        WriteCache(guide_, text_, [&file](std::string_view bytes) { file.Write(bytes); });
    file.Commit();
    if (!options_.output.ends_with(".xml"))
      Tell("scripts name listings without their \".xml\", so the file has to be called so");
    if (!options_.quiet) Tell(Summary(options_, guide_.Tally(), references_, written));
    return 0;
  }

 private:
  // False: the input is invalid, which has been reported, and nothing is to be written.
  bool Read(const std::string& input) {
    std::string fault;
    // A missing input is not an invalid guide.
    ByteSource source(input, options_.max_size, [&](std::uint64_t read, std::uint64_t whole) {
      progress_.Show(ShownInput(input), read, whole);
    });
    try {
      const ReadingOutcome outcome = ReadGuide(source, options_.reading, guide_);
      references_.of_html += outcome.html_references;
      references_.unknown += outcome.unknown_references;
      if (!outcome.fault.reason.empty()) {
        fault = source.Name() + ":" + std::to_string(outcome.fault.line) + ":" +
                std::to_string(outcome.fault.column) + ": " + outcome.fault.reason;
      }
    } catch (const Failure& failure) {
      if (!options_.keep_going) throw;
      fault = failure.what();
    }
    progress_.Clear();
    if (fault.empty()) return true;
    Tell(fault);
    if (!options_.keep_going)
      Tell("nothing is written; --keep-going would use what stands before this");
    return options_.keep_going;
  }

  std::string WhyEmpty() const {
    const GuideTally& tally = guide_.Tally();
    std::string counts;
    AppendCounts(
        ": ",
        {{tally.without_channel, "has no channel", "have no channel"},
         {tally.without_start, "has no readable start", "have no readable start"},
         {tally.outside_time, "is outside --from and --days", "are outside --from and --days"},
         {tally.other_stations, "is of other stations", "are of other stations"}},
        counts);
    if (counts.empty()) return "there is no programme in what was read";
    counts.pop_back();
    return "no programme is left" + counts;
  }

  const Options& options_;
  Progress progress_;
  TargetText text_;
  Guide guide_;
  References references_;
};

}  // namespace

int MakeListings(const Options& options) { return Converter(options).Run(); }

}  // namespace epgcache
