// zemctl completion bash, zemctl completion powershell
#include <cstdio>
#include <utility>
#include <vector>

#include "tools/zemctl/frame/command_tree.h"
#include "tools/zemctl/frame/console.h"
#include "tools/zemctl/frame/exit_codes.h"
#include "tools/zemctl/frame/program.h"

namespace zemctl {
namespace {

using Words = std::vector<std::string>;
// Words under the name that they are looked up by.
using WordTable = std::vector<std::pair<std::string, Words>>;

struct Tables {
  WordTable names;    // of the commands below a command
  WordTable options;  // of a command; those that take a value end with "="
  // What an option ("nvmem read --unit") or the n-th argument ("reg get 1") may be, where that is
  // one of a few words.
  WordTable values;
};

// The words of "TEXT:{isp,sensor}".
Words ChoicesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t begin = type.find(":{");
  const std::size_t end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos) {
    return {};
  }
  return CLI::detail::split(type.substr(begin + 2, end - begin - 2), ',');
}

void AddOption(const CLI::Option& option, const std::string& command, Words& options,
               Tables& tables) {
  const Words choices = ChoicesOf(option);
  const std::string before = command + " ";
  const std::string behind = option.get_items_expected_max() > 0 ? "=" : "";
  for (const std::string& name : option.get_lnames()) {
    const std::string word = "--" + name;
    options.push_back(word + behind);
    if (!choices.empty()) {
      tables.values.emplace_back(before + word, choices);
    }
  }
}

void Collect(const Program& program, const CLI::App& app, Tables& tables) {
  const std::string command = NameOf(app);
  Words names;
  for (const CLI::App* const below : CommandsBelow(app)) {
    names.push_back(below->get_name());
  }
  if (!names.empty()) {
    tables.names.emplace_back(command, names);
  }
  Words options;
  unsigned place = 0;
  for (const CLI::Option* const option : app.get_options()) {
    if (!option->get_positional()) {
      AddOption(*option, command, options, tables);
      continue;
    }
    ++place;
    if (const Words choices = ChoicesOf(*option); !choices.empty()) {
      tables.values.emplace_back(command + " " + std::to_string(place), choices);
    }
  }
  for (const CLI::Option* const option : program.SharedOptionsOf(app)) {
    AddOption(*option, command, options, tables);
  }
  tables.options.emplace_back(command, options);
  for (const CLI::App* const below : CommandsBelow(app)) {
    Collect(program, *below, tables);
  }
}

Tables TablesOf(const Program& program) {
  Tables tables;
  Collect(program, program.app(), tables);
  return tables;
}

// A function that puts the words of its argument into REPLY.
std::string BashTable(const std::string& function, const WordTable& table) {
  std::string text = function + "() {\n  case $1 in\n";
  for (const auto& [key, words] : table) {
    text += "    '" + key + "') REPLY='" + CLI::detail::join(words, " ") + "' ;;\n";
  }
  return text + "    *) REPLY= ;;\n  esac\n}\n";
}

constexpr const char* kBashFunction = R"(_zemctl() {
  local current=${COMP_WORDS[COMP_CWORD]} command= option= place=1 index word REPLY
  for ((index = 1; index < COMP_CWORD; ++index)); do
    word=${COMP_WORDS[index]}
    if [[ -n $option ]]; then
      option=
    elif [[ $word == -* ]]; then
      _zemctl_options "$command"
      [[ " $REPLY " == *" $word= "* ]] && option=$word
      _zemctl_options ''
      [[ " $REPLY " == *" $word= "* ]] && option=$word
    else
      _zemctl_names "$command"
      if [[ " $REPLY " == *" $word "* ]]; then
        command+=${command:+ }$word
      else
        ((++place))
      fi
    fi
  done
  if [[ -n $option ]]; then
    _zemctl_values "$command $option"
  elif [[ $current == -* ]]; then
    _zemctl_options "$command"
    REPLY=${REPLY//=/}
  else
    _zemctl_names "$command"
    [[ -n $REPLY ]] || _zemctl_values "$command $place"
  fi
  COMPREPLY=($(compgen -W "$REPLY" -- "$current"))
}
complete -o default -F _zemctl zemctl zemctl.exe
)";

std::string PowerShellTable(const std::string& variable, const WordTable& table) {
  std::string text = "  $" + variable + " = @{\n";
  for (const auto& [key, words] : table) {
    text += "    '" + key + "' = @('" + CLI::detail::join(words, "', '") + "')\n";
  }
  return text + "  }\n";
}

constexpr const char* kPowerShellBody = R"(  $command = ''
  $option = ''
  $place = 1
  foreach ($element in @($ast.CommandElements | Select-Object -Skip 1)) {
    if ($element.Extent.EndOffset -ge $cursor) { break }
    $each = $element.ToString()
    if ($option) {
      $option = ''
    } elseif ($each.StartsWith('-')) {
      if (($options[$command] + $options['']) -ccontains "$each=") { $option = $each }
    } elseif ($names[$command] -ccontains $each) {
      $command = "$command $each".Trim()
    } else {
      ++$place
    }
  }
  if ($option) {
    $candidates = $values["$command $option"]
  } elseif ($word.StartsWith('-')) {
    $candidates = $options[$command] | ForEach-Object { $_.TrimEnd('=') }
  } elseif ($names.ContainsKey($command)) {
    $candidates = $names[$command]
  } else {
    $candidates = $values["$command $place"]
  }
  $candidates | Where-Object { $_ -like "$word*" } | ForEach-Object {
    [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
  }
}
)";

std::string BashCompletion(const Program& program) {
  const Tables tables = TablesOf(program);
  return "# Completes zemctl's command lines. In ~/.bashrc: source <(zemctl completion bash)\n" +
         BashTable("_zemctl_names", tables.names) + BashTable("_zemctl_options", tables.options) +
         BashTable("_zemctl_values", tables.values) + kBashFunction;
}

std::string PowerShellCompletion(const Program& program) {
  const Tables tables = TablesOf(program);
  return "# Completes zemctl's command lines. In $PROFILE:\n"
         "#   zemctl completion powershell | Out-String | Invoke-Expression\n"
         "Register-ArgumentCompleter -Native -CommandName zemctl, zemctl.exe -ScriptBlock {\n"
         "  param($word, $ast, $cursor)\n" +
         PowerShellTable("names", tables.names) + PowerShellTable("options", tables.options) +
         PowerShellTable("values", tables.values) + kPowerShellBody;
}

// The script as it is: a shell takes no carriage return at the end of a line.
void WriteScript(const std::string& script) {
  KeepLineEnds(stdout);
  std::fputs(script.c_str(), stdout);
}

}  // namespace

void AddCompletionCommands(Program& program) {
  CLI::App* const completion =
      program.app()
          .add_subcommand("completion", "Print a script that completes command lines")
          ->require_subcommand(1);
  completion->fallthrough();
  const auto add = [&](const char* name, const char* description,
                       std::string (*scriptFor)(const Program&)) {
    program.AddCommand(
        completion, name, description,
        [&program, scriptFor](const Options& options, Report& report) {
          const std::string script = scriptFor(program);
          if (options.json) {
            report["script"] = script;
          } else {
            WriteScript(script);
          }
          return kDone;
        },
        kWithoutCamera);
  };
  add("bash", "For bash: source <(zemctl completion bash)", BashCompletion);
  add("powershell", "For PowerShell: zemctl completion powershell | Out-String | Invoke-Expression",
      PowerShellCompletion);
}

}  // namespace zemctl
