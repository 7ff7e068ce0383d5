// The operations of the schedule's records that fill them from listing elements, in the three ways
// in which formats name the values: TitanTV's element names, XMLTV's (channels only), and numbers.

#include <cstdint>
#include <utility>

#include "schedule/program.h"
#include "schedule/schedule_item.h"
#include "schedule/station.h"
#include "schedule/text_number.h"

using ORVANE::MSTR;
using ORVANE::MXML;

namespace {

// A field of a record with its child element's name in the TitanTV dialect; null where that lacks
// it. In the numbered dialect a field's number is its position in the table, from 1.
template <typename Record>
struct Field {
  const char* titan_name;
  void (*assign)(Record& record, MSTR& text, std::int32_t base_time);
};

template <typename Record, MSTR Record::*kText>
void AssignText(Record& record, MSTR& text, std::int32_t /*base_time*/) {
  record.*kText = std::move(text);
}

template <typename Record, std::int32_t Record::*kNumber>
void AssignNumber(Record& record, MSTR& text, std::int32_t /*base_time*/) {
  record.*kNumber = ReadNumber(text.Text());
}

template <typename Record, std::int32_t Record::*kTime>
void AssignTime(Record& record, MSTR& text, std::int32_t base_time) {
  // Unsigned, so that a sum beyond 32 bits wraps.
  record.*kTime = static_cast<std::int32_t>(static_cast<std::uint32_t>(base_time) +
                                            static_cast<std::uint32_t>(ReadNumber(text.Text())));
}

constexpr Field<CStation> kStationFields[] = {
    {"station_id", AssignText<CStation, &CStation::key>},
    {"network", AssignText<CStation, &CStation::network>},
    {"call_sign", AssignText<CStation, &CStation::call_sign>},
    {"rf_channel", AssignNumber<CStation, &CStation::rf_channel>},
    {nullptr, AssignNumber<CStation, &CStation::second_channel>},
    {nullptr, AssignNumber<CStation, &CStation::third_channel>},
};

constexpr Field<CProgram> kProgramFields[] = {
    {"program_id", AssignText<CProgram, &CProgram::key>},
    {"title", AssignText<CProgram, &CProgram::title>},
    {"episode_title", AssignText<CProgram, &CProgram::episode_title>},
    {"description", AssignText<CProgram, &CProgram::description>},
    {"genre", AssignText<CProgram, &CProgram::genre>},
    {"show_type", AssignText<CProgram, &CProgram::show_type>},
    {"director", AssignText<CProgram, &CProgram::director>},
    {nullptr, AssignText<CProgram, &CProgram::actors>},
    {nullptr, AssignText<CProgram, &CProgram::publish_date>},
    {"language", AssignText<CProgram, &CProgram::language>},
    {nullptr, AssignText<CProgram, &CProgram::rating_bbfc>},
    {nullptr, AssignText<CProgram, &CProgram::star_rating>},
    {nullptr, AssignText<CProgram, &CProgram::black_and_white>},
};

constexpr Field<CScheduleItem> kScheduleItemFields[] = {
    {"start_time", AssignTime<CScheduleItem, &CScheduleItem::start>},
    {"end_time", AssignTime<CScheduleItem, &CScheduleItem::end>},
    {"program_id", AssignText<CScheduleItem, &CScheduleItem::program_key>},
    {"hd", AssignText<CScheduleItem, &CScheduleItem::hd>},
    {"stereo", AssignText<CScheduleItem, &CScheduleItem::stereo>},
    {"cc", AssignText<CScheduleItem, &CScheduleItem::subtitle>},
    {"tv_rating", AssignText<CScheduleItem, &CScheduleItem::rating_tv>},
    {"fv_rating", AssignText<CScheduleItem, &CScheduleItem::rating_fv>},
    {"other_rating", AssignText<CScheduleItem, &CScheduleItem::rating_other>},
    {"repeat", AssignText<CScheduleItem, &CScheduleItem::repeat>},
    {nullptr, AssignText<CScheduleItem, &CScheduleItem::aspect>},
    {nullptr, AssignText<CScheduleItem, &CScheduleItem::subtitles>},
    {nullptr, AssignText<CScheduleItem, &CScheduleItem::new_marker>},
    {nullptr, AssignText<CScheduleItem, &CScheduleItem::premiere>},
};

// The one field that has a name and no number.
constexpr Field<CScheduleItem> kTitanItemFields[] = {
    {"station_id", AssignText<CScheduleItem, &CScheduleItem::station_key>},
};

template <typename Record, std::size_t kCount>
const Field<Record>* FindByName(const Field<Record> (&fields)[kCount], const MSTR& name) {
  for (const Field<Record>& field : fields) {
    if (field.titan_name != nullptr && name == field.titan_name) return &field;
  }
  return nullptr;
}

// The number stands behind the first character of a name; a nameless node has none.
template <typename Record, std::size_t kCount>
const Field<Record>* FindByNumber(const Field<Record> (&fields)[kCount], const MSTR& name) {
  const std::int32_t number = name.IsEmpty() ? 0 : ReadNumber(name.Text() + 1);
  if (number < 1 || static_cast<std::size_t>(number) > kCount) return nullptr;
  return &fields[number - 1];
}

template <typename Record, std::size_t kCount>
void ReadFields(Record& record, MXML::NODE& node, ProviderKind dialect, std::int32_t base_time,
                const Field<Record> (&fields)[kCount]) {
  const bool named = dialect == ProviderKind::kTitanTV;
  for (MXML::NODE* child = node.first_child; child != nullptr; child = child->next_sibling) {
    const Field<Record>* const field =
        named ? FindByName(fields, child->name) : FindByNumber(fields, child->name);
    if (field != nullptr) field->assign(record, child->value, base_time);
  }
}

}  // namespace

void CStation::ReadStationFields(MXML::NODE& node, ProviderKind dialect) {
  if (dialect != ProviderKind::kXMLTV) {
    ReadFields(*this, node, dialect, 0, kStationFields);
    return;
  }
  key = node.GetAttribute("id");
  for (MXML::NODE* child = node.first_child; child != nullptr; child = child->next_sibling) {
    if (!(child->name == "display-name")) continue;
    if (network.IsEmpty()) {
      network = std::move(child->value);
    } else if (call_sign.IsEmpty()) {
      call_sign = std::move(child->value);
    }
  }
}

void CProgram::ReadProgramFields(MXML::NODE& node, ProviderKind dialect) {
  ReadFields(*this, node, dialect, 0, kProgramFields);
}

void CScheduleItem::ReadScheduleItemFields(MXML::NODE& node, ProviderKind dialect,
                                           std::int32_t base_time) {
  if (dialect == ProviderKind::kTitanTV) {
    ReadFields(*this, node, dialect, base_time, kTitanItemFields);
  } else {
    base_time = 0;  // numbered times are time values
  }
  ReadFields(*this, node, dialect, base_time, kScheduleItemFields);
}
