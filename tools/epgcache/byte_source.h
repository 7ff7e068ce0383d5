// The bytes of an input, unpacked: a file or standard input, plain, gzip or xz by its first bytes.
//
// Units: sizes and positions are bytes.
// Ownership: a source owns its open file.
// Threads: one at a time.
// Errors: Failure, with the input's name and the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace epgcache {

// An input's name as it is shown; "-" is standard input.
std::string ShownInput(const std::string& name);

class ByteSource {
 public:
  // How far an input is: bytes read of it, packed as it is, and of how many (0: nobody knows).
  using Watcher = std::function<void(std::uint64_t read, std::uint64_t whole)>;

  // `name` "-" is standard input. An input that unpacks to more than `max_size` is not read to its
  // end. `watcher` may be empty.
  ByteSource(const std::string& name, std::uint64_t max_size, Watcher watcher = {});
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  ~ByteSource();

  // The number of bytes written to `buffer`, at most `size`; 0 at the end.
  std::size_t Read(char* buffer, std::size_t size);

  // As it is shown.
  const std::string& Name() const { return name_; }
  // What the input begins with, unpacked; some 64 bytes of what has been read.
  const std::string& Beginning() const { return beginning_; }
  // How many bytes have come out.
  std::uint64_t Unpacked() const { return unpacked_; }
  bool IsPacked() const { return unpacker_ != nullptr; }
  // Reading has failed, which is no fault of what has been read.
  bool HasFailed() const { return failed_; }

  // Undoes one kind of compression.
  class Unpacker;

 private:
  void Refill();
  std::size_t Unpack(std::string_view in, char* buffer, std::size_t size);

  std::string name_;
  std::string beginning_;
  Watcher watcher_;
  int file_ = -1;  // Owned, unless it is standard input.
  std::uint64_t whole_ = 0;
  std::uint64_t read_ = 0;
  std::uint64_t room_;  // how many more bytes may come out
  std::uint64_t max_size_;
  std::uint64_t unpacked_ = 0;

  std::unique_ptr<char[]> block_;
  std::size_t next_ = 0;   // the first byte of the block that has not been used
  std::size_t limit_ = 0;  // behind its last
  bool ended_ = false;     // the file has nothing behind the block
  bool failed_ = false;
  bool over_ = false;                   // there is nothing more to read
  std::unique_ptr<Unpacker> unpacker_;  // null: the bytes are as they stand
};

}  // namespace epgcache
