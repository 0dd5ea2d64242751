// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The commands: what each is asked for, and the function that does it and gives the exit status of the
// program. A command throws failure when it cannot do its work.
#pragma once

#include <string>
#include <vector>

#include "device_plan.h"
#include "input_file.h"

namespace bxdb {

struct generate_options {
  std::string out;
  std::string form = "binary";
  std::string names = "kind";
  std::string profile = "device";
  device_options device;
  bool force = false;  ///< replace what is no database and no description of this device
};
int run_generate(const generate_options& options);

struct info_options {
  std::string file;
  input_options input;
  bool as_json = false;
};
int run_info(const info_options& options);

struct check_options {
  std::string file;
  input_options input;
  std::size_t most_faults = 100;
  bool as_json = false;
};
int run_check(const check_options& options);

struct print_options {
  std::string file;
  input_options input;
  bool grid = false;
  bool raw = false;  ///< names as they are, control characters too
};
int run_print(const print_options& options);

struct convert_options {
  std::string in;
  std::string out;
  std::string form;
  bool allow_loss = false;  ///< write a compressed file though it would not give everything back
  input_options input;
};
int run_convert(const convert_options& options);

struct explain_options {
  std::string file;
  std::size_t near_wires = 3;   ///< that may keep templates apart which are shown as near
  std::size_t most_shown = 50;  ///< of templates, near ones, lists and wires each; JSON has all
  input_options input;
  bool as_json = false;
};
int run_explain(const explain_options& options);

struct find_options {
  std::string file;
  std::string name;
  input_options input;
  bool only_instances = false;
  bool only_wires = false;
  bool as_json = false;
};
int run_find(const find_options& options);

struct at_options {
  std::string file;
  bx_long x = 0;
  bx_long y = 0;
  std::string wire;
  bool has_wire = false;
  input_options input;
  bool as_json = false;
};
int run_at(const at_options& options);

struct node_options {
  std::string file;
  bx_long x = 0;
  bx_long y = 0;
  input_options input;
  bool as_json = false;
};
int run_node(const node_options& options);

struct query_options {
  std::string file;
  input_options input;
};
int run_query(const query_options& options);

/// What can be asked, and how the answers look.
std::string query_help();

/// When a grid takes the device's rows and columns from the tiles.
enum class deriving {
  if_needed,  ///< when the tiles leave places free and there is no description
  always,
  never
};

struct grid_options {
  std::string file;
  std::vector<std::string> prefixes;
  bool one_cell = false;  ///< that of row and column
  bx_long row = 0;
  bx_long column = 0;
  std::string device;  ///< the name of a device description, or empty
  deriving derivation = deriving::if_needed;
  std::string png;  ///< names of pictures to write, or empty
  std::string svg;
  input_options input;
  bool extrema = false;
  bool raw = false;  ///< names in the table as they are, control characters too
  bool as_json = false;
};
int run_grid(const grid_options& options);

struct diff_options {
  std::string a;
  std::string b;
  input_options input;
  bool summary = false;
  bool as_json = false;
};
int run_diff(const diff_options& options);

}  // namespace bxdb
