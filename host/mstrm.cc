#include "host/mstrm.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>

namespace ORVANE {

namespace {
constexpr int kFileWindow = 64 * 1024;
}

bool MBUFFER::Open(int size) {
  window_.reset(size > kLookBack ? new (std::nothrow) char8_t[static_cast<std::size_t>(size)]
                                 : nullptr);
  size_ = window_ != nullptr ? size : 0;
  Forget(0);
  return window_ != nullptr;
}

void MBUFFER::Close() {
  window_.reset();
  size_ = 0;
  Forget(0);
}

bool MBUFFER::Flush() { return true; }

void MBUFFER::Forget(std::int64_t position) {
  first_ = next_ = limit_ = window_.get();
  limit_position_ = position;
}

bool MBUFFER::Refill() {
  if (window_ == nullptr) return false;
  const int kept = static_cast<int>(std::min<std::ptrdiff_t>(kLookBack, limit_ - first_));
  char8_t* const fresh = window_.get() + kLookBack;
  if (kept > 0) std::memmove(fresh - kept, limit_ - kept, static_cast<std::size_t>(kept));
  const int count = std::max(0, ReadDirect(fresh, size_ - kLookBack));
  first_ = fresh - kept;
  next_ = fresh;
  limit_ = fresh + count;
  limit_position_ += count;
  return count > 0;
}

int MBUFFER::ReadAcross(void* buffer, int count) {
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
  text = MSTR();
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
  const std::int64_t held = limit_position_ - (limit_ - first_);
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

bool MSTRM::Open(const MSTR& name, bool read, bool write, bool existing) {
  Close();
  if (!read || write || !existing) return false;
  // Without O_NONBLOCK the open itself would wait for a pipe's writer.
  file_ = ::open(name.Text(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file_ < 0) return false;
  struct stat status = {};
  if (::fstat(file_, &status) != 0 || !S_ISREG(status.st_mode) || !Open(kFileWindow)) {
    Close();
    return false;
  }
  name_ = name;
  return true;
}

void MSTRM::Close() {
  MBUFFER::Close();
  if (file_ >= 0) ::close(file_);
  file_ = -1;
  name_ = MSTR();
}

int MSTRM::ReadDirect(void* buffer, int count) {
  ssize_t result = 0;
  do {
    result = ::read(file_, buffer, static_cast<std::size_t>(count));
  } while (result < 0 && errno == EINTR);
  return static_cast<int>(result);
}

std::int64_t MSTRM::SeekDirect(std::int64_t offset, SEEK from) {
  const int whence = from == SEEK::End ? SEEK_END : from == SEEK::Current ? SEEK_CUR : SEEK_SET;
  return ::lseek(file_, offset, whence);
}

}  // namespace ORVANE
