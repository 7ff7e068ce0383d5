// A guide through the companion program's pieces, and what they make of it through the plug-in's
// importer: it takes everything, and gets the texts as they were.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "import/import_driver.h"
#include "text/counted_text.h"
#include "tools/epgcache/check/difference.h"
#include "tools/epgcache/check/reader_walk.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/merge/guide.h"
#include "tools/epgcache/read/byte_source.h"
#include "tools/epgcache/read/guide_reader.h"
#include "tools/epgcache/write/cache_writer.h"

namespace {

constexpr std::uint64_t kMostBytes = 1 << 20;

// Passes a guide on, and remembers its titles by station and start as the guide has them.
class Recorder final : public epgcache::GuideConsumer {
 public:
  explicit Recorder(epgcache::Guide& guide) : guide_(guide) {}
  void Add(const epgcache::Channel& channel) override { guide_.Add(channel); }
  bool Begin(const epgcache::Programme& programme) override { return guide_.Begin(programme); }
  void Add(const epgcache::Programme& programme) override {
    guide_.Add(programme);
    titles.emplace(programme.channel, programme.fields[epgcache::kTitle]);
  }
  std::multimap<std::string, std::string> titles;

 private:
  epgcache::Guide& guide_;
};

void CheckListings(const std::string& listings, const epgcache::Guide& guide,
                   const std::multimap<std::string, std::string>& titles) {
  ORVANE::MSTR status;
  const auto store = ImportEPGFile(fuzz::MemoryFile(listings), status, nullptr);
  fuzz::Check(store != nullptr, "the plug-in takes what is written");
  fuzz::CheckSchedule(*store);
  const auto stations = static_cast<std::int32_t>(guide.Stations().size());
  fuzz::Check(store->GetStationCount() == stations, "every station arrives");
  for (std::int32_t i = 0; i < stations; ++i) {
    const auto& station = guide.Stations()[static_cast<std::size_t>(i)];
    const CStation& loaded = *store->GetStation(i);
    fuzz::Check(static_cast<std::size_t>(loaded.GetProgramCount()) == station.items.size(),
                "every item arrives");
    const auto [first, last] = titles.equal_range(station.id);
    for (std::int32_t j = 0; j < loaded.GetProgramCount(); ++j) {
      const CScheduleItem& item = *loaded.GetProgram(j);
      fuzz::Check(item.program != nullptr, "every item has its programme");
      bool known = false;
      for (auto title = first; title != last; ++title)
        known = known || item.program->title == std::string_view(title->second);
      fuzz::Check(known, "a title arrives byte for byte");
    }
  }
}

// What --check does beside asking the importers for their verdict.
void CheckTheCheck(const std::string& name, std::string_view bytes) {
  const auto stop = epgcache::WalkAsImporters(name, bytes);
  fuzz::Check(!stop || stop->at <= bytes.size(), "a place lies in the file");
  ORVANE::MSTR status;
  const auto store = ImportEPGFile(name.c_str(), status, nullptr);
  if (store == nullptr) return;
  epgcache::Options options;
  options.max_size = kMostBytes;
  options.guide.default_length = 240;
  try {
    FindDifferences(*store, name, name, options);
  } catch (const epgcache::Failure&) {
  }
}

struct Settings {
  epgcache::ReadingOptions reading;
  epgcache::GuideOptions guide;
  epgcache::Encoding encoding = epgcache::Encoding::kUtf8;
  bool mends = false;
};

struct Made {
  std::string listings;
  bool has_items = false;
  bool has_fault = true;
  int mended = 0;
};

Made MakeListings(std::string_view bytes, const Settings& settings) {
  // There is one at a time.
  const std::string input(ViewOf(fuzz::MemoryFile(bytes)));
  Made made;
  epgcache::TargetText text(settings.encoding);
  epgcache::Guide guide(settings.guide, text);
  Recorder consumer(guide);
  const auto tell = [&made](const epgcache::Fault& fault) {
    fuzz::Check(fault.line > 0 && fault.column > 0 && !fault.reason.empty(), "a place is told");
    ++made.mended;
  };
  for (int times = 0; times < 2; ++times) {  // the second one brings nothing new
    try {
      epgcache::ByteSource source(input, kMostBytes);
      while (source.Next()) {
        const auto outcome = ReadGuide(source, settings.reading, consumer,
                                       settings.mends ? epgcache::FaultSink(tell) : nullptr);
        made.has_fault = !outcome.fault.reason.empty();
      }
    } catch (const epgcache::Failure&) {
    }
    guide.NextInput();
  }
  guide.Finish();
  const auto written =
      WriteCache(guide, text, [&made](std::string_view more) { made.listings += more; });
  made.has_items = written.items != 0;
  if (made.has_items && settings.encoding == epgcache::Encoding::kUtf8)
    CheckListings(made.listings, guide, consumer.titles);
  return made;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes = fuzz::View(data, size);
  CheckTheCheck(std::string(ViewOf(fuzz::MemoryFile(bytes))), bytes);
  // One byte of the input chooses how.
  const unsigned choice = data[size - 1];
  Settings settings;
  if ((choice & 1) != 0) settings.encoding = epgcache::Encoding::kWindows1252;
  if ((choice & 2) != 0) {
    settings.reading.languages = {"en", "de"};
    settings.reading.episodes = settings.reading.guests = settings.reading.presenters = true;
  }
  settings.guide.default_length = 240;
  settings.guide.cut_overlaps = (choice & 4) != 0;
  const Made strict = MakeListings(bytes, settings);
  settings.mends = true;
  const Made mended = MakeListings(bytes, settings);
  fuzz::Check(strict.has_fault || mended.mended != 0 || mended.listings == strict.listings,
              "what is well-formed stays as it is");
  return 0;
}
