#include "schedule/template.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "schedule/fields.h"
#include "text/bad_alloc.h"

namespace {

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

  std::string Expand(bool preceding_text) && {
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
    std::size_t begin;         // of the level's text in the result
    std::size_t end;           // of the template that the level stands in
    std::size_t continuation;  // where the level below goes on after a template
  };

  void Open(Level::Kind kind, std::size_t end, bool preceding_text) {
    levels_.push_back({kind, preceding_text, false, result_.size(), end, end});
  }

  bool LevelHasText() const { return result_.size() > levels_.back().begin; }

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
      default: {
        const std::string_view level = text_.substr(0, levels_.back().end);
        const std::size_t next = std::min(level.find_first_of("\\[]$", at_), level.size());
        result_ += level.substr(at_ - 1, next - at_ + 1);
        at_ = next;
      }
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
    const FieldReader reader = FindField(name);
    if (reader == ReadCombination) {
      const std::size_t continuation = at_;
      in_argument_ = true;
      Open(Level::Kind::kTemplate, argument_end, false);
      levels_.back().test_only = test_only;
      levels_.back().continuation = continuation;
      at_ = argument_begin;
      return;
    }
    const std::size_t before = result_.size();
    AppendField(reader, item_, name, argument, result_);
    if (result_.size() > kLongestText) throw CBadAlloc();
    EndValue(before, test_only);
  }

  // A field's value stands in the result from `before` on.
  void EndValue(std::size_t before, bool test_only) {
    if (result_.size() == before) {
      Abandon();
    } else if (test_only) {
      result_.resize(before);
    }
  }

  // Drops the innermost level with what it has gathered, and skips the rest of it.
  void Abandon() {
    result_.resize(levels_.back().begin);
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
    EndValue(closed.begin, closed.test_only);
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
  std::string result_;
};

}  // namespace

std::string ExpandTemplate(const CScheduleItem& item, std::string_view text, bool preceding_text) {
  return CExpansion(item, text).Expand(preceding_text);
}
