#include "app/script.h"

#include <limits>
#include <utility>

namespace shell {

namespace {

constexpr struct {
  char letter;
  char byte;
} kEscapes[] = {{'\\', '\\'}, {'"', '"'}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}};

constexpr char kHexDigits[] = "0123456789abcdef";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Reads one line. The first fault ends it.
class LineParser {
 public:
  explicit LineParser(std::string_view text) : text_(text) {}

  // False for a line without a call: blank, a comment, or invalid.
  bool Parse(Call& call) {
    Blanks();
    if (AtEnd() || text_[at_] == '#') return false;
    const std::string_view name = Name();
    if (name.empty()) return Fault("a call begins with a method's name");
    Blanks();
    if (AtEnd() && name == "think") return true;
    call.method = name;
    if (!Take('(')) return Fault("'(' expected after " + call.method);
    if (!Arguments(call.arguments)) return false;
    Blanks();
    return AtEnd() || Fault("nothing but blanks may follow ')'");
  }

  const std::string& FaultText() const { return fault_; }

 private:
  bool AtEnd() const { return at_ == text_.size(); }

  bool Fault(std::string reason) {
    fault_ = std::move(reason);
    return false;
  }

  void Blanks() {
    while (!AtEnd() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
  }

  bool Take(char wanted) {
    if (AtEnd() || text_[at_] != wanted) return false;
    ++at_;
    return true;
  }

  std::string_view Name() {
    const std::size_t begin = at_;
    if (AtEnd() || !IsNameStart(text_[at_])) return {};
    while (!AtEnd() && (IsNameStart(text_[at_]) || IsDigit(text_[at_]))) ++at_;
    return text_.substr(begin, at_ - begin);
  }

  bool Arguments(std::vector<Argument>& arguments) {
    Blanks();
    if (Take(')')) return true;
    for (;;) {
      Blanks();
      if (Take('"')) {
        std::string text;
        if (!Text(text)) return false;
        arguments.emplace_back(std::move(text));
      } else {
        std::int32_t number = 0;
        if (!Integer(number)) return false;
        arguments.emplace_back(number);
      }
      Blanks();
      if (Take(')')) return true;
      if (!Take(',')) return Fault("',' or ')' expected after an argument");
    }
  }

  bool Text(std::string& text) {
    for (;;) {
      if (AtEnd()) return Fault("a text has no closing quotation mark");
      const char c = text_[at_++];
      if (c == '"') return true;
      if (c != '\\') {
        text += c;
      } else if (!Escape(text)) {
        return Fault("unknown escape in a text: use \\\\, \\\", \\n, \\t, \\r or \\xHH");
      }
    }
  }

  bool Escape(std::string& text) {
    if (AtEnd()) return false;
    const char letter = text_[at_++];
    if (letter == 'x') {
      if (text_.size() - at_ < 2) return false;
      const int high = HexDigit(text_[at_]);
      const int low = HexDigit(text_[at_ + 1]);
      if (high < 0 || low < 0) return false;
      at_ += 2;
      text += static_cast<char>(high * 16 + low);
      return true;
    }
    for (const auto& escape : kEscapes) {
      if (escape.letter == letter) {
        text += escape.byte;
        return true;
      }
    }
    return false;
  }

  bool Integer(std::int32_t& number) {
    const bool negative = !AtEnd() && text_[at_] == '-';
    if (negative || (!AtEnd() && text_[at_] == '+')) ++at_;
    if (AtEnd() || !IsDigit(text_[at_])) {
      return Fault("an argument is an integer or a text in double quotes");
    }
    using Limits = std::numeric_limits<std::int32_t>;
    std::int64_t value = 0;
    for (; !AtEnd() && IsDigit(text_[at_]); ++at_) {
      value = value * 10 + (negative ? '0' - text_[at_] : text_[at_] - '0');
      if (value < Limits::min() || value > Limits::max()) {
        return Fault("an integer does not fit into 32 bits");
      }
    }
    number = static_cast<std::int32_t>(value);
    return true;
  }

  const std::string_view text_;
  std::size_t at_ = 0;
  std::string fault_;
};

}  // namespace

void ParseScript(std::string_view text, std::vector<Call>& calls,
                 std::vector<ScriptFault>& faults) {
  for (std::size_t line = 1; !text.empty(); ++line) {
    const std::size_t end = text.find('\n');
    std::string_view content = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!content.empty() && content.back() == '\r') content.remove_suffix(1);
    Call call = {line, {}, {}};
    LineParser parser(content);
    if (parser.Parse(call)) {
      calls.push_back(std::move(call));
    } else if (!parser.FaultText().empty()) {
      faults.push_back({line, parser.FaultText()});
    }
  }
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    const char* letter = nullptr;
    for (const auto& escape : kEscapes) {
      if (escape.byte == c) letter = &escape.letter;
    }
    const auto byte = static_cast<unsigned char>(c);
    if (letter != nullptr) {
      quoted += '\\';
      quoted += *letter;
    } else if (byte < 0x20 || byte == 0x7f) {
      quoted += "\\x";
      quoted += kHexDigits[byte >> 4];
      quoted += kHexDigits[byte & 0xf];
    } else {
      quoted += c;
    }
  }
  return quoted += '"';
}

}  // namespace shell
