#include "tools/epgcache/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tools/epgcache/failure.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

// What the signal handler removes.
char file_in_the_making[PATH_MAX] = "";

extern "C" void RemoveAndEnd(int signal_number) {
  if (file_in_the_making[0] != '\0') unlink(file_in_the_making);
  // The handler is off by now.
  raise(signal_number);
}

// Ending signals wait while their handler's text changes.
void SetFileInTheMaking(const std::string& name) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  const std::size_t count = name.size() < PATH_MAX ? name.size() : 0;
  std::memcpy(file_in_the_making, name.data(), count);
  file_in_the_making[count] = '\0';
  sigprocmask(SIG_SETMASK, &before, nullptr);
}

// As a file gets them that is made anew.
mode_t PermissionsOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

void HandleSignals() {
  struct sigaction action = {};
  action.sa_handler = RemoveAndEnd;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (const int signal_number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    // What is ignored, as under nohup, stays so.
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
    // What is moved over a device takes its place.
    if (!S_ISREG(about.st_mode)) throw Failure(shown_ + ": cannot be written: not a regular file");
  }
  const std::size_t slash = place_.rfind('/');
  const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
  temporary_ = place_.substr(0, begin) + ".epgcache.XXXXXX";
  file_ = mkostemp(temporary_.data(), O_CLOEXEC);
  if (file_ < 0) {
    temporary_.clear();
    Fail("no file can be made in its folder", errno);
  }
  SetFileInTheMaking(temporary_);
  // Where that is not allowed, the file is its writer's.
  if (!is_new) (void)!fchown(file_, about.st_uid, about.st_gid);
  fchmod(file_, is_new ? PermissionsOfNewFiles() : about.st_mode & 0777);
  waiting_.reserve(kBlockBytes);
}

OutputFile::~OutputFile() {
  if (file_ >= 0) close(file_);
  if (!temporary_.empty()) {
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
  // Otherwise a machine that goes down could keep the new name and lose what is in the file.
  if (fsync(file_) != 0) Fail("cannot be written", errno);
  const int file = file_;
  file_ = -1;
  if (close(file) != 0) Fail("cannot be written", errno);
  if (rename(temporary_.c_str(), place_.c_str()) != 0) Fail("cannot be put in place", errno);
  temporary_.clear();
  SetFileInTheMaking("");
}

}  // namespace epgcache
