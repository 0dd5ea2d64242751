// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_delta_coding.h"
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

// ---- delta-coded records

namespace {

bx_delta_code code_of(bool relative, bx_long delta) noexcept {
  if (!relative || delta < INT16_MIN || delta > INT16_MAX) return bx_delta_absolute;
  if (delta == 0) return bx_delta_same;
  return delta >= INT8_MIN && delta <= INT8_MAX ? bx_delta_one_byte : bx_delta_two_bytes;
}

void write_payload(bx_binary_writer& writer, bx_delta_code code, bx_long delta, bx_long whole) {
  switch (code) {
    case bx_delta_same:
      break;
    case bx_delta_one_byte:
      writer.bytes<1>(static_cast<bx_ulong>(delta));
      break;
    case bx_delta_two_bytes:
      writer.bytes<2>(static_cast<bx_ulong>(delta));
      break;
    case bx_delta_absolute:
      writer.number(whole);
      break;
  }
}

// A payload that is cut off reads as zero.
bx_long read_payload(bx_stream_source& source, bx_delta_code code, bx_long current) {
  const int size = bx_delta_size(code);
  const char* bytes = size != 0 ? source.take(size) : nullptr;
  return bx_delta_value(code, bytes != nullptr ? bx_decode(bytes, static_cast<std::size_t>(size)) : 0, current);
}

}  // namespace

unsigned char BX_WIRE::writemeCompressed(UT_PTRFILE* file) const {
  bx_binary_writer writer(*file);
  writer.reference(name);
  const bx_long dx = ut_wrap_sub(nodex, currentX);
  const bx_long dy = ut_wrap_sub(nodey, currentY);
  const bx_delta_code x_code = code_of(isCurrentXYSet, dx);
  const bx_delta_code y_code = code_of(isCurrentXYSet, dy);
  writer.bytes<1>(bx_delta_codes(x_code, y_code));
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
  nodex = read_payload(source, bx_delta_x_code(codes), currentX);
  nodey = read_payload(source, bx_delta_y_code(codes), currentY);
  currentX = nodex;
  currentY = nodey;
  return 1;
}
