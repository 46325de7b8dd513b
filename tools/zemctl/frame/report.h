// How a command's outcome reaches the terminal: as text for a person or as JSON for a script.
#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace zemctl {

// Fields in the order in which they are shown, named as people read them. A field that is an array
// of objects is a table.
using Report = nlohmann::ordered_json;

// In place of a field's value: it could not be read. Shown as "not read: WHY"; in JSON the field is
// null, and "not_read" beside it has the reason under its name.
Report Unread(const std::string& why);

// One "name: value" line a field, tables with aligned columns.
void PrintText(std::FILE* out, const Report& report);

// One JSON document, whose keys are the fields' names in snake_case.
void PrintJson(std::FILE* out, const Report& report);

}  // namespace zemctl
