// What ends a run, or an input, reported to the user.
#pragma once

#include <stdexcept>

namespace epgcache {

// `what` is the line that is shown, without the program's name.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace epgcache
