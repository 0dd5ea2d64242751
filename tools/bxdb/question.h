// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A line of JSON as a question to a tree.
#pragma once

#include <stdexcept>
#include <string>

#include "json_output.h"

namespace bxdb {

/// Ends what is done for a question. The text says what is wrong with it.
class no_question : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What a question can be, one line each with an example.
extern const char* const question_forms;

/// Levels of lists and objects that a question may have; what echoes an "id" recurses.
inline constexpr int most_question_levels = 64;

/// Parses the line. The id of an object is known even when the question is none: it is put into answered first. Throws
/// no_question for what is no JSON, is nested too deeply, or has a key twice in one object.
json parse_question(const std::string& line, json& answered);

/// The key that tells what is asked, of which there is exactly one. Throws no_question.
std::string kind_of(const json& question);

/// A text without NUL, which no name and no path holds. Throws no_question, which names the key.
std::string text_of(const json& question, const char* key);

}  // namespace bxdb
