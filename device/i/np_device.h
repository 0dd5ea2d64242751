// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ut_point.h"
#include "ut_stream.h"

/// What the library asks of a device: its size in rows and columns, and the row and column of a point.
/// Rows count upwards from the bottom, columns from the left, both from 0. A client that knows its
/// devices better derives its own and registers it with the device cache.
class BX_API NP_DEVICE {
 public:
  NP_DEVICE() = default;
  NP_DEVICE(const NP_DEVICE&) = delete;
  NP_DEVICE& operator=(const NP_DEVICE&) = delete;

  /// The highest row number.
  virtual bx_long maxrow() = 0;

  /// The highest column number.
  virtual bx_long maxcol() = 0;

  /// The row of the point; a number outside 0 to maxrow() when it lies outside the device.
  virtual bx_long rowof(const UT_POINT& point) = 0;

  /// The column of the point, likewise.
  virtual bx_long colof(const UT_POINT& point) = 0;

  virtual ~NP_DEVICE();
};

/// A device given by its row and column edges.
class BX_API NP_TABLEDEVICE : public NP_DEVICE {
 public:
  /// Edges ascend strictly; n + 1 edges make n rows (columns). Row i holds the y with
  /// edge i <= y < edge i + 1, the last one its upper edge too.
  NP_TABLEDEVICE(std::vector<bx_long> row_edges, std::vector<bx_long> column_edges);
  ~NP_TABLEDEVICE() override;

  /// Reads a description file:
  ///
  ///     NP_DEVICE:1
  ///     rows 2 0 100 200
  ///     columns 3 0 50 100 150
  ///
  /// the count, then one edge more than the count; any white space separates. At most
  /// max_lines rows and columns. Null when the file cannot be read or is faulty; why then holds a
  /// line that names the file and the place.
  static std::unique_ptr<NP_TABLEDEVICE> read(const char* filename, std::string& why);

  /// Reads a description from a stream, of which why gives the name.
  static std::unique_ptr<NP_TABLEDEVICE> read(UT_STREAM& file, const char* name, std::string& why);

  /// Writes such a file; false and why when it cannot be written.
  bool write(const char* filename, std::string& why) const;

  /// Whether both have the same edges.
  bool operator==(const NP_TABLEDEVICE& other) const noexcept {
    return row_edges_ == other.row_edges_ && column_edges_ == other.column_edges_;
  }

  bx_long maxrow() override;
  bx_long maxcol() override;
  bx_long rowof(const UT_POINT& point) override;
  bx_long colof(const UT_POINT& point) override;

  /// The greatest number of rows or columns of a description file: what 16-bit rows can number.
  static constexpr bx_long max_lines = 32767;

 private:
  std::vector<bx_long> row_edges_;
  std::vector<bx_long> column_edges_;
};
