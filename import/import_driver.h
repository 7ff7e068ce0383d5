// Recognises a listings file's format from its root element and has the matching store read it.
#pragma once

#include <memory>

#include "host/mstr.h"
#include "schedule/provider_data.h"

class CProgressIndicator;

// The finished schedule, or null. `status` then holds what the user is told; otherwise the
// importer's summary. The reason for a failure is in the log. `progress` may be null. [loader]
std::shared_ptr<CProviderData> ImportEPGFile(const ORVANE::MSTR& file_name, ORVANE::MSTR& status,
                                             CProgressIndicator* progress);
