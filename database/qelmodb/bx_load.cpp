// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Loading and dumping by file name and by device.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "bx_access.h"
#include "bx_files.h"
#include "np_devcache.h"
#include "ut_filemanager.h"
#include "ut_msgman.h"
#include "ut_string.h"

namespace {

constexpr char database_extension[] = ".bxd";
constexpr char grid_extension[] = ".bxg";

/// How a load ended.
enum class outcome { refused, damaged, whole };

outcome load_file(BX_DB& db, const char* filename, bool (*read)(BX_DB&, UT_PTRFILE&, char)) {
  auto file = std::make_unique<UT_PTRFILE>(UT_READ);
  if (ut_file->add_ofile(filename, UT_READ, file.get(), false) == nullptr) return outcome::refused;
  char letter = '\0';
  if (!bx_read_first_line(*file, letter)) {
    *ut_msgman << filename << " is not a BX_DB file."
               << "\n";
    ut_file->leave(file.release());
    return outcome::refused;
  }
  const bool good = read(db, *file, letter);
  ut_file->rm_ofile(file.get());
  return good ? outcome::whole : outcome::damaged;
}

/// 1 when the work succeeded. Running out of memory is a failure like any other.
template <class Work>
unsigned char result_of(Work work) {
  try {
    return work() ? 1 : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

template <class Write>
bool dump_file(const char* filename, Write write) {
  UT_PTRFILE file(UT_WRITE);
  if (ut_file->add_ofile(filename, UT_WRITE, &file, true) == nullptr) return false;
  const bool written = write(file);
  if (!written) file.fail();
  return ut_file->rm_ofile(&file) && written;
}

// Keeps the device and gives the name of its data file; empty for an empty handle.
std::string data_file(BX_DB& db, const PM_PIC_HDL& picture, const char* extension) {
  db.setdevice(np_devcache->fetch(picture, nullptr, false));
  return picture ? picture->getspec().getdatafilename(2, extension, true) : std::string();
}

std::string dump_file_name(const PM_PIC_HDL& picture, const char* extension) {
  return picture ? std::string(picture->getDeviceName()) + extension : std::string();
}

}  // namespace

unsigned char BX_DB::load(const char* filename) {
  return result_of([&] {
    const outcome result = load_file(*this, filename, bx_read_database);
    if (result == outcome::refused) return false;
    if (std::getenv("KRT_LARGE_DESIGN") != nullptr) convert_hierarchy();
    return result == outcome::whole;
  });
}

unsigned char BX_DB::loadgrid(const char* filename) {
  return result_of([&] { return load_file(*this, filename, bx_read_grid) == outcome::whole; });
}

unsigned char BX_DB::dump(const char* filename, bool ascii) {
  return result_of(
      [&] { return dump_file(filename, [&](UT_PTRFILE& file) { return bx_write_database(*this, file, ascii); }); });
}

unsigned char BX_DB::dumpgrid(const char* filename, bool ascii) {
  return result_of(
      [&] { return dump_file(filename, [&](UT_PTRFILE& file) { return bx_write_grid(*this, file, ascii); }); });
}

unsigned char BX_DB::dumpcompress(const char* filename, bool ascii) {
  return result_of([&] {
    if (ascii) {
      // Clients read this line from standard output, and find an empty file.
      dump_file(filename, [](UT_PTRFILE& /*file*/) {
        std::fputs("Dump compressed ascii file has not been implemented yet!\n", stdout);
        return true;
      });
      return false;
    }
    if (!bx_access::is_compressed(*this)) return false;
    return dump_file(filename, [&](UT_PTRFILE& file) { return bx_write_compressed(*this, file); });
  });
}

unsigned char BX_DB::load(PM_PIC_HDL picture) {
  return result_of([&] { return load(data_file(*this, picture, database_extension).c_str()) != 0; });
}

unsigned char BX_DB::loadgrid(PM_PIC_HDL picture) {
  return result_of([&] { return loadgrid(data_file(*this, picture, grid_extension).c_str()) != 0; });
}

unsigned char BX_DB::dump(PM_PIC_HDL picture, bool ascii) {
  return result_of([&] { return dump(dump_file_name(picture, database_extension).c_str(), ascii) != 0; });
}

unsigned char BX_DB::dumpgrid(PM_PIC_HDL picture, bool ascii) {
  return result_of([&] { return dumpgrid(dump_file_name(picture, grid_extension).c_str(), ascii) != 0; });
}
