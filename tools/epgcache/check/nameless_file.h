// A file that has no name in any folder, for readers that ask for one.
//
// Ownership: it is gone with the object.
// Errors: Failure.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "tools/epgcache/failure.h"

namespace epgcache {

class NamelessFile {
 public:
  NamelessFile() {
    if (file_ == nullptr) throw Failure("no temporary file can be made");
  }

  void Write(std::string_view bytes) const {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
      throw Failure("a temporary file cannot be written");
  }

  // By which this process can open it, with all that has been written.
  std::string Path() const {
    if (std::fflush(file_.get()) != 0) throw Failure("a temporary file cannot be written");
    return "/proc/self/fd/" + std::to_string(fileno(file_.get()));
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_ = {std::tmpfile(), std::fclose};
};

}  // namespace epgcache
