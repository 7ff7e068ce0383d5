// The store of XMLTV listings.
//
// A file's root is `tv`; its `channel` elements become stations and its `programme` elements
// programmes and broadcasts, each behind the channel that it refers to.
#pragma once

#include "host/mstr.h"
#include "host/mxml.h"
#include "schedule/provider_data.h"

class CXMLTVData final : public CProviderData {
 public:
  CXMLTVData() : CProviderData(ProviderKind::kXMLTV) {}

  [[nodiscard]] bool ImportXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                               CProgressIndicator* progress) override;

 private:
  // File one element; false when it was dropped. Actors are gathered in `actors`, which comes with
  // the storage of earlier ones.
  bool ImportChannel(const ORVANE::MXML::NODE& node);
  bool ImportProgramme(const ORVANE::MXML::NODE& node, ORVANE::MSTR& actors);
};
