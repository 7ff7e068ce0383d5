// The store of Radio Times listings.
//
// A file's root is `Programmes`; each of its `Programme` elements carries its channel by name and
// its date and times as texts without a zone. Stations are made as their names first appear.
#pragma once

#include <string_view>

#include "host/mstr.h"
#include "schedule/provider_data.h"
#include "xml/elements.h"

class CRTData final : public CProviderData {
 public:
  CRTData() : CProviderData(ProviderKind::kRadioTimes) {}

  // Takes no progress indicator.
  [[nodiscard]] bool ImportXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                               CProgressIndicator* progress) override;

 private:
  // Files one element; false when its broadcast was dropped.
  bool ImportProgramme(CElementRange elements);
  // The station of that channel name, made when there is none.
  CStation& StationOf(std::string_view channel_name);
};
