#include "import/cache_load.h"

#include <cstdint>
#include <memory>
#include <string_view>

#include "import/listings_import.h"
#include "import/program_finder.h"
#include "import/record_readers.h"
#include "platform/services.h"
#include "text/counted_text.h"
#include "text/letters.h"

using ORVANE::MSTR;

namespace {

// The numbers of the fields are the format's, whatever kind of provider the data came from.
constexpr ProviderKind kNumbered = ProviderKind::kOther;

bool LoadPrograms(CCacheLoad& load) {
  CSafeNode& record = load.record;
  return ForEachRecord(load.reader, load.collection.name, record, load.status, [&] {
    if (ViewOf(record.name) != "Prog") return;
    auto program = load.store.NewProgram();
    ReadProgramFields(load.reader.Children(), program);
    load.store.AddProgram(program);  // the first of a key wins
  });
}

// Reads the content of an open `Station` element, up to and including its end tag, into `station`.
// Gives the number of items added, or -1 when the load has failed; its status says why.
std::int32_t LoadCacheStation(CCacheLoad& load, CStation& station) {
  CSafeNode& child = load.station_child;
  CSafeNode& item_node = load.item;
  std::int32_t added = 0;
  CProgramFinder programs(load.store);
  const auto load_item = [&] {
    if (ViewOf(item_node.name) != "Item") return;
    auto item = load.store.NewItem();
    ReadScheduleItemFields(load.reader.Children(), item);
    CScheduleItem& filed = *item;
    if (!station.Insert(item)) return;
    programs.Add(filed);
    ++added;
  };
  const auto load_child = [&](bool open) {
    if (!open) return true;
    if (ViewOf(child.name) == "StationData") {
      if (!load.reader.ReadChildren(child, load.status)) return false;
      ReadStationFields(child, kNumbered, station, load.store.Memory().texts);
      return true;
    }
    if (ViewOf(child.name) == "Schedule") {
      return ForEachRecord(load.reader, child.name, item_node, load.status, load_item);
    }
    load.status.Format("Unknown element, <%s>, in <Station> data.", child.name.text);
    return false;
  };
  if (!ForEachChild(load.reader, load.record.name, child, load.status, load_child)) return -1;
  programs.Finish();
  return added;
}

bool LoadStations(CCacheLoad& load) {
  CSafeNode& record = load.record;
  return ForEachChild(load.reader, load.collection.name, record, load.status, [&](bool open) {
    if (!open) return true;
    if (ViewOf(record.name) != "Station") return load.reader.ReadChildren(record.name, load.status);
    CScheduleMemory& memory = load.store.Memory();
    const CScheduleMemory::Mark before = memory.GetMark();
    auto station = std::make_unique<CStation>();
    if (LoadCacheStation(load, *station) < 0) return false;
    if (!load.store.AddStation(station)) memory.WindBack(before);  // the first of a key wins
    return true;
  });
}

bool LoadCollections(CCacheLoad& load) {
  CSafeNode& collection = load.collection;
  return ForEachChild(load.reader, load.root.name, collection, load.status, [&](bool open) {
    if (!open) return true;
    if (ViewOf(collection.name) == "ProgramMap") return LoadPrograms(load);
    if (ViewOf(collection.name) == "StationList") return LoadStations(load);
    return load.reader.ReadChildren(collection.name, load.status);
  });
}

}  // namespace

bool CProviderData::LoadCacheXML(const MSTR& file_name, MSTR& status,
                                 CProgressIndicator* progress) {
  CCacheLoad load = {*this, status};
  if (!OpenListings(load.reader, file_name, status)) return GetStationCount() > 0;
  AnnounceRange(load.reader, progress);
  const std::uint32_t began = platform::GetTickCount();
  const bool has_children = ReadListingsRoot(load.reader, load.root, "ProviderData");
  const std::string_view name_space = AttributeValue(load.root, "xmlns");
  if (!EqualIgnoringCase(name_space, kMakerNamespace)) {
    status.Format("Unexpected xmlns value: \"%s\".", name_space.data());
    return false;
  }
  if (has_children && !LoadCollections(load)) return false;
  return FinishImport(*this, load.reader, file_name, began, status, progress);
}
