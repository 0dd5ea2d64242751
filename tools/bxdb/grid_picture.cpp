// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "grid_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "cairo_output.h"
#include "picture_cover.h"
#include "picture_layout.h"
#include "picture_text.h"
#include "text.h"
#include "tile_colours.h"
#include "tile_kinds.h"

namespace bxdb {
namespace {

constexpr std::size_t most_legend_kinds = 20;
constexpr std::size_t most_label_characters = 36;
constexpr std::size_t most_file_characters = 80;

/// What a grid holds, as far as a picture shows it.
struct tile_table {
  explicit tile_table(const BX_GRID& grid) {
    std::vector<double> row_tiles(static_cast<std::size_t>(grid.getnumrows()));
    std::vector<double> column_tiles(static_cast<std::size_t>(grid.getnumcols()));
    row_centres.resize(row_tiles.size());
    column_centres.resize(column_tiles.size());
    for (short row = 0; row < grid.getnumrows(); ++row) {
      for (short column = 0; column < grid.getnumcols(); ++column) {
        const DARRAY_BX_INSTPTR* cell = grid.getinstances(row, column);
        if (cell == nullptr) continue;
        for (const BX_INSTANCE* tile : *cell) {
          tiles.push_back(tile);
          boxes.push_back(*tile);
          add(row_centres, row_tiles, row, centre_y(*tile));
          add(column_centres, column_tiles, column, centre_x(*tile));
        }
      }
    }
  }

  std::vector<const BX_INSTANCE*> tiles;
  std::vector<UT_EXTREMA> boxes;
  std::vector<double> row_centres;  // means over the tiles of a row, in units of the device
  std::vector<double> column_centres;

 private:
  static void add(std::vector<double>& means, std::vector<double>& counts, short line, double value) {
    const auto at = static_cast<std::size_t>(line);
    counts[at] += 1.0;
    means[at] += (value - means[at]) / counts[at];
  }
};

}  // namespace

/// The layout of the picture, in pixels, and its drawing.
class grid_picture::page {
 public:
  page(const BX_DB& db, const BX_GRID& grid, const std::string& file)
      : table_(grid),
        kinds_(db, table_.tiles),
        scale_(table_.boxes, grid.getnumcols()),
        groups_(tiles_by_kind()),
        font_(std::clamp(scale_.width() / 100.0, 12.0, 16.0)) {
    title_ = fmt::format("{}: {} x {}, {}", shortened(file, most_file_characters), counted(grid.getnumrows(), "row"),
                         counted(grid.getnumcols(), "column"),
                         counted(static_cast<std::int64_t>(table_.tiles.size()), "tile"));
    list_legend();
    arrange();
  }

  void draw(cairo_t* cairo) const {
    draw_title(cairo);
    draw_tiles(cairo);
    draw_row_numbers(cairo);
    draw_column_numbers(cairo);
    draw_legend(cairo);
  }

  std::string png() const {
    return png_bytes(width_, height_, [this](cairo_t* cairo) { draw(cairo); });
  }

  std::string svg() const {
    std::string bytes = svg_bytes(width_, height_, [this](cairo_t* cairo) { draw(cairo); });
    const std::size_t root = bytes.find("<svg");
    const std::size_t inside = root == std::string::npos ? root : bytes.find('>', root);
    if (inside != std::string::npos) bytes.insert(inside + 1, "\n" + words_of_svg());
    return bytes;
  }

 private:
  struct legend_line {
    std::string name;
    std::string count;
    std::vector<colour> colours;
  };

  /// The kinds of which something can be seen, the most frequent first.
  std::vector<std::size_t> kinds_in_sight() const {
    pixel_cover cover(scale_.width(), scale_.height());
    std::vector<std::size_t> in_sight;
    for (auto group = groups_.rbegin(); group != groups_.rend(); ++group) {
      bool seen = false;
      for (const std::size_t tile : *group) seen = cover.take(scale_.pixels(table_.boxes[tile])) || seen;
      if (seen) in_sight.push_back(kinds_.kind_of(group->front()));
    }
    std::sort(in_sight.begin(), in_sight.end());
    return in_sight;
  }

  void list_legend() {
    const auto& kinds = kinds_.kinds();
    const std::vector<std::size_t> in_sight = kinds_in_sight();
    const std::size_t listed = std::min(in_sight.size(), most_legend_kinds);
    for (std::size_t i = 0; i < listed; ++i) {
      const std::size_t kind = in_sight[i];
      legend_.push_back(
          {shortened(kind_text(kind), most_label_characters), std::to_string(kinds[kind].tiles), {kind_colour(kind)}});
    }
    if (listed == in_sight.size()) return;
    legend_line other;
    std::int64_t tiles = 0;
    for (std::size_t i = listed; i < in_sight.size(); ++i) {
      tiles += kinds[in_sight[i]].tiles;
      constexpr std::size_t most_stripes = 4;
      if (other.colours.size() < most_stripes) other.colours.push_back(kind_colour(in_sight[i]));
    }
    other.name = fmt::format("other ({})", counted(static_cast<std::int64_t>(in_sight.size() - listed), "kind"));
    other.count = std::to_string(tiles);
    legend_.push_back(std::move(other));
  }

  std::string kind_text(std::size_t kind) const {
    const std::string& name = kinds_.kinds()[kind].name;
    return name.empty() ? "(no name)" : name;
  }

  std::string legend_heading() const {
    return kinds_.shared_name().empty() ? "Tiles" : shortened(kinds_.shared_name(), most_label_characters) + " in";
  }

  void arrange() {
    const cairo_context context = measuring_context();
    cairo_t* cairo = context.get();
    cairo_set_font_size(cairo, font_);
    double widest_name = text_width(cairo, legend_heading());
    for (const legend_line& line : legend_) {
      widest_name = std::max(widest_name, text_width(cairo, line.name));
      legend_count_width_ = std::max(legend_count_width_, text_width(cairo, line.count));
    }
    margin_ = std::round(1.5 * font_);
    plot_left_ = margin_ + std::ceil(text_width(cairo, std::to_string(table_.row_centres.size())) + 0.6 * font_);
    plot_top_ = margin_ + std::ceil(4.0 * font_);
    legend_left_ = plot_left_ + scale_.width() + margin_;
    legend_right_ = legend_left_ + 1.6 * font_ + widest_name + 1.5 * font_ + legend_count_width_;
    cairo_set_font_size(cairo, title_font());
    const double title_right = margin_ + text_width(cairo, title_);
    const double legend_bottom = plot_top_ + (static_cast<double>(legend_.size()) + 1.5) * line_height();
    width_ = static_cast<int>(std::ceil(std::max(legend_right_, title_right) + margin_));
    height_ = static_cast<int>(std::ceil(std::max(plot_top_ + scale_.height(), legend_bottom) + margin_));
  }

  double title_font() const noexcept { return 1.4 * font_; }
  double line_height() const noexcept { return 1.6 * font_; }

  void draw_title(cairo_t* cairo) const {
    cairo_set_font_size(cairo, title_font());
    set_colour(cairo, ink);
    show_text(cairo, title_, margin_, margin_ + title_font(), text_place::left);
  }

  pixel_box on_page(std::size_t tile) const noexcept {
    pixel_box box = scale_.pixels(table_.boxes[tile]);
    box.left += static_cast<int>(plot_left_);
    box.right += static_cast<int>(plot_left_);
    box.top += static_cast<int>(plot_top_);
    box.bottom += static_cast<int>(plot_top_);
    return box;
  }

  /// The tiles of each kind, kinds of large tiles first: where tiles overlap the small ones remain in sight.
  std::vector<std::vector<std::size_t>> tiles_by_kind() const {
    std::vector<std::vector<std::size_t>> groups(kinds_.kinds().size());
    std::vector<double> areas(groups.size());
    for (std::size_t i = 0; i < table_.tiles.size(); ++i) {
      const std::size_t kind = kinds_.kind_of(i);
      const UT_EXTREMA& box = table_.boxes[i];
      groups[kind].push_back(i);
      areas[kind] += width_of(box) * height_of(box) / static_cast<double>(kinds_.kinds()[kind].tiles);
    }
    std::stable_sort(groups.begin(), groups.end(), [this, &areas](const auto& a, const auto& b) {
      return areas[kinds_.kind_of(a.front())] > areas[kinds_.kind_of(b.front())];
    });
    return groups;
  }

  void draw_tiles(cairo_t* cairo) const {
    set_colour(cairo, ground);
    cairo_rectangle(cairo, plot_left_, plot_top_, scale_.width(), scale_.height());
    cairo_fill(cairo);
    for (const std::vector<std::size_t>& group : groups_) {
      const colour fill = kind_colour(kinds_.kind_of(group.front()));
      fill_tiles(cairo, group, fill);
      outline_tiles(cairo, group, fill);
      set_colour(cairo, ink_on(fill));
      for (const std::size_t tile : group) draw_tile_name(cairo, tile);
    }
  }

  /// Calls add(box) for each tile, which adds to the path, and show() whenever the path is long enough: a path for
  /// each tile makes an SVG file needlessly large, and one of more than 10 MB is refused by common readers.
  template <class Add, class Show>
  void in_batches(const std::vector<std::size_t>& group, Add add, Show show) const {
    constexpr std::size_t most_tiles = 4096;
    for (std::size_t i = 0; i < group.size(); ++i) {
      add(on_page(group[i]));
      if ((i + 1) % most_tiles == 0) show();
    }
    show();
  }

  void fill_tiles(cairo_t* cairo, const std::vector<std::size_t>& group, const colour& fill) const {
    set_colour(cairo, fill);
    in_batches(
        group, [cairo](const pixel_box& box) { cairo_rectangle(cairo, box.left, box.top, box.width(), box.height()); },
        [cairo] { cairo_fill(cairo); });
  }

  /// Lines within the edges of the tiles, which fade out as tiles become so small that there would be little else.
  void outline_tiles(cairo_t* cairo, const std::vector<std::size_t>& group, const colour& fill) const {
    constexpr double none_at = 3.0;
    constexpr double full_at = 9.0;
    const double strength = std::clamp((scale_.usual_size() - none_at) / (full_at - none_at), 0.0, 1.0);
    if (strength <= 0.0) return;
    cairo_set_line_width(cairo, 1.0);
    cairo_set_source_rgba(cairo, fill.red * 0.55, fill.green * 0.55, fill.blue * 0.55, strength);
    in_batches(
        group,
        [cairo](const pixel_box& box) {
          cairo_rectangle(cairo, box.left + 0.5, box.top + 0.5, box.width() - 1.0, box.height() - 1.0);
        },
        [cairo] { cairo_stroke(cairo); });
  }

  /// The tile's name, or else the name of its kind, if there is room.
  void draw_tile_name(cairo_t* cairo, std::size_t tile) const {
    const pixel_box box = on_page(tile);
    if (std::min(box.width(), box.height()) <= least_font) return;
    const double size = std::clamp(0.4 * box.height(), least_font, font_);
    const std::string kind = shortened(kind_text(kinds_.kind_of(tile)), most_label_characters);
    const char* name = kinds_.shared_name().empty() ? ut_text(table_.tiles[tile]->name) : "";
    if (show_if_fits(cairo, shortened(name, most_label_characters), box, size)) return;
    show_if_fits(cairo, kind, box, size);
  }

  static bool show_if_fits(cairo_t* cairo, const std::string& text, const pixel_box& box, double size) {
    if (text.empty() || box.height() < size + 1.0) return false;
    constexpr double padding = 2.0;
    const double room = box.width() - 2 * padding;
    cairo_set_font_size(cairo, size);
    const double width = text_width(cairo, text);
    const double fitting = width <= room ? size : size * room / width;
    if (fitting < least_font) return false;
    cairo_set_font_size(cairo, fitting);
    show_text(cairo, text, (box.left + box.right) / 2.0, (box.top + box.bottom) / 2.0 + cap_height * fitting / 2,
              text_place::centre);
    return true;
  }

  void draw_row_numbers(cairo_t* cairo) const {
    std::vector<double> centres;
    for (const double centre : table_.row_centres) centres.push_back(plot_top_ + scale_.y(centre));
    const std::vector<double> sizes(centres.size(), 1.4 * font_);
    cairo_set_font_size(cairo, font_);
    set_colour(cairo, ink);
    for (const std::size_t row : shown_labels(centres, sizes)) {
      show_text(cairo, std::to_string(row), plot_left_ - 0.5 * font_, centres[row] + cap_height * font_ / 2,
                text_place::right);
    }
  }

  void draw_column_numbers(cairo_t* cairo) const {
    cairo_set_font_size(cairo, font_);
    set_colour(cairo, ink);
    std::vector<double> centres;
    std::vector<double> sizes;
    for (const double centre : table_.column_centres) {
      sizes.push_back(text_width(cairo, std::to_string(centres.size())) + 0.5 * font_);
      centres.push_back(plot_left_ + scale_.x(centre));
    }
    for (const std::size_t column : shown_labels(centres, sizes)) {
      show_text(cairo, std::to_string(column), centres[column], plot_top_ - 0.5 * font_, text_place::centre);
    }
  }

  void draw_legend(cairo_t* cairo) const {
    cairo_set_font_size(cairo, font_);
    double base = plot_top_ + font_;
    set_colour(cairo, ink);
    show_text(cairo, legend_heading(), legend_left_, base, text_place::left);
    base += 0.3 * font_;
    for (const legend_line& line : legend_) {
      base += line_height();
      draw_swatch(cairo, line.colours, legend_left_, base - 0.85 * font_);
      set_colour(cairo, ink);
      show_text(cairo, line.name, legend_left_ + 1.6 * font_, base, text_place::left);
      show_text(cairo, line.count, legend_right_, base, text_place::right);
    }
  }

  void draw_swatch(cairo_t* cairo, const std::vector<colour>& colours, double left, double top) const {
    const double stripe = font_ / static_cast<double>(colours.size());
    for (std::size_t i = 0; i < colours.size(); ++i) {
      set_colour(cairo, colours[i]);
      cairo_rectangle(cairo, left + static_cast<double>(i) * stripe, top, stripe, font_);
      cairo_fill(cairo);
    }
  }

  std::string words_of_svg() const {
    std::string words = "<title>" + xml_text(title_) + "</title>\n<desc>" + xml_text(legend_heading() + ":");
    for (const legend_line& line : legend_) words += xml_text("\n" + line.name + " " + line.count);
    return words + "</desc>\n";
  }

  static constexpr double least_font = 8.0;
  static constexpr double cap_height = 0.72;  // of capital letters and digits, in font sizes

  tile_table table_;
  tile_kinds kinds_;
  plot_scale scale_;
  std::vector<std::vector<std::size_t>> groups_;  // as tiles_by_kind gives them
  double font_;
  std::string title_;
  std::vector<legend_line> legend_;
  double margin_ = 0.0;
  double plot_left_ = 0.0;
  double plot_top_ = 0.0;
  double legend_left_ = 0.0;
  double legend_right_ = 0.0;
  double legend_count_width_ = 0.0;
  int width_ = 0;
  int height_ = 0;
};

grid_picture::grid_picture(const BX_DB& db, const BX_GRID& grid, const std::string& file)
    : page_(std::make_unique<page>(db, grid, file)) {}

grid_picture::~grid_picture() = default;

std::string grid_picture::png() const { return page_->png(); }
std::string grid_picture::svg() const { return page_->svg(); }

}  // namespace bxdb
