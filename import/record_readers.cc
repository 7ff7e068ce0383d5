#include "import/record_readers.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "schedule/text_number.h"
#include "text/counted_text.h"
#include "xml/safe_node.h"

using ORVANE::MXML;

namespace {

// A field of a record: its number in the numbered dialect and its child element's name in the
// TitanTV dialect; 0 or empty where a dialect does not have it. In the tables below, a field with a
// number stands at that position, from 1.
template <typename Record>
struct Field {
  std::int32_t number;
  std::string_view titan_name;
  void (*assign)(Record& record, std::string_view text, std::int32_t base_time, CTextBlocks& texts);
};

template <typename Record, CText Record::*kText>
void AssignText(Record& record, std::string_view text, std::int32_t /*base_time*/,
                CTextBlocks& texts) {
  record.*kText = texts.Keep(text);
}

template <typename Record, std::int32_t Record::*kNumber>
void AssignNumber(Record& record, std::string_view text, std::int32_t /*base_time*/,
                  CTextBlocks& /*texts*/) {
  record.*kNumber = ReadNumber(text);
}

template <typename Record, std::int32_t Record::*kTime>
void AssignTime(Record& record, std::string_view text, std::int32_t base_time,
                CTextBlocks& /*texts*/) {
  // Unsigned, so that a sum beyond 32 bits wraps.
  record.*kTime = static_cast<std::int32_t>(static_cast<std::uint32_t>(base_time) +
                                            static_cast<std::uint32_t>(ReadNumber(text)));
}

constexpr Field<CStation> kStationFields[] = {
    {1, "station_id", AssignText<CStation, &CStation::key>},
    {2, "network", AssignText<CStation, &CStation::network>},
    {3, "call_sign", AssignText<CStation, &CStation::call_sign>},
    {4, "rf_channel", AssignNumber<CStation, &CStation::rf_channel>},
    {5, "", AssignNumber<CStation, &CStation::second_channel>},
    {6, "", AssignNumber<CStation, &CStation::third_channel>},
};

constexpr Field<CProgram> kProgramFields[] = {
    {1, "program_id", AssignText<CProgram, &CProgram::key>},
    {2, "title", AssignText<CProgram, &CProgram::title>},
    {3, "episode_title", AssignText<CProgram, &CProgram::episode_title>},
    {4, "description", AssignText<CProgram, &CProgram::description>},
    {5, "genre", AssignText<CProgram, &CProgram::genre>},
    {6, "show_type", AssignText<CProgram, &CProgram::show_type>},
    {7, "director", AssignText<CProgram, &CProgram::director>},
    {8, "", AssignText<CProgram, &CProgram::actors>},
    {9, "", AssignText<CProgram, &CProgram::publish_date>},
    {10, "language", AssignText<CProgram, &CProgram::language>},
    {11, "", AssignText<CProgram, &CProgram::rating_bbfc>},
    {12, "", AssignText<CProgram, &CProgram::star_rating>},
    {13, "", AssignText<CProgram, &CProgram::black_and_white>},
};

constexpr Field<CScheduleItem> kScheduleItemFields[] = {
    {1, "start_time", AssignTime<CScheduleItem, &CScheduleItem::start>},
    {2, "end_time", AssignTime<CScheduleItem, &CScheduleItem::end>},
    {3, "program_id", AssignText<CScheduleItem, &CScheduleItem::program_key>},
    {4, "hd", AssignText<CScheduleItem, &CScheduleItem::hd>},
    {5, "stereo", AssignText<CScheduleItem, &CScheduleItem::stereo>},
    {6, "cc", AssignText<CScheduleItem, &CScheduleItem::subtitle>},
    {7, "tv_rating", AssignText<CScheduleItem, &CScheduleItem::rating_tv>},
    {8, "fv_rating", AssignText<CScheduleItem, &CScheduleItem::rating_fv>},
    {9, "other_rating", AssignText<CScheduleItem, &CScheduleItem::rating_other>},
    {10, "repeat", AssignText<CScheduleItem, &CScheduleItem::repeat>},
    {11, "", AssignText<CScheduleItem, &CScheduleItem::aspect>},
    {12, "", AssignText<CScheduleItem, &CScheduleItem::subtitles>},
    {13, "", AssignText<CScheduleItem, &CScheduleItem::new_marker>},
    {14, "", AssignText<CScheduleItem, &CScheduleItem::premiere>},
    {0, "station_id", AssignText<CScheduleItem, &CScheduleItem::station_key>},
};

template <typename Record>
const Field<Record>* FindByName(std::span<const Field<Record>> fields, std::string_view name) {
  for (const Field<Record>& field : fields) {
    if (name == field.titan_name && !name.empty()) return &field;
  }
  return nullptr;
}

// The number follows the first character of a name; a nameless node has none.
template <typename Record>
const Field<Record>* FindByNumber(std::span<const Field<Record>> fields, std::string_view name) {
  const std::int32_t number = name.empty() ? 0 : ReadNumber(name.substr(1));
  if (number < 1 || static_cast<std::size_t>(number) > fields.size()) return nullptr;
  const Field<Record>& field = fields[static_cast<std::size_t>(number) - 1];
  return field.number == number ? &field : nullptr;
}

template <typename Record>
void ReadFields(const MXML::NODE& node, ProviderKind dialect, std::int32_t base_time,
                std::span<const Field<Record>> fields, Record& record, CTextBlocks& texts) {
  const bool named = dialect == ProviderKind::kTitanTV;
  for (const auto* child = node.first_child; child != nullptr; child = child->next_sibling) {
    const std::string_view name = ViewOf(child->name);
    const Field<Record>* const field =
        named ? FindByName(fields, name) : FindByNumber(fields, name);
    if (field != nullptr) field->assign(record, ViewOf(child->value), base_time, texts);
  }
}

template <typename Record>
void ReadNumberedFields(CElementRange elements, std::span<const Field<Record>> fields,
                        CNewRecord<Record>& record) {
  for (const CElement& element : elements) {
    const Field<Record>* const field = FindByNumber(fields, element.name);
    if (field != nullptr) field->assign(*record, element.value, 0, record.Texts());
  }
}

}  // namespace

void ReadStationFields(const MXML::NODE& node, ProviderKind dialect, CStation& station,
                       CTextBlocks& texts) {
  ReadFields<CStation>(node, dialect, 0, kStationFields, station, texts);
}

void ReadStationFields(const CElement& channel, CStation& station, CTextBlocks& texts) {
  station.key = texts.Keep(AttributeValue(channel, "id"));
  for (const CElement& child : ChildrenOf(channel)) {
    if (child.name != "display-name") continue;
    if (station.network.IsEmpty()) {
      station.network = texts.Keep(child.value);
    } else if (station.call_sign.IsEmpty()) {
      station.call_sign = texts.Keep(child.value);
    }
  }
}

void ReadProgramFields(const MXML::NODE& node, ProviderKind dialect,
                       CNewRecord<CProgram>& program) {
  ReadFields<CProgram>(node, dialect, 0, kProgramFields, *program, program.Texts());
}

void ReadScheduleItemFields(const MXML::NODE& node, ProviderKind dialect, std::int32_t base_time,
                            CNewRecord<CScheduleItem>& item) {
  // Numbered times are time values already.
  const std::int32_t counted_from = dialect == ProviderKind::kTitanTV ? base_time : 0;
  ReadFields<CScheduleItem>(node, dialect, counted_from, kScheduleItemFields, *item, item.Texts());
}

void ReadProgramFields(CElementRange elements, CNewRecord<CProgram>& program) {
  ReadNumberedFields<CProgram>(elements, kProgramFields, program);
}

void ReadScheduleItemFields(CElementRange elements, CNewRecord<CScheduleItem>& item) {
  ReadNumberedFields<CScheduleItem>(elements, kScheduleItemFields, item);
}
