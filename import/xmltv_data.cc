#include "import/xmltv_data.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "host/mlog.h"
#include "import/listings_import.h"
#include "import/record_readers.h"
#include "import/reparse.h"
#include "platform/services.h"
#include "schedule/time_value.h"
#include "text/counted_text.h"

using ORVANE::MLog;
using ORVANE::MSTR;

namespace {

constexpr std::string_view kSet = "Y";

// The records that a programme element fills, and the names of its actors.
struct Programme {
  CNewRecord<CScheduleItem>& item;
  CNewRecord<CProgram>& program;
  std::string& actors;

  void SetProgramText(CText CProgram::*text, std::string_view value) {
    (*program).*text = program.Texts().Keep(value);
  }
  void SetItemText(CText CScheduleItem::*text, std::string_view value) {
    (*item).*text = item.Texts().Keep(value);
  }
};

// What an element of a programme does to it.
struct ElementReader {
  std::string_view name;
  void (*read)(const CElement& element, Programme& programme);
};

template <CText CProgram::*kText>
void ReadProgramText(const CElement& element, Programme& programme) {
  programme.SetProgramText(kText, element.value);
}

template <CText CScheduleItem::*kText>
void ReadItemText(const CElement& element, Programme& programme) {
  programme.SetItemText(kText, element.value);
}

template <CText CScheduleItem::*kMarker>
void SetItemMarker(const CElement& /*element*/, Programme& programme) {
  programme.SetItemText(kMarker, kSet);
}

// `path` stands before the name.
void LogUnknown(const char* path, const CElement& element) {
  MLog.Log("Unknown XMLTV data element: %s%s", path, std::string(element.name).c_str());
}

// Reads every element by a table; one that is not in it is logged with `path` before its name.
template <std::size_t kCount>
void ReadElements(const ElementReader (&readers)[kCount], const char* path, CElementRange elements,
                  Programme& programme) {
  for (const CElement& element : elements) {
    const auto* const reader =
        std::find_if(std::begin(readers), std::end(readers),
                     [&](const ElementReader& each) { return each.name == element.name; });
    if (reader != std::end(readers)) {
      reader->read(element, programme);
    } else {
      LogUnknown(path, element);
    }
  }
}

void ReadColour(const CElement& element, Programme& programme) {
  if (element.value == "no") programme.SetProgramText(&CProgram::black_and_white, kSet);
}

void ReadVideo(const CElement& element, Programme& programme) {
  static constexpr ElementReader kReaders[] = {
      {"aspect", ReadItemText<&CScheduleItem::aspect>},
      {"colour", ReadColour},
  };
  ReadElements(kReaders, "video->", ChildrenOf(element), programme);
}

void ReadActor(const CElement& element, Programme& programme) {
  if (!programme.actors.empty()) programme.actors += ", ";
  programme.actors += element.value;
}

void ReadCredits(const CElement& element, Programme& programme) {
  static constexpr ElementReader kReaders[] = {
      {"director", ReadProgramText<&CProgram::director>},
      {"actor", ReadActor},
  };
  ReadElements(kReaders, "credits->", ChildrenOf(element), programme);
}

void ReadRating(const CElement& element, Programme& programme) {
  const CElement* value = nullptr;  // the last one wins
  for (const CElement& child : ChildrenOf(element)) {
    if (child.name == "value") {
      value = &child;
    } else {
      LogUnknown("rating->", child);
    }
  }
  if (value == nullptr) return;
  const std::string system = AttributeValue(element, "system");
  if (system == "BBFC") {
    programme.SetProgramText(&CProgram::rating_bbfc, value->value);
  } else {
    MSTR rating;
    rating.Format("%s rating: %s", system.c_str(), std::string(value->value).c_str());
    programme.SetItemText(&CScheduleItem::rating_other, ViewOf(rating));
  }
}

void ReadStarRating(const CElement& element, Programme& programme) {
  static constexpr ElementReader kReaders[] = {{"value", ReadProgramText<&CProgram::star_rating>}};
  ReadElements(kReaders, "star rating->", ChildrenOf(element), programme);
}

void ReadDescription(const CElement& element, Programme& programme) {
  if (NeedsReParse(element.value)) {
    programme.SetProgramText(&CProgram::description, ReParse(element.value));
  } else {
    programme.SetProgramText(&CProgram::description, element.value);
  }
}

void ReadPremiere(const CElement& element, Programme& programme) {
  programme.SetItemText(&CScheduleItem::premiere,
                        element.value.empty() ? "Premiere" : element.value);
}

constexpr ElementReader kProgrammeReaders[] = {
    {"title", ReadProgramText<&CProgram::title>},
    {"desc", ReadDescription},
    {"category", ReadProgramText<&CProgram::genre>},
    {"sub-title", ReadProgramText<&CProgram::episode_title>},
    {"date", ReadProgramText<&CProgram::publish_date>},
    {"video", ReadVideo},
    {"subtitles", ReadItemText<&CScheduleItem::subtitles>},
    {"credits", ReadCredits},
    {"previously-shown", SetItemMarker<&CScheduleItem::repeat>},
    {"new", SetItemMarker<&CScheduleItem::new_marker>},
    {"premiere", ReadPremiere},
    {"rating", ReadRating},
    {"star-rating", ReadStarRating},
};

// The engine's hash of a text. `engine_text` lends its storage.
std::uint32_t IdOf(CText text, MSTR& engine_text) {
  static const std::uint32_t empty_id = MSTR().Id();
  const std::string_view characters = text.View();
  if (characters.empty()) return empty_id;
  AssignTo(engine_text, characters.data(), characters.size());
  return engine_text.Id();
}

// Programmes with the same texts are one programme: the key is "X" and the sum of their hashes in
// upper-case hexadecimal, without leading zeros.
void SetProgramKey(Programme& programme, MSTR& engine_text) {
  const CProgram& program = *programme.program;
  std::uint32_t sum = 0;
  for (const CText text :
       {program.actors, program.description, program.episode_title, program.title}) {
    sum += IdOf(text, engine_text);
  }
  char key[1 + 8] = {'X'};
  char* const end = std::to_chars(key + 1, std::end(key), sum, 16).ptr;
  for (char* digit = key + 1; digit != end; ++digit) {
    if (*digit >= 'a') *digit = static_cast<char>(*digit - 'a' + 'A');
  }
  programme.SetProgramText(&CProgram::key, {key, static_cast<std::size_t>(end - key)});
}

}  // namespace

bool CXMLTVData::ImportXML(const MSTR& file_name, MSTR& status, CProgressIndicator* progress) {
  CSimpleXMLReader reader;
  if (!OpenListings(reader, file_name, status)) return GetStationCount() > 0;
  AnnounceRange(reader, progress);
  CSafeNode root;
  const std::uint32_t began = platform::GetTickCount();
  if (ReadListingsRoot(reader, root, "tv")) {
    Scratch scratch;
    bool open = false;
    bool end_tag = false;
    while (reader.ReadRecord(open, end_tag) && !end_tag) {
      if (open && !reader.ReadRecordChildren(status)) return false;
      if (reader.RecordName() == "channel") ImportChannel(reader.Record());
      if (reader.RecordName() == "programme") ImportProgramme(reader.Record(), scratch);
    }
    if (!CheckEndTag(end_tag, ViewOf(root.name), reader.RecordName(), status)) return false;
  }
  return FinishImport(*this, reader, file_name, began, status, progress);
}

bool CXMLTVData::ImportChannel(const CElement& channel) {
  const CTextBlocks::Mark before = Memory().texts.GetMark();
  auto station = std::make_unique<CStation>();
  ReadStationFields(channel, *station, Memory().texts);
  if (AddStation(station)) return true;
  Memory().texts.WindBack(before);  // the first of a key wins
  return false;
}

bool CXMLTVData::ImportProgramme(const CElement& element, Scratch& scratch) {
  constexpr std::string_view kAttributes[] = {"channel", "start", "stop"};
  ReadAttributes(element, kAttributes, scratch.attributes);
  const auto& [channel, start, stop] = scratch.attributes;
  CStation* const station = FindStation(channel);
  if (station == nullptr) return false;
  auto item = NewItem();
  auto program = NewProgram();
  scratch.actors.clear();
  Programme programme = {item, program, scratch.actors};
  ReadElements(kProgrammeReaders, "", ChildrenOf(element), programme);
  programme.SetProgramText(&CProgram::actors, scratch.actors);
  SetProgramKey(programme, scratch.engine_text);
  PrefetchProgram(program->key.View());
  item->start = ParseTime(TimeLayout::kDigits, start);
  item->end = EndAfter(item->start, ParseTime(TimeLayout::kDigits, stop));
  item->program = AddProgram(program);
  item->program_key = item->program->key;
  return station->Insert(item);
}
