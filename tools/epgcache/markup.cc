#include "tools/epgcache/markup.h"

#include <algorithm>

#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

std::size_t Behind(std::string_view text, std::string_view end_mark, std::size_t at) {
  const std::size_t found = text.find(end_mark, at);
  return found == std::string_view::npos ? text.size() : found + end_mark.size();
}

// Behind the '>' that stands outside quotes, and outside an internal subset's brackets.
std::size_t BehindTag(std::string_view text, std::size_t at, bool brackets) {
  char quote = '\0';
  int depth = 0;
  for (; at < text.size(); ++at) {
    const char byte = text[at];
    if (quote != '\0') {
      if (byte == quote) quote = '\0';
    } else if (byte == '"' || byte == '\'') {
      quote = byte;
    } else if (brackets && byte == '[') {
      ++depth;
    } else if (brackets && byte == ']') {
      --depth;
    } else if (byte == '>' && depth <= 0) {
      return at + 1;
    }
  }
  return text.size();
}

std::string_view NameAt(std::string_view text, std::size_t at) {
  return text.substr(at, std::min(text.find_first_of(" \t\r\n/>", at), text.size()) - at);
}

}  // namespace

bool FindMarkup(std::string_view text, std::size_t at, Markup& markup) {
  const std::size_t begin = text.find('<', at);
  if (begin == std::string_view::npos) return false;
  const std::string_view rest = text.substr(begin);
  markup = {MarkupKind::kOther, begin, 0, {}};
  if (rest.starts_with("<!--")) {
    markup.kind = MarkupKind::kComment;
    markup.end = Behind(text, "-->", begin + 4);
  } else if (rest.starts_with("<![CDATA[")) {
    markup.kind = MarkupKind::kCData;
    markup.end = Behind(text, "]]>", begin);
  } else if (rest.starts_with("<?")) {
    markup.end = Behind(text, "?>", begin);
  } else if (rest.starts_with("<!")) {
    markup.end = BehindTag(text, begin, true);
  } else if (rest.starts_with("</")) {
    markup.kind = MarkupKind::kEnd;
    markup.name = NameAt(text, begin + 2);
    markup.end = Behind(text, ">", begin);
  } else {
    markup.name = NameAt(text, begin + 1);
    markup.end = BehindTag(text, begin, false);
    markup.kind =
        text.substr(0, markup.end).ends_with("/>") ? MarkupKind::kEmpty : MarkupKind::kStart;
  }
  return true;
}

std::vector<MarkupAttribute> AttributesOf(std::string_view text, const Markup& tag) {
  std::vector<MarkupAttribute> attributes;
  std::string_view left = text.substr(tag.begin + 1, tag.end - tag.begin - 1);
  left.remove_prefix(tag.name.size());
  const auto take = [&left](std::size_t count) {
    count = std::min(count, left.size());
    const std::string_view taken = left.substr(0, count);
    left.remove_prefix(count);
    return taken;
  };
  for (;;) {
    MarkupAttribute attribute;
    attribute.before = take(left.find_first_not_of(kBlanks));
    attribute.name = take(left.find_first_of(" \t\r\n=/>"));
    attribute.equals = take(left.find_first_of("\"'"));
    if (attribute.name.empty() || left.empty()) return attributes;
    const char quote = take(1).front();
    attribute.value = take(left.find(quote));
    take(1);
    attributes.push_back(attribute);
  }
}

}  // namespace epgcache
