// What CLI11 does not do by itself for a tree of commands: help with the options that every command
// line may have, numbers as people write them, words for a command that is none.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace zemctl {

// Which of the options of the whole program apply to a command.
using SharedOptions = std::function<std::vector<const CLI::Option*>(const CLI::App& command)>;

// Help that shows a command's own options and the shared ones that apply to it.
class CommandHelp : public CLI::Formatter {
 public:
  explicit CommandHelp(SharedOptions sharedOptions) : sharedOptions_(std::move(sharedOptions)) {}

  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override;
  std::string make_option_opts(const CLI::Option* option) const override;

 private:
  SharedOptions sharedOptions_;
};

// "010" is ten and "-08" minus eight; hexadecimal numbers stay as they are.
std::string WithoutLeadingZeros(const std::string& number);

// Lets every option of the tree that takes numbers take them so.
void ReadNumbersAsDecimal(CLI::App& app);

// "rom read": the names from below the program's on.
std::string NameOf(const CLI::App& command);

// The commands directly below one.
std::vector<const CLI::App*> CommandsBelow(const CLI::App& app);

// The innermost command that was given.
const CLI::App& GivenCommand(const CLI::App& program);

// What is wrong where a command is missing below `group`, or the first word is none of its
// commands.
std::string WordsForNoCommand(const CLI::App& group, const std::vector<std::string>& words);

}  // namespace zemctl
