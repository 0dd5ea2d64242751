// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The block database of a programmable-logic device: wires, instances, the database root, the grid, instance templates.
// A client includes this header; qelmotmplt.h adds the switch-matrix templates, qelmoext.h the checker
// and the functions around the classes.
#pragma once

#include "bx_ass_template.h"
#include "bx_db.h"
#include "bx_grid.h"
#include "bx_instance.h"
#include "bx_tileiterator.h"
#include "bx_wire.h"
#include "np_devcache.h"
#include "np_device.h"
#include "ut_arith.h"
#include "ut_filemanager.h"
#include "ut_msgman.h"
#include "ut_point.h"
#include "ut_string.h"
