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

std::string one_too_many(const std::string& word) { return "\"" + word + "\" is one word too many"; }

bool is_among(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

/// What is wrong with words that nothing is made of: the first option among them, or the first of all. Some of them
/// were met before the command.
std::string surplus_text(const CLI::App& command, const std::vector<std::string>& words,
                         const std::vector<std::string>& before) {
  const std::vector<std::string> valid = option_names(command);
  for (const std::string& word : words) {
    if (!word.starts_with('-')) continue;
    const std::string name = word.substr(0, word.find('='));
    // An option that there is was not taken because of its place: before the command, or after "--".
    if (is_among(valid, name)) return is_among(before, word) ? name + " belongs after the command" : one_too_many(word);
    return "there is no option " + name + suggestion(name, valid);
  }
  return one_too_many(words.front());
}

std::vector<std::string> words_before(const CLI::App& command, const std::vector<std::string>& words) {
  return {words.begin(), std::find(words.begin(), words.end(), command.get_name())};
}

std::string error_text(const CLI::App& command, const CLI::ParseError& error) {
  std::string text = error.what();
  if (!is_a<CLI::ArgumentMismatch>(error)) return text;
  const std::string name = text.substr(0, text.find(':'));
  const CLI::Option* option = command.get_option_no_throw(name);
  return name + (option != nullptr && option->count() > 1 ? " is given twice" : " needs a value");
}

failure unknown_command(const CLI::App& tool, const std::string& name) {
  std::vector<std::string> valid = command_names(tool);
  valid.insert(valid.end(), {"help", "version"});
  return failure("there is no command \"" + name + "\"" + suggestion(name, valid) + " (see bxdb --help)");
}

}  // namespace

void require_command(const CLI::App& tool, const std::string& name) {
  const std::vector<std::string> names = command_names(tool);
  if (!is_among(names, name)) throw unknown_command(tool, name);
}

void refuse_more_words(const std::vector<std::string>& words, std::size_t most) {
  if (words.size() <= most) return;
  throw failure(words.front() + ": " + one_too_many(words[most]) + " (see bxdb --help)");
}

failure bad_use(const CLI::App& tool, const CLI::ParseError& error, const std::vector<std::string>& words) {
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
    return failure(surplus_text(tool, surplus, {}) + " (see bxdb --help)");
  }
  const CLI::App& command = *commands.back();
  const std::string text =
      surplus.empty() ? error_text(command, error) : surplus_text(command, surplus, words_before(command, words));
  return failure(command.get_name() + ": " + text + " (see bxdb " + command.get_name() + " --help)");
}

}  // namespace bxdb
