// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What stands behind the name table of a compressed file: the templates, and the tree without names and wires.
#include <memory>

#include "bx_name_store.h"
#include "bx_own_classes.h"
#include "bx_template_coders.h"

namespace {

bool write_skeleton(UT_PTRFILE& file, BX_INSTANCE& root) {
  bx_template_writer writer(file);
  return bx_walk_steps(root, [&](BX_INSTANCE& inst, bx_long /*depth*/) {
    if (&inst != &root && bx_is_derived(inst)) return inst.writecompress(&file) != 0 ? bx_step::past : bx_step::stop;
    if (!file.go_on()) return bx_step::stop;
    bx_describe_skeleton(writer, inst);
    writer.count(bx_child_count_label, bx_count_children(inst));
    return bx_step::into;
  });
}

bool read_layouts(UT_PTRFILE& file, std::vector<ASS_TEMPLATE*>& layouts) {
  bx_long count = 0;
  bx_template_reader(file).field("template count", count);
  for (bx_long i = 0; i < count; ++i) {
    auto fresh = std::make_unique<ASS_TEMPLATE>();
    if (fresh->readme(&file) == 0 || !file.ok() || !file.go_on()) return false;
    layouts.push_back(fresh.get());
    static_cast<void>(fresh.release());
  }
  return true;
}

}  // namespace

unsigned char BX_INSTANCE::writecompress(UT_PTRFILE* file) { return write_skeleton(*file, *this) ? 1 : 0; }

unsigned char BX_INSTANCE::readcompress(UT_PTRFILE* file) {
  bx_template_reader reader(*file);
  const bool good = bx_read_tree(reader, *this, bx_least_skeleton_size,
                                 [&reader](BX_INSTANCE& inst) { return bx_describe_skeleton(reader, inst); });
  return good ? 1 : 0;
}

unsigned char BX_DB::writecompress(UT_PTRFILE* file) {
  if (!bx_access::is_compressed(*this)) return 0;
  BX_WIRE::resetCurrentXY();
  if (basicasstemplate->writeme_sm(file) == 0) return 0;
  bx_template_writer(*file).count("template count", static_cast<bx_long>(asstemplates.size()));
  for (const ASS_TEMPLATE* layout : asstemplates) {
    if (!file->go_on() || layout->writeme(file) == 0) return 0;
  }
  return write_skeleton(*file, *this) ? 1 : 0;
}

unsigned char BX_DB::readcompress(UT_PTRFILE* file) {
  release_templates();
  BX_WIRE::resetCurrentXY();
  basicasstemplate = new BASIC_ASS_TEMPLATE;
  if (basicasstemplate->readme_sm(file) == 0 || !read_layouts(*file, asstemplates)) return 0;
  return BX_INSTANCE::readcompress(file);
}
