// Between the engine's texts and views of characters.
//
// The functions take any text that has the members `text` (characters, with a NUL after them) and
// `length`, can be assigned characters up to their NUL, and can be appended to in the same way.
#pragma once

#include <string>
#include <string_view>

// Lives until the text is changed.
template <typename Text>
std::string_view ViewOf(const Text& text) {
  return {text.text, text.length};
}

// Makes `text` the characters from `begin` on, `length` of them and a NUL after them; NULs among
// them count.
template <typename Text>
void AssignTo(Text& text, const char* begin, std::size_t length) {
  text = begin;
  while (text.length < length) {
    text += '\0';
    text += begin + text.length;
  }
}

template <typename Text>
void AssignTo(Text& text, const std::string& characters) {
  AssignTo(text, characters.c_str(), characters.size());
}
