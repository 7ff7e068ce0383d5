#include "tools/epgcache/check/difference.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "host/mstr.h"
#include "import/import_driver.h"
#include "import/reparse.h"
#include "text/counted_text.h"
#include "tools/epgcache/check/nameless_file.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/merge/guide.h"
#include "tools/epgcache/read/byte_source.h"
#include "tools/epgcache/read/guide_reader.h"
#include "tools/epgcache/text.h"
#include "tools/epgcache/write/cache_writer.h"
#include "tools/epgcache/write/target_text.h"

namespace epgcache {

namespace {

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t bytes = DecodeUtf8(text).bytes;
    if (bytes == 0) return false;
    text.remove_prefix(bytes);
  }
  return true;
}

// Whether leaving bytes out of `whole` makes `part` of it.
bool IsPartOf(std::string_view part, std::string_view whole) {
  std::size_t at = 0;
  for (const char byte : whole) at += std::size_t{at < part.size() && part[at] == byte};
  return at == part.size();
}

std::string WithoutBlanks(std::string_view text) {
  std::string plain(text);
  std::erase_if(plain, [](char byte) { return kBlanks.find(byte) != std::string_view::npos; });
  return plain;
}

// A habit of the plug-in's importer: how it reads a text that means another, and what that is
// called. The first one that fits is taken for the cause.
struct Habit {
  bool (*fits)(std::string_view read, std::string_view meant);
  std::string_view cause;
};

// What stands for a '/' in the names of stations.
constexpr std::string_view kSlashInNames = "\u2215";

// No reference stands for more bytes than these.
constexpr std::size_t kLongestCharacter = 8;

constexpr Habit kHabits[] = {
    {[](std::string_view read, std::string_view) { return read.empty(); }, "not read"},
    {[](std::string_view, std::string_view meant) { return meant.empty(); },
     "read where the guide has none"},
    {[](std::string_view read, std::string_view meant) {
       return NeedsReParse(meant) && ReParse(meant) == read;
     },
     "its '<' or \"&#\" is resolved once more"},
    {[](std::string_view read, std::string_view) { return !IsUtf8(read); },
     "bytes of another encoding arrive as they stand"},
    {[](std::string_view read, std::string_view meant) {
       return meant.ends_with(", " + std::string(read));
     },
     "only the last of several stays"},
    {[](std::string_view read, std::string_view meant) {
       return meant.starts_with(std::string(read) + std::string(kSlashInNames));
     },
     "ends at its '/'"},
    {[](std::string_view read, std::string_view meant) {
       return WithoutBlanks(read) == WithoutBlanks(meant);
     },
     "blanks and line breaks are read otherwise"},
    {[](std::string_view read, std::string_view meant) {
       return meant.starts_with(read) && meant.size() > read.size() + kLongestCharacter;
     },
     "ends early, at an element or comment inside it"},
    {IsPartOf, "references vanish, numeric ones and names beyond XML's five"},
    {[](std::string_view, std::string_view) { return true; },
     "another one's, the last of several or of a programme with the same key"},
};

std::string_view CauseOf(std::string_view read, std::string_view meant) {
  return std::find_if(std::begin(kHabits), std::end(kHabits),
                      [&](const Habit& habit) { return habit.fits(read, meant); })
      ->cause;
}

struct ProgramField {
  const char* name;
  CText CProgram::*text;
};
constexpr ProgramField kProgramFields[] = {
    {"Title", &CProgram::title},
    {"EpisodeTitle", &CProgram::episode_title},
    {"Description", &CProgram::description},
    {"Genre", &CProgram::genre},
    {"Director", &CProgram::director},
    {"Actors", &CProgram::actors},
    {"PublishDate", &CProgram::publish_date},
    {"Language", &CProgram::language},
    {"RatingBBFC", &CProgram::rating_bbfc},
    {"StarRating", &CProgram::star_rating},
    {"BlackAndWhite", &CProgram::black_and_white},
};
struct ItemField {
  const char* name;
  CText CScheduleItem::*text;
};
constexpr ItemField kItemFieldsRead[] = {
    {"HD", &CScheduleItem::hd},
    {"Stereo", &CScheduleItem::stereo},
    {"Subtitle", &CScheduleItem::subtitle},
    {"RatingOther", &CScheduleItem::rating_other},
    {"Repeat", &CScheduleItem::repeat},
    {"Aspect", &CScheduleItem::aspect},
    {"Subtitles", &CScheduleItem::subtitles},
    {"New", &CScheduleItem::new_marker},
    {"Premiere", &CScheduleItem::premiere},
};

// No zone's time is farther from UTC, in minutes.
constexpr std::int64_t kLongestZone = std::int64_t{15} * 60;

// As scripts see it.
std::string NameOf(const CStation& station) {
  const std::string label = station.GetLabel();
  return label.substr(0, label.find('/'));
}

class Comparison {
 public:
  Comparison(const CProviderData& read, const CProviderData& meant) {
    for (std::int32_t i = 0; i < meant.GetStationCount(); ++i) {
      const CStation& station = *meant.GetStation(i);
      const CStation* const same = read.FindStation(station.key.View());
      if (same == nullptr) {
        Add("stations missing: no <channel> declares them, or the plug-in misreads it");
        Add("programmes missing with their stations",
            static_cast<std::uint64_t>(station.GetProgramCount()));
      } else {
        CompareText("Station's name", NameOf(*same), NameOf(station));
        Compare(*same, station);
      }
    }
  }

  // The most frequent first.
  std::string Text() const {
    std::vector<std::string> order = order_;
    std::stable_sort(order.begin(), order.end(), [this](const auto& a, const auto& b) {
      return counts_.at(a) > counts_.at(b);
    });
    std::string text;
    for (const std::string& what : order) {
      char count[32] = "";
      std::snprintf(count, sizeof count, "%9llu  ",
                    static_cast<unsigned long long>(counts_.at(what)));
      text += count + what + "\n";
    }
    return text;
  }

 private:
  void Add(const std::string& what, std::uint64_t count = 1) {
    if (count == 0) return;
    const auto [entry, is_new] = counts_.try_emplace(what, 0);
    if (is_new) order_.push_back(what);
    entry->second += count;
  }

  void CompareText(const std::string& what, std::string_view read, std::string_view meant) {
    if (read != meant) Add(what + ": " + std::string(CauseOf(read, meant)));
  }

  // Items are the same by their starts; the others are paired in their order, as far as a zone
  // could have put them.
  void Compare(const CStation& read, const CStation& meant) {
    std::vector<const CScheduleItem*> only_meant;
    std::map<std::int32_t, const CScheduleItem*> only_read;
    const auto keep_from = [&only_read](const CScheduleItem*& next, std::int64_t to) {
      for (; next != nullptr && next->start < to; next = next->next)
        only_read.emplace(next->start, next);
    };
    const CScheduleItem* next = read.FirstItem();
    for (const CScheduleItem* item = meant.FirstItem(); item != nullptr; item = item->next) {
      keep_from(next, item->start);
      if (next != nullptr && next->start == item->start) {
        Compare(*next, *item);
        next = next->next;
      } else {
        only_meant.push_back(item);
      }
    }
    keep_from(next, std::numeric_limits<std::int64_t>::max());
    for (const CScheduleItem* item : only_meant) {
      const auto same = only_read.lower_bound(
          static_cast<std::int32_t>(std::max<std::int64_t>(0, item->start - kLongestZone)));
      if (same == only_read.end() || same->first > item->start + kLongestZone) {
        Add("programmes missing: not read, or another one is read with their start");
      } else {
        Add("programmes with a wrong start: its zone or its form is misread");
        Compare(*same->second, *item);
        only_read.erase(same);
      }
    }
    Add("programmes that only the plug-in reads", only_read.size());
  }

  void Compare(const CScheduleItem& read, const CScheduleItem& meant) {
    if (read.end != meant.end) {
      Add(read.end < read.start ? "programmes without an end: there is no readable stop"
                                : "programmes with a wrong end: its zone or its form is misread");
    }
    const CProgram none;
    const CProgram& program = read.program != nullptr ? *read.program : none;
    for (const ProgramField& field : kProgramFields)
      CompareText(field.name, (program.*field.text).View(), (meant.program->*field.text).View());
    for (const ItemField& field : kItemFieldsRead)
      CompareText(field.name, (read.*field.text).View(), (meant.*field.text).View());
  }

  std::map<std::string, std::uint64_t> counts_;
  std::vector<std::string> order_;
};

}  // namespace

Differences FindDifferences(const CProviderData& read, const std::string& name,
                            const std::string& path, const Options& options) {
  Differences found;
  TargetText target(Encoding::kUtf8);
  Guide guide(options.guide, target);
  ByteSource source(path, options.max_size);
  source.Next();
  ReadGuide(source, options.reading, guide, [&](Fault fault) {
    fault.reason = "not well-formed: " + fault.reason;
    if (found.fault.empty()) found.fault = fault.At(name) + "\n";
  });
  guide.Finish();
  const NamelessFile listings;
  WriteCache(guide, target, [&listings](std::string_view bytes) { listings.Write(bytes); });
  ORVANE::MSTR status;
  const auto meant = ImportEPGFile(listings.Path().c_str(), status, nullptr);
  if (meant != nullptr) found.lines = Comparison(read, *meant).Text();
  return found;
}

}  // namespace epgcache
