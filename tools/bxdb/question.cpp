// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "question.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>
#include <vector>

namespace bxdb {

const char* const question_forms =
    "  {\"name\": \"BASIC_ASS\"}            the instances of a name\n"
    "  {\"at\": [120, -7]}                the instances that cover a point\n"
    "  {\"meeting\": [0, 0, 120, 64]}     the instances that meet a rectangle, given by two opposite corners\n"
    "  {\"node\": [120, 64]}              the wires at a node\n"
    "  {\"wire\": \"N1BEG0\", \"in\": 17}     the wires of a name in an instance\n"
    "  {\"instance\": 17}                 an instance, its neighbours in the walk, and what it holds";

namespace {

constexpr const char* kinds[] = {"name", "at", "meeting", "node", "wire", "instance"};
constexpr const char* extras[] = {"in", "most", "id"};
std::string valid_keys() {
  return fmt::format("valid are \"{}\", and beside these \"{}\"", fmt::join(kinds, "\", \""),
                     fmt::join(extras, "\", \""));
}

template <class List>
bool is_one_of(const List& list, const std::string& key) {
  return std::find(std::begin(list), std::end(list), key) != std::end(list);
}

/// Looks at a text while it is parsed. A parsed object shows no more which keys it had twice.
class question_watcher {
 public:
  bool operator()(int depth, json::parse_event_t event, const json& value) {
    if (event == json::parse_event_t::key) {
      note_key(static_cast<std::size_t>(depth), value.get<std::string>());
    } else if (event == json::parse_event_t::object_start || event == json::parse_event_t::array_start) {
      if (depth >= most_question_levels) {
        throw no_question(fmt::format("lists and objects are nested deeper than {} levels", most_question_levels));
      }
      keys_.resize(static_cast<std::size_t>(depth) + 1);
      keys_.emplace_back();
    }
    return true;
  }

  /// Empty, or what is wrong with the keys.
  const std::string& fault() const noexcept { return fault_; }

 private:
  void note_key(std::size_t depth, const std::string& key) {
    if (keys_[depth].insert(key).second || !fault_.empty()) return;
    fault_ = fmt::format("{} is there twice; {}", compact_json(key),
                         depth == 1 ? valid_keys() : "an object has each key once");
  }

  std::vector<std::set<std::string>> keys_;  // of the objects in hand, from the outermost inwards, from 1
  std::string fault_;
};

json parsed(const std::string& line, question_watcher& watcher) {
  // The parser takes a NUL for the end of the text.
  if (const std::size_t nul = line.find('\0'); nul != std::string::npos) {
    throw no_question(fmt::format("no JSON: a NUL byte; see its character {}", nul + 1));
  }
  try {
    return json::parse(line, std::ref(watcher));
  } catch (const json::parse_error& e) {
    throw no_question(fmt::format("no JSON; see its character {}", e.byte));
  } catch (const json::out_of_range&) {
    throw no_question("a number is too large");
  }
}

}  // namespace

json parse_question(const std::string& line, json& answered) {
  question_watcher watcher;
  json question = parsed(line, watcher);
  if (question.is_object() && question.contains("id")) answered["id"] = question["id"];
  if (!watcher.fault().empty()) throw no_question(watcher.fault());
  return question;
}

std::string kind_of(const json& question) {
  if (!question.is_object()) throw no_question("a question is an object");
  std::string kind;
  for (const auto& [key, value] : question.items()) {
    if (is_one_of(extras, key)) continue;
    if (!is_one_of(kinds, key))
      throw no_question(fmt::format("no question has a {}; {}", compact_json(key), valid_keys()));
    if (!kind.empty()) throw no_question(fmt::format("\"{}\" and \"{}\" are two questions", kind, key));
    kind = key;
  }
  if (kind.empty()) throw no_question(fmt::format("nothing is asked; {}", valid_keys()));
  if (question.contains("in") != (kind == "wire")) throw no_question("\"wire\" and \"in\" go together");
  return kind;
}

std::string text_of(const json& question, const char* key) {
  const json& value = question.at(key);
  if (!value.is_string()) throw no_question(fmt::format("\"{}\" takes a text", key));
  auto text = value.get<std::string>();
  if (text.find('\0') != std::string::npos) {
    throw no_question(fmt::format("\"{}\" holds the character \\u0000, which no name does", key));
  }
  return text;
}

}  // namespace bxdb
