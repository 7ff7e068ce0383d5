// The bytes of an input, unpacked: a file or standard input, plain or packed in any way that
// libarchive recognises by its first bytes, also several times. An archive of files holds several
// documents.
//
// Units: sizes and positions are bytes.
// Ownership: a source owns its open file.
// Threads: one at a time.
// Errors: Failure, with the document's name and the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace epgcache {

// An input's name as it is shown; "-" is standard input.
std::string ShownInput(const std::string& name);

class ByteSource {
 public:
  // How far an input is: bytes read of it, packed as it is, and of how many (0: unknown).
  using Watcher = std::function<void(std::uint64_t read, std::uint64_t whole)>;

  // `name` "-" is standard input. An input that unpacks to more than `max_size` is not read to its
  // end. `watcher` may be empty.
  ByteSource(const std::string& name, std::uint64_t max_size, Watcher watcher = {});
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  ~ByteSource();

  // Goes to the first document, or the next one; false when there is none. An input without any is
  // a Failure. Files of an archive that are named as no guide is are passed over.
  bool Next();

  // The number of bytes of the document written to `buffer`, at most `size`; 0 at its end.
  std::size_t Read(char* buffer, std::size_t size);

  // The document's, as it is shown; "guides.zip/week.xml" in an archive.
  const std::string& Name() const { return name_; }
  // What the document begins with: some 64 bytes of what has been read.
  const std::string& Beginning() const { return beginning_; }
  // How many bytes of the document have come out.
  std::uint64_t Unpacked() const { return unpacked_; }
  bool IsPacked() const;
  // Reading has failed, which is not the fault of what has been read.
  bool HasFailed() const { return failed_; }

 private:
  struct Layer;

  void AddLayer();
  void Check(Layer& layer, long result);
  std::size_t Pull(Layer& layer, char* buffer, std::size_t size);
  std::size_t ReadFile(char* buffer, std::size_t size);

  const std::string input_;
  std::string name_;
  std::string beginning_;
  Watcher watcher_;
  int file_ = -1;  // Owned, unless it is standard input.
  std::uint64_t whole_ = 0;
  std::uint64_t read_ = 0;
  std::uint64_t room_;  // how many more bytes may come out
  const std::uint64_t max_size_;
  std::uint64_t unpacked_ = 0;
  bool failed_ = false;
  bool met_any_ = false;                        // a document
  std::exception_ptr thrown_;                   // below the library
  std::vector<std::unique_ptr<Layer>> layers_;  // archives within archives, outermost first
};

}  // namespace epgcache
