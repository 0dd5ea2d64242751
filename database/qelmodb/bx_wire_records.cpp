// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_record_readers.h"
#include "bx_record_writers.h"
#include "bx_reports.h"
#include "ut_arith.h"

unsigned char BX_WIRE::writeme(UT_PTRFILE* file) const {
  bx_binary_writer writer(*file);
  bx_describe_wire(writer, *this);
  return 1;
}

unsigned char BX_WIRE::readme(UT_PTRFILE* file, char separator) {
  drop_own_name();
  bx_binary_reader reader(*file);
  reader.set_separator(separator);
  return bx_describe_wire(reader, *this) ? 1 : 0;
}

unsigned char BX_WIRE::writeme(UT_STREAM* file) const {
  bx_text_writer writer(*file);
  bx_describe_wire(writer, *this);
  return 1;
}

unsigned char BX_WIRE::readme(UT_STREAM* file, char separator) {
  drop_own_name();
  bx_text_reader reader(*file, nullptr, nullptr);
  reader.set_separator(separator);
  return bx_describe_wire(reader, *this) ? 1 : 0;
}

void BX_WIRE::printme(int level) const { bx_print_wire(*this, level); }

// ---- delta-coded records: name reference, a byte with a two-bit code for each coordinate (x in bits 3..2,
// y in bits 1..0), and the payloads of x and y.

namespace {

enum delta_code : unsigned { same = 0, one_byte = 1, two_bytes = 2, absolute = 3 };

delta_code code_of(bool relative, bx_long delta) noexcept {
  if (!relative || delta < INT16_MIN || delta > INT16_MAX) return absolute;
  if (delta == 0) return same;
  return delta >= INT8_MIN && delta <= INT8_MAX ? one_byte : two_bytes;
}

void write_payload(bx_binary_writer& writer, delta_code code, bx_long delta, bx_long whole) {
  switch (code) {
    case same:
      break;
    case one_byte:
      writer.bytes<1>(static_cast<bx_ulong>(delta));
      break;
    case two_bytes:
      writer.bytes<2>(static_cast<bx_ulong>(delta));
      break;
    case absolute:
      writer.number(whole);
      break;
  }
}

// A payload that is cut off reads as zero.
bx_long read_payload(bx_stream_source& source, unsigned code, bx_long current) {
  const bx_long size = code == absolute ? 4 : static_cast<bx_long>(code);
  const char* bytes = size != 0 ? source.take(size) : nullptr;
  const std::uint64_t raw = bytes != nullptr ? bx_decode(bytes, static_cast<std::size_t>(size)) : 0;
  switch (code) {
    case one_byte:
      return ut_wrap_add(current, static_cast<std::int8_t>(static_cast<std::uint8_t>(raw)));
    case two_bytes:
      return ut_wrap_add(current, static_cast<std::int16_t>(static_cast<std::uint16_t>(raw)));
    case absolute:
      return static_cast<bx_long>(static_cast<bx_ulong>(raw));
    default:
      return current;
  }
}

}  // namespace

unsigned char BX_WIRE::writemeCompressed(UT_PTRFILE* file) const {
  bx_binary_writer writer(*file);
  writer.reference(name);
  const bx_long dx = ut_wrap_sub(nodex, currentX);
  const bx_long dy = ut_wrap_sub(nodey, currentY);
  const delta_code x_code = code_of(isCurrentXYSet, dx);
  const delta_code y_code = code_of(isCurrentXYSet, dy);
  writer.bytes<1>(x_code * 4U + y_code);
  write_payload(writer, x_code, dx, nodex);
  write_payload(writer, y_code, dy, nodey);
  isCurrentXYSet = true;
  currentX = nodex;
  currentY = nodey;
  return 1;
}

unsigned char BX_WIRE::readmeCompressed(UT_PTRFILE* file, char separator) {
  drop_own_name();
  bx_stream_source source(*file);
  bx_reference_reader<bx_stream_source> reader(source, file->fixtable(), separator);
  reader.begin(bx_wire_record);
  reader.name(*this);
  const char* byte = source.take(1);
  const unsigned codes = byte != nullptr ? static_cast<unsigned char>(*byte) : 0;
  nodex = read_payload(source, codes >> 2 & 3U, currentX);
  nodey = read_payload(source, codes & 3U, currentY);
  currentX = nodex;
  currentY = nodey;
  return 1;
}
