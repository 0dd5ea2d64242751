// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What a command can end with.
#pragma once

#include <stdexcept>

namespace bxdb {

/// The exit statuses. no: the command did its work, and the answer is "none", "different" or "invalid".
enum exit_status : int { done = 0, no = 1, failed = 2 };

/// Ends a command with status failed. The text names the file concerned and says what is wrong with it.
class failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace bxdb
