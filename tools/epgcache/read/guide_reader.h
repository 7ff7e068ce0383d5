// Reads XMLTV guides: makes programmes and channels out of elements.
//
// Threads: one at a time in a process, as the parser below.
// Errors: Failure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/epgcache/read/byte_source.h"
#include "tools/epgcache/read/fault.h"
#include "tools/epgcache/read/programme.h"

namespace epgcache {

// How a guide's elements become texts.
struct ReadingOptions {
  // Of texts that come in several, the first of these that is there; then one of no language, then
  // any. Empty: the first text, whatever its language, and all categories.
  std::vector<std::string> languages;
  bool episodes = false;    // numbers after the sub-title
  bool presenters = false;  // stand among the actors
  bool guests = false;      // so do these
};

struct ReadingOutcome {
  Fault fault;  // where and why the guide cannot be read on
  // References to characters by names that only HTML knows: resolved, and unknown ones.
  std::uint64_t html_references = 0;
  std::uint64_t unknown_references = 0;
};

// Hands everything of the source's document up to its end, or to the first fault, to `consumer`.
// Where `tell_mended` is set, faults are mended or passed over and reported to it. Throws a Failure
// when the document is not an XMLTV guide at all.
ReadingOutcome ReadGuide(ByteSource& source, const ReadingOptions& options, GuideConsumer& consumer,
                         FaultSink tell_mended = {});

// "S2 E5/12, part 1 of 2" from "1.4/12.0/2"; empty when the text gives no number.
std::string ReadableEpisode(std::string_view xmltv_ns);

}  // namespace epgcache
