// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_range_map.h"

#include "bx_template_faults.h"

template <class T>
void RANGE_MAP<T>::initiate(const T* values, std::uint16_t n) {
  if (n == 0) {
    bx_report_empty_range_map();
    return;
  }
  size = n;
  ranges.emplace(std::uint16_t{0}, values[0]);
  for (std::uint16_t i = 1; i < n; ++i) {
    if (!(values[i] == values[i - 1])) ranges.emplace(i, values[i]);
  }
}

template <class T>
const T& RANGE_MAP<T>::lookup(std::uint16_t i) const {
  static const T nothing{};
  const auto after = ranges.upper_bound(i);
  // A damaged file can hold a map whose first run starts late.
  if (i >= size || after == ranges.begin()) bx_report_out_of_range(i, size);
  return after == ranges.begin() ? nothing : std::prev(after)->second;
}

template <class T>
T& RANGE_MAP<T>::lookup(std::uint16_t i) {
  static thread_local T nothing{};
  const T& value = static_cast<const RANGE_MAP&>(*this).lookup(i);
  const auto after = ranges.upper_bound(i);
  if (after == ranges.begin()) return nothing = value;
  return std::prev(after)->second;
}

template class RANGE_MAP<std::uint16_t>;
template class RANGE_MAP<BX_POINT>;
