#include "browser/epg_loader_thread.h"

#include <cassert>
#include <chrono>
#include <thread>

#include "browser/epg_browser.h"

CEPGLoaderThread::CEPGLoaderThread(CEPGBrowser& owner, const ORVANE::MSTR& file_name)
    : MTHREAD(0), file_name_(file_name), owner_(owner) {}

CEPGLoaderThread::~CEPGLoaderThread() { StopAndWait(); }

bool CEPGLoaderThread::Advance(Life from, Life to) {
  assert((from == Life::kMade && (to == Life::kRunning || to == Life::kAbandoned)) ||
         (from == Life::kRunning && (to == Life::kEnded || to == Life::kStopping)) ||
         (from == Life::kStopping && to == Life::kAbandoned) ||
         (from == Life::kEnded && to == Life::kAbandoned));
  const std::lock_guard lock(mutex_);
  if (life_.load() != from) return false;
  life_.store(to);
  changed_.notify_all();
  return true;
}

bool CEPGLoaderThread::SetProgress(std::int32_t /*position*/) { return !CheckStop(); }

void CEPGLoaderThread::Run() {
  owner_.LoadSchedule(file_name_, status_text_, this);
  if (!Advance(Life::kRunning, Life::kEnded)) Advance(Life::kStopping, Life::kAbandoned);
}

bool CEPGLoaderThread::StartLoad() {
  Advance(Life::kMade, Life::kRunning);
  if (Start()) return true;
  status_text_ = "The listings cannot be loaded: could not start a thread.";
  Advance(Life::kRunning, Life::kEnded);
  return false;
}

void CEPGLoaderThread::StopAndWait() {
  if (Advance(Life::kRunning, Life::kStopping)) Stop();
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return life_.load() != Life::kStopping; });
  }
  if (!Advance(Life::kMade, Life::kAbandoned)) Advance(Life::kEnded, Life::kAbandoned);
  // Run is about to return, and what it has logged to be written; the engine has no wait for that.
  while (Active()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

const ORVANE::MSTR& CEPGLoaderThread::StatusText() const {
  assert(!Active());
  return status_text_;
}
