// A guide through the companion program's pieces, and what they make of it through the plug-in's
// importer: it takes everything, and gets the texts as they were.

#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "import/import_driver.h"
#include "text/counted_text.h"
#include "tools/epgcache/byte_source.h"
#include "tools/epgcache/cache_writer.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/guide.h"
#include "tools/epgcache/guide_reader.h"
#include "tools/epgcache/losses.h"
#include "tools/epgcache/reader_walk.h"

namespace {

// Passes a guide on, and remembers its titles by station and start as the guide has them.
class Recorder final : public epgcache::GuideConsumer {
 public:
  explicit Recorder(epgcache::Guide& guide) : guide_(guide) {}
  void Add(const epgcache::Channel& channel) override { guide_.Add(channel); }
  bool Begin(const epgcache::Programme& programme) override { return guide_.Begin(programme); }
  void Add(const epgcache::Programme& programme) override {
    guide_.Add(programme);
    titles.emplace(programme.channel, programme.prog[epgcache::kTitle]);
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

// What --check does beside asking the importers.
void CheckTheCheck(const std::string& name, std::string_view bytes) {
  const auto stop = epgcache::WalkAsImporters(name, bytes);
  fuzz::Check(!stop || stop->at <= bytes.size(), "a place lies in the file");
  epgcache::Options options;
  options.max_size = 1 << 20;
  for (const auto& loss : epgcache::FindLosses(name, bytes, options).counts)
    fuzz::Check(loss.count != 0, "what is listed is lost");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(ViewOf(fuzz::MemoryFile(fuzz::View(data, size))));
  if (size != 0) CheckTheCheck(input, fuzz::View(data, size));
  // One byte of the input chooses how.
  const bool windows = size != 0 && (data[size - 1] & 1) != 0;
  epgcache::ReadingOptions reading;
  if (size != 0 && (data[size - 1] & 2) != 0) {
    reading.languages = {"en", "de"};
    reading.episodes = reading.guests = reading.presenters = true;
  }
  epgcache::GuideOptions options;
  options.default_length = 240;
  options.cut_overlaps = size != 0 && (data[size - 1] & 4) != 0;
  epgcache::TargetText text(windows ? epgcache::Encoding::kWindows1252 : epgcache::Encoding::kUtf8);
  epgcache::Guide guide(options, text);
  Recorder consumer(guide);
  for (int times = 0; times < 2; ++times) {  // the second one brings nothing new
    try {
      epgcache::ByteSource source(input, 1 << 20);
      ReadGuide(source, reading, consumer);
    } catch (const epgcache::Failure&) {
    }
    guide.NextInput();
  }
  guide.Finish();
  std::string listings;
  const auto written =
      WriteCache(guide, text, [&listings](std::string_view bytes) { listings += bytes; });
  if (written.items != 0 && !windows) CheckListings(listings, guide, consumer.titles);
  return 0;
}
