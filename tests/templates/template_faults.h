// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What is reported while an action runs, with a message manager that returns.
#pragma once

#include <string>

#include "../database/exposed.h"

namespace test {

/// "detail [tag] source code" for each report, joined by "; ".
template <class Action>
std::string fault_of(Action action) {
  const environment shown("KRT_SHOW_INTERNAL_ERROR", "");
  recording_manager manager;
  {
    const substitute in_place(manager);
    action();
  }
  std::string faults;
  for (std::size_t i = 0; i < manager.tags.size(); ++i) {
    std::string detail = manager.lines[2 * i].substr(std::string("detail ").size());
    detail.resize(detail.size() - 2);  // the reserved argument
    std::string origin = manager.origins[i];
    origin.erase(origin.find(" 1.0 "), 4);
    origin.resize(origin.size() - 2);
    faults += (i == 0 ? "" : "; ") + detail + " [" + manager.tags[i] + "] " + origin;
  }
  return faults;
}

}  // namespace test
