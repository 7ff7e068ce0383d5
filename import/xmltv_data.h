// The store of XMLTV listings.
//
// A file's root is `tv`; its `channel` elements become stations and its `programme` elements
// programmes and broadcasts, each behind the channel that it refers to.
#pragma once

#include "schedule/provider_data.h"

struct Draft;

class CXMLTVData final : public CProviderData {
 public:
  CXMLTVData() : CProviderData(ProviderKind::kXMLTV) {}

  [[nodiscard]] bool ImportXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                               CProgressIndicator* progress) override;

 private:
  // File one element, a programme by way of `draft`; false when it was dropped.
  bool ImportChannel(ORVANE::MXML::NODE& node);
  bool ImportProgramme(ORVANE::MXML::NODE& node, Draft& draft);
};
