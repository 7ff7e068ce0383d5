#include "browser/epg_loader_thread.h"

#include <thread>

#include "browser/epg_browser.h"

CEPGLoaderThread::CEPGLoaderThread(CEPGBrowser& owner, const ORVANE::MSTR& file_name)
    : MTHREAD(0), file_name_(file_name), owner_(owner) {}

CEPGLoaderThread::~CEPGLoaderThread() { StopAndWait(); }

bool CEPGLoaderThread::SetProgress(std::int32_t /*position*/) { return !CheckStop(); }

void CEPGLoaderThread::Run() { owner_.LoadSchedule(file_name_, status_text_, this); }

bool CEPGLoaderThread::Start() {
  const bool started = MTHREAD::Start();
  if (!started) status_text_ = "The listings cannot be loaded: there is no thread to be had.";
  begun_ = true;
  return started;
}

void CEPGLoaderThread::StopAndWait() {
  abandoned_ = true;
  if (!Active()) return;
  Stop();
  while (Active()) std::this_thread::yield();
}
