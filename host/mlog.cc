#include "host/mlog.h"

#include <utility>

#include "host/mstr.h"

namespace ORVANE {

MLOG MLog;

MLOG::MLOG() = default;
MLOG::~MLOG() = default;

void MLOG::SetSink(SINK sink) {
  const std::lock_guard lock(mutex_);
  sink_ = std::move(sink);
}

void MLOG::Write(TYPE type, const char* format, std::va_list arguments) {
  try {
    MSTR text;
    text.FormatList(format, arguments);
    const std::lock_guard lock(mutex_);
    if (sink_) sink_(type, text.View());
  } catch (const std::bad_alloc&) {  // a lost entry must not break what it was about
  }
}

void MLOG::Log(TYPE type, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Write(type, format, arguments);
  va_end(arguments);
}

void MLOG::Log(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Write(UNTYPED, format, arguments);
  va_end(arguments);
}

}  // namespace ORVANE
