// Keeps a browser from being destroyed while a script's call is inside it.
//
// An engine may destroy a browser on its thread while a script calls it on another one. A reference
// to an entity says whether it is gone, but does not keep it alive. So all live browsers are in a
// list, a call looks up its entity there, and a browser's destruction waits for the calls that have
// found it. This costs a call about 10 ns.
//
// Threads: any. A browser must not be destroyed by one of its own calls, from a message box, say:
//   the destruction would wait for the call.
#pragma once

#include "host/entity.h"

class CEPGBrowser;

class CBrowserPin {
 public:
  CBrowserPin() = default;
  CBrowserPin(const CBrowserPin&) = delete;
  CBrowserPin& operator=(const CBrowserPin&) = delete;
  ~CBrowserPin();

  // The browser that `entity` is; null when it is none, or one that is being destroyed. Only its
  // address is looked at. It stays until this pin goes. Once in a pin's life. [any]
  CEPGBrowser* Find(const ORVANE::MMONOBJ* entity);

 private:
  CEPGBrowser* browser_ = nullptr;
};
