// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bad_use.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "option_values.h"

namespace bxdb {
namespace {

template <class Kind>
bool is_a(const CLI::ParseError& error) {
  return dynamic_cast<const Kind*>(&error) != nullptr;
}

std::vector<std::string> command_names(const CLI::App& tool) {
  std::vector<std::string> names;
  for (const CLI::App* command : tool.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

std::vector<std::string> option_names(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options({})) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

/// What is wrong with words that nothing is made of: the first option among them, or the first of all.
std::string surplus_text(const CLI::App& command, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (!word.starts_with('-')) continue;
    const std::string name = word.substr(0, word.find('='));
    return "there is no option " + name + suggestion(name, option_names(command));
  }
  return "\"" + words.front() + "\" is one word too many";
}

std::string error_text(const CLI::ParseError& error) {
  const std::string text = error.what();
  return is_a<CLI::ArgumentMismatch>(error) ? text.substr(0, text.find(':')) + " needs a value" : text;
}

failure unknown_command(const CLI::App& tool, const std::string& name) {
  return failure("there is no command \"" + name + "\"" + suggestion(name, command_names(tool)) + " (see bxdb --help)");
}

}  // namespace

void require_command(const CLI::App& tool, const std::string& name) {
  const std::vector<std::string> names = command_names(tool);
  if (std::find(names.begin(), names.end(), name) == names.end()) throw unknown_command(tool, name);
}

failure bad_use(const CLI::App& tool, const CLI::ParseError& error) {
  const std::vector<CLI::App*> commands = tool.get_subcommands();
  std::vector<std::string> surplus;
  // What is missing may be missing because of a word that was misspelt.
  if (is_a<CLI::ExtrasError>(error) || is_a<CLI::RequiredError>(error)) {
    surplus = tool.remaining();
    if (!commands.empty()) std::ranges::copy(commands.back()->remaining(), std::back_inserter(surplus));
  }
  if (commands.empty()) {
    if (surplus.empty()) {
      return failure(is_a<CLI::RequiredError>(error) ? "a command is needed (see bxdb --help)" : error.what());
    }
    if (!surplus.front().starts_with('-')) return unknown_command(tool, surplus.front());
    return failure(surplus_text(tool, surplus) + " (see bxdb --help)");
  }
  const CLI::App& command = *commands.back();
  const std::string text = surplus.empty() ? error_text(error) : surplus_text(command, surplus);
  return failure(command.get_name() + ": " + text + " (see bxdb " + command.get_name() + " --help)");
}

}  // namespace bxdb
