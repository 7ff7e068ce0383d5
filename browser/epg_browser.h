// The scene entity that owns one schedule and loads it from a listings file in the background.
//
// Ownership: the browser owns its schedule, together with every call that still reads it, and its
//   loader.
// Threads: the engine's thread creates, ticks and destroys; the loader's thread replaces the
//   schedule at the end of a load.
#pragma once

#include <cstdint>
#include <memory>

#include "browser/shared_slot.h"
#include "host/entity.h"
#include "host/mobj.h"
#include "host/mstr.h"
#include "schedule/provider_data.h"

class CEPGLoaderThread;
class CProgressIndicator;

class CEPGBrowser : public ORVANE::ENTITY {
 public:
  // The script instance that is bound to a browser. Defined in plugin/.
  class MSS;

  class CREATEPARAMS final : public ORVANE::ENTITY::CREATEPARAMS {
   public:
    // Defined with the rest of the library-wide state, like the browser's own.
    static const SREC _Record;
    const SREC* _GetSerializeRecord() const override { return &_Record; }
  };

  CEPGBrowser();
  // Waits for a load that is running, and for calls that are inside. [engine]
  ~CEPGBrowser() override;

  static const SREC _Record;
  const SREC* _GetSerializeRecord() const override { return &_Record; }

  // Adopts the end of a load. [engine], and a script's thread that waits for one
  void Think(std::uint32_t tick) override;

  // Starts to load "`name`.xml", after the end of a load that is still running. The other two
  // strings are the script's and have no use. Always true. [engine]
  virtual bool InitSchedule(const ORVANE::MSTR& first, const ORVANE::MSTR& second,
                            const ORVANE::MSTR& name);

  // Imports a file and replaces the schedule by the result, also when that is none. `status_text`
  // then holds the importer's summary or what the user is to be told. [loader]
  void LoadSchedule(const ORVANE::MSTR& file_name, ORVANE::MSTR& status_text,
                    CProgressIndicator* progress);

  // A load runs, or has ended and not been adopted yet. [any]
  bool HasLoader() const { return loader_.Load() != nullptr; }

  // The schedule as it is now, which stays alive while the reference is kept; null when there is
  // none. [any]
  std::shared_ptr<const CProviderData> Schedule() const { return schedule_.Load(); }

 private:
  friend class CBrowserPin;
  friend class CLiveBrowsers;

  void FinishLoad(std::shared_ptr<CEPGLoaderThread> ended);
  void StopLoader();

  CSharedSlot<CProviderData> schedule_;
  CSharedSlot<CEPGLoaderThread> loader_;

  // Under the lock of the list of browsers.
  CEPGBrowser* next_live_ = nullptr;
  int pins_ = 0;  // calls that are inside
};
