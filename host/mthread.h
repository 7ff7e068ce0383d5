// Threads and mutexes of the engine.
#pragma once

#include "host/api.h"
#include "host/mobj.h"

namespace ORVANE {

// A mutual exclusion lock; not recursive. [any]
class ORVANE_API MUTEX {
 public:
  MUTEX();
  MUTEX(const MUTEX&) = delete;
  MUTEX& operator=(const MUTEX&) = delete;
  ~MUTEX();

  void Enter();
  void Leave();

 private:
  struct STATE;

  STATE* const state_;  // Owned.
};

// A thread that runs its virtual body once.
//
// Threads: the owner starts, stops and destroys; `Run` is on the new thread; `CheckStop` and
//   `Active` may be asked anywhere.
// Errors: an exception that leaves `Run` is logged and ends the thread.
class ORVANE_API MTHREAD : public MOBJ {
 public:
  explicit MTHREAD(int priority);
  // REQUIRES: `Active` is false; a derived class sees to that before its own fields go.
  ~MTHREAD() override;

  // The thread's body.
  virtual void Run() = 0;
  // True once Stop has been called. [any]
  virtual bool CheckStop() const;
  // Runs the body on a new thread; once in an object's life. False when no thread could be
  // started: an error is logged, and `Active` stays false.
  virtual bool Start();
  // Asks the body to end; returns at once.
  virtual void Stop();

  // True from Start until Run has returned and all that it has logged is written. [any]
  bool Active() const;

 private:
  struct STATE;

  STATE* const state_;  // Owned.
};

}  // namespace ORVANE
