// The thread of one load, and that load's progress indicator.
//
// Ownership: the browser that made it owns it; it owns nothing but its texts.
// Threads: the owner's thread starts, polls, stops and destroys; `Run` is on the loader's own.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

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

  // False once the loader has been asked to stop. Stores nothing. [loader]
  bool SetProgress(std::int32_t position) override;

  // [loader]
  void Run() override;

  // Runs the load. False when no thread could be started: the load has ended then, and the status
  // text says so. [engine]
  bool StartLoad();

  // Asks for the end of the load and waits for it; it is not adopted from then on. There is no time
  // limit: an import that never asks whether to go on runs to its end. [engine]
  void StopAndWait();

  // The load has ended and is to be adopted. [any]
  bool Ended() const { return life_.load() == Life::kEnded && !Active(); }

  // The importer's summary, or why there is no schedule. REQUIRES: the load has ended. [any]
  const ORVANE::MSTR& StatusText() const;

 private:
  enum class Life {
    kMade,       // not started
    kRunning,    // from Start on
    kEnded,      // the result is with the owner, who is to adopt it
    kStopping,   // still running; the result is not wanted
    kAbandoned,  // ended, and not to be adopted
  };

  // The one place where the life goes on. False, and nothing has changed, when it is not in `from`.
  bool Advance(Life from, Life to);

  const ORVANE::MSTR file_name_;
  CEPGBrowser& owner_;
  ORVANE::MSTR status_text_;              // the loader's thread's alone until the load has ended
  std::atomic<Life> life_ = Life::kMade;  // changed under mutex_
  std::mutex mutex_;
  std::condition_variable changed_;
};
