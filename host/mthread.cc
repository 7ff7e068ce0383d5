#include "host/mthread.h"

#include <exception>
#include <system_error>

#include "host/mlog.h"

namespace ORVANE {

// The stand-in runs every thread at the same priority.
MTHREAD::MTHREAD(int /*priority*/) {}

MTHREAD::~MTHREAD() {
  if (thread_.joinable()) thread_.join();
}

bool MTHREAD::CheckStop() const { return stop_.load(std::memory_order_acquire); }

bool MTHREAD::Start() {
  active_.store(true, std::memory_order_release);
  try {
    thread_ = std::thread(&MTHREAD::Body, this);
    return true;
  } catch (const std::exception& error) {
    active_.store(false, std::memory_order_release);
    MLog.Log(MLOG::ERROR, "A thread cannot be started: %s", error.what());
    return false;
  }
}

void MTHREAD::Stop() { stop_.store(true, std::memory_order_release); }

void MTHREAD::Body() {
  {
    MLOG::BACKGROUND log;
    try {
      Run();
    } catch (const std::exception& error) {
      MLog.Log(MLOG::ERROR, "A thread ended by an exception: %s", error.what());
    } catch (...) {
      MLog.Log(MLOG::ERROR, "A thread ended by an exception of an unknown kind.");
    }
  }
  active_.store(false, std::memory_order_release);
}

}  // namespace ORVANE
