// A place where a document is not as it should be.
#pragma once

#include <functional>
#include <string>

namespace epgcache {

// Lines and columns count from 1, columns in bytes.
struct Fault {
  int line = 0;
  int column = 0;
  std::string reason;  // empty: there is none

  // As compilers write it.
  std::string At(const std::string& name) const {
    return name + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + reason;
  }
};

using FaultSink = std::function<void(const Fault&)>;

}  // namespace epgcache
