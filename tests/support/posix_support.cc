#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdlib>

#include "tests/support/test_support.h"

namespace epg_test {

Outcome RunCommand(const std::string& command) {
  const TempFile out("", "out");
  const TempFile err("", "err");
  const int status =
      std::system(("{ " + command + "\n} >" + out.Path() + " 2>" + err.Path()).c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out.Path()), ReadFile(err.Path())};
}

std::int64_t PeakMemory() {
  rusage usage = {};
  return ::getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : 0;
}

}  // namespace epg_test
