// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What many tests need: small trees, files of their own, output caught, and comparison of trees.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "qelmodb.h"

namespace test {

/// A folder of its own that goes with the object.
class temporary_folder {
 public:
  temporary_folder();
  temporary_folder(const temporary_folder&) = delete;
  temporary_folder& operator=(const temporary_folder&) = delete;
  ~temporary_folder();

  std::string file(const std::string& name) const { return (path_ / name).generic_string(); }
  std::string name() const { return path_.generic_string(); }
  const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
};

std::string read_file(const std::string& name);
void write_file(const std::string& name, const std::string& bytes);

/// Catches what the built-in message manager prints while the object lives, in pieces and as a whole.
class caught_report {
 public:
  caught_report();
  caught_report(const caught_report&) = delete;
  caught_report& operator=(const caught_report&) = delete;
  ~caught_report();

  const std::string& text() const noexcept { return text_; }
  const std::vector<std::string>& pieces() const noexcept { return pieces_; }

 private:
  std::string text_;
  std::vector<std::string> pieces_;
};

/// Sets an environment variable while the object lives; null removes it.
class environment {
 public:
  environment(const char* name, const char* value);
  environment(const environment&) = delete;
  environment& operator=(const environment&) = delete;
  ~environment();

 private:
  std::string name_;
  std::optional<std::string> old_;
};

/// The separator, put back when the object goes.
class separator {
 public:
  explicit separator(char c);
  separator(const separator&) = delete;
  separator& operator=(const separator&) = delete;
  ~separator();

 private:
  char old_;
};

/// The text record of a tree: equal for trees that are equal in every name, rectangle, wire and order.
std::string text_of(const BX_INSTANCE& inst);

/// A random tree below root: names from a small alphabet, some with "$", random rectangles and wires.
void grow_random_tree(BX_INSTANCE& root, std::mt19937& random, int instances);

/// Compresses a tree of so many instances "T" below its root that all have the wires of one template, of which only the
/// first has wires itself: what makes a small file of a large tree.
void fill_and_compress_alike(BX_DB& tree, int instances, int wires);

}  // namespace test
