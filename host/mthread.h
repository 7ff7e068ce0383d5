// Threads and mutexes of the engine.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

#include "host/api.h"
#include "host/mobj.h"

namespace ORVANE {

// A mutual exclusion lock; not recursive.
class ORVANE_API MUTEX {
 public:
  void Enter() { mutex_.lock(); }
  void Leave() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

// A thread that runs its virtual body once.
//
// Threads: the owner starts, polls, stops and destroys; `Run` is on the new thread; `CheckStop`
//   and `Active` may be asked anywhere.
// Errors: an exception that leaves `Run` is logged and ends the thread.
class ORVANE_API MTHREAD : public MOBJ {
 public:
  explicit MTHREAD(int priority);
  // Joins. REQUIRES: `Active` is false; a derived class sees to that before its own fields go.
  ~MTHREAD() override;

  // The thread's body.
  virtual void Run() = 0;
  // True once Stop has been called.
  virtual bool CheckStop() const;
  // Runs the body on a new thread; once in an object's life. False when there is no thread to be
  // had: an error is logged, and `Active` stays false.
  virtual bool Start();
  // Asks the body to end; returns at once.
  virtual void Stop();

  // True from Start until Run has returned and all that it has logged is written.
  bool Active() const { return active_.load(std::memory_order_acquire); }

 private:
  void Body();

  std::atomic<bool> active_ = false;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

}  // namespace ORVANE
