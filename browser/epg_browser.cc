#include "browser/epg_browser.h"

#include <atomic>
#include <cassert>
#include <chrono>
#include <exception>
#include <new>
#include <thread>
#include <utility>

#include "browser/browser_pin.h"
#include "browser/epg_loader_thread.h"
#include "browser/spin_lock.h"
#include "import/import_driver.h"
#include "platform/services.h"
#include "text/bad_alloc.h"

using ORVANE::MSTR;

// The browsers that there are, the latest first.
class CLiveBrowsers {
 public:
  constexpr CLiveBrowsers() = default;

  void Add(CEPGBrowser& browser) {
    const CSpinLock lock(busy_);
    browser.next_live_ = std::exchange(first_, &browser);
  }

  // No pin finds the browser from then on.
  void Remove(CEPGBrowser& browser) {
    const CSpinLock lock(busy_);
    CEPGBrowser** link = &first_;
    while (*link != &browser) link = &(*link)->next_live_;
    *link = browser.next_live_;
  }

  CEPGBrowser* Pin(const ORVANE::MMONOBJ* entity) {
    const CSpinLock lock(busy_);
    CEPGBrowser* browser = first_;
    while (browser != nullptr && browser != entity) browser = browser->next_live_;
    if (browser != nullptr) ++browser->pins_;
    return browser;
  }

  void Unpin(CEPGBrowser& browser) {
    const CSpinLock lock(busy_);
    --browser.pins_;
  }

  // There hardly ever is one. REQUIRES: the browser has been removed.
  void WaitForPins(const CEPGBrowser& browser) {
    while (IsPinned(browser)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

 private:
  bool IsPinned(const CEPGBrowser& browser) {
    const CSpinLock lock(busy_);
    return browser.pins_ != 0;
  }

  std::atomic_flag busy_;
  CEPGBrowser* first_ = nullptr;  // under busy_
};

namespace {
constinit CLiveBrowsers live_browsers;
}

CBrowserPin::~CBrowserPin() {
  if (browser_ != nullptr) live_browsers.Unpin(*browser_);
}

CEPGBrowser* CBrowserPin::Find(const ORVANE::MMONOBJ* entity) {
  assert(browser_ == nullptr);
  return browser_ = live_browsers.Pin(entity);
}

CEPGBrowser::CEPGBrowser() { live_browsers.Add(*this); }

CEPGBrowser::~CEPGBrowser() {
  live_browsers.Remove(*this);
  // Calls may wait for the load, or start one.
  StopLoader();
  live_browsers.WaitForPins(*this);
  // The loader writes into the browser, so it goes before any field does.
  StopLoader();
}

void CEPGBrowser::StopLoader() {
  if (const auto loader = loader_.Exchange(nullptr); loader != nullptr) loader->StopAndWait();
}

bool CEPGBrowser::InitSchedule(const MSTR& /*first*/, const MSTR& /*second*/, const MSTR& name) {
  // A loader stays visible all the while, so that a script waiting on another thread keeps waiting.
  if (const auto earlier = loader_.Load(); earlier != nullptr) earlier->StopAndWait();
  std::shared_ptr<CEPGLoaderThread> loader;
  try {
    MSTR file_name;
    file_name.Format("%s.xml", name.text);
    loader = std::make_shared<CEPGLoaderThread>(*this, file_name);
  } catch (const std::bad_alloc&) {  // without a loader, nothing is started
  }
  loader_.Exchange(loader);
  if (loader != nullptr && !loader->StartLoad()) schedule_.Exchange(nullptr);
  return true;
}

void CEPGBrowser::LoadSchedule(const MSTR& file_name, MSTR& status_text,
                               CProgressIndicator* progress) {
  std::shared_ptr<CProviderData> schedule;
  const auto fail = [&status_text](const char* reason) {
    try {
      status_text = reason;
    } catch (const std::bad_alloc&) {
      status_text = MSTR();
    }
  };
  try {
    schedule = ImportEPGFile(file_name, status_text, progress);
  } catch (const std::bad_alloc&) {
    fail(CBadAlloc().what());
  } catch (const std::exception& error) {
    fail(error.what());
  }
  // A replaced schedule ends here, away from the engine's thread, unless it is still being read.
  schedule_.Exchange(std::move(schedule));
}

void CEPGBrowser::Think(std::uint32_t tick) {
  ENTITY::Think(tick);
  auto loader = loader_.Load();
  if (loader != nullptr && loader->Ended()) FinishLoad(std::move(loader));
}

void CEPGBrowser::FinishLoad(std::shared_ptr<CEPGLoaderThread> ended) {
  if (!loader_.ClearIf(ended)) return;  // another thread has adopted it
  // A copy, since the loader ends here: whatever the user does before closing the box, the next
  // load included, cannot touch it.
  const MSTR text = ended->StatusText();
  ended.reset();
  if (Schedule() != nullptr) return;
  platform::MessageBoxA(text.text, "Telvyn configuration error", platform::kMessageBoxInformation);
}
