#include "schedule/fields.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "schedule/schedule_item.h"
#include "schedule/station.h"
#include "schedule/template.h"
#include "schedule/text_number.h"
#include "schedule/time_value.h"
#include "text/bad_alloc.h"
#include "text/letters.h"

namespace {

bool IsSet(const CText& marker) { return marker.Characters()[0] == 'Y'; }

template <CText CProgram::*kField>
void ReadProgramField(const CScheduleItem& item, std::string_view /*argument*/, std::string& out) {
  if (item.program != nullptr) out += (item.program->*kField).View();
}

template <CText CScheduleItem::*kField>
void ReadItemField(const CScheduleItem& item, std::string_view /*argument*/, std::string& out) {
  out += (item.*kField).View();
}

void ReadTime(const CScheduleItem& item, std::string_view /*argument*/, std::string& out) {
  out += ConvertLocalTime2String(item.start, 4);
}

void ReadFilm(const CScheduleItem& item, std::string_view /*argument*/, std::string& out) {
  if (item.program == nullptr) return;
  if (EqualIgnoringCase(item.program->genre.View(), "film")) out += 'Y';
}

void ReadFlags(const CScheduleItem& item, std::string_view /*argument*/, std::string& out) {
  const std::size_t begin = out.size();
  const auto mark = [&](std::string_view text) {
    if (out.size() != begin) out += ", ";
    out += text;
  };
  if (IsSet(item.new_marker)) mark("New");
  if (!item.aspect.IsEmpty()) mark(item.aspect.View());
  if (IsSet(item.stereo)) mark("Stereo");
  if (IsSet(item.subtitle)) mark("CC");
  if (IsSet(item.hd)) mark("HD");
  if (IsSet(item.repeat)) {
    mark("Repeat");
  } else if (!item.repeat.IsEmpty()) {
    mark("Repeat(");
    out += item.repeat.View().substr(0, 1);
    out += ')';
  }
  if (item.program != nullptr && IsSet(item.program->black_and_white)) mark("B/W");
}

void AppendMarks(std::string_view mark, std::int64_t count, std::string& out) {
  if (mark.empty() || count <= 0) return;
  // A rating can ask for more than any text may hold; that is known before the first mark.
  const std::size_t room = kLongestText - std::min(out.size(), kLongestText);
  if (static_cast<std::size_t>(count) > room / mark.size()) throw CBadAlloc();
  // Doubled until it is enough: most marks are one byte, and there may be a billion of them.
  const std::size_t begin = out.size();
  const std::size_t wanted = mark.size() * static_cast<std::size_t>(count);
  out.reserve(begin + wanted);
  out += mark;
  while (out.size() - begin < wanted) {
    const std::size_t done = out.size() - begin;
    out.append(out, begin, std::min(done, wanted - done));
  }
}

// The rating's text, or with an argument such as "*,-" its drawing: "3/5" gives ***--.
void ReadStarRating(const CScheduleItem& item, std::string_view argument, std::string& out) {
  if (item.program == nullptr) return;
  const CText& rating = item.program->star_rating;
  if (argument.empty()) {
    out += rating.View();
    return;
  }
  const std::size_t comma = argument.find(',');
  const std::size_t slash = rating.View().find('/');
  const std::int64_t full = std::max(ReadNumber(rating.View()), 0);
  const std::int64_t maximum =
      slash != std::string_view::npos ? ReadNumber(rating.View().substr(slash + 1)) : 0;
  AppendMarks(argument.substr(0, comma), full, out);
  if (comma != std::string_view::npos) AppendMarks(argument.substr(comma + 1), maximum - full, out);
}

}  // namespace

void ReadCombination(const CScheduleItem& item, std::string_view argument, std::string& out) {
  out += ExpandTemplate(item, argument, false);
}

FieldReader FindField(std::string_view name) {
  const auto found = field_table.find(name);
  return found != field_table.end() ? found->second : nullptr;
}

void AppendField(FieldReader reader, const CScheduleItem& item, std::string_view name,
                 std::string_view argument, std::string& out) {
  if (reader != nullptr) {
    reader(item, argument, out);
    return;
  }
  out += "[Not Found! (";
  out += name;
  out += ':';
  out += argument;
  out += ")]";
}

void FillFieldTable() {
  if (!field_table.empty()) return;
  // Made whole first, so that running out of memory leaves it empty.
  field_table = FieldTable{
      {"Combination", ReadCombination},
      {"Flags", ReadFlags},
      {"Time", ReadTime},
      {"Title", ReadProgramField<&CProgram::title>},
      {"Description", ReadProgramField<&CProgram::description>},
      {"EpisodeTitle", ReadProgramField<&CProgram::episode_title>},
      {"Genre", ReadProgramField<&CProgram::genre>},
      {"ShowType", ReadProgramField<&CProgram::show_type>},
      {"Director", ReadProgramField<&CProgram::director>},
      {"Language", ReadProgramField<&CProgram::language>},
      {"Subtitle", ReadItemField<&CScheduleItem::subtitle>},
      {"Stereo", ReadItemField<&CScheduleItem::stereo>},
      {"Repeat", ReadItemField<&CScheduleItem::repeat>},
      {"RatingTV", ReadItemField<&CScheduleItem::rating_tv>},
      {"RatingFV", ReadItemField<&CScheduleItem::rating_fv>},
      {"RatingOther", ReadItemField<&CScheduleItem::rating_other>},
      {"Actors", ReadProgramField<&CProgram::actors>},
      {"PublishDate", ReadProgramField<&CProgram::publish_date>},
      {"RatingBBFC", ReadProgramField<&CProgram::rating_bbfc>},
      {"StarRating", ReadStarRating},
      {"BlackAndWhite", ReadProgramField<&CProgram::black_and_white>},
      {"New", ReadItemField<&CScheduleItem::new_marker>},
      {"Premiere", ReadItemField<&CScheduleItem::premiere>},
      {"Film", ReadFilm},
  };
}

void FillStationFieldTable() {
  if (!station_field_table.empty()) return;
  station_field_table = StationFieldTable{
      {"Network", [](const CStation& station) { return station.network.View(); }},
      {"CallSign", [](const CStation& station) { return station.call_sign.View(); }},
  };
}

std::string GetField(const CScheduleItem& item, std::string_view name, std::string_view argument) {
  std::string value;
  AppendField(FindField(name), item, name, argument, value);
  return value;
}
