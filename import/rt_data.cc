#include "import/rt_data.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "import/listings_import.h"
#include "schedule/time_value.h"
#include "text/counted_text.h"

using ORVANE::MSTR;
using ORVANE::MXML;

namespace {

// Reads a programme's fields into its node, which has no children yet, up to and including its end
// tag. False: the fault is in `status`.
bool ReadProgrammeFields(CSimpleXMLReader& reader, CSafeNode& programme, MSTR& status) {
  MXML::NODE** end = &programme.first_child;  // where the next field is linked in
  for (;;) {
    auto field = reader.NewNode();
    bool open = false;
    bool end_tag = false;
    if (!reader.ReadNewElement(*field, open, end_tag) || end_tag) {
      const bool closed = CheckEndTag(end_tag, "Programme", field->name, status);
      reader.TakeBack(std::move(field));
      return closed;
    }
    if (open) {
      status.Format("Unexpected sub-element, %s, in Programme Field.", field->name.text);
      return false;
    }
    *end = field.release();
    end = &(*end)->next_sibling;
  }
}

// Programmes of the same title and texts are one programme: the key is "RT-", the title up to a
// NUL,
// '-' and the sum of the texts' hashes as a signed number.
std::string ProgramKey(const MSTR& title, const MSTR& description, const MSTR& episode) {
  const std::uint32_t sum = description.Id() + episode.Id();
  return std::string("RT-") + title.text + '-' + std::to_string(static_cast<std::int32_t>(sum));
}

}  // namespace

bool CRTData::ImportXML(const MSTR& file_name, MSTR& status, CProgressIndicator* /*progress*/) {
  CSimpleXMLReader reader;
  if (!OpenListings(reader, file_name, status)) return GetStationCount() > 0;
  CSafeNode root;
  if (ReadListingsRoot(reader, root, "Programmes")) {
    CSafeNode programme;
    bool open = false;
    bool end_tag = false;
    while (reader.ReadElement(programme, open, end_tag) && !end_tag) {
      if (ViewOf(programme.name) != "Programme") {
        status.Format("<Programme> node not found in <Programmes> collection (found <%s>).",
                      programme.name.text);
        return false;
      }
      if (!ReadProgrammeFields(reader, programme, status)) return false;
      ImportProgramme(programme);
      reader.Recycle(programme);
    }
    // When the file ends early, this is still the name of the last element.
    if (ViewOf(programme.name) != ViewOf(root.name)) {
      status.Format("Programmes end tag bad, found %s.", programme.name.text);
      return false;
    }
  }
  reader.Close();
  status.Format("File \"%s\" loaded OK.", file_name.text);
  IndexStations(*this);
  return GetStationCount() > 0;
}

CStation& CRTData::StationOf(std::string_view channel_name) {
  if (CStation* const known = FindStation(channel_name)) return *known;
  auto station = std::make_unique<CStation>();
  station->key = station->network = Memory().texts.Keep(channel_name);
  CStation& added = *station;
  static_cast<void>(AddStation(station));  // there is none of that key
  return added;
}

bool CRTData::ImportProgramme(const MXML::NODE& node) {
  const MSTR none;
  const MSTR* channel_name = &none;
  const MSTR* title = &none;
  const MSTR* episode = &none;
  const MSTR* genre = &none;
  const MSTR* description = &none;
  const MSTR* date = &none;
  const MSTR* start_time = &none;
  const MSTR* end_time = &none;
  const struct {
    std::string_view name;
    const MSTR*& text;
  } fields[] = {
      {"ChannelName", channel_name}, {"Title", title},
      {"Episode", episode},          {"Genre", genre},
      {"Description", description},  {"Date", date},
      {"StartTime", start_time},     {"EndTime", end_time},
  };
  bool is_film = false;
  for (const auto* child = node.first_child; child != nullptr; child = child->next_sibling) {
    if (ViewOf(child->name) == "Film") is_film = true;
    for (const auto& field : fields) {
      if (ViewOf(child->name) == field.name) field.text = &child->value;
    }
  }

  // A station that is new stays, whether or not its first broadcast does.
  CStation& station = StationOf(ViewOf(*channel_name));
  const std::string key = ProgramKey(*title, *description, *episode);
  PrefetchProgram(key);
  auto item = NewItem();
  item->station_key = station.key;
  const auto time = [date](const MSTR& text) {
    return ParseTime(TimeLayout::kDayFirst, ViewOf(*date),
                     text.length == 0 ? std::nullopt : std::optional(ViewOf(text)));
  };
  item->start = time(*start_time);
  item->end = EndAfter(item->start, time(*end_time));
  item->program = FindProgram(key);
  if (item->program == nullptr) {
    auto program = NewProgram();
    const auto keep = [&program](std::string_view text) { return program.Texts().Keep(text); };
    program->key = keep(key);
    program->title = keep(ViewOf(*title));
    program->episode_title = keep(ViewOf(*episode));
    program->description = keep(ViewOf(*description));
    program->genre = keep(ViewOf(*genre));
    if (is_film) program->show_type = keep("Feature Film");
    item->program = AddProgram(program);
  }
  item->program_key = item->program->key;
  return station.Insert(item);
}
