// What ends a run, or an input, told to the person at the keyboard.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace epgcache {

// `what` is the line that is shown, without the program's name.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A text from outside, made safe to show: nothing in it steers a terminal or breaks the line.
inline std::string Shown(std::string_view text) {
  std::string shown(text);
  for (char& byte : shown) {
    if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f) byte = '?';
  }
  return shown;
}

}  // namespace epgcache
