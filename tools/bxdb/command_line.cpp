// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "bad_use.h"
#include "commands.h"
#include "failure.h"
#include "option_values.h"
#include "qelmoext.h"

namespace bxdb {
namespace {

/// An option or a word whose value is a whole number in a range.
template <class Number>
CLI::Option* add_number(CLI::App& command, const char* name, Number& number, const char* help,
                        Number least = std::numeric_limits<Number>::min(),
                        Number most = std::numeric_limits<Number>::max()) {
  const auto take = [least, most](std::string& text) {
    return take_whole_number(text, static_cast<std::int64_t>(least), static_cast<std::uint64_t>(most));
  };
  return command.add_option(name, number, help)->transform(CLI::Validator(take, ""));
}

constexpr const char* the_file = "The file; - is standard input";

void add_limit(CLI::App& command, const char* name, std::int64_t& limit, const char* help) {
  add_number(command, name, limit, help, std::int64_t{0})->type_name("COUNT");
}

template <class Number>
void add_size(CLI::App& command, const char* name, Number& size, const char* help) {
  command.add_option(name, size, help)->transform(CLI::Validator(take_size, ""))->type_name("SIZE");
}

void add_input_options(CLI::App& command, input_options& options) {
  options.max_size = default_max_size();
  command.add_flag("--grid-file", options.grid_file, "Read a grid file, whatever its name (\".bxg\" is one anyway)");
  add_size(command, "--max-size", options.max_size,
           "Largest file, unpacked, that is taken into memory, such as 512M or 1.5G, in powers of 1024; by default a "
           "quarter of this machine's memory, at most 16 GiB");
  qelmodb::limits& within = options.within;
  within.memory = default_max_memory();
  add_size(command, "--max-memory", within.memory,
           "Most memory that the tree of a file may take, which for a small compressed one can be terabytes; by "
           "default half of this machine's, at most 32 GiB");
  add_limit(command, "--max-instances", within.instances, "Most instances that a file may hold");
  add_limit(command, "--max-wires", within.wires, "Most wires that a file may hold");
  add_limit(command, "--max-names", within.names, "Most entries that a file's name table may have");
  add_limit(command, "--max-depth", within.depth, "Most levels below the root that a file may have");
}

void add_cut_option(CLI::App& command, input_options& options) {
  command.add_flag("--cut", options.cut, "Cut wire names at their first \"$\" while loading, as the library does");
}

CLI::Option* add_choice(CLI::App& command, const char* name, std::string& choice, const char* help,
                        const std::vector<std::string>& choices) {
  const auto take = [choices](std::string& text) { return take_choice(text, choices); };
  const std::string shown = "{" + CLI::detail::join(choices, ",") + "}";
  return command.add_option(name, choice, help)->check(CLI::Validator(take, shown))->type_name("");
}

/// The least sizes of the profiles, and the greatest.
struct size_range {
  std::int64_t least_of_device;
  std::int64_t least_of_plain;
  std::int64_t most;
};

constexpr size_range columns_and_rows{least_device_size, 1, std::numeric_limits<bx_long>::max()};
constexpr size_range wires{least_device_wires, 0, most_device_wires};

void add_device_size(CLI::App& command, const char* name, std::int64_t& size, const std::string& profile,
                     const size_range& range, const char* help) {
  const auto take = [&profile, range](std::string& text) {
    const std::int64_t least = profile == "plain" ? range.least_of_plain : range.least_of_device;
    return take_whole_number(text, least, static_cast<std::uint64_t>(range.most));
  };
  command.add_option(name, size, help)->transform(CLI::Validator(take, ""))->capture_default_str();
}

void add_device_options(CLI::App& command, generate_options& options) {
  device_options& device = options.device;
  // The ranges of the others depend on it, and options are read in the order in which they are added.
  add_choice(command, "--profile", options.profile,
             "A device with I/O ring, columns of several kinds and switch matrices; or one level of columns x rows "
             "equal tiles",
             {"device", "plain"})
      ->capture_default_str();
  add_device_size(command, "--columns", device.columns, options.profile, columns_and_rows,
                  "Columns of tiles, I/O ring included");
  add_device_size(command, "--rows", device.rows, options.profile, columns_and_rows,
                  "Rows of tiles, I/O ring included");
  add_device_size(command, "--wires", device.wires, options.profile, wires, "Wires of the largest switch matrix");
  add_number(command, "--seed", device.seed, "Another number gives another device")->capture_default_str();
  add_choice(command, "--names", options.names, "Name tiles after their kind, or each by its own name",
             {"kind", "unique"})
      ->capture_default_str();
}

void add_generate_command(CLI::App& tool, int& status) {
  CLI::App& command =
      *tool.add_subcommand("generate", "Writes a synthetic device; the same options give the same tree");
  const auto options = std::make_shared<generate_options>();
  command
      .add_option(
          "OUT", options->out,
          "The file to write; packed when its name ends in .gz or .zst, a grid file when in .bxg; - is standard "
          "output")
      ->required();
  add_choice(command, "--form", options->form, "The form of the file", {"binary", "text", "compressed"})
      ->capture_default_str();
  add_device_options(command, *options);
  command.add_flag("--force", options->force,
                   "Replace OUT even though it holds something else, and the description even though it is of another "
                   "device or none");
  command.footer(
      "A description of the device's rows and columns for bxdb grid, whose name ends in .npd, is written beside OUT, "
      "or "
      "beside the file that OUT leads to, when that is a regular file.\n"
      "A device that is beyond this machine's memory is refused before anything is made.\n"
      "Example: bxdb generate device.bxd --columns 40 --rows 30 --wires 80 --form text");
  command.callback([options, &status] { status = run_generate(*options); });
}

void add_info_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("info", "Shows form, counts, bounding box, sizes and times of a file");
  const auto options = std::make_shared<info_options>();
  command.add_option("FILE", options->file, the_file)->required();
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer("Example: bxdb info device.bxd.gz");
  command.callback([options, &status] { status = run_info(*options); });
}

void add_check_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("check", "Validates a file without loading it; status 1 on faults");
  const auto options = std::make_shared<check_options>();
  command.add_option("FILE", options->file, the_file)->required();
  command.add_flag("--json", options->as_json, "Print JSON");
  add_number(command, "--most", options->most_faults, "How many errors, warnings and notes, each, to describe",
             std::size_t{0}, std::size_t{1000000})
      ->capture_default_str();
  add_input_options(command, options->input);
  command.footer(
      "Notes do not count as faults; packed data that is damaged or cut off does.\nExample: bxdb check device.bxd");
  command.callback([options, &status] { status = run_check(*options); });
}

void add_print_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("print", "Prints the tree");
  const auto options = std::make_shared<print_options>();
  command.add_option("FILE", options->file, the_file)->required();
  command.add_flag("--grid", options->grid, "Print instances only, without wires, as is done for a grid file anyway");
  command.add_flag("--raw", options->raw, "Print control characters of names as they are, and not as \\xNN");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer("Example: bxdb print --grid device.bxd | head");
  command.callback([options, &status] { status = run_print(*options); });
}

void add_convert_command(CLI::App& tool, int& status) {
  CLI::App& command =
      *tool.add_subcommand("convert", "Writes a file in another form, read back before it takes its place");
  const auto options = std::make_shared<convert_options>();
  command.add_option("IN", options->in, "The file to convert; a grid file stays a grid file; - is standard input")
      ->required();
  command
      .add_option(
          "OUT", options->out,
          "The file to write, which may be IN itself; packed when its name ends in .gz or .zst; - is standard output")
      ->required();
  add_choice(command, "--form", options->form, "The form of OUT; grid files are not compressed",
             {"text", "binary", "compressed"})
      ->required();
  command.add_flag("--allow-loss", options->allow_loss,
                   "Write a compressed file even though it does not give back all that IN holds; what it loses is "
                   "listed in any case");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer(
      "What the form cannot hold is listed, and nothing is written (status 1).\n"
      "The description of the device beside IN, if there is one, is written beside OUT, too, unless another file "
      "is there. Beside a link means beside the file that it leads to, too.\n"
      "Example: bxdb convert device.bxd.gz device-binary.bxd --form binary\n"
      "Example: bxdb convert device.bxd device-small.bxd --form compressed\n"
      "Example: bxdb convert device.bxd - --form text | grep -c BX_WIRE");
  command.callback([options, &status] {
    if (options->allow_loss && options->form != "compressed") {
      throw CLI::ValidationError("--allow-loss", "only the compressed form loses anything");
    }
    status = run_convert(*options);
  });
}

void add_explain_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("explain", "Shows why a database compresses as it does");
  const auto options = std::make_shared<explain_options>();
  command
      .add_option("FILE", options->file,
                  "The file; a compressed one is shown with the templates that it holds, any other is compressed in "
                  "memory first; - is standard input")
      ->required();
  add_number(command, "--near", options->near_wires,
             "Show templates that share all but at most so many wires with another of their name", std::size_t{0},
             std::size_t{65535})
      ->type_name("WIRES")
      ->capture_default_str();
  add_number(command, "--most", options->most_shown, "How many entries of each table to print; JSON has all")
      ->capture_default_str();
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer(
      "Status 1 when the database cannot be compressed.\n"
      "Example: bxdb explain device.bxd --near 5");
  command.callback([options, &status] { status = run_explain(*options); });
}

void add_find_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("find", "Lists instances and wires of a name; status 1 when there are none");
  const auto options = std::make_shared<find_options>();
  command.add_option("FILE", options->file, the_file)->required();
  command.add_option("NAME", options->name, "The name, exactly; put -- before one that begins with \"-\"")->required();
  CLI::Option* instances = command.add_flag("--instances", options->only_instances, "List instances only");
  command.add_flag("--wires", options->only_wires, "List wires only")->excludes(instances);
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer("Example: bxdb find device.bxd BASIC_ASS --instances");
  command.callback([options, &status] { status = run_find(*options); });
}

void add_at_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("at", "Lists the instances that cover a point, outermost first");
  const auto options = std::make_shared<at_options>();
  command.add_option("FILE", options->file, the_file)->required();
  add_number(command, "X", options->x, "The point's coordinates")->required();
  add_number(command, "Y", options->y, "")->required();
  CLI::Option* wire = command.add_option("--wire", options->wire,
                                         "Show the wire of this name that a lookup at the point gives: that of the "
                                         "first instance, from the root downwards, that covers it and has one");
  wire->type_name("NAME");
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer("Status 1 when there is nothing.\nExample: bxdb at device.bxd 120 -7 --wire N1BEG0");
  command.callback([options, wire, &status] {
    options->has_wire = wire->count() != 0;
    status = run_at(*options);
  });
}

void add_node_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("node", "Lists the wires at a node, with their instances: what meets there");
  const auto options = std::make_shared<node_options>();
  command.add_option("FILE", options->file, the_file)->required();
  add_number(command, "X", options->x, "The node's column and row")->required();
  add_number(command, "Y", options->y, "")->required();
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer(
      "After each wire comes the rectangle of its instance. Status 1 when there is none.\n"
      "Example: bxdb node device.bxd 120 64");
  command.callback([options, &status] { status = run_node(*options); });
}

void add_query_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand(
      "query", "Loads a file once and answers questions, a line of JSON each, from standard input until it ends");
  const auto options = std::make_shared<query_options>();
  command.add_option("FILE", options->file, "The file, which cannot be standard input")->required();
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer(query_help());
  command.callback([options, &status] { status = run_query(*options); });
}

void add_grid_device_options(CLI::App& command, grid_options& options) {
  CLI::Option* device =
      command.add_option("--device", options.device,
                         "The description of the device, which tells the row and column of each tile when the tiles "
                         "do not fill all rows alike; by default FILE with \".npd\" in place of its endings, when "
                         "that is beside it or the file that it leads to, or else the rows and columns at which tiles "
                         "begin; - is standard "
                         "input");
  device->type_name("NPDFILE");
  const auto derive = [&options](deriving when) { return [&options, when] { options.derivation = when; }; };
  CLI::Option* always = command.add_flag_callback(
      "--derive-device", derive(deriving::always),
      "Take the device's rows and columns from where the tiles begin, and look at no description");
  CLI::Option* never = command.add_flag_callback("--no-derive", derive(deriving::never),
                                                 "Take them from a description only, and give up without one");
  always->excludes(device);
  always->excludes(never);
}

void add_picture_options(CLI::App& command, grid_options& options) {
  const char* packed = "; packed when its name ends in .gz or .zst; - is standard output";
  command.add_option("--png", options.png, "Draw the tiles to scale into this PNG file; - is standard output")
      ->type_name("OUT");
  command.add_option("--svg", options.svg, std::string("Draw the tiles to scale into this SVG file") + packed)
      ->type_name("OUT");
}

void add_grid_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("grid", "Shows or draws the tiles as a table of rows and columns");
  const auto options = std::make_shared<grid_options>();
  command.add_option("FILE", options->file, the_file)->required();
  command.add_option("PREFIX", options->prefixes,
                     "Tiles are the instances with wires and without children (in grid files: those without children) "
                     "whose names begin with one of these; all of them when none is given");
  CLI::Option* row = add_number(command, "--row", options->row, "Show one cell only; row 0 is the topmost");
  CLI::Option* column = add_number(command, "--col", options->column, "The column of that cell; 0 is the leftmost");
  row->needs(column)->type_name("R");
  column->needs(row)->type_name("C");
  CLI::Option* extrema =
      command.add_flag("--extrema", options->extrema, "Print the rectangle of each tile after its name");
  command.add_flag("--raw", options->raw, "Print control characters of names as they are, and not as \\xNN");
  CLI::Option* as_json = command.add_flag("--json", options->as_json, "Print JSON; empty cells are left out");
  extrema->excludes(row)->excludes(as_json);
  add_grid_device_options(command, *options);
  add_picture_options(command, *options);
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer(
      "With a picture nothing is printed unless --extrema, --json or --row and --col ask for it, and then it cannot go "
      "to standard output.\n"
      "Status 1 when the cell is empty, 2 when the tiles give no grid.\n"
      "Example: bxdb grid device.bxd BASIC_ASS --row 3 --col 5\n"
      "Example: bxdb grid device.bxd.gz --png device.png");
  command.callback([options, row, &status] {
    options->one_cell = row->count() != 0;
    status = run_grid(*options);
  });
}

void add_diff_command(CLI::App& tool, int& status) {
  CLI::App& command =
      *tool.add_subcommand("diff", "Compares the trees of two files of any form; status 1 when they differ");
  const auto options = std::make_shared<diff_options>();
  command.add_option("A", options->a, "The first file; - is standard input")->required();
  command.add_option("B", options->b, "The second file, likewise")->required();
  command.add_flag("--summary", options->summary, "Print the counts only");
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer(
      "Children and wires are matched by name, first those in the same place, then in their order.\n"
      "Coordinates are absolute: when an instance moves, so does all that it holds.\n"
      "Example: bxdb diff old.bxd new.bxd.zst --summary");
  command.callback([options, &status] { status = run_diff(*options); });
}

/// The words behind the program's name, with options for the commands "help", "help COMMAND" and "version".
std::vector<std::string> arguments_of(const CLI::App& tool, const std::vector<std::string>& words) {
  std::vector<std::string> arguments(words.empty() ? words.end() : words.begin() + 1, words.end());
  if (arguments.empty()) return arguments;
  if (arguments[0] == "version") {
    refuse_more_words(arguments, 1);
    return {"--version"};
  }
  if (arguments[0] != "help") return arguments;
  refuse_more_words(arguments, 2);
  const std::string about = arguments.size() == 1 ? "help" : arguments[1];
  // They are described with the tool, which is what they are about.
  if (about == "help" || about == "--help" || about == "-h" || about == "version") return {"--help"};
  require_command(tool, about);
  return {about, "--help"};
}

}  // namespace

int run_command_line(const std::vector<std::string>& words) {
  int status = done;
  CLI::App tool(
      "Makes, checks, shows, draws, converts, searches and compares block database files.\n"
      "Files may be packed with gzip or zstd; an output is packed when its name ends in .gz or .zst.\n"
      "The name - is standard input or standard output. An output that is an input is refused, but\n"
      "convert may replace its input.",
      "bxdb");
  tool.allow_windows_style_options(false);  // a word that begins with a slash is a path, on every system
  tool.set_version_flag("--version", std::string("bxdb ") + qelmodb::version());
  tool.footer(
      "bxdb help COMMAND is the same as bxdb COMMAND --help, and bxdb version as bxdb --version.\n"
      "Exit status: 0 done; 1 the answer is \"none\", \"different\" or \"invalid\"; 2 bad use or failure.\n"
      "Example: bxdb info device.bxd.gz");
  tool.require_subcommand(1);
  add_generate_command(tool, status);
  add_info_command(tool, status);
  add_check_command(tool, status);
  add_print_command(tool, status);
  add_convert_command(tool, status);
  add_explain_command(tool, status);
  add_find_command(tool, status);
  add_at_command(tool, status);
  add_node_command(tool, status);
  add_query_command(tool, status);
  add_grid_command(tool, status);
  add_diff_command(tool, status);
  try {
    std::vector<std::string> arguments = arguments_of(tool, words);
    std::reverse(arguments.begin(), arguments.end());  // they are taken from the end
    tool.parse(arguments);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() != 0) throw bad_use(tool, e, words);
    tool.exit(e);  // shows what was asked for
  }
  return status;
}

}  // namespace bxdb
