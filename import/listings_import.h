// What the importers share: a file's opening and finish, and the walk over an element's children.
// An importer of a further format begins here.
//
// Threads: everything here runs on the import's thread.
// Errors: std::bad_alloc leaves the store half filled; whoever made it drops it.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/mstr.h"
#include "schedule/provider_data.h"
#include "text/counted_text.h"
#include "xml/safe_node.h"
#include "xml/simple_xml_reader.h"

class CProgressIndicator;

// The namespaces by which the cache format and TitanTV documents are known, in any letter case.
inline constexpr std::string_view kMakerNamespace = "http://www.norvex.example";
inline constexpr std::string_view kTitanTVNamespace = "http://www.titantv.com/services/dataservice";

// Opens a listings file. False: it cannot be opened, and `status` says so.
[[nodiscard]] bool OpenListings(CSimpleXMLReader& reader, const ORVANE::MSTR& file_name,
                                ORVANE::MSTR& status);

// Gives the file's length in bytes to the indicator, if there is one, and rewinds the file.
void AnnounceRange(CSimpleXMLReader& reader, CProgressIndicator* progress);

// Reads the root element. True when it bears the wanted name and its children are to be walked:
// always when there is more of the file, even if it is only an end that comes too early.
[[nodiscard]] bool ReadListingsRoot(CSimpleXMLReader& reader, CSafeNode& root,
                                    std::string_view wanted);

// Reads the children of an open element into `child`, one after the other, up to the element's end
// tag. `handle` gets each with the flag that tells whether the child's own children follow in the
// stream, and must consume those; `child` is emptied after it. False when `handle` says so or the
// end tag is not the element's; `status` then holds the reason.
template <typename Handler>
[[nodiscard]] bool ForEachChild(CSimpleXMLReader& reader, const ORVANE::MSTR& element,
                                CSafeNode& child, ORVANE::MSTR& status, Handler handle) {
  for (;;) {
    bool open = false;
    bool end_tag = false;
    if (!reader.ReadElement(child, open, end_tag) || end_tag) {
      return CheckEndTag(end_tag, ViewOf(element), ViewOf(child.name), status);
    }
    if (!handle(open)) return false;
    reader.Recycle(child);
  }
}

// The same, what is below each child read into the reader's Children() before `handle` gets it.
template <typename Handler>
[[nodiscard]] bool ForEachRecord(CSimpleXMLReader& reader, const ORVANE::MSTR& element,
                                 CSafeNode& child, ORVANE::MSTR& status, Handler handle) {
  return ForEachChild(reader, element, child, status, [&](bool open) {
    if (open && !reader.ReadChildren(child.name, status)) return false;
    handle();
    return true;
  });
}

// An end before its start lies on the next day.
std::int32_t EndAfter(std::int32_t start, std::int32_t end);

// Ends an import: completes the progress, closes the file, writes the summary with the time since
// `began` (a tick count) into `status` and the log, and indexes the stations. Gives the import's
// result: whether the store holds any station.
[[nodiscard]] bool FinishImport(CProviderData& store, CSimpleXMLReader& reader,
                                const ORVANE::MSTR& file_name, std::uint32_t began,
                                ORVANE::MSTR& status, CProgressIndicator* progress);

// Builds every station's programme index.
void IndexStations(CProviderData& store);
