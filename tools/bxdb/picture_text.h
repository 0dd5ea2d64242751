// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Texts in pictures.
#pragma once

#include <cairo.h>

#include <string>
#include <string_view>

namespace bxdb {

/// The text as UTF-8 without control characters, which appear as U+FFFD like bytes that are no UTF-8. A text of more
/// characters than most is cut, and ends in an ellipsis.
std::string shortened(std::string_view text, std::size_t most);

/// The text with the characters that mean something in XML spelt out. It is UTF-8 without control characters other
/// than line ends.
std::string xml_text(std::string_view text);

enum class text_place { left, centre, right };

/// Shows a text in the context's font and colour; place says which point of its base line (x, y) is.
void show_text(cairo_t* cairo, const std::string& text, double x, double y, text_place place);

double text_width(cairo_t* cairo, const std::string& text);

}  // namespace bxdb
