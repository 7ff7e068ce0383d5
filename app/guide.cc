#include "app/guide.h"

#include <stdexcept>

#include "host/engine.h"

namespace shell {

void Guide::Run(ORVANE::MSSEXEC& exec, const char* method) {
  if (!ORVANE::CallMethod(exec, method)) {
    throw std::runtime_error(std::string("the plug-in's method ") + method + " has failed");
  }
}

std::int32_t Guide::IntegerOf(const ORVANE::MSSEXEC& exec) {
  const auto* const value = dynamic_cast<const ORVANE::MSSINTEGER*>(exec.Result());
  return value != nullptr ? value->value : 0;
}

std::string Guide::TextOf(const ORVANE::MSSEXEC& exec) {
  const auto* const value = dynamic_cast<const ORVANE::MSSSTRING*>(exec.Result());
  return value != nullptr ? std::string(value->value.View()) : "";
}

}  // namespace shell
