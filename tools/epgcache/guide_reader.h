// Reads XMLTV guides with a full XML parser.
//
// Nothing that a guide names is fetched or opened: neither its document type nor external
// entities. Its own entities are expanded within limits that prevent attacks.
//
// Threads: one at a time in a process, as the parser's hook for external entities is the process's.
// Errors: Failure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/epgcache/byte_source.h"
#include "tools/epgcache/programme.h"

namespace epgcache {

// How a guide's elements become texts.
struct ReadingOptions {
  // Of texts that come in several, the first of these that is there; then one of no language, then
  // any. Empty: the first text, whatever its language, and all categories.
  std::vector<std::string> languages;
  bool episodes = false;    // numbers stand behind the sub-title
  bool presenters = false;  // stand among the actors
  bool guests = false;      // so do these
};

// Where and why a guide cannot be read on. Lines and columns count from 1.
struct Fault {
  int line = 0;
  int column = 0;
  std::string reason;  // empty: there is none
};

struct ReadingOutcome {
  Fault fault;
  // References to characters by names that only HTML knows: resolved, and those that nobody knows.
  std::uint64_t html_references = 0;
  std::uint64_t unknown_references = 0;
};

// Hands everything that stands before the end, or before the first fault, to `consumer`. Throws a
// Failure when the source is no XMLTV guide at all.
ReadingOutcome ReadGuide(ByteSource& source, const ReadingOptions& options,
                         GuideConsumer& consumer);

// "S2 E5/12, part 1 of 2" from "1.4/12.0/2"; empty when the text gives no number.
std::string ReadableEpisode(std::string_view xmltv_ns);

}  // namespace epgcache
