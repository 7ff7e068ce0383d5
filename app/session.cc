#include "app/session.h"

#include <cstdio>
#include <string_view>

#include "app/terminal.h"
#include "host/engine.h"
#include "text/utf8.h"

namespace shell {

std::unique_ptr<Session> Session::Open(const std::string& plugin_path, std::string& error) {
  std::unique_ptr<Session> session(new Session);
  session->plugin_ = ORVANE::PLUGIN::Load(plugin_path.c_str(), error);
  if (session->plugin_ == nullptr) return nullptr;
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
    const std::string safe = ErrorsAreShown() ? ForTerminal(text) : std::string(text);
    text = safe;
    std::string entry = prefix;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
      entry.append(text, 0, end + 1).append("  ");
      text.remove_prefix(end + 1);
    }
    entry.append(text) += '\n';
    std::fwrite(entry.data(), 1, entry.size(), stderr);
  });
}

}  // namespace shell
