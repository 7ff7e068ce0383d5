#include "tools/epgcache/write/output_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

// What the signal handler removes.
char file_in_the_making[PATH_MAX] = "";

extern "C" void RemoveAndEnd(int signal_number) {
  if (file_in_the_making[0] != '\0') unlink(file_in_the_making);
  // The handler is disabled by now.
  raise(signal_number);
}

// Signals are blocked while this exists.
class SignalsWait {
 public:
  SignalsWait() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;
  ~SignalsWait() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

// REQUIRES: signals are blocked.
void SetFileInTheMaking(const std::string& name) {
  const std::size_t count = name.size() < PATH_MAX ? name.size() : 0;
  std::memcpy(file_in_the_making, name.data(), count);
  file_in_the_making[count] = '\0';
}

constexpr std::string_view kTemporaryName = ".epgcache.";

// A file being written is locked by its program, so one that can be locked is left over.
bool IsLeftBehind(int file) { return flock(file, LOCK_EX | LOCK_NB) == 0; }

// Makes an empty file by the pattern in `name`, locked; -1 when none can be made.
int MakeTemporary(std::string& name) {
  const std::string pattern = name;
  for (;;) {
    name = pattern;
    const int file = mkostemp(name.data(), O_CLOEXEC);
    struct stat about = {};
    // Before it is locked, another program may mistake it for a left-over.
    if (file < 0 ||
        (flock(file, LOCK_EX | LOCK_NB) == 0 && fstat(file, &about) == 0 && about.st_nlink == 1)) {
      return file;
    }
    close(file);
  }
}

void RemoveLeftBehind(const std::string& folder) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    constexpr std::size_t kRandomBytes = 6;
    if (!name.starts_with(kTemporaryName) || name.size() != kTemporaryName.size() + kRandomBytes)
      continue;
    const int file = open(entry->path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    struct stat about = {};
    if (file < 0) continue;
    if (fstat(file, &about) == 0 && S_ISREG(about.st_mode) && IsLeftBehind(file))
      unlink(entry->path().c_str());
    close(file);
  }
}

// As for a newly created file.
mode_t PermissionsOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

void EndWithoutMemory() {
  if (file_in_the_making[0] != '\0') unlink(file_in_the_making);
  constexpr std::string_view kText = "epgcache: out of memory\n";
  (void)!write(STDERR_FILENO, kText.data(), kText.size());
  _exit(1);
}

void HandleSignals() {
  struct sigaction action = {};
  action.sa_handler = RemoveAndEnd;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (const int signal_number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    // Signals that are ignored, as under nohup, stay ignored.
    struct sigaction before = {};
    sigaction(signal_number, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(signal_number, &action, nullptr);
  }
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
}

OutputFile::OutputFile(const std::string& name) : shown_(Shown(name)), place_(name) {
  const std::unique_ptr<char, void (*)(void*)> real(realpath(name.c_str(), nullptr), std::free);
  struct stat about = {};
  const bool is_new = real == nullptr;
  if (is_new && lstat(name.c_str(), &about) == 0)
    throw Failure(shown_ + ": cannot be written: it is a link to nowhere");
  if (!is_new) {
    place_ = real.get();
    if (stat(place_.c_str(), &about) != 0) Fail("cannot be written", errno);
    if (S_ISDIR(about.st_mode)) Fail("cannot be written", EISDIR);
    // Renaming over a device would replace it.
    if (!S_ISREG(about.st_mode)) throw Failure(shown_ + ": cannot be written: not a regular file");
  }
  const std::size_t slash = place_.rfind('/');
  const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
  const std::string folder = place_.substr(0, begin);
  RemoveLeftBehind(folder.empty() ? "." : folder);
  temporary_ = folder + std::string(kTemporaryName) + "XXXXXX";
  {
    const SignalsWait until_it_is_known;
    file_ = MakeTemporary(temporary_);
    if (file_ >= 0) SetFileInTheMaking(temporary_);
  }
  if (file_ < 0) {
    temporary_.clear();
    Fail("no file can be made in its folder", errno);
  }
  // If that is not permitted, the writer owns the file.
  if (!is_new) (void)!fchown(file_, about.st_uid, about.st_gid);
  fchmod(file_, is_new ? PermissionsOfNewFiles() : about.st_mode & 0777);
  waiting_.reserve(kBlockBytes);
}

OutputFile::~OutputFile() {
  if (file_ >= 0) close(file_);
  if (!temporary_.empty()) {
    const SignalsWait until_it_is_forgotten;
    unlink(temporary_.c_str());
    SetFileInTheMaking("");
  }
}

void OutputFile::Fail(const std::string& what, int error) const {
  throw Failure(shown_ + ": " + what + ": " + std::strerror(error));
}

void OutputFile::Write(std::string_view bytes) {
  waiting_ += bytes;
  if (waiting_.size() >= kBlockBytes) Flush();
}

void OutputFile::Flush() {
  std::string_view left = waiting_;
  while (!left.empty()) {
    const ssize_t count = write(file_, left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail("cannot be written", errno);
    left.remove_prefix(static_cast<std::size_t>(count));
  }
  waiting_.clear();
}

void OutputFile::Commit() {
  Flush();
  // Otherwise a crash of the machine could keep the new name and lose the contents.
  if (fsync(file_) != 0) Fail("cannot be written", errno);
  const SignalsWait until_it_is_in_place;
  if (rename(temporary_.c_str(), place_.c_str()) != 0) Fail("cannot be put in place", errno);
  temporary_.clear();
  SetFileInTheMaking("");
}

}  // namespace epgcache
