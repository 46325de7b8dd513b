// How a command's outcome reaches the terminal: as text for a person or as JSON for a script.
#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace zemctl {

// Fields in the order in which they are shown. A field that is an array of objects is a table.
using Report = nlohmann::ordered_json;

// Writes the report: one "name: value" line a field, tables with aligned columns; or JSON.
void Print(std::FILE* out, const Report& report, bool asJson);

}  // namespace zemctl
