// The script class EPGBROWSER and its instances.
//
// Ownership: instances belong to the pool: they are taken from it and given back through Release.
//   The module belongs to the plug-in's entry points.
// Threads: instances may be made and given back on any thread.
#pragma once

#include "browser/epg_browser.h"
#include "host/entity.h"
#include "host/script.h"

class CEPGBrowser::MSS : public ORVANE::ENTITY::MSS {
 public:
  class MODULE final : public ORVANE::MSSMODULE {
   public:
    MODULE();
    // An instance that is not bound to any entity; null when there is no memory.
    ORVANE::MSSINSTANCE* CreateInstance() override;
  };

  static const SREC _Record;

  // An instance from the pool that carries the plug-in's module; null when there is no memory.
  static MSS* Take();

  const SREC* _GetSerializeRecord() const override { return &_Record; }
  // Gives the instance back to the pool, unbound.
  void Release() override;
  ORVANE::MSSINSTANCE* MakeCopy() override;
  // Another instance with the same binding; null when there is no memory.
  ORVANE::MSSINSTANCE* Clone() override;
  // Copies the binding, if `other` has one to copy. Always true.
  bool Copy(const ORVANE::MSSINSTANCE* other) override;
};
