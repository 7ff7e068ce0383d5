#include "app/session.h"

#include <cstdio>
#include <string_view>

#include "app/system.h"
#include "host/engine.h"
#include "text/entry_text.h"

namespace shell {

std::unique_ptr<Session> Session::Open(const std::string& plugin_path, std::string& error) {
  std::unique_ptr<Session> session(new Session);
  session->plugin_ = ORVANE::PLUGIN::Load(plugin_path.c_str(), error);
  if (session->plugin_ == nullptr) return nullptr;
  ShowBoxesAsText(plugin_path);
  session->plugin_->Initialise();
  session->browser_ = ORVANE::CreateEntity("CEPGBrowser");
  session->instance_ = ORVANE::CreateInstance("EPGBROWSER");
  if (session->browser_ == nullptr || session->instance_ == nullptr ||
      !ORVANE::Bind(*session->instance_, session->browser_.get())) {
    error = plugin_path + ": this plug-in has no programme guide browser";
    return nullptr;
  }
  return session;
}

Session::~Session() {
  instance_.reset();
  browser_.reset();
  if (plugin_ != nullptr) plugin_->Release();
}

void LogToStandardError() {
  ORVANE::SetLogSink([](ORVANE::ENTRY type, std::string_view text) {
    const char* const prefix = type == ORVANE::ENTRY::Notice   ? "notice: "
                               : type == ORVANE::ENTRY::Error  ? "error: "
                               : type == ORVANE::ENTRY::Caller ? "  at "
                                                               : "log: ";
    const std::string entry = EntryText(prefix, text, ErrorsAreShown());
    std::fwrite(entry.data(), 1, entry.size(), stderr);
  });
}

}  // namespace shell
