#include "schedule/program_details.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "schedule/schedule_item.h"
#include "schedule/station.h"
#include "schedule/text_number.h"
#include "schedule/time_value.h"
#include "text/letters.h"

using ORVANE::MSTR;

namespace {

bool IsSet(const MSTR& marker) { return marker.Text()[0] == 'Y'; }

template <MSTR CProgram::*kField>
void ReadProgramField(const CScheduleItem& item, std::string_view /*argument*/, MSTR& out) {
  if (item.program != nullptr) out += item.program->*kField;
}

template <MSTR CScheduleItem::*kField>
void ReadItemField(const CScheduleItem& item, std::string_view /*argument*/, MSTR& out) {
  out += item.*kField;
}

void ReadTime(const CScheduleItem& item, std::string_view /*argument*/, MSTR& out) {
  out += ConvertLocalTime2String(item.start, 4);
}

void ReadFilm(const CScheduleItem& item, std::string_view /*argument*/, MSTR& out) {
  if (item.program == nullptr) return;
  if (EqualIgnoringCase(item.program->genre.View(), "film")) out += 'Y';
}

void ReadFlags(const CScheduleItem& item, std::string_view /*argument*/, MSTR& out) {
  const std::uint32_t begin = out.Length();
  const auto mark = [&](std::string_view text) {
    if (out.Length() != begin) out += ", ";
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

void AppendMarks(std::string_view mark, std::int64_t count, MSTR& out) {
  if (mark.empty()) return;
  // A rating can ask for more than any text may hold; that is known before the first mark.
  const std::size_t room = (MSTR::kMaxLength - out.Length()) / mark.size();
  if (count > static_cast<std::int64_t>(room)) throw ORVANE::MBADALLOC();
  if (count <= 0) return;
  // Each step doubles what is drawn: one mark at a time takes 11 s for the longest text, this 1 s.
  const std::uint32_t begin = out.Length();
  std::size_t left = static_cast<std::size_t>(count) * mark.size();
  if (left > begin) out.Reserve(begin + left);  // if always, many small ones would be quadratic
  for (std::string_view drawn = mark; left > 0; drawn = out.View().substr(begin, left)) {
    out += drawn;
    left -= drawn.size();
  }
}

// The rating's text, or with an argument such as "*,-" its drawing: "3/5" gives ***--.
void ReadStarRating(const CScheduleItem& item, std::string_view argument, MSTR& out) {
  if (item.program == nullptr) return;
  const MSTR& rating = item.program->star_rating;
  if (argument.empty()) {
    out += rating;
    return;
  }
  const std::size_t comma = argument.find(',');
  const std::size_t slash = rating.View().find('/');
  const std::int64_t full = std::max(ReadNumber(rating.Text()), 0);
  const std::int64_t maximum =
      slash != std::string_view::npos ? ReadNumber(rating.Text() + slash + 1) : 0;
  AppendMarks(argument.substr(0, comma), full, out);
  if (comma != std::string_view::npos) AppendMarks(argument.substr(comma + 1), maximum - full, out);
}

void ReadCombination(const CScheduleItem& item, std::string_view argument, MSTR& out) {
  out += ExpandTemplate(item, argument, false);
}

// Null for a name that is not in the table.
FieldReader FindReader(std::string_view name) {
  const auto found = field_table.find(name);
  return found != field_table.end() ? found->second : nullptr;
}

// Appends a field's value by its reader, or what stands for a name without one.
void AppendField(FieldReader reader, const CScheduleItem& item, std::string_view name,
                 std::string_view argument, MSTR& out) {
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

// Characters that end a field's name.
constexpr auto kSeparators = [] {
  std::array<bool, 256> table = {};
  for (const char c : std::string_view(" .,:;(){}!\xa3$%^&*_-+=#~@?/|\"'\\[]")) {
    table[static_cast<unsigned char>(c)] = true;
  }
  return table;
}();

// Expands one template. Groups and arguments that are templates themselves are levels of an
// explicit stack, and all of them write into one result, from which an abandoned level is cut off
// again: nesting costs neither stack nor copies.
class CExpansion {
 public:
  CExpansion(const CScheduleItem& item, std::string_view text) : item_(item), text_(text) {}

  MSTR Expand(bool preceding_text) && {
    Open(Level::Kind::kTemplate, text_.size(), preceding_text);
    while (!levels_.empty()) {
      if (at_ >= levels_.back().end) {
        CloseTemplate();
      } else {
        Step();
      }
    }
    return std::move(result_);
  }

 private:
  struct Level {
    enum class Kind { kTemplate, kGroup };
    Kind kind;
    bool preceding_text;
    bool test_only;            // of a template in an argument: its text is not kept
    std::uint32_t begin;       // of the level's text in the result
    std::size_t end;           // of the template that the level stands in
    std::size_t continuation;  // where the level below goes on after a template
  };

  void Open(Level::Kind kind, std::size_t end, bool preceding_text) {
    levels_.push_back({kind, preceding_text, false, result_.Length(), end, end});
  }

  bool LevelHasText() const { return result_.Length() > levels_.back().begin; }

  void Step() {
    const char c = text_[at_++];
    switch (c) {
      case '\\':
        Escape();
        break;
      case '[':
        Open(Level::Kind::kGroup, levels_.back().end, LevelHasText());
        break;
      case ']':
        if (levels_.back().kind == Level::Kind::kGroup) {
          levels_.pop_back();
        } else {
          CloseTemplate();
        }
        break;
      case '$':
        Reference();
        break;
      default:
        result_ += c;
    }
  }

  void Escape() {
    if (at_ == levels_.back().end) return;
    const char c = text_[at_++];
    if (c == 'n') {
      result_ += '\n';
    } else if (c == 't') {
      result_ += "<t>";
    } else {
      result_ += c;
    }
  }

  void Reference() {
    const std::size_t end = levels_.back().end;
    const std::size_t name_begin = at_;
    while (at_ < end && !kSeparators[static_cast<unsigned char>(text_[at_])]) ++at_;
    const std::string_view name = text_.substr(name_begin, at_ - name_begin);
    const bool test_only = at_ < end && text_[at_] == '!';
    if (test_only) ++at_;
    std::size_t argument_begin = at_;
    std::size_t argument_end = at_;
    if (at_ < end && text_[at_] == '(') {
      argument_begin = at_ + 1;
      argument_end = std::min(ClosingOf(at_, end), end);
      at_ = std::min(argument_end + 1, end);
    }
    const std::string_view argument = text_.substr(argument_begin, argument_end - argument_begin);
    if (name.empty()) {
      if (levels_.back().preceding_text) result_ += argument;
      return;
    }
    const FieldReader reader = FindReader(name);
    if (reader == ReadCombination) {
      const std::size_t continuation = at_;
      in_argument_ = true;
      Open(Level::Kind::kTemplate, argument_end, false);
      levels_.back().test_only = test_only;
      levels_.back().continuation = continuation;
      at_ = argument_begin;
      return;
    }
    const std::uint32_t before = result_.Length();
    AppendField(reader, item_, name, argument, result_);
    TakeValue(before, test_only);
  }

  // A field's value stands in the result from `before` on.
  void TakeValue(std::uint32_t before, bool test_only) {
    if (result_.Length() == before) {
      Abandon();
    } else if (test_only) {
      result_.Truncate(before);
    }
  }

  // Drops the innermost level with what it has gathered, and skips the rest of it.
  void Abandon() {
    result_.Truncate(levels_.back().begin);
    if (levels_.back().kind == Level::Kind::kTemplate) {
      at_ = levels_.back().end;
      return;
    }
    std::size_t depth = 1;
    for (; at_ < levels_.back().end && depth > 0; ++at_) {
      if (text_[at_] == '[') ++depth;
      if (text_[at_] == ']') --depth;
    }
    levels_.pop_back();
  }

  // Ends the innermost template, with the groups that are still open in it. Its text is the value
  // of the field that it is the argument of.
  void CloseTemplate() {
    while (levels_.back().kind == Level::Kind::kGroup) levels_.pop_back();
    const Level closed = levels_.back();
    levels_.pop_back();
    if (levels_.empty()) return;
    at_ = closed.continuation;
    TakeValue(closed.begin, closed.test_only);
  }

  // The position of the ')' that matches the '(' at `opening`, or the end of the text.
  //
  // The first look is a plain search. Where a template stands in an argument, all matches are
  // noted once, since searching again at every level would be quadratic.
  std::size_t ClosingOf(std::size_t opening, std::size_t end) {
    if (in_argument_ && closings_.empty()) NoteClosings();
    if (!closings_.empty()) return closings_[opening];
    std::size_t depth = 0;
    for (std::size_t at = opening; at < end; ++at) {
      if (text_[at] == '(') ++depth;
      if (text_[at] == ')' && --depth == 0) return at;
    }
    return end;
  }

  void NoteClosings() {
    std::vector<std::size_t> open;
    closings_.assign(text_.size(), text_.size());
    for (std::size_t at = 0; at < text_.size(); ++at) {
      if (text_[at] == '(') {
        open.push_back(at);
      } else if (text_[at] == ')' && !open.empty()) {
        closings_[open.back()] = at;
        open.pop_back();
      }
    }
  }

  const CScheduleItem& item_;
  const std::string_view text_;
  std::size_t at_ = 0;
  std::vector<Level> levels_;
  bool in_argument_ = false;           // a template in an argument has been met
  std::vector<std::size_t> closings_;  // by position; empty until then
  MSTR result_;
};

}  // namespace

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
      {"Network", [](const CStation& station) -> const MSTR& { return station.network; }},
      {"CallSign", [](const CStation& station) -> const MSTR& { return station.call_sign; }},
  };
}

MSTR GetField(const CScheduleItem& item, std::string_view name, std::string_view argument) {
  MSTR value;
  AppendField(FindReader(name), item, name, argument, value);
  return value;
}

MSTR ExpandTemplate(const CScheduleItem& item, std::string_view text, bool preceding_text) {
  return CExpansion(item, text).Expand(preceding_text);
}
