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

}  // namespace epg_test
