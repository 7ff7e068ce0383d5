// The base of every engine object, and the records that make classes creatable by name.
//
// Threads: records may be set up and looked up from any thread.
#pragma once

#include "host/api.h"

namespace ORVANE {

class MBUFFER;

class ORVANE_API MOBJ {
 public:
  // A class name with a factory that returns a new object, owned by the caller and given back
  // through its Release, or null. A record enters the engine's registry when it is built and leaves
  // it when it is destroyed; where two bear one name, the later one is found. `class_name` must
  // outlive it. [any]
  class ORVANE_API SREC {
   public:
    using FACTORY = MOBJ* (*)();

    SREC(const char* class_name, FACTORY factory);
    SREC(const SREC&) = delete;
    SREC& operator=(const SREC&) = delete;
    ~SREC();

   private:
    friend struct CLASSES;

    const char* const class_name_;
    const FACTORY factory_;
    mutable const SREC* next_;  // in the registry, whose lock guards it
  };

  MOBJ();
  MOBJ(const MOBJ&) = delete;
  MOBJ& operator=(const MOBJ&) = delete;
  virtual ~MOBJ();

  // The record of the object's class; null for a class that is not creatable by name.
  virtual const SREC* _GetSerializeRecord() const;
  virtual bool Read(MBUFFER& buffer);
  virtual bool Write(MBUFFER& buffer) const;
  // Gives the object back to its maker; here: destroys it.
  virtual void Release();
  virtual bool OnMessage(int message, void* data);
};

}  // namespace ORVANE
