// A file that is written beside its place and moved there when it is whole, so that whoever reads
// it sees the old one or the new one.
//
// Ownership: what has not been committed is removed, also when a signal ends the program; what a
//   program that was killed has left beside it is removed by the next one that writes there.
// Threads: one at a time, and one file at a time.
// Errors: Failure, with the file's name and the reason.
#pragma once

#include <string>
#include <string_view>

namespace epgcache {

class OutputFile {
 public:
  explicit OutputFile(const std::string& name);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  void Write(std::string_view bytes);

  // Everything is written: the file takes its place, with the old one's owner and permissions.
  void Commit();

 private:
  void Flush();
  [[noreturn]] void Fail(const std::string& what, int error) const;

  std::string shown_;
  std::string place_;      // behind all symbolic links
  std::string temporary_;  // empty once it is gone
  int file_ = -1;          // Owned.
  std::string waiting_;
};

// Has signals that end the program remove the file in the making first. A limit on file sizes, and
// a reader of messages that is gone, are ignored: writing fails then.
void HandleSignals();

// Without memory: removes the file in the making, says so, and ends the program.
[[noreturn]] void EndWithoutMemory();

}  // namespace epgcache
