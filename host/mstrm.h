// Byte streams: MBUFFER, a buffered window onto some medium, and MSTRM, its file.
//
// Units: counts, offsets and positions are bytes.
// Ownership: a stream owns its window and its open file; the destructor closes.
// Threads: one stream belongs to one thread at a time.
// Errors: a read that fails counts as the end of the stream; no memory for the window makes Open
//   fail.
#pragma once

#include <cstdint>

#include "host/api.h"
#include "host/mstr.h"

namespace ORVANE {

class ORVANE_API MBUFFER {
 public:
  enum class SEEK { Start = 0, Current = 1, End = 2 };

  MBUFFER();
  MBUFFER(const MBUFFER&) = delete;
  MBUFFER& operator=(const MBUFFER&) = delete;

  // Makes an empty window of `size` bytes; what it held is dropped.
  virtual bool Open(int size);
  virtual void Close();
  virtual bool Flush();

  // Gives the bytes read: `count` unless the stream ends first, 0 at its end.
  virtual int Read(void* buffer, int count);
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
  std::int64_t Position() const;

 protected:
  ~MBUFFER();

 private:
  bool Refill();
  bool ReadUntil(char end, MSTR& text);
  void Forget(std::int64_t position);

  char* window_;                 // Owned.
  int size_;                     // of the window
  const char* next_;             // the next byte to read
  const char* limit_;            // after the last byte held
  std::int64_t limit_position_;  // the medium's offset at `limit_`
};

class ORVANE_API MSTRM : public MBUFFER {
 public:
  // Closed.
  MSTRM();
  ~MSTRM();

  using MBUFFER::Open;

  // Opens a file; false when it cannot be opened as asked. This stream only reads regular files
  // that exist: a directory or a pipe has no place to seek to, and a pipe without a writer
  // would hold its reader for ever.
  bool Open(const MSTR& name, bool read, bool write, bool existing);

  void Close() override;
  const char* GetName() const override;
  int ReadDirect(void* buffer, int count) override;
  std::int64_t SeekDirect(std::int64_t offset, SEEK from) override;

 private:
  MSTR name_;
  std::intptr_t file_;  // Owned. The system's handle, or -1.
};

}  // namespace ORVANE
