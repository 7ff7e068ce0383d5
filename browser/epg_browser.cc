#include "browser/epg_browser.h"

#include <exception>
#include <new>
#include <utility>

#include "browser/epg_loader_thread.h"
#include "import/import_driver.h"
#include "platform/services.h"
#include "text/bad_alloc.h"

using ORVANE::MSTR;

CEPGBrowser::CEPGBrowser() = default;

// The loader writes into the browser, so it goes before any field does.
CEPGBrowser::~CEPGBrowser() {
  if (const auto loader = loader_.Exchange(nullptr); loader != nullptr) loader->StopAndWait();
}

bool CEPGBrowser::InitSchedule(const MSTR& /*first*/, const MSTR& /*second*/, const MSTR& name) {
  // There is a loader to be seen all the while: a script on another thread goes on waiting.
  if (const auto earlier = loader_.Load(); earlier != nullptr) earlier->StopAndWait();
  std::shared_ptr<CEPGLoaderThread> loader;
  try {
    MSTR file_name;
    file_name.Format("%s.xml", name.text);
    loader = std::make_shared<CEPGLoaderThread>(*this, file_name);
  } catch (const std::bad_alloc&) {  // without a loader, nothing is started
  }
  loader_.Exchange(loader);
  if (loader != nullptr && !loader->Start()) schedule_.Exchange(nullptr);
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
  // A replaced schedule ends here, away from the engine's thread, unless somebody still reads it.
  schedule_.Exchange(std::move(schedule));
}

void CEPGBrowser::Think(std::uint32_t tick) {
  ENTITY::Think(tick);
  auto loader = loader_.Load();
  if (loader != nullptr && loader->Ended()) FinishLoad(std::move(loader));
}

void CEPGBrowser::FinishLoad(std::shared_ptr<CEPGLoaderThread> ended) {
  if (!loader_.ClearIf(ended)) return;  // another thread has adopted it
  // The text leaves the loader, which ends here. Whatever the user does before closing the box, the
  // next load included, cannot touch it.
  const MSTR text = ended->TakeStatusText();
  ended.reset();
  if (Schedule() != nullptr) return;
  platform::MessageBoxA(text.text, "Telvyn configuration error", platform::kMessageBoxInformation);
}
