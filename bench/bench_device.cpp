// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bench_device.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

#include "device_generator.h"
#include "qelmocompress.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

class scratch_folder {
 public:
  scratch_folder() : path_((fs::temp_directory_path() / "qelmodb-bench-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("cannot make a folder " + path_);
  }
  scratch_folder(const scratch_folder&) = delete;
  scratch_folder& operator=(const scratch_folder&) = delete;
  ~scratch_folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  fs::path path() const { return path_; }

 private:
  std::string path_;
};

bxdb::device_options options_of(std::int64_t lines, std::int64_t wires) {
  bxdb::device_options options;
  options.columns = lines;
  options.rows = lines;
  options.wires = wires;
  return options;
}

bxdb::device_options& options() {
  static bxdb::device_options chosen = options_of(200, 100);
  return chosen;
}

void require(bool done) {
  if (!done) throw std::runtime_error(ut_file->geterror());
}

struct device_files {
  std::string text = scratch_file("text.bxd");
  std::string binary = scratch_file("binary.bxd");
  std::string compressed = scratch_file("compressed.bxd");

  device_files() {
    const std::unique_ptr<BX_DB> made = bxdb::generate_device(options());
    require(made->dump(text.c_str(), true) != 0);
    require(made->dump(binary.c_str(), false) != 0);
    qelmodb::intern_root_name(*made);
    made->compress();
    require(made->dumpcompress(compressed.c_str(), false) != 0);
  }
};

const device_files& files() {
  static const device_files written;
  return written;
}

// Names of one text get one index, wherever their strings lie.
class name_indices {
 public:
  explicit name_indices(std::vector<std::string>& names) : names_(names) {}

  std::uint32_t index_of(const char* name) {
    if (name == nullptr) name = "";
    const auto [known, is_new] = by_address_.try_emplace(name, 0);
    if (is_new) known->second = index_of_text(name);
    return known->second;
  }

 private:
  std::uint32_t index_of_text(const char* name) {
    const auto [known, is_new] = by_text_.try_emplace(name, static_cast<std::uint32_t>(names_.size()));
    if (is_new) names_.emplace_back(name);
    return known->second;
  }

  std::vector<std::string>& names_;
  std::unordered_map<const char*, std::uint32_t> by_address_;
  std::unordered_map<std::string_view, std::uint32_t> by_text_;
};

flat_tree flatten(BX_DB& db) {
  flat_tree flat;
  name_indices names(flat.names);
  std::vector<std::uint32_t> path;
  bx_walk(static_cast<BX_INSTANCE&>(db), [&](BX_INSTANCE& inst, bx_long depth) {
    const auto index = static_cast<std::uint32_t>(flat.instances.size());
    path.resize(static_cast<std::size_t>(depth));
    flat.instances.push_back({names.index_of(inst.name), inst.xmin, inst.ymin, inst.xmax, inst.ymax,
                              path.empty() ? 0 : path.back(), static_cast<std::uint32_t>(inst.getnuminstances()),
                              static_cast<std::uint32_t>(flat.wires.size()),
                              static_cast<std::uint32_t>(inst.getnumwires())});
    flat.origins.push_back(&inst);
    for (const BX_WIRE& wire : inst.wires) flat.wires.push_back({names.index_of(wire.name), wire.nodex, wire.nodey});
    path.push_back(index);
    return true;
  });
  return flat;
}

}  // namespace

bool choose_device(const std::string& size) {
  if (size == "S") {
    options() = options_of(50, 60);
  } else if (size == "M") {
    options() = options_of(200, 100);
  } else if (size == "L") {
    options() = options_of(500, 100);
  } else {
    return false;
  }
  return true;
}

std::int64_t device_lines() { return options().columns; }

BX_DB& device() {
  static const std::unique_ptr<BX_DB> loaded = [] {
    auto db = std::make_unique<BX_DB>();
    require(db->load(binary_file().c_str()) != 0);
    return db;
  }();
  return *loaded;
}

const std::string& text_file() { return files().text; }
const std::string& binary_file() { return files().binary; }
const std::string& compressed_file() { return files().compressed; }

std::string scratch_file(const char* name) {
  static const scratch_folder folder;
  return (folder.path() / name).string();
}

std::string read_whole(const std::string& name) {
  std::string bytes(fs::file_size(name), '\0');
  std::ifstream file(name, std::ios::binary);
  if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size())))
    throw std::runtime_error("cannot read " + name);
  return bytes;
}

void write_whole(const std::string& name, const std::string& bytes) {
  UT_PTRFILE file(UT_WRITE);
  require(ut_file->add_ofile(name.c_str(), UT_WRITE, &file, true) != nullptr);
  file.swrite(bytes.data(), static_cast<bx_long>(bytes.size()));
  require(ut_file->rm_ofile(&file));
}

tree_sums sums_of(const BX_INSTANCE& root) {
  tree_sums sums;
  bx_walk(root, [&sums](const BX_INSTANCE& inst, bx_long) {
    for (const BX_WIRE& wire : inst.wires) sums.count(wire.getnodex(), wire.getnodey());
    return true;
  });
  return sums;
}

const tree_sums& expected_sums() {
  static const tree_sums sums = sums_of(device());
  return sums;
}

const flat_tree& flat_device() {
  static const flat_tree flat = flatten(device());
  return flat;
}

}  // namespace bench
