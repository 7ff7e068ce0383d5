#include "tools/epgcache/make_listings.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <utility>

#include "tools/epgcache/answer.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/merge/guide.h"
#include "tools/epgcache/progress.h"
#include "tools/epgcache/read/byte_source.h"
#include "tools/epgcache/text.h"
#include "tools/epgcache/write/cache_writer.h"
#include "tools/epgcache/write/output_file.h"

namespace epgcache {

namespace {

void Tell(const std::string& text) {
  const std::string line = "epgcache: " + text + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

// What a count is called, as one and as several.
struct Line {
  Count count;
  const char* one;
  const char* several;
};

constexpr Line kRepaired[] = {
    {kUndeclaredStations, "station made that no channel element declares",
     "stations made that no channel element declares"},
    {kMendedPlaces, "place mended that is not well-formed",
     "places mended that are not well-formed"},
    {kUnreadableStop, "stop that cannot be read", "stops that cannot be read"},
    {kStopNotAfterStart, "stop not after its start", "stops not after their starts"},
    {kBrief, "programme of less than a minute, which gets one",
     "programmes of less than a minute, which get one"},
    {kEndedByNext, "missing end set to where the next programme begins",
     "missing ends set to where the next programme begins"},
    {kEndedByLength, "missing end set by --default-length", "missing ends set by --default-length"},
    {kCutByEarlierInput, "programme cut where an earlier input has something on",
     "programmes cut where an earlier input has something on"},
    {kOverlapCut, "overlap cut", "overlaps cut"},
    {kUnknownZone, "programme in an unknown time zone, taken as --zone",
     "programmes in unknown time zones, taken as --zone"},
    {kMissingZone, "programme whose times name no zone, taken as UTC; --zone says otherwise",
     "programmes whose times name no zone, taken as UTC; --zone says otherwise"},
    {kHtmlReferences, "reference to a character by its HTML name",
     "references to characters by their HTML names"},
    {kSlashes, "'/' in a station's name, where the plug-in would cut it, replaced",
     "'/' in stations' names, where the plug-in would cut them, replaced"},
    {kTransliterated, "character transliterated", "characters transliterated"},
};
constexpr Line kKept[] = {
    {kOverlapKept, "programme that overlaps the next one", "programmes that overlap the next one"}};
constexpr Line kDropped[] = {
    {kChannelsWithoutId, "channel without an id", "channels without an id"},
    {kWithoutChannel, "programme without a channel", "programmes without a channel"},
    {kWithoutStart, "programme without a readable start", "programmes without a readable start"},
    {kSameStart, "programme with the start of a more detailed one",
     "programmes with the start of a more detailed one"},
    {kInEarlierInput, "programme where an earlier input has something on",
     "programmes where an earlier input has something on"},
    {kOutsideTime, "programme outside --from and --days", "programmes outside --from and --days"},
    {kOtherStations, "programme of other stations", "programmes of other stations"},
    {kUnknownReferences, "reference to an unknown entity", "references to unknown entities"},
    {kLostCharacters, "character that the encoding does not have, written as ?",
     "characters that the encoding does not have, written as ?"},
};
constexpr Line kWhyEmpty[] = {
    {kWithoutChannel, "has no channel", "have no channel"},
    {kWithoutStart, "has no readable start", "have no readable start"},
    {kOutsideTime, "is outside --from and --days", "are outside --from and --days"},
    {kOtherStations, "is of other stations", "are of other stations"},
};

std::string Counted(std::uint64_t number, const char* one, const char* several) {
  return std::to_string(number) + " " + (number == 1 ? one : several);
}

// The counts that are not 0, a line each; the first one begins with the heading.
std::string Lines(const char* heading, std::span<const Line> lines, const Tally& tally) {
  std::string text;
  for (const Line& line : lines) {
    if (tally[line.count] == 0) continue;
    text += heading + Counted(tally[line.count], line.one, line.several) + "\n";
    heading = "            ";
  }
  return text;
}

std::string Summary(const std::string& output, const Written& written, const Tally& tally) {
  std::string text = Shown(output) + ": " + Counted(written.stations, "station", "stations") +
                     ", " + Counted(written.programmes, "programme", "programmes") + ", " +
                     Counted(written.items, "item", "items") + "\n" +
                     Lines("  repaired: ", kRepaired, tally) + Lines("  kept:     ", kKept, tally) +
                     Lines("  dropped:  ", kDropped, tally);
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
    for (std::size_t i = 0; i < tally_.size(); ++i) tally_[i] += guide_.Tally()[i];
    for (const auto& [name, near] : guide_.MissingStations()) {
      Tell("no station has the id or name \"" + Shown(name) + "\"" +
           (near.empty() ? "" : "; did you mean \"" + Shown(near) + "\"?"));
    }
    if (options_.list) return List();
    bool has_items = false;
    for (const Guide::Station& station : guide_.Stations())
      has_items = has_items || !station.items.empty();
    if (!has_items) throw Failure(Shown(options_.output) + ": not written: " + WhyEmpty());
    OutputFile file(options_.output);
    const Written written =
        WriteCache(guide_, text_, [&file](std::string_view bytes) { file.Write(bytes); });
    file.Commit();
    if (!options_.output.ends_with(".xml"))
      Tell("scripts name listings without their \".xml\", so the file's name must end in it");
    tally_[kTransliterated] = written.unencodable.transliterated;
    tally_[kLostCharacters] = written.unencodable.lost;
    tally_[kSlashes] = written.slashes;
    if (!options_.quiet) Tell(Summary(options_.output, written, tally_));
    return 0;
  }

 private:
  // False: an input is invalid, which has been reported, and nothing is to be written.
  bool Read(const std::string& input) {
    // A missing input is not an invalid guide.
    ByteSource source(input, options_.max_size, [&](std::uint64_t read, std::uint64_t whole) {
      progress_.Show(ShownInput(input), read, whole);
    });
    std::string fault;
    try {
      while (fault.empty() && source.Next()) fault = ReadDocument(source);
    } catch (const Failure& failure) {
      if (!options_.keep_going) throw;
      fault = failure.what();
    }
    progress_.Clear();
    if (!fault.empty()) Tell(fault);
    if (!fault.empty() && !options_.keep_going)
      Tell(
          "nothing is written; --keep-going mends such places, or keeps what comes before this "
          "one");
    return fault.empty() || options_.keep_going;
  }

  // Why it cannot be read to its end; empty when it can.
  std::string ReadDocument(ByteSource& source) {
    constexpr std::uint64_t kMostTold = 20;
    std::uint64_t mended = 0;
    const auto tell_mended = [&](const Fault& fault) {
      progress_.Clear();
      if (++mended <= kMostTold) Tell(fault.At(source.Name()));
    };
    ReadingOutcome outcome;
    try {
      outcome = ReadGuide(source, options_.reading, guide_,
                          options_.keep_going ? FaultSink(tell_mended) : nullptr);
    } catch (const Failure& failure) {
      // Another file of the archive may be a guide.
      if (!options_.keep_going || source.HasFailed()) throw;
      Tell(failure.what());
    }
    if (mended > kMostTold)
      Tell(source.Name() + ": and " + std::to_string(mended - kMostTold) + " more places");
    tally_[kMendedPlaces] += mended;
    tally_[kHtmlReferences] += outcome.html_references;
    tally_[kUnknownReferences] += outcome.unknown_references;
    return outcome.fault.reason.empty() ? "" : outcome.fault.At(source.Name());
  }

  // A line for each station: number of programmes, range, id, names.
  int List() const {
    std::string text;
    for (const Guide::Station& station : guide_.Stations()) {
      std::int32_t end = Guide::kNoEnd;
      for (const Guide::Item& item : station.items) end = std::max(end, item.end);
      const auto time = [&](std::int32_t minutes) {
        return station.items.empty() ? std::string(16, ' ')
                                     : TextOfTime(minutes, options_.guide.zone);
      };
      const std::int32_t start = station.items.empty() ? 0 : station.items.front().start;
      const std::string number = std::to_string(station.items.size());
      text += std::string(7 - std::min<std::size_t>(number.size(), 6), ' ') + number + "  " +
              time(start) + (station.items.empty() ? "    " : " to ") + time(end) + "  " +
              Shown(station.id);
      for (const std::string& name : station.names) text += "  " + Shown(name);
      text += "\n";
    }
    WriteAnswer(text);
    return guide_.Stations().empty() ? 1 : 0;
  }

  std::string WhyEmpty() const {
    std::string text = Lines(": ", kWhyEmpty, tally_);
    if (text.empty()) return "there is no programme in what was read";
    text.pop_back();
    return "no programme is left" + text;
  }

  const Options& options_;
  Progress progress_;
  TargetText text_;
  Guide guide_;
  Tally tally_ = {};
};

}  // namespace

int MakeListings(const Options& options) { return Converter(options).Run(); }

}  // namespace epgcache
