#include "tools/epgcache/read/markup.h"

#include <algorithm>

#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

// No reference is longer.

struct End {
  std::size_t at;
  bool is_whole;
};

End After(std::string_view text, std::string_view end_mark, std::size_t at) {
  const std::size_t found = text.find(end_mark, at);
  if (found == std::string_view::npos) return {text.size(), false};
  return {found + end_mark.size(), true};
}

// After a tag's '>' outside quotes. A '<' cannot occur in a tag, so the tag breaks off there.
End AfterTag(std::string_view text, std::size_t at) {
  char quote = '\0';
  for (; at < text.size() && text[at] != '<'; ++at) {
    const char byte = text[at];
    if (quote != '\0') {
      if (byte == quote) quote = '\0';
    } else if (byte == '"' || byte == '\'') {
      quote = byte;
    } else if (byte == '>') {
      return {at + 1, true};
    }
  }
  return {at, false};
}

// After a document type, with all that stands between its brackets.
End AfterDeclaration(std::string_view text, std::size_t at) {
  int depth = 0;
  while (at < text.size()) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) {
      at = After(text, "-->", at + 4).at;
    } else if (rest.starts_with("<?")) {
      at = After(text, "?>", at).at;
    } else if (rest.front() == '"' || rest.front() == '\'') {
      at = After(text, rest.substr(0, 1), at + 1).at;
    } else {
      depth += rest.front() == '<' ? 1 : rest.front() == '>' ? -1 : 0;
      ++at;
      if (depth == 0) return {at, true};
    }
  }
  return {at, false};
}

std::string_view NameAt(std::string_view text, std::size_t at) {
  return text.substr(at, std::min(text.find_first_of(" \t\r\n/><", at), text.size()) - at);
}

}  // namespace

bool FindMarkup(std::string_view text, std::size_t at, Markup& markup) {
  const std::size_t begin = text.find('<', at);
  if (begin == std::string_view::npos) return false;
  const std::string_view rest = text.substr(begin);
  markup = {MarkupKind::kOther, begin, 0, false, {}};
  End end = {};
  if (rest.starts_with("<!--")) {
    markup.kind = MarkupKind::kComment;
    end = After(text, "-->", begin + 4);
  } else if (rest.starts_with("<![CDATA[")) {
    markup.kind = MarkupKind::kCData;
    end = After(text, "]]>", begin);
  } else if (rest.starts_with("<?")) {
    end = After(text, "?>", begin);
  } else if (rest.starts_with("<!")) {
    end = AfterDeclaration(text, begin);
  } else {
    const bool is_end = rest.starts_with("</");
    markup.name = NameAt(text, begin + (is_end ? 2 : 1));
    end = AfterTag(text, begin + 1);
    const bool is_empty = text.substr(begin, end.at - begin).ends_with("/>");
    markup.kind = is_end ? MarkupKind::kEnd : is_empty ? MarkupKind::kEmpty : MarkupKind::kStart;
  }
  markup.end = end.at;
  markup.is_whole = end.is_whole;
  return true;
}

bool FindRoot(std::string_view text, Markup& root) {
  for (std::size_t at = 0; FindMarkup(text, at, root); at = root.end) {
    if (root.IsElement()) return true;
  }
  return false;
}

const TagAttribute* TagParts::Find(std::string_view name) const {
  for (const TagAttribute& attribute : attributes) {
    if (attribute.name == name) return &attribute;
  }
  return nullptr;
}

TagParts PartsOf(std::string_view text, const Markup& tag) {
  TagParts parts;
  const std::size_t name_begin = tag.begin + (tag.kind == MarkupKind::kEnd ? 2 : 1);
  std::string_view left = text.substr(name_begin, tag.end - name_begin);
  left.remove_prefix(tag.name.size());
  const auto take = [&left](std::size_t count) {
    count = std::min(count, left.size());
    const std::string_view taken = left.substr(0, count);
    left.remove_prefix(count);
    return taken;
  };
  for (;;) {
    TagAttribute attribute;
    parts.rest = left;
    attribute.before = take(left.find_first_not_of(kBlanks));
    attribute.name = take(left.find_first_of(" \t\r\n=/>"));
    attribute.equals = take(left.find_first_of("\"'"));
    if (attribute.name.empty() || left.empty()) return parts;
    const char quote = take(1).front();
    attribute.value = take(left.find(quote));
    take(1);
    parts.attributes.push_back(attribute);
  }
}

std::string_view ReferenceAt(std::string_view text) {
  const std::string_view name = text.substr(1, kLongestReference - 1);
  const std::size_t end = name.find_first_of("; \t\r\n&<>\"'");
  if (end == std::string_view::npos || name[end] != ';') return {};
  return name.substr(0, end);
}

std::size_t FindBareAmpersand(std::string_view text) {
  for (std::size_t at = 0; (at = text.find('&', at)) != std::string_view::npos; ++at) {
    if (ReferenceAt(text.substr(at)).empty()) return at;
  }
  return std::string_view::npos;
}

}  // namespace epgcache
