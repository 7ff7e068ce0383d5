#include "import/rt_data.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "import/listings_import.h"
#include "schedule/time_value.h"
#include "text/counted_text.h"

using ORVANE::MSTR;

namespace {

// A programme's fields have no elements of their own.
bool RefuseSubElements(const CElement& field, MSTR& status) {
  status.Format("Unexpected sub-element, %s, in Programme Field.", std::string(field.name).c_str());
  return false;
}

// Programmes of the same title and texts are one programme: the key is "RT-", the title up to a
// NUL, '-' and the sum of the texts' hashes as a signed number.
std::string ProgramKey(std::string_view title, std::string_view description,
                       std::string_view episode) {
  const auto id = [](std::string_view text) {
    MSTR engine_text;
    AssignTo(engine_text, std::string(text));
    return engine_text.Id();
  };
  const std::uint32_t sum = id(description) + id(episode);
  return std::string("RT-").append(title.substr(0, title.find('\0'))) + '-' +
         std::to_string(static_cast<std::int32_t>(sum));
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
      if (!reader.ReadChildren(programme.name, status, RefuseSubElements)) return false;
      ImportProgramme(reader.Children());
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

bool CRTData::ImportProgramme(CElementRange elements) {
  std::string_view channel_name, title, episode, genre, description, date, start_time, end_time;
  const struct {
    std::string_view name;
    std::string_view& text;
  } fields[] = {
      {"ChannelName", channel_name}, {"Title", title},
      {"Episode", episode},          {"Genre", genre},
      {"Description", description},  {"Date", date},
      {"StartTime", start_time},     {"EndTime", end_time},
  };
  bool is_film = false;
  for (const CElement& element : elements) {
    if (element.name == "Film") is_film = true;
    for (const auto& field : fields) {
      if (element.name == field.name) field.text = element.value;
    }
  }

  // A station that is new stays, whether or not its first broadcast does.
  CStation& station = StationOf(channel_name);
  const std::string key = ProgramKey(title, description, episode);
  PrefetchProgram(key);
  auto item = NewItem();
  item->station_key = station.key;
  const auto time = [date](std::string_view text) {
    return ParseTime(TimeLayout::kDayFirst, date,
                     text.empty() ? std::nullopt : std::optional(text));
  };
  item->start = time(start_time);
  item->end = EndAfter(item->start, time(end_time));
  item->program = FindProgram(key);
  if (item->program == nullptr) {
    auto program = NewProgram();
    const auto keep = [&program](std::string_view text) { return program.Texts().Keep(text); };
    program->key = keep(key);
    program->title = keep(title);
    program->episode_title = keep(episode);
    program->description = keep(description);
    program->genre = keep(genre);
    if (is_film) program->show_type = keep("Feature Film");
    item->program = AddProgram(program);
  }
  item->program_key = item->program->key;
  return station.Insert(item);
}
