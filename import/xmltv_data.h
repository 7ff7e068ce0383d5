// The store of XMLTV listings.
//
// A file's root is `tv`; its `channel` elements become stations and its `programme` elements
// programmes and broadcasts, each after the channel that it refers to.
#pragma once

#include <array>
#include <string>

#include "host/mstr.h"
#include "schedule/provider_data.h"
#include "xml/elements.h"

class CXMLTVData final : public CProviderData {
 public:
  CXMLTVData() : CProviderData(ProviderKind::kXMLTV) {}

  [[nodiscard]] bool ImportXML(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                               CProgressIndicator* progress) override;

 private:
  // Storage that each programme leaves to the next.
  struct Scratch {
    std::string actors;
    std::array<std::string, 3> attributes;
    ORVANE::MSTR engine_text;
  };

  // File one element; false when it was dropped.
  bool ImportChannel(const CElement& channel);
  bool ImportProgramme(const CElement& element, Scratch& scratch);
};
