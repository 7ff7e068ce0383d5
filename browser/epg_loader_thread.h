// The thread of one load, and that load's progress indicator.
//
// Ownership: the browser that made it owns it; it owns nothing but its texts.
// Threads: the owner's thread starts, polls, stops and destroys; `Run` is on the loader's own.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "host/mstr.h"
#include "host/mthread.h"
#include "import/progress_indicator.h"

class CEPGBrowser;

class CEPGLoaderThread final : public CProgressIndicator, public ORVANE::MTHREAD {
 public:
  // `owner` must outlive the loader's run.
  CEPGLoaderThread(CEPGBrowser& owner, const ORVANE::MSTR& file_name);
  // Asks a running load to end and waits for it.
  ~CEPGLoaderThread() override;

  // False once the loader has been asked to stop. Stores nothing.
  bool SetProgress(std::int32_t position) override;

  void Run() override;

  // Runs the load. False when there is no thread to be had; the status text then says so.
  bool Start() override;

  // Asks for the end of the load and waits for it; nobody adopts it from then on. There is no time
  // limit: an import that never asks whether to go on runs to its end.
  void StopAndWait();

  // The load has begun and ended, and is to be adopted. [any]
  bool Ended() const { return begun_.load() && !abandoned_.load() && !Active(); }

  // The importer's summary, or why there is no schedule. REQUIRES: the load has ended.
  ORVANE::MSTR TakeStatusText() { return std::move(status_text_); }

 private:
  const ORVANE::MSTR file_name_;
  CEPGBrowser& owner_;
  ORVANE::MSTR status_text_;  // the loader's thread's alone until it has ended
  std::atomic<bool> begun_ = false;
  std::atomic<bool> abandoned_ = false;
};
