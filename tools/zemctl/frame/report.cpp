#include "tools/zemctl/frame/report.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

namespace zemctl {
namespace {

constexpr const char* kUnread = "not read";

bool IsUnread(const Report& value) {
  return value.is_object() && value.size() == 1 && value.contains(kUnread);
}

std::string TextOf(const Report& value) {
  if (value.is_null()) {
    return "";
  }
  if (IsUnread(value)) {
    return std::string(kUnread) + ": " + value[kUnread].get<std::string>();
  }
  if (value.is_null()) {
    return "";
  }
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_boolean()) {
    return value.get<bool>() ? "yes" : "no";
  }
  return value.dump();
}

bool IsTable(const Report& value) {
  return value.is_array() && !value.empty() &&
         std::all_of(value.begin(), value.end(), [](const Report& row) { return row.is_object(); });
}

std::string Padded(const std::string& text, std::size_t width) {
  return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

// A table is hard to read on a terminal when all of its lines have more characters, or one of them
// has many more.
constexpr std::size_t kLongLine = 120;
constexpr std::size_t kLongestLine = 200;

bool IsWide(const std::vector<std::vector<std::string>>& lines) {
  std::size_t shortest = std::numeric_limits<std::size_t>::max();
  std::size_t longest = 0;
  for (const auto& line : std::span(lines).subspan(1)) {
    const std::size_t size =
        std::accumulate(line.begin(), line.end(), std::size_t{0},
                        [](std::size_t sum, const std::string& text) { return sum + text.size(); });
    shortest = std::min(shortest, size);
    longest = std::max(longest, size);
  }
  return shortest > kLongLine || longest > kLongestLine;
}

void PrintFields(std::FILE* out, const Report& fields, const std::string& indent);

void PrintRecords(std::FILE* out, const Report& rows) {
  for (const Report& row : rows) {
    if (&row != &rows.front()) {
      std::fprintf(out, "\n");
    }
    PrintFields(out, row, "  ");
  }
}

void PrintTable(std::FILE* out, const Report& rows) {
  std::vector<std::vector<std::string>> lines(1);
  for (const auto& [name, value] : rows.front().items()) {
    lines.front().push_back(name);
  }
  for (const Report& row : rows) {
    auto& line = lines.emplace_back();
    for (const auto& [name, value] : row.items()) {
      line.push_back(TextOf(value));
    }
  }
  std::vector<std::size_t> widths;
  for (const auto& line : lines) {
    widths.resize(std::max(widths.size(), line.size()));
    for (std::size_t column = 0; column < line.size(); ++column) {
      widths[column] = std::max(widths[column], line[column].size());
    }
  }
  if (IsWide(lines)) {
    PrintRecords(out, rows);
    return;
  }
  for (const auto& line : lines) {
    std::string text = " ";
    for (std::size_t column = 0; column < line.size(); ++column) {
      text += " " + Padded(line[column], widths[column] + 1);
    }
    text.erase(text.find_last_not_of(' ') + 1);
    std::fprintf(out, "%s\n", text.c_str());
  }
}

// "max kbit/s" is max_kbit_s.
std::string KeyOf(const std::string& name) {
  std::string key = name;
  for (char& character : key) {
    const auto code = static_cast<unsigned char>(character);
    character = std::isalnum(code) != 0 ? static_cast<char>(std::tolower(code)) : '_';
  }
  return key;
}

Report JsonOf(const Report& value) {
  if (value.is_array()) {
    Report items = Report::array();
    for (const Report& item : value) {
      items.push_back(JsonOf(item));
    }
    return items;
  }
  if (!value.is_object()) {
    return value;
  }
  Report members = Report::object();
  Report unread = Report::object();
  for (const auto& [name, member] : value.items()) {
    if (IsUnread(member)) {
      unread[KeyOf(name)] = member[kUnread];
      members[KeyOf(name)] = nullptr;
    } else {
      members[KeyOf(name)] = JsonOf(member);
    }
  }
  if (!unread.empty()) {
    members["not_read"] = unread;
  }
  return members;
}

void PrintFields(std::FILE* out, const Report& fields, const std::string& indent) {
  std::size_t width = 0;
  for (const auto& [name, value] : fields.items()) {
    width = std::max(width, IsTable(value) ? 0 : name.size());
  }
  for (const auto& [name, value] : fields.items()) {
    if (IsTable(value)) {
      std::fprintf(out, "%s%s:\n", indent.c_str(), name.c_str());
      PrintTable(out, value);
    } else if (!value.is_null()) {
      std::fprintf(out, "%s%s %s\n", indent.c_str(), Padded(name + ":", width + 1).c_str(),
                   TextOf(value).c_str());
    }
  }
}

}  // namespace

Report Unread(const std::string& why) { return {{kUnread, why}}; }

void PrintJson(std::FILE* out, const Report& report) {
  std::fprintf(out, "%s\n",
               JsonOf(report).dump(2, ' ', false, Report::error_handler_t::replace).c_str());
}

void PrintText(std::FILE* out, const Report& report) { PrintFields(out, report, ""); }

}  // namespace zemctl
