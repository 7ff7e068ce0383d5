// The store of Radio Times listings.
//
// A file's root is `Programmes`; each of its `Programme` elements carries its channel by name and
// its date and times as texts without a zone. Stations are made as their names first appear.
#pragma once

#include "schedule/provider_data.h"

struct Draft;

class CRTData final : public CProviderData {
 public:
  CRTData() : CProviderData(ProviderKind::kRadioTimes) {}

  // Takes no progress indicator.
  [[nodiscard]] bool ImportXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                               CProgressIndicator* progress) override;

 private:
  // Files one element, read into `draft`; false when its broadcast was dropped.
  bool ImportProgramme(ORVANE::MXML::NODE& node, Draft& draft);
};
