// A programme's details as text: fields by name.
//
// Ownership: the tables are library-wide; results are new texts.
// Threads: the tables are filled before any script runs; everything else may run on any thread.
// Errors: CBadAlloc when a text outgrows what any text may hold; std::bad_alloc.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

struct CScheduleItem;
class CStation;

// Appends a field of an item to `out`. The argument is what the template gives in parentheses.
using FieldReader = void (*)(const CScheduleItem& item, std::string_view argument,
                             std::string& out);
// The view lives as long as the station.
using StationFieldReader = std::string_view (*)(const CStation& station);
using FieldTable = std::unordered_map<std::string_view, FieldReader>;
using StationFieldTable = std::unordered_map<std::string_view, StationFieldReader>;

// Defined with the rest of the library-wide state, empty until they are filled.
extern FieldTable field_table;
extern StationFieldTable station_field_table;

// Fill a table, if it is still empty. [engine]
void FillFieldTable();
void FillStationFieldTable();

// The reader of the field "Combination", whose argument is a template for the same item.
void ReadCombination(const CScheduleItem& item, std::string_view argument, std::string& out);

// Null for a name that is not in the table. [any]
FieldReader FindField(std::string_view name);

// Appends what a field's reader gives, or what stands for a name without one (a null reader):
// "[Not Found! (name:argument)]". [any]
void AppendField(FieldReader reader, const CScheduleItem& item, std::string_view name,
                 std::string_view argument, std::string& out);

// The value of a field by its name. [any]
std::string GetField(const CScheduleItem& item, std::string_view name, std::string_view argument);
