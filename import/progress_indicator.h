// How far an import has come, and whether it should go on.
//
// Units: whatever the import counts; the importers of listings give bytes of their file.
// Threads: the import's thread writes; any thread may read at the same time.
#pragma once

#include <atomic>
#include <cstdint>

class CProgressIndicator {
 public:
  CProgressIndicator() = default;
  CProgressIndicator(const CProgressIndicator&) = delete;
  CProgressIndicator& operator=(const CProgressIndicator&) = delete;

  // Reports how far the work has come; false when it should stop.
  virtual bool SetProgress(std::int32_t position) {
    position_.exchange(position);
    return true;
  }
  // Reports the size of the whole work, before it begins.
  virtual void SetRange(std::int32_t range) { range_.exchange(range); }
  // Reports that the work is complete.
  virtual void SetComplete() { position_.exchange(range_.load()); }

  std::int32_t Position() const { return position_.load(); }
  std::int32_t Range() const { return range_.load(); }

 protected:
  ~CProgressIndicator() = default;

 private:
  std::atomic<std::int32_t> position_ = 0;
  std::atomic<std::int32_t> range_ = 0;
};
