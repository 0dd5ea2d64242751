// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_wire.h"

#include <cstdlib>
#include <new>

#include "ut_string.h"

bx_long BX_WIRE::currentX = 0;
bx_long BX_WIRE::currentY = 0;
bool BX_WIRE::isCurrentXYSet = false;

BX_WIRE::BX_WIRE(const char* wire_name, bx_long x, bx_long y)
    : nodex(x), nodey(y), name(ut_strdup(wire_name)), nameborrowed(false), holder_(holder::client) {}

BX_WIRE::BX_WIRE(char* own_name, const BX_POINT* at) noexcept
    : nodex(at->x), nodey(at->y), name(own_name), nameborrowed(false), holder_(holder::client) {}

BX_WIRE::BX_WIRE(const BX_WIRE& other) noexcept
    : nodex(other.nodex),
      nodey(other.nodey),
      name(other.name),
      nameborrowed(other.nameborrowed),
      holder_(other.holder_ == holder::client ? holder::client : holder::copy_from_array) {}

BX_WIRE& BX_WIRE::operator=(const BX_WIRE& other) noexcept {
  nodex = other.nodex;
  nodey = other.nodey;
  name = other.name;
  nameborrowed = other.nameborrowed;
  // Lying in an array is a property of the place, so it stays.
  if (holder_ != holder::array) {
    holder_ = other.holder_ == holder::client ? holder::client : holder::copy_from_array;
  }
  return *this;
}

// A destroyed wire has no name. Inlined into the destructor, the store that clears it would be left out as one to an
// object whose life is over.
[[gnu::noinline]] void BX_WIRE::drop_own_name() noexcept {
  if (!nameborrowed && holder_ == holder::client) std::free(name);
  name = nullptr;
}

BX_WIRE::~BX_WIRE() { drop_own_name(); }

void BX_WIRE::setname(char* new_name) noexcept {
  name = new_name;
  if (holder_ == holder::copy_from_array) holder_ = holder::client;
}

void BX_WIRE::resetCurrentXY() noexcept {
  isCurrentXYSet = false;
  currentX = 0;
  currentY = 0;
}
