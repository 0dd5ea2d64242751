// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_name_store.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "bx_order.h"
#include "bx_wire_name_index.h"
#include "ut_hash.h"

std::atomic<bx_ulong> bx_shared_names_cut{0};

namespace {

bool before(const char* a, const char* b) noexcept { return bx_compare_names(a, b) < 0; }

char* copy_of(std::string_view text) {
  void* copy = std::malloc(text.size() + 1);
  if (copy == nullptr) throw std::bad_alloc();
  auto* string = static_cast<char*>(copy);
  text.copy(string, text.size());
  string[text.size()] = '\0';
  return string;
}

}  // namespace

bx_name_store::bx_name_store(DARRAY_NAME& table) : table_(table), seed_(ut_hash_seed()) {}

// A client may have given a joining instance a string of the table, or two instances one string. So strings can be
// among the kept ones more than once, and in the table as well; each is freed once.
bx_name_store::~bx_name_store() {
  std::sort(kept_.begin(), kept_.end());
  kept_.erase(std::unique(kept_.begin(), kept_.end()), kept_.end());
  for (char* string : table_) {
    if (!std::binary_search(kept_.begin(), kept_.end(), string)) bx_free_name(string);
  }
  for (char* string : kept_) bx_free_name(string);
}

std::uint32_t bx_name_store::hash_of(std::string_view text) const noexcept {
  return static_cast<std::uint32_t>(ut_hash(text, seed_));
}

bx_name_store::slot* bx_name_store::find(std::string_view text, std::uint32_t hash) noexcept {
  std::size_t at = hash & (slots_.size() - 1);
  while (slots_[at].text != nullptr) {
    const slot& entry = slots_[at];
    // strncmp stops at the entry's end, so a shorter entry is not read beyond its NUL.
    if (entry.hash == hash && std::strncmp(entry.text, text.data(), text.size()) == 0 &&
        entry.text[text.size()] == '\0') {
      break;
    }
    at = (at + 1) & (slots_.size() - 1);
  }
  return &slots_[at];
}

void bx_name_store::rehash(std::size_t size) {
  std::vector<slot> old(size, slot{nullptr, 0});
  old.swap(slots_);
  for (const slot& entry : old) {
    if (entry.text == nullptr) continue;
    std::size_t at = entry.hash & (size - 1);
    while (slots_[at].text != nullptr) at = (at + 1) & (size - 1);
    slots_[at] = entry;
  }
}

// Adds a string of the table to the index; false when its text is there already.
bool bx_name_store::enter(char* text) {
  if ((used_ + 1) * 2 > slots_.size()) rehash(std::max<std::size_t>(64, slots_.size() * 2));
  const std::string_view view = ut_text(text);
  const std::uint32_t hash = hash_of(view);
  slot* place = find(view, hash);
  if (place->text != nullptr) return false;
  *place = {text, hash};
  ++used_;
  return true;
}

// Brings the index up to date with a table that was changed from outside, or texts that were.
void bx_name_store::refresh() {
  const bx_long count = table_.getcount();
  const bx_ulong cuts = bx_shared_names_cut.load(std::memory_order_relaxed);
  if (indexed_ == count && cuts_seen_ == cuts) return;
  cuts_seen_ = cuts;
  owned_valid_ = false;
  indexed_ = -1;  // until all is done
  slots_.clear();
  used_ = 0;
  ascending_ = true;
  const bx_long settled = batch_start_ >= 0 ? batch_start_ : count;
  for (bx_long i = 0; i < count; ++i) {
    if (table_[i] != nullptr) enter(table_[i]);
    if (i > 0 && i < settled && !before(table_[i - 1], table_[i])) ascending_ = false;
  }
  indexed_ = count;
}

char* bx_name_store::intern(std::string_view text) {
  refresh();
  if (!slots_.empty()) {
    const slot* known = find(text, hash_of(text));
    if (known->text != nullptr) return known->text;
  }
  char* string = copy_of(text);
  try {
    if (batch_start_ >= 0 && ascending_) {
      table_.a_add(&string);
    } else {
      table_.a_sortadd(&string, [](char* const* a, char* const* b) { return bx_compare_names(*a, *b); });
    }
  } catch (...) {
    std::free(string);
    throw;
  }
  // From here on the table owns the string; should the index fail, it is built anew next time.
  indexed_ = -1;
  enter(string);
  indexed_ = table_.getcount();
  owned_valid_ = false;
  return string;
}

void bx_name_store::open_batch() noexcept {
  if (batches_++ == 0) batch_start_ = table_.getcount();
}

void bx_name_store::close_batch() {
  if (--batches_ > 0) return;
  char** const first = table_.begin();
  char** const fresh = first + batch_start_;
  char** const end = table_.end();
  batch_start_ = -1;
  // In a table that keeps a file's order the new names were inserted one by one.
  if (!ascending_ || fresh >= end) return;
  // Merging looks at the whole table; a few names are moved to their places one by one.
  constexpr std::ptrdiff_t few = 8;
  if (end - fresh <= few) {
    for (char** name = fresh; name != end; ++name)
      std::rotate(std::upper_bound(first, name, *name, before), name, name + 1);
    return;
  }
  std::sort(fresh, end, before);
  std::inplace_merge(first, fresh, end, before);
}

void bx_name_store::keep(char* string) {
  if (string == nullptr) return;
  kept_.push_back(string);
  try {
    if (owned_valid_) owned_.insert(string);
  } catch (const std::bad_alloc&) {
    owned_valid_ = false;
  }
}

void bx_name_store::prepare_to_keep(std::size_t strings) {
  const std::size_t needed = kept_.size() + strings;
  if (needed > kept_.capacity()) kept_.reserve(std::max(needed, 2 * kept_.capacity()));
}

void bx_name_store::keep_table() noexcept {
  for (char* string : table_) {
    if (string != nullptr) kept_.push_back(string);
  }
  table_.empty();
  if (batches_ > 0) batch_start_ = 0;
  invalidate();
}

bool bx_name_store::owns(const char* string) {
  refresh();
  if (!owned_valid_) {
    owned_.clear();
    owned_.insert(table_.begin(), table_.end());
    owned_.insert(kept_.begin(), kept_.end());
    owned_valid_ = true;
  }
  return owned_.count(string) != 0;
}
