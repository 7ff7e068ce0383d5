#include "tools/epgcache/check/reader_walk.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "text/counted_text.h"
#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"
#include "xml/safe_node.h"
#include "xml/simple_xml_reader.h"

namespace epgcache {

namespace {

constexpr const char* kSwallows = ", which swallows everything up to the next ';'";

bool Holds(std::string_view text, std::string_view bytes) {
  return text.find_first_of(bytes) != std::string_view::npos;
}

// What in a tag makes the reader see its name or its end elsewhere than XML does.
std::string TagOddity(std::string_view bytes, const Markup& tag) {
  const TagParts parts = PartsOf(bytes, tag);
  const std::string of_tag = " of " + ShownTag(tag.name);
  if (tag.kind == MarkupKind::kEnd)
    return parts.rest == ">" ? "" : "a blank or line break before the '>' of its end tag";
  const std::string_view behind_name =
      parts.attributes.empty() ? parts.rest : parts.attributes.front().before;
  if (Holds(behind_name.substr(0, behind_name.find(' ')), "\t\r\n"))
    return "a line break or tab after the name" + of_tag;
  for (const TagAttribute& attribute : parts.attributes) {
    if (Holds(attribute.value, "'\""))
      return "an apostrophe or quotation mark inside an attribute" + of_tag;
    if (Holds(attribute.value, ">")) return "a '>' inside an attribute" + of_tag;
    if (FindBareAmpersand(attribute.value) != std::string_view::npos)
      return "an '&' without its ';' in an attribute" + of_tag;
  }
  return "";
}

class Walk {
 public:
  Walk(const std::string& name, std::string_view bytes) : bytes_(bytes) {
    if (!reader_.Open(name.c_str(), true, false, true))
      throw Failure(Shown(name) + ": cannot be opened");
  }

  std::optional<Stop> Run() {
    if (auto stop = ReadRoot()) return stop;
    Markup first = {};
    if (parting_ && FindRoot(bytes_, first) && first.begin != opened_.front().begin)
      return parting_;
    while (!opened_.empty()) {
      const bool read = Step();
      if (read && !end_tag_) {
        if (open_) opened_.push_back({NodeName(), begin_});
      } else if (end_tag_ && NodeName() == opened_.back().name) {
        opened_.pop_back();
        same_levels_ = std::min(same_levels_, opened_.size());
      } else {
        return parting_ ? parting_ : Explain();
      }
    }
    return std::nullopt;
  }

 private:
  struct Opened {
    std::string name;  // as the reader has it
    std::size_t begin;
  };

  std::size_t Position() const { return static_cast<std::size_t>(reader_.Offset()); }
  std::string NodeName() const { return std::string(ViewOf(node_.name)); }

  // Reads on, and remembers where the reader and XML have diverged since they last agreed.
  bool Step() {
    if (AreAtOne()) parting_.reset();
    node_.FreeChildren();
    begin_ = std::min(bytes_.find('<', Position()), bytes_.size());
    const bool read = reader_.ReadElement(node_, open_, end_tag_);
    Markup markup = {};
    if (!parting_ && FindMarkup(bytes_, begin_, markup) && !IsReadAsXml(markup, read))
      parting_ = Describe(markup);
    return read;
  }

  // A root with errors is still a root.
  std::optional<Stop> ReadRoot() {
    do {
      if (!Step()) {
        if (Position() >= bytes_.size()) return Stop{0, "no element has child elements"};
        break;
      }
    } while (!open_);
    opened_.push_back({NodeName(), begin_});
    return std::nullopt;
  }

  // Both stand between the same two pieces, inside the same elements.
  bool AreAtOne() {
    Markup markup = {};
    while (xml_at_ < Position() && FindMarkup(bytes_, xml_at_, markup) &&
           markup.begin < Position()) {
      xml_at_ = markup.end;
      if (markup.kind == MarkupKind::kStart) xml_opened_.push_back(markup.name);
      if (markup.kind == MarkupKind::kEnd && !xml_opened_.empty()) {
        xml_opened_.pop_back();
        same_levels_ = std::min(same_levels_, xml_opened_.size());
      }
    }
    if (xml_at_ > Position() || xml_opened_.size() != opened_.size()) return false;
    while (same_levels_ < opened_.size() && opened_[same_levels_].name == xml_opened_[same_levels_])
      ++same_levels_;
    return same_levels_ == opened_.size();
  }

  // Whether what the last step has read is that piece, with what belongs to it.
  bool IsReadAsXml(const Markup& markup, bool read) const {
    const std::size_t end = Position();
    Markup next = {};
    switch (markup.kind) {
      case MarkupKind::kEnd:
        return end_tag_ && end == markup.end && NodeName() == markup.name;
      case MarkupKind::kEmpty:
        return read && !open_ && end == markup.end && NodeName() == markup.name;
      case MarkupKind::kStart:
        if (!read || NodeName() != markup.name || !FindMarkup(bytes_, markup.end, next))
          return false;
        if (open_) return next.IsElement() && end == next.begin;
        return next.kind == MarkupKind::kEnd && next.name == markup.name && end == next.end;
      default:
        // The reader ends it at its first '>', and passes over what then is text.
        return read && !open_ && !end_tag_ && end <= markup.end &&
               !Holds(bytes_.substr(end, markup.end - end), "<&");
    }
  }

  Stop Describe(const Markup& markup) const {
    const std::string_view inside = bytes_.substr(markup.begin + 1, markup.end - markup.begin - 1);
    if (markup.kind != MarkupKind::kEnd && !markup.IsElement()) {
      const std::string what = markup.kind == MarkupKind::kComment ? " a comment"
                               : markup.kind == MarkupKind::kCData
                                   ? " a CDATA section"
                                   : " a declaration or instruction";
      if (Holds(inside, "<")) return {markup.begin, "markup inside" + what + ", which is read"};
      return {markup.begin, "an '&' inside" + what + kSwallows};
    }
    if (const std::string oddity = TagOddity(bytes_, markup); !oddity.empty())
      return {markup.begin, oddity};
    return DescribeBehind(markup);
  }

  // The start tag itself is right.
  Stop DescribeBehind(const Markup& tag) const {
    const std::string in_element = " in the text of " + ShownTag(tag.name);
    Markup next = {};
    if (!FindMarkup(bytes_, tag.end, next)) next.begin = bytes_.size();
    const std::size_t bare = FindBareAmpersand(bytes_.substr(tag.end, next.begin - tag.end));
    if (bare != std::string_view::npos)
      return {tag.end + bare, "an '&' without its ';'" + in_element + kSwallows};
    if (next.begin == bytes_.size())
      return {bytes_.size(), "the file ends inside " + ShownTag(tag.name)};
    switch (next.kind) {
      case MarkupKind::kComment:
        return {next.begin, "a comment" + in_element + ", or before its first child element"};
      case MarkupKind::kCData:
        return {next.begin, "a CDATA section" + in_element};
      case MarkupKind::kEnd:
        if (next.name != tag.name) break;
        return {next.begin, TagOddity(bytes_, next) + ", " + ShownTag("/" + std::string(tag.name))};
      case MarkupKind::kOther:
        return {next.begin, "a declaration or instruction" + in_element};
      default:
        break;
    }
    return {next.begin, ShownTag(tag.name) + " is not closed as it was opened"};
  }

  // The two agreed, so the file itself is not well-formed.
  Stop Explain() const {
    const std::string parent = ShownTag(opened_.back().name);
    if (end_tag_) return {begin_, parent + " is closed by " + ShownTag("/" + NodeName())};
    return {bytes_.size(), "the file ends inside " + parent};
  }

  std::string_view bytes_;
  CSimpleXMLReader reader_;
  CSafeNode node_;
  bool open_ = false;
  bool end_tag_ = false;
  std::size_t begin_ = 0;  // of the markup that the last step has read
  std::vector<Opened> opened_;

  std::size_t xml_at_ = 0;  // after XML's last piece before the reader's place
  std::vector<std::string_view> xml_opened_;
  std::size_t same_levels_ = 0;  // so many are known to be of one name for both, from the root on
  std::optional<Stop> parting_;
};

}  // namespace

std::optional<Stop> WalkAsImporters(const std::string& name, std::string_view bytes) {
  return Walk(name, bytes).Run();
}

std::string AttributeOddity(std::string_view bytes, const Markup& tag) {
  if (std::string oddity = TagOddity(bytes, tag); !oddity.empty()) return oddity;
  const TagParts parts = PartsOf(bytes, tag);
  const std::string of_tag = " of " + ShownTag(tag.name);
  for (const TagAttribute& attribute : parts.attributes) {
    if (attribute.before != " ")
      return "a line break, tab or second blank between the attributes" + of_tag;
    if (attribute.equals != "=") return "a blank or line break beside an '='" + of_tag;
    if (attribute.value.find("&apos;") != std::string_view::npos ||
        attribute.value.find("&quot;") != std::string_view::npos)
      return "an apostrophe or quotation mark inside an attribute" + of_tag;
  }
  if (Holds(parts.rest, "\t\r\n")) return "a line break or tab before the '>'" + of_tag;
  return "";
}

std::string ShownTag(std::string_view name) {
  constexpr std::size_t kMost = 60;
  const std::string shown = Shown(name.substr(0, kMost));
  return '<' + shown + (name.size() > kMost ? "...>" : ">");
}

}  // namespace epgcache
