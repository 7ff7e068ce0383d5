// The five entities that XML knows without a declaration, and text escaped by them.
#pragma once

#include <string>
#include <string_view>

struct Entity {
  std::string_view reference;  // as it stands in a document: "&amp;"
  char character;

  constexpr std::string_view Name() const { return reference.substr(1, reference.size() - 2); }
};

inline constexpr Entity kEntities[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};

// The character of an entity's name; '\0' for a name that is none of the five.
constexpr char EntityCharacter(std::string_view name) {
  for (const Entity& entity : kEntities) {
    if (entity.Name() == name) return entity.character;
  }
  return '\0';
}

// A copy in which the five characters are references.
inline std::string XmlEscape(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    std::string_view written(&c, 1);
    for (const Entity& entity : kEntities) {
      if (entity.character == c) written = entity.reference;
    }
    escaped += written;
  }
  return escaped;
}
