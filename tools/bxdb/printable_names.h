// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Names for the library's reports, which print them as they are.
#pragma once

#include <deque>
#include <string>
#include <unordered_map>

#include "qelmodb.h"

namespace bxdb {

/// While it lives, the names of a database are such as printable gives: those with control characters are exchanged.
/// Lookups by name do not work meanwhile.
class printable_names {
 public:
  enum class of { instances, instances_and_wires };

  printable_names(BX_DB& db, of which);
  printable_names(const printable_names&) = delete;
  printable_names& operator=(const printable_names&) = delete;
  ~printable_names();

 private:
  template <class Exchange>
  void visit_names(Exchange exchange);
  char* shown_for(char* name);

  BX_DB& db_;
  of which_;
  std::deque<std::string> texts_;
  std::unordered_map<const char*, char*> shown_;      // by every name that was met; itself when it is shown as it is
  std::unordered_map<const char*, char*> originals_;  // by those that stand in their place
};

}  // namespace bxdb
