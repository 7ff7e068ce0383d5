#include "app/guide.h"

#include <stdexcept>

#include "text/counted_text.h"

namespace shell {

void Guide::Run(ORVANE::CALL& call, const char* method) {
  if (!call.Run(method)) {
    throw std::runtime_error(std::string("the plug-in's method ") + method + " has failed");
  }
}

std::int32_t Guide::IntegerOf(const ORVANE::CALL& call) {
  const auto* const value = dynamic_cast<const ORVANE::MSSINTEGER*>(call.Result());
  return value != nullptr ? value->value : 0;
}

std::string Guide::TextOf(const ORVANE::CALL& call) {
  const auto* const value = dynamic_cast<const ORVANE::MSSSTRING*>(call.Result());
  return value != nullptr ? std::string(ViewOf(value->value)) : "";
}

}  // namespace shell
