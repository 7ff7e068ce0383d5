// The store of TitanTV data-service documents.
//
// A document is loaded whole and walked by its containers' names; the records in a container may be
// called anything. Times count in minutes from the document's base time.
#pragma once

#include <cstdint>

#include "host/mstr.h"
#include "host/mxml.h"
#include "schedule/provider_data.h"

class CProgramFinder;

class CDMData final : public CProviderData {
 public:
  CDMData() : CProviderData(ProviderKind::kTitanTV) {}

  // Adds to what the store holds, if that is of the same provider. Takes no progress indicator.
  [[nodiscard]] bool ImportXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                               CProgressIndicator* progress) override;

 private:
  // File one element; false when it was refused.
  bool ImportStation(const ORVANE::MXML::NODE& node);
  bool ImportProgram(const ORVANE::MXML::NODE& node);
  bool ImportScheduleItem(const ORVANE::MXML::NODE& node, std::int32_t base_time,
                          CProgramFinder& finder);
};
