#include "import/dm_data.h"

#include <memory>
#include <utility>

#include "import/listings_import.h"
#include "import/program_finder.h"
#include "import/record_readers.h"
#include "platform/services.h"
#include "schedule/text_number.h"
#include "schedule/time_value.h"
#include "text/counted_text.h"

using ORVANE::MSTR;
using ORVANE::MXML;

namespace {

// A container below `parent`; when there is none, `status` says so by the name that it is `called`.
MXML::NODE* FindContainer(const MXML::NODE& parent, const char* name, MSTR& status,
                          const char* called = nullptr) {
  MXML::NODE* const found = parent.FindNode(name);
  if (found == nullptr) {
    status.Format("Container '%s' not found.", called != nullptr ? called : name);
  }
  return found;
}

// False when the service reports an error instead of data.
bool CheckErrorCode(const MXML::NODE& collection, MSTR& status) {
  const MXML::NODE* const code = FindContainer(collection, "ErrorCode", status);
  if (code == nullptr) return false;
  const std::int32_t number = ReadNumber(code->value.text);
  if (number == 0) return true;
  if (const MXML::NODE* const description = collection.FindNode("ErrorDescription")) {
    status = description->value;
  } else {
    status.Format("XML data contained ErrorCode = %i, error description not found.", number);
  }
  return false;
}

// Has every record of a container imported and counts those refused. False when there is no such
// container.
template <typename Importer>
bool ImportRecords(const MXML::NODE& data, const char* name, MSTR& status, std::int32_t& refused,
                   Importer import) {
  const MXML::NODE* const container = FindContainer(data, name, status);
  if (container == nullptr) return false;
  for (const auto* node = container->first_child; node != nullptr; node = node->next_sibling) {
    if (!import(*node)) ++refused;
  }
  return true;
}

}  // namespace

bool CDMData::ImportXML(const MSTR& file_name, MSTR& status, CProgressIndicator* /*progress*/) {
  const std::uint32_t load_start = platform::GetTickCount();
  MXML document;
  document.Load(file_name);
  const std::uint32_t load_end = platform::GetTickCount();
  if (document.LoadedText().length == 0) {
    status = "XML load failed, document length is zero.";
    return false;
  }

  const MXML::NODE* const collection =
      FindContainer(document.Root(), "ProgramDataCollection", status);
  if (collection == nullptr || !CheckErrorCode(*collection, status)) return false;
  const MXML::NODE* const data = FindContainer(*collection, "ProgramData", status);
  if (data == nullptr) return false;
  const MXML::NODE* const provider = FindContainer(*data, "ProviderID", status, "Provider");
  if (provider == nullptr) return false;
  if (provider_id.length == 0) {
    provider_id = provider->value;
  } else if (ViewOf(provider_id) != ViewOf(provider->value)) {
    status.Format("Cannot merge data from provider \"%s\", current provider is \"%s\".",
                  provider->value.text, provider_id.text);
    return false;
  }
  const MXML::NODE* const base = FindContainer(*data, "BaseTime", status);
  if (base == nullptr) return false;
  const std::int32_t base_time = ParseTime(TimeLayout::kYearFirst, ViewOf(base->value));
  base_time_text = base->value;

  // Items are resolved against the stations and programmes before them.
  std::int32_t stations = 0;
  std::int32_t programs = 0;
  std::int32_t items = 0;
  CProgramFinder finder(*this);
  const bool complete =
      ImportRecords(*data, "Stations", status, stations,
                    [&](const MXML::NODE& node) { return ImportStation(node); }) &&
      ImportRecords(*data, "Programs", status, programs,
                    [&](const MXML::NODE& node) { return ImportProgram(node); }) &&
      ImportRecords(*data, "Schedules", status, items, [&](const MXML::NODE& node) {
        return ImportScheduleItem(node, base_time, finder);
      });
  if (!complete) return false;
  finder.Finish();
  IndexStations(*this);

  const std::uint32_t load = load_end - load_start;
  const std::uint32_t parse = platform::GetTickCount() - load_end;
  const auto seconds = [](std::uint32_t ticks) { return static_cast<int>(ticks / 1000); };
  const auto milliseconds = [](std::uint32_t ticks) { return static_cast<int>(ticks % 1000); };
  status.Format(
      "Provider:       \t%s\nBaseTime:\t%s\n%s\n"
      "Duplicates:\n\tStations:\t%i\n\tPrograms:\t%i\n\tSchedule Items:\t%i\n"
      "(Times: Load = %i.%03i secs, Parse = %i.%03i secs)",
      provider_id.text, base_time_text.text, GetStatistics().text, stations, programs, items,
      seconds(load), milliseconds(load), seconds(parse), milliseconds(parse));
  return true;
}

bool CDMData::ImportStation(const MXML::NODE& node) {
  const CTextBlocks::Mark before = Memory().texts.GetMark();
  auto station = std::make_unique<CStation>();
  ReadStationFields(node, Kind(), *station, Memory().texts);
  if (AddStation(station)) return true;
  Memory().texts.WindBack(before);
  return false;
}

bool CDMData::ImportProgram(const MXML::NODE& node) {
  auto program = NewProgram();
  ReadProgramFields(node, Kind(), program);
  AddProgram(program);
  return program.IsEmpty();
}

bool CDMData::ImportScheduleItem(const MXML::NODE& node, std::int32_t base_time,
                                 CProgramFinder& finder) {
  auto item = NewItem();
  ReadScheduleItemFields(node, Kind(), base_time, item);
  CStation* const station = FindStation(item->station_key.View());
  if (station == nullptr) return false;
  CScheduleItem& filed = *item;
  if (!station->Insert(item)) return false;
  finder.Add(filed);
  return true;
}
