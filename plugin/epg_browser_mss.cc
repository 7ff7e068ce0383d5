#include "plugin/epg_browser_mss.h"

#include "plugin/instance_pool.h"
#include "plugin/library_state.h"
#include "plugin/script_methods.h"

using ORVANE::MSSINSTANCE;

CEPGBrowser::MSS::MODULE::MODULE() {
  parent_ = ORVANE::ENTITY::MSS::MODULE::_Module;
  flags_ |= 1;
  SetName("EPGBROWSER");
  AddScriptMethods(*this);
  flags_ |= 2;
}

MSSINSTANCE* CEPGBrowser::MSS::MODULE::CreateInstance() { return Take(); }

CEPGBrowser::MSS* CEPGBrowser::MSS::Take() {
  MSS* const instance = instance_pool.Take();
  if (instance != nullptr) instance->SetModule(module_holder.Get());
  return instance;
}

void CEPGBrowser::MSS::Release() {
  entity.SubRef();
  entity.Set(nullptr);
  entity.AddRef();
  SetModule(nullptr);
  instance_pool.GiveBack(this);
}

MSSINSTANCE* CEPGBrowser::MSS::MakeCopy() { return Clone(); }

MSSINSTANCE* CEPGBrowser::MSS::Clone() {
  MSS* const instance = Take();
  if (instance != nullptr) instance->Copy(this);
  return instance;
}

bool CEPGBrowser::MSS::Copy(const MSSINSTANCE* other) {
  ORVANE::ENTITY::MSS::Copy(other);
  return true;
}
