// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Pictures in memory, drawn with cairo.
#pragma once

#include <cairo.h>

#include <functional>
#include <memory>
#include <string>

namespace bxdb {

using cairo_context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

/// A context for measuring texts. Texts have the same size in it as in the pictures.
cairo_context measuring_context();

/// The bytes of a picture of width x height pixels that draw has drawn on a white page. Throws failure when cairo
/// cannot make it.
std::string png_bytes(int width, int height, const std::function<void(cairo_t*)>& draw);
std::string svg_bytes(int width, int height, const std::function<void(cairo_t*)>& draw);

}  // namespace bxdb
