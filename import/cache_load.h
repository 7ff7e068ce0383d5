// One load of a file in the cache format, the system's own: numbered fields, programmes before the
// stations whose items refer to them.
#pragma once

#include "host/mstr.h"
#include "import/listings_import.h"
#include "schedule/provider_data.h"
#include "xml/safe_node.h"
#include "xml/simple_xml_reader.h"

// What the records of a cache file are read with. There is one node for each level of nesting,
// reused throughout the load: a tag so broken that it has no name shows the name before it.
struct CCacheLoad {
  CProviderData& store;
  ORVANE::MSTR& status;
  CSimpleXMLReader reader = {};
  CSafeNode root = {};
  CSafeNode collection = {};     // a child of the root
  CSafeNode record = {};         // a child of a collection
  CSafeNode station_child = {};  // a child of a station
  CSafeNode item = {};           // a child of a station's schedule
};
