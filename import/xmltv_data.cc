#include "import/xmltv_data.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "host/mlog.h"
#include "import/listings_import.h"
#include "import/reparse.h"
#include "platform/services.h"
#include "schedule/text_number.h"
#include "schedule/time_value.h"

using ORVANE::MLog;
using ORVANE::MSTR;
using ORVANE::MXML;

namespace {

constexpr const char* kSet = "Y";

// What an element of a programme does to the records; its text may be taken.
struct Element {
  std::string_view name;
  void (*read)(MXML::NODE& node, CScheduleItem& item, CProgram& program);
};

template <MSTR CProgram::*kText>
void TakeProgramText(MXML::NODE& node, CScheduleItem& /*item*/, CProgram& program) {
  program.*kText = std::move(node.value);
}

template <MSTR CScheduleItem::*kText>
void TakeItemText(MXML::NODE& node, CScheduleItem& item, CProgram& /*program*/) {
  item.*kText = std::move(node.value);
}

template <MSTR CScheduleItem::*kMarker>
void SetItemMarker(MXML::NODE& /*node*/, CScheduleItem& item, CProgram& /*program*/) {
  item.*kMarker = kSet;
}

// `path` stands before the name.
void LogUnknown(const char* path, const MXML::NODE& node) {
  MLog.Log("Unknown XMLTV data element: %s%s", path, node.name.Text());
}

// Reads every child of a node by a table; one that is not in it is logged with `path` before its
// name.
template <std::size_t kCount>
void ReadElements(const Element (&elements)[kCount], const char* path, MXML::NODE& node,
                  CScheduleItem& item, CProgram& program) {
  for (MXML::NODE* child = node.first_child; child != nullptr; child = child->next_sibling) {
    const Element* found = nullptr;
    for (const Element& element : elements) {
      if (child->name == element.name) {
        found = &element;
        break;
      }
    }
    if (found != nullptr) {
      found->read(*child, item, program);
    } else {
      LogUnknown(path, *child);
    }
  }
}

void ReadColour(MXML::NODE& node, CScheduleItem& /*item*/, CProgram& program) {
  if (node.value == "no") program.black_and_white = kSet;
}

void ReadVideo(MXML::NODE& node, CScheduleItem& item, CProgram& program) {
  static constexpr Element kElements[] = {
      {"aspect", TakeItemText<&CScheduleItem::aspect>},
      {"colour", ReadColour},
  };
  ReadElements(kElements, "video->", node, item, program);
}

void ReadActor(MXML::NODE& node, CScheduleItem& /*item*/, CProgram& program) {
  if (!program.actors.IsEmpty()) program.actors += ", ";
  program.actors += node.value;
}

void ReadCredits(MXML::NODE& node, CScheduleItem& item, CProgram& program) {
  static constexpr Element kElements[] = {
      {"director", TakeProgramText<&CProgram::director>},
      {"actor", ReadActor},
  };
  ReadElements(kElements, "credits->", node, item, program);
}

void ReadRating(MXML::NODE& node, CScheduleItem& item, CProgram& program) {
  MXML::NODE* value = nullptr;  // the last one wins
  for (MXML::NODE* child = node.first_child; child != nullptr; child = child->next_sibling) {
    if (child->name == "value") {
      value = child;
    } else {
      LogUnknown("rating->", *child);
    }
  }
  if (value == nullptr) return;
  const MSTR system = node.GetAttribute("system");
  if (system == "BBFC") {
    program.rating_bbfc = std::move(value->value);
  } else {
    item.rating_other.Format("%s rating: %s", system.Text(), value->value.Text());
  }
}

void ReadStarRating(MXML::NODE& node, CScheduleItem& item, CProgram& program) {
  static constexpr Element kElements[] = {{"value", TakeProgramText<&CProgram::star_rating>}};
  ReadElements(kElements, "star rating->", node, item, program);
}

void ReadDescription(MXML::NODE& node, CScheduleItem& /*item*/, CProgram& program) {
  program.description = ReParse(std::move(node.value));
}

void ReadPremiere(MXML::NODE& node, CScheduleItem& item, CProgram& /*program*/) {
  item.premiere = node.value.IsEmpty() ? MSTR("Premiere") : std::move(node.value);
}

constexpr Element kProgrammeElements[] = {
    {"title", TakeProgramText<&CProgram::title>},
    {"desc", ReadDescription},
    {"category", TakeProgramText<&CProgram::genre>},
    {"sub-title", TakeProgramText<&CProgram::episode_title>},
    {"date", TakeProgramText<&CProgram::publish_date>},
    {"video", ReadVideo},
    {"subtitles", TakeItemText<&CScheduleItem::subtitles>},
    {"credits", ReadCredits},
    {"previously-shown", SetItemMarker<&CScheduleItem::repeat>},
    {"new", SetItemMarker<&CScheduleItem::new_marker>},
    {"premiere", ReadPremiere},
    {"rating", ReadRating},
    {"star-rating", ReadStarRating},
};

// Programmes with the same texts are one programme: the key is "X" and the sum of their hashes in
// upper-case hexadecimal, without leading zeros.
void SetProgramKey(CProgram& program) {
  const std::uint32_t sum = program.actors.Id() + program.description.Id() +
                            program.episode_title.Id() + program.title.Id();
  char digits[1 + 8] = {'X'};
  char* end = digits + 1;
  for (int shift = 28; shift >= 0; shift -= 4) {
    const std::uint32_t digit = sum >> shift & 0xf;
    if (digit != 0 || end != digits + 1 || shift == 0) *end++ = "0123456789ABCDEF"[digit];
  }
  program.key = std::string_view(digits, static_cast<std::size_t>(end - digits));
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
    Draft draft;
    const bool complete = ForEachWholeChild(reader, root.name, node, status, [&] {
      if (node.name == "channel") {
        ImportChannel(node);
      } else if (node.name == "programme") {
        ImportProgramme(node, draft);
      }
    });
    if (!complete) return false;
  }
  return FinishImport(*this, reader, file_name, began, status, progress);
}

bool CXMLTVData::ImportChannel(MXML::NODE& node) {
  auto station = std::make_unique<CStation>(Memory());
  station->ReadStationFields(node, Kind());
  return AddStation(station);
}

bool CXMLTVData::ImportProgramme(MXML::NODE& node, Draft& draft) {
  CStation* const station = FindStation(node.AttributeValue("channel").View());
  if (station == nullptr) return false;
  draft.Reset();
  CScheduleItem& item = draft.item;
  ReadElements(kProgrammeElements, "", node, item, draft.program);
  SetProgramKey(draft.program);
  PrefetchProgram(draft.program.key.View());
  item.start = ParseTime(TimeLayout::kDigits, node.AttributeValue("start"));
  item.end = EndAfter(item.start, ParseTime(TimeLayout::kDigits, node.AttributeValue("stop")));
  item.program = AddProgram(draft.program).first;
  return station->Insert(item);
}
