// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "option_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace bxdb {
namespace {

/// Reads a whole text; false when it is none, or too large.
template <class Number>
bool read_number(std::string_view text, Number& value) {
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && stop == text.data() + text.size();
}

bool is_digits(std::string_view text) noexcept {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

constexpr std::string_view unit_letters = "KMGTPE";

/// The power of two that a unit stands for; negative when it is none.
int power_of(std::string_view unit) noexcept {
  std::string name(unit);
  for (char& c : name) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  if (name.empty() || name == "B") return 0;
  const std::size_t letter = unit_letters.find(name[0]);
  const std::string rest = name.substr(1);
  if (letter == std::string_view::npos || !(rest.empty() || rest == "B" || rest == "I" || rest == "IB")) return -1;
  return 10 * (static_cast<int>(letter) + 1);
}

/// The bytes of the digits before and behind a point, in units. False when they are beyond 63 bits.
bool bytes_of(std::string_view whole, std::string_view fraction, int power, std::uint64_t& bytes) {
  constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
  std::uint64_t units = 0;
  if (!read_number(whole, units) || units > most >> power) return false;
  double part = 0.0;
  for (std::size_t i = fraction.size(); i-- > 0;) part = (part + (fraction[i] - '0')) / 10.0;
  bytes = (units << power) + static_cast<std::uint64_t>(std::ldexp(part, power));
  return bytes <= most;
}

/// How many letters have to be changed, left out, put in or exchanged with their neighbours.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        steps[i][j] = i + j;
        continue;
      }
      steps[i][j] =
          std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
      }
    }
  }
  return steps[a.size()][b.size()];
}

}  // namespace

std::string take_whole_number(std::string& text, std::int64_t least, std::uint64_t most) {
  const bool negative = text.starts_with('-');
  const std::string_view digits = std::string_view(text).substr(negative || text.starts_with('+') ? 1 : 0);
  std::uint64_t size = 0;
  bool right = is_digits(digits) && read_number(digits, size);
  if (right && negative) {
    right = least < 0 ? size <= static_cast<std::uint64_t>(-(least + 1)) + 1 : size == 0 && least == 0;
  } else if (right) {
    right = size <= most && (least < 0 || size >= static_cast<std::uint64_t>(least));
  }
  if (!right) return fmt::format("\"{}\" is not a whole number from {} to {}", text, least, most);
  text = (negative && size != 0 ? "-" : "") + std::to_string(size);
  return {};
}

std::string take_size(std::string& text) {
  const std::string_view all = text;
  const std::size_t end = std::min(all.find_first_not_of("0123456789."), all.size());
  const std::string_view number = all.substr(0, end);
  const std::size_t point = std::min(number.find('.'), number.size());
  const std::string_view fraction = number.substr(std::min(point + 1, number.size()));
  const std::string_view unit = all.substr(std::min(all.find_first_not_of(' ', end), all.size()));
  const int power = power_of(unit);
  const bool has_fraction = point != number.size();
  const bool right =
      is_digits(number.substr(0, point)) && power >= 0 && (!has_fraction || (is_digits(fraction) && power > 0));
  std::uint64_t bytes = 0;
  if (!right) {
    return fmt::format(
        "\"{}\" is no size: it takes a number of bytes, or a number and a unit, K, M, G, T, P or E, such as 512M or "
        "1.5G",
        text);
  }
  if (!bytes_of(number.substr(0, point), fraction, power, bytes)) {
    return fmt::format("\"{}\" is too large: sizes are below 8E, 2^63 bytes", text);
  }
  text = std::to_string(bytes);
  return {};
}

std::string take_choice(const std::string& text, const std::vector<std::string>& choices) {
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) return {};
  return fmt::format("\"{}\" is none of {}{}", text, fmt::join(choices, ", "), suggestion(text, choices));
}

std::string suggestion(const std::string& written, const std::vector<std::string>& words) {
  constexpr std::size_t longest = 40;
  if (written.size() < 2 || written.size() > longest) return {};
  std::size_t least = 1 + written.size() / 4;
  const std::string* nearest = nullptr;
  for (const std::string& word : words) {
    const std::size_t away = word.starts_with(written) ? 1 : distance(written, word);
    if (away > least || (away == least && nearest != nullptr)) continue;
    least = away;
    nearest = &word;
  }
  return nearest == nullptr ? std::string() : fmt::format("; did you mean {}?", *nearest);
}

}  // namespace bxdb
