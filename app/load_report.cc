#include "app/load_report.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

#include "app/complain.h"
#include "app/documents.h"
#include "host/engine.h"
#include "text/entities.h"

namespace shell {

namespace {

constexpr std::string_view kListingsExtension = ".xml";

// The reason in what the plug-in has logged, "... failed. [reason]", where its markup characters
// are references.
std::string Reason(const std::string& logged) {
  const std::size_t begin = logged.find('[');
  const std::size_t end = logged.rfind(']');
  if (begin == std::string::npos || end == std::string::npos || end < begin) return logged;
  const std::string reason = logged.substr(begin + 1, end - begin - 1);
  if (reason.find("loaded OK") != std::string::npos) {
    return "no station was found in it. A file of a format that is not known ends so, too";
  }
  constexpr std::size_t kLongest = 300;
  std::string plain;
  for (std::string_view rest = reason; !rest.empty() && plain.size() < kLongest;) {
    const auto* const entity =
        std::find_if(std::begin(kEntities), std::end(kEntities),
                     [rest](const Entity& one) { return rest.starts_with(one.reference); });
    const bool is_reference = entity != std::end(kEntities);
    plain += is_reference ? entity->character : rest[0];
    rest.remove_prefix(is_reference ? entity->reference.size() : 1);
  }
  return plain.size() < kLongest ? plain : plain + " ...";
}

std::string StemOf(const std::string& name) {
  const bool whole = name.size() > kListingsExtension.size() && name.ends_with(kListingsExtension);
  return whole ? name.substr(0, name.size() - kListingsExtension.size()) : name;
}

}  // namespace

bool IsListings(const std::string& name) {
  std::error_code error;
  return std::filesystem::is_regular_file(StemOf(name) + std::string(kListingsExtension), error);
}

std::optional<std::string> FindListings(const std::string& name) {
  const std::string stem = StemOf(name);
  const bool whole = stem != name;
  std::error_code error;
  if (std::filesystem::is_regular_file(stem + std::string(kListingsExtension), error)) return stem;
  if (std::filesystem::is_directory(name, error)) {
    ComplainAsShell(name + " is a folder; name a listings file in it");
  } else if (!whole && std::filesystem::is_regular_file(name, error)) {
    ComplainAsShell("a listings file's name ends in .xml: rename " + name + " to " + name + ".xml");
  } else {
    ComplainAsShell("there is no listings file " + stem + std::string(kListingsExtension) +
                    (std::filesystem::exists(name, error) ? "; it must be a plain file" : ""));
  }
  return std::nullopt;
}

LoadReport::LoadReport() {
  ORVANE::SetLogSink([this](ORVANE::ENTRY type, std::string_view text) {
    if (type == ORVANE::ENTRY::Untyped || type == ORVANE::ENTRY::Error) last_entry_ = text;
  });
}

LoadReport::~LoadReport() { ORVANE::SetLogSink({}); }

std::string LoadReport::Failure(const std::string& file) const {
  return file + " gives no schedule: " + Reason(last_entry_);
}

void LoadReport::TellFailure(const std::string& file) const {
  ComplainAsShell(Failure(file));
  ComplainAsShell("to see where it goes wrong: epgcache --check '" + file + "'; " +
                  DocumentPath("listings.md") + " explains each message");
}

}  // namespace shell
