// The plug-in's reader compared with XML's own rules: where the two differ, and why.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "tools/epgcache/read/markup.h"

namespace epgcache {

// Why the plug-in does not take a file, and where.
struct Stop {
  std::size_t at;  // the byte
  std::string rule;
};

// Walks through the file `name`, which holds `bytes`, with the plug-in's reader as its importers
// do, to the root's end or the first place where an import ends. What goes wrong there is traced
// back to where the reader last understood the file as XML does. Nothing when the reader comes to
// the end of the root, and it is XML's root. Throws Failure.
std::optional<Stop> WalkAsImporters(const std::string& name, std::string_view bytes);

// What hides a tag's attributes from the reader; empty when nothing does.
std::string AttributeOddity(std::string_view bytes, const Markup& tag);

// A name from a file, as a tag and made fit to show.
std::string ShownTag(std::string_view name);

}  // namespace epgcache
