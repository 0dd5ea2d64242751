// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Why a database compresses as it does: what was found out, and how it is shown.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "commands.h"
#include "near_templates.h"
#include "qelmocompress.h"

namespace bxdb {

/// Sizes are bytes. Points into the database and the options.
struct explanation {
  explanation(const explain_options& asked, const template_census& found) : options(asked), census(found) {}

  const explain_options& options;
  const template_census& census;
  qelmodb::form file_form = qelmodb::form::text;
  std::int64_t binary_size = 0;
  std::int64_t compressed_size = 0;
  std::vector<qelmodb::file_section> sections;  ///< of the compressed form
  qelmodb::compression_losses losses;
  near_templates near;
  std::unordered_map<const BX_INSTANCE*, std::string> paths;  ///< of the first instances of near templates

  double ratio() const noexcept { return static_cast<double>(binary_size) / static_cast<double>(compressed_size); }

  const template_use& of(int number) const { return census.templates[static_cast<std::size_t>(number)]; }
  const std::string& path_of(const near_miss& miss) const { return paths.at(of(miss.number).first); }
};

void print_as_text(const explanation& about);
void print_as_json(const explanation& about);

}  // namespace bxdb
