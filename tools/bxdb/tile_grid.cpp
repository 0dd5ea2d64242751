// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "tile_grid.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "device_description.h"
#include "failure.h"
#include "file_names.h"
#include "input_file.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

qelmodb::tiles tiles_of(const loaded_database& loaded) {
  return loaded.what == qelmodb::content::grid ? qelmodb::tiles::with_or_without_wires : qelmodb::tiles::with_wires;
}

/// The prefixes as the library takes them: ended by a null pointer. Points into the options.
std::vector<const char*> prefixes_of(const grid_options& options) {
  std::vector<const char*> prefixes;
  for (const std::string& prefix : options.prefixes) prefixes.push_back(prefix.c_str());
  if (prefixes.empty()) prefixes.push_back("");
  prefixes.push_back(nullptr);
  return prefixes;
}

/// The description that the options name, or else the one of the file; empty when there is none.
std::string description_for(const grid_options& options) {
  if (!options.device.empty()) return options.device;
  if (is_standard_stream(options.file)) return {};
  return description_found(options.file);
}

std::unique_ptr<NP_TABLEDEVICE> read_description(const std::string& name, std::uint64_t max_size) {
  std::string why;
  std::unique_ptr<NP_TABLEDEVICE> device;
  if (is_standard_stream(name)) {
    UT_MEMFILE file(read_input_bytes(name, max_size));
    device = NP_TABLEDEVICE::read(file, shown_input(name).c_str(), why);
  } else {
    device = NP_TABLEDEVICE::read(name.c_str(), why);
  }
  if (!device) throw failure(why);
  return device;
}

/// A device that knows whether anybody asked it.
class watched_device : public NP_DEVICE {
 public:
  explicit watched_device(NP_DEVICE& device) : device_(device) {}

  bx_long maxrow() override { return answering().maxrow(); }
  bx_long maxcol() override { return answering().maxcol(); }
  bx_long rowof(const UT_POINT& point) override { return answering().rowof(point); }
  bx_long colof(const UT_POINT& point) override { return answering().colof(point); }

  bool asked() const noexcept { return asked_; }

 private:
  NP_DEVICE& answering() noexcept {
    asked_ = true;
    return device_;
  }

  NP_DEVICE& device_;
  bool asked_ = false;
};

class grid_maker {
 public:
  grid_maker(const loaded_database& loaded, const grid_options& options)
      : db_(*loaded.db), options_(options), prefixes_(prefixes_of(options)), which_(tiles_of(loaded)) {}

  std::unique_ptr<BX_GRID> make() {
    const progress shown("arranging the tiles of " + shown_input(options_.file));
    if (options_.derivation == deriving::always) {
      const auto device = derived();
      return needed(device ? grid_with(device.get()) : nullptr, {});
    }
    const std::string description = description_for(options_);
    return description.empty() ? undescribed() : described(description);
  }

 private:
  std::unique_ptr<BX_GRID> described(const std::string& description) {
    const auto read = read_description(description, options_.input.max_size);
    watched_device device(*read);
    auto grid = needed(grid_with(&device),
                       " (device: " + shown_input(description) +
                           "; the description seems to be of another device; name the right one by --device, or use "
                           "--derive-device)");
    if (!options_.device.empty() && !device.asked()) {
      note("the tiles fill all rows alike, so the description is not used: " + shown_input(description));
    }
    return grid;
  }

  std::unique_ptr<BX_GRID> undescribed() {
    auto grid = grid_with(nullptr);
    if (grid) return grid;
    const std::string reason = why_;
    const auto device = derived();
    why_ = reason;
    if (!device) return needed(nullptr, {});
    if (options_.derivation == deriving::never) return needed(nullptr, " (see --device and --derive-device)");
    grid = needed(grid_with(device.get()), {});
    note(
        "there is no description of the device, so its rows and columns are those at which tiles begin (see --device)");
    return grid;
  }

  /// Null, and the reason in why_, when no device can be made of the tiles.
  std::unique_ptr<NP_TABLEDEVICE> derived() { return qelmodb::device_of_tiles(db_, prefixes_.data(), which_, why_); }

  /// Null, and the reason in why_, when there is no grid.
  std::unique_ptr<BX_GRID> grid_with(NP_DEVICE* device) {
    db_.setdevice(device);
    auto grid = qelmodb::make_grid(db_, prefixes_.data(), which_, why_);
    db_.setdevice(nullptr);
    return grid;
  }

  std::unique_ptr<BX_GRID> needed(std::unique_ptr<BX_GRID> grid, const std::string& hint) const {
    if (!grid) throw failure(fmt::format("{}: no grid: {}{}", shown_input(options_.file), why_, hint));
    return grid;
  }

  void note(const std::string& text) const {
    fmt::print(stderr, "bxdb: {}: {}\n", printable(shown_input(options_.file)), printable(text));
  }

  BX_DB& db_;
  const grid_options& options_;
  std::vector<const char*> prefixes_;
  qelmodb::tiles which_;
  std::string why_;
};

}  // namespace

std::unique_ptr<BX_GRID> make_tile_grid(const loaded_database& loaded, const grid_options& options) {
  return grid_maker(loaded, options).make();
}

}  // namespace bxdb
