// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "cairo_output.h"

#include <cairo-svg.h>

#include <new>

#include "failure.h"

namespace bxdb {
namespace {

using cairo_surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

void check(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
  throw failure(std::string("the picture cannot be drawn: ") + cairo_status_to_string(status));
}

/// Called from C, which no exception may pass.
cairo_status_t append(void* bytes, const unsigned char* data, unsigned length) noexcept {
  try {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

cairo_surface checked(cairo_surface_t* made) {
  cairo_surface surface(made, &cairo_surface_destroy);
  check(cairo_surface_status(made));
  return surface;
}

cairo_context context_on(cairo_surface_t* surface) {
  cairo_context context(cairo_create(surface), &cairo_destroy);
  check(cairo_status(context.get()));
  const std::unique_ptr<cairo_font_options_t, decltype(&cairo_font_options_destroy)> options(
      cairo_font_options_create(), &cairo_font_options_destroy);
  // Texts of one width whatever they are drawn on.
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  cairo_set_font_options(context.get(), options.get());
  cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  return context;
}

void draw_page(cairo_surface_t* surface, const std::function<void(cairo_t*)>& draw) {
  const cairo_context context = context_on(surface);
  cairo_set_source_rgb(context.get(), 1.0, 1.0, 1.0);
  cairo_paint(context.get());
  draw(context.get());
  check(cairo_status(context.get()));
}

}  // namespace

cairo_context measuring_context() {
  // The context keeps the surface.
  const cairo_surface surface = checked(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1));
  return context_on(surface.get());
}

std::string png_bytes(int width, int height, const std::function<void(cairo_t*)>& draw) {
  const cairo_surface surface = checked(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
  draw_page(surface.get(), draw);
  std::string bytes;
  check(cairo_surface_write_to_png_stream(surface.get(), &append, &bytes));
  return bytes;
}

std::string svg_bytes(int width, int height, const std::function<void(cairo_t*)>& draw) {
  std::string bytes;
  const cairo_surface surface = checked(cairo_svg_surface_create_for_stream(&append, &bytes, width, height));
  cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_PX);
  draw_page(surface.get(), draw);
  cairo_surface_finish(surface.get());
  check(cairo_surface_status(surface.get()));
  return bytes;
}

}  // namespace bxdb
