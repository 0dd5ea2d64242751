// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"

#include <algorithm>

#include "program.h"

namespace test {

std::size_t lines_of(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string ToolTest::made(const std::string& name, const std::string& bytes) const {
  write_file(file(name), bytes);
  return file(name);
}

outcome ToolTest::run(const words& arguments) const { return run(arguments, no_input); }

outcome ToolTest::run(const words& arguments, const std::string& input_file) const {
  words line{BXDB_PROGRAM};
  line.insert(line.end(), arguments.begin(), arguments.end());
  outcome result;
  if (!start_program(line, {input_file, file(".out"), file(".err")}, result.status)) {
    ADD_FAILURE() << "cannot start " << BXDB_PROGRAM;
    return result;
  }
  result.out = read_file(file(".out"));
  result.err = read_file(file(".err"));
  return result;
}

outcome ToolTest::expect(int status, const words& arguments) const {
  outcome result = run(arguments);
  std::string line = "bxdb";
  for (const std::string& word : arguments) line += " " + word;
  EXPECT_EQ(result.status, status) << line << "\n" << result.out.substr(0, 2000) << result.err.substr(0, 2000);
  return result;
}

nlohmann::json ToolTest::json_of(int status, words arguments) const {
  arguments.emplace_back("--json");
  const outcome result = expect(status, arguments);
  nlohmann::json value = nlohmann::json::parse(result.out, nullptr, false);
  EXPECT_FALSE(value.is_discarded()) << result.out.substr(0, 2000);
  return value;
}

std::string small_text() {
  return "BX_DB:A\n"
         "BX_INSTANCE: \"chip\" (0, -20) (100, 100)\n"
         "1\n"
         "BX_WIRE:  \"CLK\" (0, 0)\n"
         "2\n"
         "BX_INSTANCE: \"LEFT\" (0, 0) (40, 40)\n"
         "3\n"
         "BX_WIRE:  \"A$1\" (1, 2)\n"
         "BX_WIRE:  \"A$2\" (3, 4)\n"
         "BX_WIRE:  \"CLK\" (5, 6)\n"
         "1\n"
         "BX_INSTANCE: \"BASIC_ASS\" (0, 0) (20, 20)\n"
         "2\n"
         "BX_WIRE:  \"J0\" (7, 8)\n"
         "BX_WIRE:  \"J1\" (9, 10)\n"
         "0\n"
         "BX_INSTANCE: \"RIGHT\" (50, -20) (100, 30)\n"
         "2\n"
         "BX_WIRE:  \"J0\" (60, -5)\n"
         "BX_WIRE:  \"J0\" (61, -5)\n"
         "0\n";
}

std::string replaced(std::string text, const std::string& old, const std::string& now) {
  const std::size_t at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  EXPECT_EQ(text.find(old, at + 1), std::string::npos) << old << " occurs twice";
  return at == std::string::npos ? text : text.replace(at, old.size(), now);
}

}  // namespace test
