#include "import/rt_data.h"

#include <charconv>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "import/listings_import.h"
#include "schedule/time_value.h"

using ORVANE::MSTR;
using ORVANE::MXML;

namespace {

// Reads a programme's fields into its node, up to and including its end tag. False: the fault is in
// `status`.
bool ReadProgrammeFields(CSimpleXMLReader& reader, CSafeNode& programme, MSTR& status) {
  for (;;) {
    auto field = programme.MakeChild();
    bool open = false;
    bool end_tag = false;
    if (!reader.ReadElement(*field, open, end_tag) || end_tag) {
      const bool closed = CheckEndTag(end_tag, "Programme", field->name, status);
      programme.TakeBack(std::move(field));
      return closed;
    }
    if (open) {
      status.Format("Unexpected sub-element, %s, in Programme Field.", field->name.Text());
      return false;
    }
    programme.AddNode(field.release());
  }
}

// Programmes of the same title and texts are one programme: the key is "RT-", the title up to a
// NUL,
// '-' and the sum of the texts' hashes as a signed number.
void SetProgramKey(CProgram& program) {
  const std::uint32_t sum = program.description.Id() + program.episode_title.Id();
  char number[1 + 11] = {'-'};
  const auto end = std::to_chars(number + 1, std::end(number), static_cast<std::int32_t>(sum)).ptr;
  program.key = "RT-";
  program.key += program.title.Text();
  program.key += std::string_view(number, static_cast<std::size_t>(end - number));
}

}  // namespace

bool CRTData::ImportXML(const MSTR& file_name, MSTR& status, CProgressIndicator* /*progress*/) {
  CSimpleXMLReader reader;
  if (!OpenListings(reader, file_name, status)) return GetStationCount() > 0;
  CSafeNode root;
  if (ReadListingsRoot(reader, root, "Programmes")) {
    CSafeNode programme;
    Draft draft;
    bool open = false;
    bool end_tag = false;
    while (reader.ReadElement(programme, open, end_tag) && !end_tag) {
      if (!(programme.name == "Programme")) {
        status.Format("<Programme> node not found in <Programmes> collection (found <%s>).",
                      programme.name.Text());
        return false;
      }
      if (!ReadProgrammeFields(reader, programme, status)) return false;
      ImportProgramme(programme, draft);
      programme.FreeChildren();
    }
    // When the file ends early, this is still the name of the last element.
    if (!(programme.name == root.name)) {
      status.Format("Programmes end tag bad, found %s.", programme.name.Text());
      return false;
    }
  }
  reader.Close();
  status.Format("File \"%s\" loaded OK.", file_name.Text());
  IndexStations(*this);
  return GetStationCount() > 0;
}

bool CRTData::ImportProgramme(MXML::NODE& node, Draft& draft) {
  draft.Reset();
  CScheduleItem& item = draft.item;
  CProgram& program = draft.program;
  MSTR date;
  MSTR start_time;
  MSTR end_time;
  const struct {
    std::string_view name;
    MSTR& target;
  } fields[] = {
      {"ChannelName", item.station_key},
      {"Title", program.title},
      {"Episode", program.episode_title},
      {"Genre", program.genre},
      {"Description", program.description},
      {"Date", date},
      {"StartTime", start_time},
      {"EndTime", end_time},
  };
  for (MXML::NODE* child = node.first_child; child != nullptr; child = child->next_sibling) {
    if (child->name == "Film") program.show_type = "Feature Film";
    for (const auto& field : fields) {
      if (child->name == field.name) field.target = std::move(child->value);
    }
  }

  CStation* station = FindStation(item.station_key.View());
  if (station == nullptr) {
    auto added = std::make_unique<CStation>(Memory());
    station = added.get();
    added->key = item.station_key;
    added->network = item.station_key;
    if (!AddStation(added)) return false;
  }

  SetProgramKey(program);
  PrefetchProgram(program.key.View());
  const auto time = [&date](const MSTR& text) {
    return ParseTime(TimeLayout::kDayFirst, date, text.IsEmpty() ? nullptr : &text);
  };
  item.start = time(start_time);
  item.end = EndAfter(item.start, time(end_time));
  item.program = AddProgram(program).first;
  return station->Insert(item);
}
