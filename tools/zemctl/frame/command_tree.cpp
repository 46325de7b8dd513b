#include "tools/zemctl/frame/command_tree.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <numeric>

namespace zemctl {
namespace {

bool TakesNumbers(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.starts_with("UINT") || type.starts_with("INT");
}

// How many letters make the one word out of the other; letters in another order count as one.
std::size_t Distance(const std::string& left, const std::string& right) {
  if (left != right && left.size() == right.size() &&
      std::is_permutation(left.begin(), left.end(), right.begin())) {
    return 1;
  }
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t line = 1; line <= left.size(); ++line) {
    std::size_t diagonal = row[0];
    row[0] = line;
    for (std::size_t column = 1; column <= right.size(); ++column) {
      const std::size_t changed = diagonal + (left[line - 1] == right[column - 1] ? 0 : 1);
      diagonal = row[column];
      row[column] = std::min({row[column] + 1, row[column - 1] + 1, changed});
    }
  }
  return row.back();
}

void Cut(std::string& text, const std::string& part) {
  const std::size_t at = text.find(part);
  if (at != std::string::npos) {
    text.erase(at, part.size());
  }
}

// The command whose name comes next to `word`; none when they have little in common.
const CLI::App* Nearest(const CLI::App& group, const std::string& word) {
  const std::size_t most = std::max<std::size_t>(1, word.size() / 3);
  const CLI::App* nearest = nullptr;
  std::size_t least = most + 1;
  for (const CLI::App* const command : CommandsBelow(group)) {
    const std::size_t distance =
        command->get_name().starts_with(word) ? 1 : Distance(word, command->get_name());
    if (distance < least) {
      least = distance;
      nearest = command;
    }
  }
  return nearest;
}

}  // namespace

std::string CommandHelp::make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const {
  std::string text;
  std::vector<std::string> order;
  std::map<std::string, std::vector<const CLI::Option*>> groups;
  for (const CLI::Option* const option : sharedOptions_(*app)) {
    if (!groups.contains(option->get_group())) {
      order.push_back(option->get_group());
    }
    groups[option->get_group()].push_back(option);
  }
  for (const std::string& group : order) {
    text +=
        make_group(group == "Options" ? "Options of every command" : group, false, groups[group]);
  }
  return text + CLI::Formatter::make_subcommands(app, mode);
}

std::string CommandHelp::make_option_opts(const CLI::Option* option) const {
  std::string text = CLI::Formatter::make_option_opts(option);
  // What must be given has no default, though the variable behind it has a value; nor has a list.
  const std::string value = "=" + option->get_default_str();
  if (option->get_required() || value == "=[]") {
    Cut(text, value);
  }
  // "UINT:INT in [1 - 9]" says the kind of number twice.
  Cut(text, text.find(":INT in ") != std::string::npos ? ":INT" : ":UINT");
  return text;
}

std::string WithoutLeadingZeros(const std::string& number) {
  const std::size_t sign = number.starts_with('-') || number.starts_with('+') ? 1 : 0;
  const std::string digits = number.substr(sign);
  const bool isDecimal = !digits.empty() && std::all_of(digits.begin(), digits.end(), [](char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
  });
  if (!isDecimal) {
    return number;
  }
  const std::size_t first = std::min(digits.find_first_not_of('0'), digits.size() - 1);
  return number.substr(0, sign) + digits.substr(first);
}

void ReadNumbersAsDecimal(CLI::App& app) {
  for (CLI::Option* const option : app.get_options()) {
    if (!TakesNumbers(*option)) {
      continue;
    }
    option->transform(CLI::Validator(
        [](std::string& number) {
          number = WithoutLeadingZeros(number);
          return std::string();
        },
        "", ""));
    // CLI11 shows a number of one byte as a character.
    const std::string shown = option->get_default_str();
    if (shown.size() == 1 && std::isdigit(static_cast<unsigned char>(shown[0])) == 0) {
      option->default_str(std::to_string(static_cast<unsigned char>(shown[0])));
    }
  }
  for (CLI::App* const command : app.get_subcommands([](CLI::App*) { return true; })) {
    ReadNumbersAsDecimal(*command);
  }
}

std::string NameOf(const CLI::App& command) {
  if (command.get_parent() == nullptr) {
    return "";
  }
  const std::string before = NameOf(*command.get_parent());
  return before + (before.empty() ? "" : " ") + command.get_name();
}

std::vector<const CLI::App*> CommandsBelow(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

const CLI::App& GivenCommand(const CLI::App& program) {
  const CLI::App* app = &program;
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().back();
  }
  return *app;
}

std::string WordsForNoCommand(const CLI::App& group, const std::vector<std::string>& words) {
  const std::string name = NameOf(group);
  const std::string before = name + (name.empty() ? "" : " ");
  const auto word = std::find_if(words.begin(), words.end(),
                                 [](const std::string& each) { return !each.starts_with('-'); });
  if (word != words.end()) {
    const CLI::App* const nearest = Nearest(group, *word);
    return "there is no command \"" + before + *word + "\"" +
           (nearest != nullptr ? " (did you mean \"" + NameOf(*nearest) + "\"?)" : "");
  }
  if (name.empty()) {
    return "no command is given";
  }
  std::string known;
  for (const CLI::App* const command : CommandsBelow(group)) {
    known += (known.empty() ? "" : ", ") + command->get_name();
  }
  return "\"" + name + "\" is not whole; behind it comes one of " + known;
}

}  // namespace zemctl
