// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "commands.h"
#include "failure.h"
#include "file_names.h"
#include "json_output.h"
#include "loaded_database.h"
#include "query_answers.h"
#include "question.h"

namespace bxdb {
namespace {

/// Lines of standard input, of which no one fills the memory.
class question_lines {
 public:
  static constexpr std::size_t longest = std::size_t{1} << 20;

  /// The next line; false at the end. Of a line that is too long only the beginning is given.
  bool next(std::string& line, bool& too_long) {
    line.clear();
    too_long = false;
    for (int c = std::getchar(); c != EOF; c = std::getchar()) {
      if (c == '\n') return true;
      if (line.size() < longest) {
        line += static_cast<char>(c);
      } else {
        too_long = true;
      }
    }
    if (std::ferror(stdin) != 0) throw failure(std::string("standard input: cannot read: ") + std::strerror(errno));
    return !line.empty();
  }
};

bool is_blank(const std::string& line) { return line.find_first_not_of(" \t\r") == std::string::npos; }

}  // namespace

std::string query_help() {
  return std::string("A question is an object with one of\n") + question_forms +
         "\nAn instance is given by its number, which answers tell, or by its path. Beside that a question may have "
         "\"most\", the longest list to answer with, and any \"id\", which comes back; other keys and keys that are "
         "there twice are errors, and so are more than 64 levels of lists and objects. Answers, a line each in the "
         "order "
         "of the questions, have a list, \"instances\" or \"wires\", in the order of the tree, and its \"count\"; or "
         "an "
         "\"error\" (status 1 in the end).\n"
         "Example: bxdb query device.bxd < questions.jsonl";
}

int run_query(const query_options& options) {
  constexpr const char* questions = "-";
  refuse_same_streams(options.file, questions);
  refuse_printing_into(questions);
  const loaded_database loaded = load_database(options.file, options.input);
  const qelmodb::tree_index index = index_of(loaded);
  query_answers answers(index);
  question_lines lines;
  std::string line;
  bool too_long = false;
  bool sound = true;
  while (lines.next(line, too_long)) {
    if (!too_long && is_blank(line)) continue;
    sound = sound && !too_long;
    const json answer = too_long ? json{{"error", "the line is too long"}} : answers.answer(line);
    fmt::print("{}\n", compact_json(answer));
    // Who asks waits for the answer; main tells of a fault.
    if (std::fflush(stdout) != 0) break;
  }
  return sound && answers.faults() == 0 ? done : no;
}

}  // namespace bxdb
