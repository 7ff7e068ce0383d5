#include "host/mthread.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

#include "host/internal/background_log.h"
#include "host/internal/checks.h"
#include "host/mlog.h"

namespace ORVANE {

struct MUTEX::STATE {
  std::mutex mutex;
};

MUTEX::MUTEX() : state_(new STATE) {}
MUTEX::~MUTEX() { delete state_; }
void MUTEX::Enter() { state_->mutex.lock(); }
void MUTEX::Leave() { state_->mutex.unlock(); }

struct MTHREAD::STATE {
  std::atomic<bool> active = false;
  std::atomic<bool> stop = false;
  std::thread thread;

  void Run(MTHREAD& body) {
    {
      BACKGROUNDLOG log;
      try {
        body.Run();
      } catch (const std::exception& error) {
        MLog.Log(MLOG::ERROR, "A thread ended by an exception: %s", error.what());
      } catch (...) {
        MLog.Log(MLOG::ERROR, "A thread ended by an exception of an unknown kind.");
      }
    }
    active.store(false, std::memory_order_release);
  }
};

// The stand-in runs every thread at the same priority.
MTHREAD::MTHREAD(int /*priority*/) : state_(new STATE) {}

MTHREAD::~MTHREAD() {
  CheckGuest(!Active(), "MTHREAD::~MTHREAD", "the thread is destroyed while its body runs");
  if (state_->thread.joinable()) state_->thread.join();
  delete state_;
}

bool MTHREAD::CheckStop() const { return state_->stop.load(std::memory_order_acquire); }

bool MTHREAD::Start() {
  CheckGuest(!state_->thread.joinable(), "MTHREAD::Start", "the thread has been started before");
  if (state_->thread.joinable()) return false;
  state_->active.store(true, std::memory_order_release);
  try {
    state_->thread = std::thread(&STATE::Run, state_, std::ref(*this));
    return true;
  } catch (const std::exception& error) {
    state_->active.store(false, std::memory_order_release);
    MLog.Log(MLOG::ERROR, "A thread cannot be started: %s", error.what());
    return false;
  }
}

void MTHREAD::Stop() { state_->stop.store(true, std::memory_order_release); }

bool MTHREAD::Active() const { return state_->active.load(std::memory_order_acquire); }

}  // namespace ORVANE
