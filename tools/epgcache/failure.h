// What ends a run, or an input, told to the person at the keyboard.
#pragma once

#include <stdexcept>

namespace epgcache {

// `what` is the line that is shown, without the program's name.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace epgcache
