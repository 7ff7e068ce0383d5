#include "host/mstrm.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "host/internal/system.h"

namespace ORVANE {

namespace {
constexpr int kFileWindow = 64 * 1024;
// So many bytes before the window's fresh part stay in it: a reader that steps back a little never
// reads its medium again.
constexpr int kLookBack = 16;
}  // namespace

MBUFFER::MBUFFER()
    : window_(nullptr), size_(0), next_(nullptr), limit_(nullptr), limit_position_(0) {}

MBUFFER::~MBUFFER() { delete[] window_; }

bool MBUFFER::Open(int size) {
  MBUFFER::Close();
  if (size > kLookBack) window_ = new (std::nothrow) char[static_cast<std::size_t>(size)];
  if (window_ != nullptr) size_ = size;
  Forget(0);
  return window_ != nullptr;
}

void MBUFFER::Close() {
  delete[] window_;
  window_ = nullptr;
  size_ = 0;
  Forget(0);
}

bool MBUFFER::Flush() { return true; }

void MBUFFER::Forget(std::int64_t position) {
  next_ = limit_ = window_;
  limit_position_ = position;
}

bool MBUFFER::Refill() {
  if (window_ == nullptr) return false;
  const int kept = static_cast<int>(std::min<std::ptrdiff_t>(kLookBack, limit_ - window_));
  if (kept > 0) std::memmove(window_, limit_ - kept, static_cast<std::size_t>(kept));
  char* const fresh = window_ + kept;
  const int count = ReadDirect(fresh, size_ - kept);
  next_ = fresh;
  limit_ = fresh + count;
  limit_position_ += count;
  return count > 0;
}

int MBUFFER::Read(void* buffer, int count) {
  int done = 0;
  while (done < count && (next_ != limit_ || Refill())) {
    const int part = static_cast<int>(std::min<std::ptrdiff_t>(count - done, limit_ - next_));
    std::memcpy(static_cast<char*>(buffer) + done, next_, static_cast<std::size_t>(part));
    next_ += part;
    done += part;
  }
  return done;
}

int MBUFFER::ReadByte() {
  unsigned char byte = 0;
  return Read(&byte, 1) == 1 ? byte : -1;
}

std::uint32_t MBUFFER::ReadSquishedDword() {
  std::uint32_t value = 0;
  for (unsigned shift = 0; shift < 32; shift += 7) {
    const int byte = ReadByte();
    if (byte < 0) break;
    value |= static_cast<std::uint32_t>(byte & 0x7f) << shift;
    if ((byte & 0x80) == 0) break;
  }
  return value;
}

bool MBUFFER::ReadUntil(char end, MSTR& text) {
  text = "";
  int byte = ReadByte();
  const bool any = byte >= 0;
  for (; byte >= 0 && static_cast<char>(byte) != end; byte = ReadByte()) {
    text += static_cast<char>(byte);
  }
  return any;
}

bool MBUFFER::ReadString(MSTR& text) { return ReadUntil('\0', text); }
bool MBUFFER::ReadLine(MSTR& text) { return ReadUntil('\n', text); }

int MBUFFER::Write(const void* buffer, int count) { return WriteDirect(buffer, count); }

bool MBUFFER::Seek(std::int64_t offset, SEEK from) {
  const std::int64_t target = from == SEEK::Start ? offset : Position() + offset;
  const std::int64_t held = limit_position_ - (limit_ - window_);
  if (from != SEEK::End && target >= held && target <= limit_position_ && window_ != nullptr) {
    next_ = limit_ - (limit_position_ - target);
    return true;
  }
  const std::int64_t reached = from == SEEK::End ? SeekDirect(offset, SEEK::End)
                               : target >= 0     ? SeekDirect(target, SEEK::Start)
                                                 : -1;
  if (reached < 0) return false;
  Forget(reached);
  return true;
}

const char* MBUFFER::GetName() const { return ""; }
int MBUFFER::ReadDirect(void* /*buffer*/, int /*count*/) { return 0; }
int MBUFFER::WriteDirect(const void* /*buffer*/, int /*count*/) { return 0; }
std::int64_t MBUFFER::SeekDirect(std::int64_t /*offset*/, SEEK /*from*/) { return -1; }

std::int64_t MBUFFER::Position() const { return limit_position_ - (limit_ - next_); }

MSTRM::MSTRM() : file_(SYSTEM::kNoFile) {}

MSTRM::~MSTRM() { MSTRM::Close(); }

bool MSTRM::Open(const MSTR& name, bool read, bool write, bool existing) {
  Close();
  if (!read || write || !existing) return false;
  file_ = SYSTEM::OpenFile(name.text);
  if (file_ == SYSTEM::kNoFile || !Open(kFileWindow)) {
    Close();
    return false;
  }
  name_ = name;
  return true;
}

void MSTRM::Close() {
  MBUFFER::Close();
  if (file_ != SYSTEM::kNoFile) SYSTEM::CloseFile(file_);
  file_ = SYSTEM::kNoFile;
  name_ = "";
}

const char* MSTRM::GetName() const { return name_.text; }

int MSTRM::ReadDirect(void* buffer, int count) { return SYSTEM::ReadFile(file_, buffer, count); }

std::int64_t MSTRM::SeekDirect(std::int64_t offset, SEEK from) {
  return SYSTEM::SeekFile(file_, offset,
                          from == SEEK::End ? SYSTEM::ORIGIN::End : SYSTEM::ORIGIN::Start);
}

}  // namespace ORVANE
