// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The pictures that bxdb grid draws.
#include <cairo.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "bxdb_runner.h"
#include "tile_files.h"

namespace {

using namespace test;

/// A PNG file, decoded.
class bitmap {
 public:
  explicit bitmap(const std::string& bytes) {
    source rest{bytes.data(), bytes.size()};
    surface_.reset(cairo_image_surface_create_from_png_stream(&bitmap::read, &rest));
    EXPECT_EQ(cairo_surface_status(surface_.get()), CAIRO_STATUS_SUCCESS);
    cairo_surface_flush(surface_.get());
  }

  int width() const { return cairo_image_surface_get_width(surface_.get()); }
  int height() const { return cairo_image_surface_get_height(surface_.get()); }

  /// 0xrrggbb
  unsigned at(int x, int y) const {
    const int stride = cairo_image_surface_get_stride(surface_.get());
    unsigned pixel = 0;
    std::memcpy(&pixel, cairo_image_surface_get_data(surface_.get()) + y * stride + 4 * x, sizeof pixel);
    return pixel & 0xffffffU;
  }

 private:
  struct source {
    const char* bytes;
    std::size_t count;
  };

  struct release {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
  };

  static cairo_status_t read(void* from, unsigned char* to, unsigned count) {
    auto& rest = *static_cast<source*>(from);
    if (rest.count < count) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(to, rest.bytes, count);
    rest.bytes += count;
    rest.count -= count;
    return CAIRO_STATUS_SUCCESS;
  }

  std::unique_ptr<cairo_surface_t, release> surface_;
};

/// Where a colour is: how many pixels, and the middle one from the left and from the top.
struct patch {
  double pixels = 0;
  int x = 0;
  int y = 0;
};

patch patch_of(const bitmap& picture, unsigned rgb) {
  std::vector<int> xs;
  std::vector<int> ys;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      if (picture.at(x, y) != rgb) continue;
      xs.push_back(x);
      ys.push_back(y);
    }
  }
  if (xs.empty()) return {};
  std::sort(xs.begin(), xs.end());
  return {static_cast<double>(xs.size()), xs[xs.size() / 2], ys[ys.size() / 2]};
}

/// Whether a text is well-formed XML, as far as elements, attributes and entities go.
class xml_checker {
 public:
  explicit xml_checker(const std::string& text) : text_(text) {}

  bool well_formed() {
    while (at_ < text_.size()) {
      if (!(text_[at_] == '<' ? markup() : characters())) return false;
    }
    return open_.empty() && roots_ == 1;
  }

 private:
  bool characters() {
    const std::size_t end = std::min(text_.find('<', at_), text_.size());
    const std::string run = text_.substr(at_, end - at_);
    at_ = end;
    if (open_.empty() && run.find_first_not_of(" \n") != std::string::npos) return false;
    return is_text(run);
  }

  static bool is_text(const std::string& run) {
    for (std::size_t i = 0; i < run.size(); ++i) {
      if (static_cast<unsigned char>(run[i]) < 0x20 && run[i] != '\n') return false;
      if (run[i] == '&' && !is_entity(run.substr(i, 6))) return false;
    }
    return true;
  }

  static bool is_entity(const std::string& start) {
    for (const char* name : {"&amp;", "&lt;", "&gt;", "&quot;"}) {
      if (start.starts_with(name)) return true;
    }
    return false;
  }

  bool markup() {
    const std::size_t end = text_.find('>', at_);
    if (end == std::string::npos) return false;
    std::string tag = text_.substr(at_ + 1, end - at_ - 1);
    at_ = end + 1;
    if (tag.empty()) return false;
    if (tag[0] == '?') return tag.back() == '?';
    if (tag[0] == '/') return close(tag.substr(1));
    const bool closed = tag.back() == '/';
    if (closed) tag.pop_back();
    if (!attributes(tag)) return false;
    if (open_.empty()) ++roots_;
    open_.push_back(tag.substr(0, tag.find_first_of(" \n")));
    return !closed || close(std::string(open_.back()));
  }

  static bool attributes(const std::string& tag) {
    return tag.find('<') == std::string::npos && std::count(tag.begin(), tag.end(), '"') % 2 == 0 && is_text(tag);
  }

  bool close(const std::string& name) {
    if (open_.empty() || open_.back() != name) return false;
    open_.pop_back();
    return true;
  }

  const std::string& text_;
  std::size_t at_ = 0;
  int roots_ = 0;
  words open_;
};

/// The lines of the legend in an SVG file: heading, then kinds with their counts.
words legend_of(const std::string& svg) {
  const std::string begin = "<desc>";
  const std::size_t first = svg.find(begin);
  const std::size_t last = svg.find("</desc>");
  EXPECT_TRUE(first < last && last != std::string::npos);
  if (last == std::string::npos) return {};
  std::string rest = svg.substr(first + begin.size(), last - first - begin.size()) + "\n";
  words lines;
  for (std::size_t at = 0; (at = rest.find('\n')) != std::string::npos; rest.erase(0, at + 1)) {
    lines.push_back(rest.substr(0, at));
  }
  return lines;
}

class BxdbGridPicture : public ToolTest {
 protected:
  /// The bytes of a picture, with which nothing is printed.
  std::string picture(const std::string& db, const char* option, const std::string& out, const words& more = {}) const {
    words line = {"grid", db, option, file(out)};
    line.insert(line.end(), more.begin(), more.end());
    EXPECT_EQ(expect(0, line).out, "");
    return read_file(file(out));
  }

  std::string png_of(const std::vector<tile_box>& tiles, const words& more = {}) const {
    return picture(made("a.bxd", text_of_tiles(tiles)), "--png", "a.png", more);
  }

  std::string svg_of(const std::vector<tile_box>& tiles, const words& more = {}) const {
    return picture(made("a.bxd", text_of_tiles(tiles)), "--svg", "a.svg", more);
  }
};

// What the first kinds of a legend are drawn in.
constexpr unsigned first_colour = 0x5b8fd0;
constexpr unsigned second_colour = 0xf2953c;
constexpr unsigned third_colour = 0x5fb562;
constexpr unsigned fourth_colour = 0xd9534f;

TEST_F(BxdbGridPicture, TilesHaveTheColoursOfTheirKindsToScaleAndYGrowsUpwards) {
  // Kinds of one frequency are in the order of their names.
  const bitmap png(
      png_of({{"A", 0, 0, 100, 100}, {"B", 0, 100, 100, 200}, {"C", 100, 100, 300, 200}}, {"--derive-device"}));
  const patch a = patch_of(png, first_colour);
  const patch b = patch_of(png, second_colour);
  const patch c = patch_of(png, third_colour);
  EXPECT_LT(b.y, a.y);
  EXPECT_NEAR(a.x, b.x, 2);
  EXPECT_LT(a.x, c.x);
  EXPECT_NEAR(b.y, c.y, 2);
  const double unit = (a.y - b.y) / 100.0;  // in pixels
  EXPECT_NEAR(c.x - a.x, 150 * unit, 4);
  EXPECT_NEAR(a.pixels, 100 * 100 * unit * unit, 0.03 * a.pixels);
  EXPECT_NEAR(c.pixels, 200 * 100 * unit * unit, 0.03 * c.pixels);
  EXPECT_EQ(png.at(c.x, a.y), 0xf1f1f1U) << "there is no tile";
  EXPECT_EQ(png.at(0, 0), 0xffffffU);
}

TEST_F(BxdbGridPicture, IsWideEnoughToSeeAndNarrowEnoughToShow) {
  for (const bx_long columns : {2, 30, 300, 1500}) {
    std::vector<tile_box> tiles;
    for (bx_long column = 0; column < columns; ++column) {
      const std::string name = "CLB_X" + std::to_string(column);
      tiles.push_back({name + "Y0", column * 60, 0, column * 60 + 59, 59});
      tiles.push_back({name + "Y1", column * 60, 60, column * 60 + 59, 119});
    }
    const bitmap png(png_of(tiles));
    EXPECT_GE(png.width(), 1000) << columns;
    EXPECT_LE(png.width(), 2400) << columns;
    EXPECT_GT(patch_of(png, first_colour).pixels, 2000) << columns;
  }
}

TEST_F(BxdbGridPicture, CoordinatesMayReachOverAllBits) {
  constexpr bx_long most = 2147483647;
  constexpr bx_long least = -most - 1;
  const bitmap png(
      png_of({{"A", least, 0, 0, most}, {"B", 0, 0, most, most}, {"C", least, least, 0, 0}, {"D", 0, least, most, 0}}));
  const patch a = patch_of(png, first_colour);
  const patch b = patch_of(png, second_colour);
  const patch c = patch_of(png, third_colour);
  EXPECT_GT(a.pixels, 100000);
  EXPECT_NEAR(a.pixels, c.pixels, 0.01 * a.pixels);
  EXPECT_LT(a.x, b.x);
  EXPECT_LT(a.y, c.y);
}

TEST_F(BxdbGridPicture, SvgIsWellFormedAndSaysWhatItShows) {
  const std::string svg = svg_of(six_tiles());
  EXPECT_TRUE(xml_checker(svg).well_formed());
  EXPECT_TRUE(holds(svg, "<title>a.bxd: 2 rows x 3 columns, 6 tiles</title>"));
  EXPECT_EQ(legend_of(svg), (words{"Tiles:", "CLB 4", "IO_W 2"}));
  EXPECT_TRUE(holds(svg, "fill:rgb(35.686275%,56.078431%,81.568627%)")) << "the colour of the first kind";
}

TEST_F(BxdbGridPicture, NamesCannotBreakAnSvgFile) {
  std::vector<tile_box> tiles = six_tiles();
  tiles[0].name = "<b>&'";
  tiles[1].name = "\xff\xc3\xbc";
  tiles[2].name = "\x01\xef\xbf\xbf]]>";
  tiles[3].name = std::string(60, 'L');
  const std::string svg = svg_of(tiles);
  EXPECT_TRUE(xml_checker(svg).well_formed());
  EXPECT_TRUE(holds(svg, "\n&lt;b&gt;&amp;' 1"));
  EXPECT_TRUE(holds(svg, "\n\xef\xbf\xbd\xc3\xbc 1"));
  EXPECT_TRUE(holds(svg, "\n\xef\xbf\xbd\xef\xbf\xbd]]&gt; 1"));
  EXPECT_TRUE(holds(svg, "\n" + std::string(35, 'L') + "\xe2\x80\xa6 1"));
}

TEST_F(BxdbGridPicture, KindsAreNamesWithoutPlacesAndNumbers) {
  const words names = {"Tile_X0Y0_LUT4AB",
                       "Tile_X1Y0_LUT4AB",
                       "Super_X2Y0_DSP",
                       "CLB_12_7",
                       "CLB_12_8",
                       "CLB_R5C6",
                       "INT_L_X3Y4",
                       "R3C4_PLC",
                       "IO_W_1",
                       "IO_W17",
                       "LUT4",
                       "LUT4",
                       "LUT4",
                       "LUT4",
                       "LUT6",
                       "LUT6",
                       "LUT6",
                       "LUT6",
                       "BRAM_X1_Y22",
                       "007"};
  std::vector<tile_box> tiles;
  for (const std::string& name : names) {
    const auto column = static_cast<bx_long>(tiles.size() / 2) * 10;
    const auto row = static_cast<bx_long>(tiles.size() % 2) * 10;
    tiles.push_back({name, column, row, column + 9, row + 9});
  }
  EXPECT_EQ(legend_of(svg_of(tiles)), (words{"Tiles:", "LUT4 4", "LUT6 4", "CLB 3", "IO_W 2", "LUT4AB 2", "007 1",
                                             "BRAM 1", "DSP 1", "INT_L 1", "PLC 1"}));
}

TEST_F(BxdbGridPicture, TilesOfOneNameHaveTheKindsOfWhatHoldsThem) {
  expect(0, {"generate", file("g.bxd"), "--columns", "9", "--rows", "9", "--names", "unique"});
  const words legend = legend_of(picture(file("g.bxd"), "--svg", "g.svg", {"BASIC_ASS"}));
  ASSERT_EQ(legend.size(), 8U);
  EXPECT_EQ(legend[0], "BASIC_ASS in:");
  EXPECT_TRUE(legend[1].starts_with("LOGIC ")) << legend[1];
  EXPECT_EQ(std::count(legend.begin(), legend.end(), "IO_E 7"), 1);
  // Where nothing but the root holds them there is only their own name.
  EXPECT_EQ(legend_of(svg_of({{"T", 0, 0, 9, 9}, {"T", 0, 10, 9, 19}})), (words{"Tiles:", "T 2"}));
}

TEST_F(BxdbGridPicture, ALongLegendEndsWithTheRest) {
  std::vector<tile_box> tiles;
  for (bx_long i = 0; i < 26; ++i) {
    const std::string kind(1, static_cast<char>('a' + i));
    tiles.push_back({kind, i * 10, 0, i * 10 + 9, 9});
    tiles.push_back({kind, i * 10, 10, i * 10 + 9, 19});
  }
  const words legend = legend_of(svg_of(tiles));
  ASSERT_EQ(legend.size(), 22U);
  EXPECT_EQ(legend[20], "t 2");
  EXPECT_EQ(legend[21], "other (6 kinds) 12");
}

TEST_F(BxdbGridPicture, TheLegendListsOnlyWhatCanBeSeen) {
  // Small tiles lie on large ones: those of kind B and C cover A, but not D.
  const std::vector<tile_box> tiles = {{"A", 0, 0, 100, 100},   {"B", 0, 0, 50, 100},    {"C", 50, 0, 100, 60},
                                       {"C", 50, 60, 100, 100}, {"D", 200, 0, 300, 100}, {"B", 210, 0, 300, 100}};
  const words more = {"--derive-device"};
  EXPECT_EQ(legend_of(svg_of(tiles, more)), (words{"Tiles:", "B 2", "C 2", "D 1"}));
  const bitmap png(png_of(tiles, more));
  EXPECT_EQ(patch_of(png, third_colour).pixels, 0) << "A is covered";
  EXPECT_GT(patch_of(png, fourth_colour).pixels, 0);
}

TEST_F(BxdbGridPicture, IsTheSameEveryTimeAndPackedAsItsNameSays) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  EXPECT_TRUE(picture(db, "--png", "a.png") == picture(db, "--png", "b.png"));
  const std::string svg = picture(db, "--svg", "a.svg");
  EXPECT_TRUE(picture(db, "--svg", "b.svg") == svg);
  const std::string packed = picture(db, "--svg", "a.svg.gz");
  EXPECT_TRUE(packed.starts_with("\x1f\x8b"));
  EXPECT_LT(packed.size(), svg.size());
}

TEST_F(BxdbGridPicture, GoesToStandardOutputAlone) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  for (const std::string& kind : {std::string("--png"), std::string("--svg")}) {
    expect(0, {"grid", db, kind, file("picture")});
    EXPECT_TRUE(expect(0, {"grid", db, kind, "-"}).out == read_file(file("picture"))) << kind;
  }
  expect(0, {"grid", db, "--png", file("a.png"), "--svg", file("picture")});
  EXPECT_TRUE(expect(0, {"grid", db, "--png", file("b.png"), "--svg", "-"}).out == read_file(file("picture")));
  EXPECT_TRUE(read_file(file("b.png")) == read_file(file("a.png")));
}

TEST_F(BxdbGridPicture, ReportsArePrintedBesidePicturesWhenAskedFor) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  const outcome both = expect(0, {"grid", db, "--extrema", "--png", file("a.png"), "--svg", file("a.svg")});
  EXPECT_EQ(both.out, expect(0, {"grid", db, "--extrema"}).out);
  EXPECT_TRUE(std::filesystem::exists(file("a.png")));
  EXPECT_TRUE(std::filesystem::exists(file("a.svg")));
  EXPECT_EQ(expect(0, {"grid", db, "--row", "0", "--col", "0", "--png", file("a.png")}).out,
            "instance dev/IO_W17 (0, 100) (100, 200)\n");
  EXPECT_EQ(json_of(0, {"grid", db, "--svg", file("a.svg")})["cells"].size(), 6U);
}

TEST_F(BxdbGridPicture, AFullDiskIsAFailureAndWithoutAGridNothingIsWritten) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  for (const char* option : {"--png", "--svg"}) {
    const outcome full = expect(2, {"grid", db, "--derive-device", option, "/dev/full"});
    EXPECT_TRUE(holds(full.err, "/dev/full: cannot write: No space left on device")) << full.err;
    const std::string nowhere = file("missing") + "/picture";
    EXPECT_TRUE(holds(expect(2, {"grid", db, "--derive-device", option, nowhere}).err, nowhere + ":"));
    expect(2, {"grid", db, "--no-derive", option, file("picture")});
    EXPECT_FALSE(std::filesystem::exists(file("picture")));
  }
}

}  // namespace
