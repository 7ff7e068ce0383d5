// Byte streams: MBUFFER, a buffered window onto some medium, and MSTRM, its file.
//
// Units: counts, offsets and positions are bytes.
// Ownership: a stream owns its window and its open file; the destructor closes.
// Threads: one stream belongs to one thread at a time.
// Errors: a read that fails counts as the end of the stream; no memory for the window makes Open
//   fail.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>

#include "host/api.h"
#include "host/mstr.h"

namespace ORVANE {

class ORVANE_API MBUFFER {
 public:
  enum class SEEK { Start = 0, Current = 1, End = 2 };

  MBUFFER() = default;
  MBUFFER(const MBUFFER&) = delete;
  MBUFFER& operator=(const MBUFFER&) = delete;

  // Makes an empty window of `size` bytes; what it held is dropped.
  virtual bool Open(int size);
  virtual void Close();
  virtual bool Flush();

  // Gives the bytes read: `count` unless the stream ends first, 0 at its end.
  //
  // Readers ask for one byte at a time, so the path through the window stands here, where a
  // caller that knows the final class has it inlined.
  virtual int Read(void* buffer, int count) {
    if (count == 1 && next_ != limit_) [[likely]] {
      *static_cast<char*>(buffer) = static_cast<char>(*next_++);
      return 1;
    }
    return ReadAcross(buffer, count);
  }

  // Whether the window holds the next byte. Where this is true, a compiler that inlines `Read` of
  // one byte leaves out all but the window's path.
  bool HasByte() const { return next_ != limit_; }

  // Where in the window the next byte stands. What is read between two calls stands between what
  // they gave, as long as the window had every byte of it.
  const char* Cursor() const { return reinterpret_cast<const char*>(next_); }

  // The next byte, or -1 at the end.
  virtual int ReadByte();
  // An unsigned number in groups of seven bits, lowest first; the top bit says that more follow.
  virtual std::uint32_t ReadSquishedDword();
  // Up to a NUL or a line feed, which is consumed and not kept; false at the end of the stream.
  virtual bool ReadString(MSTR& text);
  virtual bool ReadLine(MSTR& text);
  virtual int Write(const void* buffer, int count);
  virtual bool Seek(std::int64_t offset, SEEK from);
  virtual const char* GetName() const;

  // The medium behind the window; a plain buffer has none.
  virtual int ReadDirect(void* buffer, int count);
  virtual int WriteDirect(const void* buffer, int count);
  // The new offset from the medium's start, or -1.
  virtual std::int64_t SeekDirect(std::int64_t offset, SEEK from);

  // Where the next byte is read, from the start; after a seek to the end the stream's length.
  std::int64_t Position() const { return limit_position_ - (limit_ - next_); }

 protected:
  ~MBUFFER() = default;

 private:
  // So many bytes before the window's fresh part stay in it: a reader that steps back a little
  // never reads its medium again.
  static constexpr int kLookBack = 16;

  ORVANE_COLD int ReadAcross(void* buffer, int count);
  bool Refill();
  bool ReadUntil(char end, MSTR& text);
  void Forget(std::int64_t position);

  // Of a byte type that is no part of any other object, so that a reader's loop over the bytes can
  // keep `next_` in a register.
  std::unique_ptr<char8_t[]> window_;
  int size_ = 0;
  const char8_t* next_ = nullptr;    // the next byte to read
  const char8_t* limit_ = nullptr;   // behind the last byte held
  const char8_t* first_ = nullptr;   // the first byte held
  std::int64_t limit_position_ = 0;  // the medium's offset at `limit_`
};

class ORVANE_API MSTRM : public MBUFFER {
 public:
  MSTRM() = default;
  ~MSTRM() { MSTRM::Close(); }

  using MBUFFER::Open;

  // Opens a file; false when it cannot be opened as asked. This stream only reads regular files
  // that exist: a directory or a pipe has no place to seek to, and a pipe that nobody writes to
  // would hold its reader for ever.
  bool Open(const MSTR& name, bool read, bool write, bool existing);

  void Close() override;
  const char* GetName() const override { return name_.Text(); }
  int ReadDirect(void* buffer, int count) override;
  std::int64_t SeekDirect(std::int64_t offset, SEEK from) override;

 private:
  MSTR name_;
  int file_ = -1;  // Owned.
};

}  // namespace ORVANE
