// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_files.h"

#include <cstring>
#include <memory>
#include <new>

#include "bx_record_readers.h"
#include "bx_record_writers.h"
#include "bx_restore.h"
#include "qelmoext.h"

namespace {

void write_first_line(UT_STREAM& file, char letter) {
  const char line[] = {bx_magic[0], bx_magic[1], bx_magic[2], bx_magic[3], bx_magic[4], bx_magic[5], letter, '\0'};
  static_assert(sizeof bx_magic == 7);
  file.writeline(line);
}

void write_name(bx_binary_writer& writer, UT_STREAM& file, const char* name) {
  writer.reference(name);
  bx_write_text(file, ut_text(name));
  file.write("", 1);
}

// The root's name stands first, as it need not be in the table.
void write_names_and_root_name(const BX_DB& db, UT_PTRFILE& file) {
  bx_binary_writer writer(file);
  writer.number(db.names.getcount() + 1);
  write_name(writer, file, db.name);
  for (const char* name : db.names) write_name(writer, file, name);
}

// In a compressed file the root's name is one of a template.
void write_names(const BX_DB& db, UT_PTRFILE& file) {
  bx_binary_writer writer(file);
  writer.number(db.names.getcount());
  for (const char* name : db.names) write_name(writer, file, name);
}

// Fills the empty name table in the order of the file.
bool read_names(BX_DB& db, UT_PTRFILE& file) {
  constexpr int least_entry = 9;  // an address and a NUL
  bx_stream_source source(file);
  const char* bytes = source.take(4);
  const auto count = bytes != nullptr ? static_cast<bx_long>(static_cast<bx_ulong>(bx_decode(bytes, 4))) : 0;
  if (count > 0) db.names.a_reserve(bx_justified(count, file, least_entry));
  for (bx_long i = 0; i < count; ++i) {
    if (!file.go_on()) return false;
    bytes = source.take(8);
    if (bytes == nullptr) return false;
    const std::uint64_t address = bx_decode(bytes, 8);
    char text[bx_key_size];
    if (file.readstring(text, bx_key_size) < 0) return false;
    std::unique_ptr<char, decltype(&std::free)> name(ut_strdup(text), &std::free);
    char* string = name.get();
    db.names.a_add(&string);
    static_cast<void>(name.release());
    file.fixtable().setnewaddr(address, string);
  }
  return true;
}

// Every reference must have been explained by the name table; only the root may be nameless.
bool names_resolved(BX_DB& db, UT_PTRFIXTABLE& fixtable) {
  char** missing = fixtable.checkptrs();
  if (missing == &db.name) {
    db.name = nullptr;
    fixtable.forget(missing);
    missing = fixtable.checkptrs();
  }
  return missing == nullptr;
}

bool read_text_database(BX_DB& db, UT_PTRFILE& file) {
  const qelmodb::name_batch batch(db);
  bx_text_reader reader(file, &db, nullptr);
  return bx_read_tree(reader, db, true);
}

bool read_binary_database(BX_DB& db, UT_PTRFILE& file) {
  if (!read_names(db, file)) return false;
  const bool good = db.readme(&file) != 0;
  return names_resolved(db, file.fixtable()) && good;
}

bool read_compressed_database(BX_DB& db, UT_PTRFILE& file) {
  if (!read_names(db, file)) return false;
  const bool read = db.readcompress(&file) != 0;
  const bool restored = bx_restore_tree(db, [&file] { return file.go_on_now(); });
  return names_resolved(db, file.fixtable()) && read && restored;
}

bool read_records(BX_DB& db, UT_PTRFILE& file, char letter) {
  switch (letter) {
    case bx_text_letter:
      return read_text_database(db, file);
    case bx_compressed_letter:
      return read_compressed_database(db, file);
    default:
      return read_binary_database(db, file);
  }
}

}  // namespace

bool bx_read_first_line(UT_STREAM& file, char& letter) {
  char line[bx_key_size];
  file.readline(line, bx_key_size);
  constexpr std::size_t length = sizeof bx_magic - 1;
  if (std::strncmp(line, bx_magic, length) != 0) return false;
  letter = line[length];
  return true;
}

bool bx_read_database(BX_DB& db, UT_PTRFILE& file, char letter) {
  try {
    bx_access::release_content(db);
    const bx_load_storage shared_by_all(db);
    return read_records(db, file, letter) && file.ok();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool bx_read_grid(BX_DB& db, UT_PTRFILE& file, char letter) {
  try {
    bx_access::release_content(db);
    unsigned char good = 0;
    if (letter == bx_text_letter) {
      db.top = nullptr;
      good = db.readgrid(static_cast<UT_STREAM*>(&file));
    } else {
      good = db.readgrid(&file);
    }
    return good != 0 && file.ok();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool bx_write_database(const BX_DB& db, UT_PTRFILE& file, bool ascii) {
  write_first_line(file, ascii ? bx_text_letter : bx_binary_letter);
  if (ascii) return db.writeme(static_cast<UT_STREAM*>(&file)) != 0;
  write_names_and_root_name(db, file);
  return db.writeme(&file) != 0;
}

bool bx_write_grid(const BX_DB& db, UT_PTRFILE& file, bool ascii) {
  write_first_line(file, ascii ? bx_text_letter : bx_binary_letter);
  return (ascii ? db.writegrid(static_cast<UT_STREAM*>(&file)) : db.writegrid(&file)) != 0;
}

bool bx_write_compressed(BX_DB& db, UT_PTRFILE& file) {
  if (!bx_access::is_compressed(db)) return false;
  write_first_line(file, bx_compressed_letter);
  write_names(db, file);
  return db.writecompress(&file) != 0;
}
