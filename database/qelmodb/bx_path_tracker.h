// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "bx_instance.h"
#include "ut_string.h"

/// Follows a walk and builds the path of names of the instance in hand.
class bx_path_tracker {
 public:
  void enter(const BX_INSTANCE& inst, bx_long depth) {
    names_.resize(static_cast<std::size_t>(depth));
    names_.push_back(ut_text(inst.name));
  }

  std::string text() const {
    std::string joined;
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (i != 0) joined += '/';
      joined += names_[i];
    }
    return joined;
  }

 private:
  std::vector<const char*> names_;
};
