// Finding a listings file, and why one gives no schedule.
#pragma once

#include <optional>
#include <string>

namespace shell {

// The name without its ".xml", which the plug-in adds. Nothing when there is no such file, which is
// then reported on standard error.
std::optional<std::string> FindListings(const std::string& name);

// Whether there is such a file.
bool IsListings(const std::string& name);

// Keeps the last of what the plug-in logs while this lives: the reason, where a load fails.
class LoadReport {
 public:
  LoadReport();
  LoadReport(const LoadReport&) = delete;
  LoadReport& operator=(const LoadReport&) = delete;
  ~LoadReport();

  // Why the file gives no schedule. REQUIRES: no load runs, here and below.
  std::string Failure(const std::string& file) const;
  // Reports it on standard error, with where to read more.
  void TellFailure(const std::string& file) const;

 private:
  std::string last_entry_;
};

}  // namespace shell
