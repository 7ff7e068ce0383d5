#include "import/listings_import.h"

#include <algorithm>
#include <limits>

#include "host/mlog.h"
#include "import/progress_indicator.h"
#include "platform/services.h"
#include "schedule/time_value.h"
#include "text/counted_text.h"

using ORVANE::MLog;
using ORVANE::MSTR;

bool OpenListings(CSimpleXMLReader& reader, const MSTR& file_name, MSTR& status) {
  if (reader.Open(file_name, true, false, true)) return true;
  status.Format("Failed to open file \"%s\".", file_name.text);
  return false;
}

void AnnounceRange(CSimpleXMLReader& reader, CProgressIndicator* progress) {
  if (progress == nullptr) return;
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  reader.Seek(0, CSimpleXMLReader::SEEK::End);
  progress->SetRange(static_cast<std::int32_t>(std::min(reader.Position(), kMost)));
  reader.Seek(0, CSimpleXMLReader::SEEK::Start);
}

bool ReadListingsRoot(CSimpleXMLReader& reader, CSafeNode& root, std::string_view wanted) {
  bool more = false;
  const bool open = reader.ReadRoot(root, more);
  return ViewOf(root.name) == wanted && (open || more);
}

std::int32_t EndAfter(std::int32_t start, std::int32_t end) {
  if (start <= end) return end;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(end) + kMinutesPerDay);
}

bool FinishImport(CProviderData& store, CSimpleXMLReader& reader, const MSTR& file_name,
                  std::uint32_t began, MSTR& status, CProgressIndicator* progress) {
  if (progress != nullptr) progress->SetComplete();
  reader.Close();
  status.Format("File \"%s\" loaded OK.  %s  (%i msec)", file_name.text, store.GetStatistics().text,
                static_cast<int>(platform::GetTickCount() - began));
  MLog.Log("%s", status.text);
  IndexStations(store);
  return store.GetStationCount() > 0;
}

void IndexStations(CProviderData& store) {
  for (std::int32_t i = 0; i < store.GetStationCount(); ++i) {
    store.GetStation(i)->BuildProgramIndex();
  }
}
