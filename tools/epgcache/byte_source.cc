#include "tools/epgcache/byte_source.h"

#include <fcntl.h>
#include <lzma.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

class ByteSource::Unpacker {
 public:
  // What a step has used and made, and whether the packed data is over: nothing behind it counts,
  // and there is no further step.
  struct Step {
    std::size_t used;
    std::size_t made;
    bool over;
  };

  Unpacker() = default;
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;
  virtual ~Unpacker() = default;

  // `last`: nothing comes behind `in`, which is empty only then. Throws Failure, with the reason
  // alone.
  virtual Step Unpack(std::string_view in, bool last, char* out, std::size_t size) = 0;
};

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;
constexpr std::size_t kBeginningBytes = 64;
constexpr const char* kDamaged = "its compressed data is damaged";

// Consecutive members form one text, as in gzip itself; anything else that follows is ignored.
class Gunzip final : public ByteSource::Unpacker {
 public:
  Gunzip() {
    constexpr int kGzipAlone = 16 + MAX_WBITS;
    if (inflateInit2(&stream_, kGzipAlone) != Z_OK) throw std::bad_alloc();
  }
  ~Gunzip() override { inflateEnd(&stream_); }

  Step Unpack(std::string_view in, bool /*last*/, char* out, std::size_t size) override {
    if (between_members_) {
      if (in.empty() || !std::string_view("\x1f\x8b").starts_with(in.substr(0, 2)))
        return {in.size(), 0, true};
      inflateReset(&stream_);
      between_members_ = false;
    }
    // The library does not write to what it is given.
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
    stream_.avail_in = static_cast<uInt>(in.size());
    stream_.next_out = reinterpret_cast<Bytef*>(out);
    stream_.avail_out = static_cast<uInt>(size);
    const int result = inflate(&stream_, Z_NO_FLUSH);
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    if (result == Z_STREAM_END) {
      between_members_ = true;
    } else if (result != Z_OK && result != Z_BUF_ERROR && stream_.avail_out == size) {
      throw Failure(kDamaged);  // what came before it has been handed over
    }
    return {in.size() - stream_.avail_in, size - stream_.avail_out, false};
  }

 private:
  z_stream stream_ = {};
  bool between_members_ = false;
};

class Unxz final : public ByteSource::Unpacker {
 public:
  Unxz() {
    // No preset asks for more than 65 MiB to unpack.
    constexpr std::uint64_t kMemoryBytes = std::uint64_t{256} << 20;
    if (lzma_stream_decoder(&stream_, kMemoryBytes, LZMA_CONCATENATED) != LZMA_OK)
      throw std::bad_alloc();
  }
  ~Unxz() override { lzma_end(&stream_); }

  Step Unpack(std::string_view in, bool last, char* out, std::size_t size) override {
    stream_.next_in = reinterpret_cast<const std::uint8_t*>(in.data());
    stream_.avail_in = in.size();
    stream_.next_out = reinterpret_cast<std::uint8_t*>(out);
    stream_.avail_out = size;
    const lzma_ret result = lzma_code(&stream_, last ? LZMA_FINISH : LZMA_RUN);
    if (result == LZMA_MEM_ERROR) throw std::bad_alloc();
    if (result == LZMA_MEMLIMIT_ERROR)
      throw Failure("its compressed data asks for more than 256 MiB of memory");
    if (result != LZMA_OK && result != LZMA_STREAM_END && result != LZMA_BUF_ERROR &&
        stream_.avail_out == size)
      throw Failure(kDamaged);  // what came before it has been handed over
    return {in.size() - stream_.avail_in, size - stream_.avail_out, result == LZMA_STREAM_END};
  }

 private:
  lzma_stream stream_ = LZMA_STREAM_INIT;
};

std::unique_ptr<ByteSource::Unpacker> UnpackerFor(std::string_view beginning) {
  if (beginning.starts_with("\x1f\x8b")) return std::make_unique<Gunzip>();
  if (beginning.starts_with(std::string_view("\xfd"
                                             "7zXZ\0",
                                             6)))
    return std::make_unique<Unxz>();
  return nullptr;
}

}  // namespace

std::string ShownInput(const std::string& name) {
  return name == "-" ? "standard input" : Shown(name);
}

ByteSource::ByteSource(const std::string& name, std::uint64_t max_size, Watcher watcher)
    : name_(ShownInput(name)),
      watcher_(std::move(watcher)),
      room_(max_size),
      max_size_(max_size),
      block_(std::make_unique<char[]>(kBlockBytes)) {
  file_ = name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (file_ < 0) throw Failure(name_ + ": cannot be opened: " + std::strerror(errno));
  struct stat about = {};
  if (fstat(file_, &about) == 0 && S_ISREG(about.st_mode))
    whole_ = static_cast<std::uint64_t>(about.st_size);
  try {
    // Enough to tell its kind by, also from a pipe that gives a byte at a time.
    while (limit_ < 6 && !ended_) Refill();
    unpacker_ = UnpackerFor({block_.get(), limit_});
  } catch (...) {
    if (file_ != STDIN_FILENO) close(file_);
    throw;
  }
}

ByteSource::~ByteSource() {
  if (file_ != STDIN_FILENO) close(file_);
}

// Adds to the block.
void ByteSource::Refill() {
  ssize_t count = 0;
  do {
    count = read(file_, block_.get() + limit_, kBlockBytes - limit_);
  } while (count < 0 && errno == EINTR);
  failed_ = count < 0;
  if (failed_) throw Failure(name_ + ": cannot be read: " + std::strerror(errno));
  ended_ = count == 0;
  limit_ += static_cast<std::size_t>(count);
  read_ += static_cast<std::uint64_t>(count);
  if (watcher_) watcher_(read_, whole_);
}

std::size_t ByteSource::Unpack(std::string_view in, char* buffer, std::size_t size) {
  try {
    const Unpacker::Step step = unpacker_->Unpack(in, ended_, buffer, size);
    next_ += step.used;
    over_ = step.over;
    if (step.made == 0 && in.empty() && !over_)
      throw Failure("it ends in the middle of its compressed data");
    return step.made;
  } catch (const Failure& failure) {
    throw Failure(name_ + ": " + failure.what());
  }
}

std::size_t ByteSource::Read(char* buffer, std::size_t size) {
  std::size_t made = 0;
  while (made == 0 && size != 0 && !over_) {
    if (next_ == limit_ && !ended_) {
      next_ = limit_ = 0;
      Refill();
    }
    const std::string_view in(block_.get() + next_, limit_ - next_);
    if (unpacker_ == nullptr) {
      made = std::min(size, in.size());
      std::memcpy(buffer, in.data(), made);
      next_ += made;
      over_ = made == 0;
    } else {
      made = Unpack(in, buffer, size);
    }
  }
  if (made > 0 && room_ == 0) {
    throw Failure(name_ + ": is larger than " + std::to_string(max_size_) +
                  " bytes unpacked; --max-size allows for more");
  }
  made = static_cast<std::size_t>(std::min<std::uint64_t>(made, room_));
  room_ -= made;
  unpacked_ += made;
  if (beginning_.size() < kBeginningBytes)
    beginning_.append(buffer, std::min(made, kBeginningBytes - beginning_.size()));
  return made;
}

}  // namespace epgcache
