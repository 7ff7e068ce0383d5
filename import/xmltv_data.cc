#include "import/xmltv_data.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
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
using ORVANE::MXML;

namespace {

constexpr std::string_view kSet = "Y";

// A programme element while it is read: the records that it fills, the names of its actors, and
// the hashes of the other texts of its key.
struct Programme {
  CNewRecord<CScheduleItem>& item;
  CNewRecord<CProgram>& program;
  MSTR& actors;
  std::uint32_t title_id = 0;
  std::uint32_t episode_title_id = 0;
  std::uint32_t description_id = 0;

  void SetProgramText(CText CProgram::*text, std::string_view value) {
    (*program).*text = program.Texts().Keep(value);
  }
  void SetItemText(CText CScheduleItem::*text, std::string_view value) {
    (*item).*text = item.Texts().Keep(value);
  }
};

// What an element of a programme does to it.
struct Element {
  std::string_view name;
  void (*read)(const MXML::NODE& node, Programme& programme);
};

template <CText CProgram::*kText>
void ReadProgramText(const MXML::NODE& node, Programme& programme) {
  programme.SetProgramText(kText, ViewOf(node.value));
}

// The same, for a text of the programme's key.
template <CText CProgram::*kText, std::uint32_t Programme::*kId>
void ReadKeyText(const MXML::NODE& node, Programme& programme) {
  programme.SetProgramText(kText, ViewOf(node.value));
  programme.*kId = node.value.Id();
}

template <CText CScheduleItem::*kText>
void ReadItemText(const MXML::NODE& node, Programme& programme) {
  programme.SetItemText(kText, ViewOf(node.value));
}

template <CText CScheduleItem::*kMarker>
void SetItemMarker(const MXML::NODE& /*node*/, Programme& programme) {
  programme.SetItemText(kMarker, kSet);
}

// `path` stands before the name.
void LogUnknown(const char* path, const MXML::NODE& node) {
  MLog.Log("Unknown XMLTV data element: %s%s", path, node.name.text);
}

// Reads every child of a node by a table; one that is not in it is logged with `path` before its
// name.
template <std::size_t kCount>
void ReadElements(const Element (&elements)[kCount], const char* path, const MXML::NODE& node,
                  Programme& programme) {
  for (const auto* child = node.first_child; child != nullptr; child = child->next_sibling) {
    const Element* found = nullptr;
    for (const Element& element : elements) {
      if (ViewOf(child->name) == element.name) {
        found = &element;
        break;
      }
    }
    if (found != nullptr) {
      found->read(*child, programme);
    } else {
      LogUnknown(path, *child);
    }
  }
}

void ReadColour(const MXML::NODE& node, Programme& programme) {
  if (ViewOf(node.value) == "no") programme.SetProgramText(&CProgram::black_and_white, kSet);
}

void ReadVideo(const MXML::NODE& node, Programme& programme) {
  static constexpr Element kElements[] = {
      {"aspect", ReadItemText<&CScheduleItem::aspect>},
      {"colour", ReadColour},
  };
  ReadElements(kElements, "video->", node, programme);
}

void ReadActor(const MXML::NODE& node, Programme& programme) {
  if (programme.actors.length != 0) programme.actors += ", ";
  programme.actors += node.value;
}

void ReadCredits(const MXML::NODE& node, Programme& programme) {
  static constexpr Element kElements[] = {
      {"director", ReadProgramText<&CProgram::director>},
      {"actor", ReadActor},
  };
  ReadElements(kElements, "credits->", node, programme);
}

void ReadRating(const MXML::NODE& node, Programme& programme) {
  const MXML::NODE* value = nullptr;  // the last one wins
  for (const auto* child = node.first_child; child != nullptr; child = child->next_sibling) {
    if (ViewOf(child->name) == "value") {
      value = child;
    } else {
      LogUnknown("rating->", *child);
    }
  }
  if (value == nullptr) return;
  const std::string_view system = AttributeValue(node, "system");
  if (system == "BBFC") {
    programme.SetProgramText(&CProgram::rating_bbfc, ViewOf(value->value));
  } else {
    MSTR rating;
    rating.Format("%s rating: %s", system.data(), value->value.text);
    programme.SetItemText(&CScheduleItem::rating_other, ViewOf(rating));
  }
}

void ReadStarRating(const MXML::NODE& node, Programme& programme) {
  static constexpr Element kElements[] = {{"value", ReadProgramText<&CProgram::star_rating>}};
  ReadElements(kElements, "star rating->", node, programme);
}

void ReadDescription(const MXML::NODE& node, Programme& programme) {
  if (!NeedsReParse(ViewOf(node.value))) {
    ReadKeyText<&CProgram::description, &Programme::description_id>(node, programme);
    return;
  }
  MSTR text;
  AssignTo(text, ReParse(ViewOf(node.value)));
  programme.SetProgramText(&CProgram::description, ViewOf(text));
  programme.description_id = text.Id();
}

void ReadPremiere(const MXML::NODE& node, Programme& programme) {
  programme.SetItemText(&CScheduleItem::premiere,
                        node.value.length == 0 ? "Premiere" : ViewOf(node.value));
}

constexpr Element kProgrammeElements[] = {
    {"title", ReadKeyText<&CProgram::title, &Programme::title_id>},
    {"desc", ReadDescription},
    {"category", ReadProgramText<&CProgram::genre>},
    {"sub-title", ReadKeyText<&CProgram::episode_title, &Programme::episode_title_id>},
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

// Programmes with the same texts are one programme: the key is "X" and the sum of their hashes in
// upper-case hexadecimal, without leading zeros.
void SetProgramKey(Programme& programme) {
  const std::uint32_t sum = programme.actors.Id() + programme.description_id +
                            programme.episode_title_id + programme.title_id;
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
    CSafeNode node;
    MSTR actors;
    const bool complete = ForEachWholeChild(reader, root.name, node, status, [&] {
      if (ViewOf(node.name) == "channel") {
        ImportChannel(node);
      } else if (ViewOf(node.name) == "programme") {
        ImportProgramme(node, actors);
      }
    });
    if (!complete) return false;
  }
  return FinishImport(*this, reader, file_name, began, status, progress);
}

bool CXMLTVData::ImportChannel(const MXML::NODE& node) {
  const CTextBlocks::Mark before = Memory().texts.GetMark();
  auto station = std::make_unique<CStation>();
  ReadStationFields(node, Kind(), *station, Memory().texts);
  if (AddStation(station)) return true;
  Memory().texts.WindBack(before);  // the first of a key wins
  return false;
}

bool CXMLTVData::ImportProgramme(const MXML::NODE& node, MSTR& actors) {
  static const std::uint32_t no_text_id = MSTR().Id();
  CStation* const station = FindStation(AttributeValue(node, "channel"));
  if (station == nullptr) return false;
  auto item = NewItem();
  auto program = NewProgram();
  actors = "";
  Programme programme = {item, program, actors, no_text_id, no_text_id, no_text_id};
  ReadElements(kProgrammeElements, "", node, programme);
  programme.SetProgramText(&CProgram::actors, ViewOf(actors));
  SetProgramKey(programme);
  PrefetchProgram(program->key.View());
  item->start = ParseTime(TimeLayout::kDigits, AttributeValue(node, "start"));
  item->end = EndAfter(item->start, ParseTime(TimeLayout::kDigits, AttributeValue(node, "stop")));
  item->program = AddProgram(program);
  item->program_key = item->program->key;
  return station->Insert(item);
}
