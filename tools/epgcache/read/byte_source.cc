#include "tools/epgcache/read/byte_source.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <new>
#include <string_view>
#include <utility>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{64} << 10;
constexpr std::size_t kBeginningBytes = 64;
constexpr std::size_t kMostLayers = 8;

// Archives come with licences, document types, and files that systems hide in them.
bool IsNamedAsGuide(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  if (name.empty() || name.front() == '.') return false;
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return true;
  constexpr std::string_view kExtensions[] = {"xml", "xmltv", "tv",  "gz", "xz",  "bz2", "zst",
                                              "zip", "lz4",   "tar", "7z", "tgz", "rar"};
  return std::any_of(std::begin(kExtensions), std::end(kExtensions), [&](std::string_view known) {
    return EqualIgnoringCase(name.substr(dot + 1), known);
  });
}

}  // namespace

// One archive; its bytes are those of the file, or of the outer archive's present entry.
struct ByteSource::Layer {
  ByteSource* source;
  Layer* outer;  // null: the file
  std::unique_ptr<archive, int (*)(archive*)> reader = {archive_read_new(), archive_read_free};
  std::unique_ptr<char[]> block = std::make_unique_for_overwrite<char[]>(kBlockBytes);
  std::string path = {};  // of the present entry
  bool in_entry = false;
};

std::string ShownInput(const std::string& name) {
  return name == "-" ? "standard input" : Shown(name);
}

ByteSource::ByteSource(const std::string& name, std::uint64_t max_size, Watcher watcher)
    : input_(ShownInput(name)),
      name_(input_),
      watcher_(std::move(watcher)),
      room_(max_size),
      max_size_(max_size) {
  file_ = name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (file_ < 0) throw Failure(name_ + ": cannot be opened: " + std::strerror(errno));
  struct stat about = {};
  if (fstat(file_, &about) == 0 && S_ISREG(about.st_mode))
    whole_ = static_cast<std::uint64_t>(about.st_size);
}

ByteSource::~ByteSource() {
  if (file_ != STDIN_FILENO) close(file_);
}

std::size_t ByteSource::ReadFile(char* buffer, std::size_t size) {
  ssize_t count = 0;
  do {
    count = read(file_, buffer, size);
  } while (count < 0 && errno == EINTR);
  failed_ = count < 0;
  if (failed_) throw Failure(name_ + ": cannot be read: " + std::strerror(errno));
  read_ += static_cast<std::uint64_t>(count);
  if (watcher_) watcher_(read_, whole_);
  return static_cast<std::size_t>(count);
}

// Of what the library answers.
void ByteSource::Check(Layer& layer, long result) {
  if (thrown_ != nullptr) std::rethrow_exception(std::exchange(thrown_, nullptr));
  if (result >= ARCHIVE_WARN) return;
  if (archive_errno(layer.reader.get()) == ENOMEM) throw std::bad_alloc();
  const char* const reason = archive_error_string(layer.reader.get());
  throw Failure(name_ + ": its packed data is damaged or cut off" +
                (reason != nullptr ? ": " + Shown(reason) : ""));
}

void ByteSource::AddLayer() {
  if (layers_.size() == kMostLayers)
    throw Failure(name_ + ": is packed more than " + std::to_string(kMostLayers) + " times");
  Layer* const outer = layers_.empty() ? nullptr : layers_.back().get();
  Layer& layer = *layers_.emplace_back(new Layer{this, outer});
  archive* const reader = layer.reader.get();
  if (reader == nullptr) throw std::bad_alloc();
  // Not all that there are: some run other programs, some take plain texts for theirs.
  for (const auto support :
       {archive_read_support_filter_bzip2, archive_read_support_filter_compress,
        archive_read_support_filter_gzip, archive_read_support_filter_lz4,
        archive_read_support_filter_lzip, archive_read_support_filter_lzma,
        archive_read_support_filter_xz, archive_read_support_filter_zstd,
        archive_read_support_format_7zip, archive_read_support_format_cab,
        archive_read_support_format_empty, archive_read_support_format_rar,
        archive_read_support_format_rar5, archive_read_support_format_raw,
        archive_read_support_format_tar, archive_read_support_format_zip})
    Check(layer, support(reader));
  Check(layer, archive_read_set_callback_data(reader, &layer));
  archive_read_set_read_callback(
      reader, [](archive* failing, void* self, const void** bytes) -> la_ssize_t {
        Layer& its = *static_cast<Layer*>(self);
        *bytes = its.block.get();
        // No exception may pass through the library.
        try {
          return static_cast<la_ssize_t>(
              its.outer == nullptr ? its.source->ReadFile(its.block.get(), kBlockBytes)
                                   : its.source->Pull(*its.outer, its.block.get(), kBlockBytes));
        } catch (...) {
          its.source->thrown_ = std::current_exception();
          archive_set_error(failing, EIO, "reading failed");
          return -1;
        }
      });
  if (outer == nullptr && whole_ != 0) {
    // Some archives have their list of files at the end.
    archive_read_set_seek_callback(reader, [](archive*, void* self, la_int64_t offset, int whence) {
      const int file = static_cast<Layer*>(self)->source->file_;
      return la_int64_t{lseek(file, offset, whence)};
    });
  }
  Check(layer, archive_read_open1(reader));
}

bool ByteSource::Next() {
  if (layers_.empty()) AddLayer();
  for (;;) {
    Layer& layer = *layers_.back();
    // What is passed over of an entry counts as well: it may have to be unpacked for that.
    char passed_by[4096];
    while (layer.in_entry && Pull(layer, passed_by, sizeof passed_by) != 0) {
    }
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(layer.reader.get(), &entry);
    Check(layer, result);
    if (result == ARCHIVE_EOF) {
      if (layers_.size() > 1) {
        layers_.pop_back();
        continue;
      }
      if (met_any_) return false;
      const bool is_empty = archive_format(layer.reader.get()) == ARCHIVE_FORMAT_EMPTY;
      throw Failure(name_ + (is_empty ? ": is empty" : ": holds no guide"));
    }
    if (archive_format(layer.reader.get()) == ARCHIVE_FORMAT_RAW) {
      layer.in_entry = met_any_ = true;
      name_ = input_;
      for (const auto& outer : layers_)
        if (!outer->path.empty()) name_ += "/" + Shown(outer->path);
      beginning_.clear();
      unpacked_ = 0;
      return true;
    }
    const char* path = archive_entry_pathname_utf8(entry);
    if (path == nullptr) path = archive_entry_pathname(entry);
    layer.path = path != nullptr ? path : "?";
    layer.in_entry = true;
    if (archive_entry_filetype(entry) == AE_IFREG && IsNamedAsGuide(layer.path)) AddLayer();
  }
}

bool ByteSource::IsPacked() const {
  return layers_.size() > 1 || archive_filter_count(layers_.front()->reader.get()) > 1;
}

std::size_t ByteSource::Pull(Layer& layer, char* buffer, std::size_t size) {
  const la_ssize_t count = archive_read_data(layer.reader.get(), buffer, size);
  Check(layer, count);
  const auto made = static_cast<std::uint64_t>(count);
  if (made == 0) layer.in_entry = false;
  if (made > room_) {
    throw Failure(name_ + ": is larger than " + std::to_string(max_size_) +
                  " bytes unpacked; --max-size allows for more");
  }
  room_ -= made;
  return made;
}

std::size_t ByteSource::Read(char* buffer, std::size_t size) {
  if (size == 0 || !layers_.back()->in_entry) return 0;
  const std::size_t made = Pull(*layers_.back(), buffer, size);
  unpacked_ += made;
  if (beginning_.size() < kBeginningBytes)
    beginning_.append(buffer, std::min(made, kBeginningBytes - beginning_.size()));
  return made;
}

}  // namespace epgcache
