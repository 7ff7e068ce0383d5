// Finding a listings file, and why one gives no schedule.
#pragma once

#include <optional>
#include <string>

namespace shell {

// The name without its ".xml", which the plug-in adds. Nothing when there is no such file, which is
// told on standard error then.
std::optional<std::string> FindListings(const std::string& name);

// Keeps the last of what the plug-in logs while this lives: the reason, where a load fails.
class LoadReport {
 public:
  LoadReport();
  LoadReport(const LoadReport&) = delete;
  LoadReport& operator=(const LoadReport&) = delete;
  ~LoadReport();

  // Tells on standard error why the file gives no schedule, and where to read on.
  // REQUIRES: no load runs.
  void TellFailure(const std::string& file) const;

 private:
  std::string last_entry_;
};

}  // namespace shell
