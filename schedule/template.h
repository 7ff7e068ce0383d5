// Templates: texts that name a programme's fields, filled in.
//
// Threads: any.
// Errors: CBadAlloc when the result outgrows what any text may hold; std::bad_alloc.
#pragma once

#include <string>
#include <string_view>

struct CScheduleItem;

// Expands a template against an item.
//
//   $Name  $Name(argument)   a field; when it is empty, the group it stands in gives nothing
//   $Name!  $Name!(argument) the same test, without the field's text
//   $(text)                  `text`, when something stands before this group
//   [ ... ]                  a group; the template as a whole is one too
//   \n  \t  \x               a line feed, the three characters <t>, and x itself
//
// `preceding_text` says whether something stands before the template. Cost grows with the lengths
// of template and result, however deeply groups and arguments nest.
std::string ExpandTemplate(const CScheduleItem& item, std::string_view text, bool preceding_text);
