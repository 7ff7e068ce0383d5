// A programme's details as text: fields by name, and templates that combine them.
//
// Ownership: the tables are library-wide; results are new texts.
// Threads: the tables are filled before any script runs; everything else may run on any thread.
// Errors: MBADALLOC when a text outgrows memory.
#pragma once

#include <string_view>
#include <unordered_map>

#include "host/mstr.h"

struct CScheduleItem;
class CStation;

// Appends a field of an item to `out`. The argument is what the template gives in parentheses.
using FieldReader = void (*)(const CScheduleItem& item, std::string_view argument,
                             ORVANE::MSTR& out);
using StationFieldReader = const ORVANE::MSTR& (*)(const CStation& station);
using FieldTable = std::unordered_map<std::string_view, FieldReader>;
using StationFieldTable = std::unordered_map<std::string_view, StationFieldReader>;

// Defined with the rest of the library-wide state, empty until they are filled.
extern FieldTable field_table;
extern StationFieldTable station_field_table;

// Fill a table, if it is still empty.
void FillFieldTable();
void FillStationFieldTable();

// The value of a field; "[Not Found! (name:argument)]" for a name that is not in the table.
ORVANE::MSTR GetField(const CScheduleItem& item, std::string_view name, std::string_view argument);

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
ORVANE::MSTR ExpandTemplate(const CScheduleItem& item, std::string_view text, bool preceding_text);
