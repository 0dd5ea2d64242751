// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the tests of the object model share: ways to protected members, short hands for building trees, and
// message managers that do not end the process.
#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include "builders.h"
#include "bx_walk.h"

namespace test {

/// The variable that asks for the line behind a fatal message, and the message.
inline constexpr const char* show_internal_error = "KRT_SHOW_INTERNAL_ERROR";
inline constexpr const char* fatal_text = "A fatal error occurred. The process will now exit.";

struct open_wire : BX_WIRE {
  open_wire(char* own_name, const BX_POINT* at) noexcept : BX_WIRE(own_name, at) {}
  using BX_WIRE::currentX;
  using BX_WIRE::currentY;
  using BX_WIRE::isCurrentXYSet;
};

struct open_instance : BX_INSTANCE {
  using BX_INSTANCE::BX_INSTANCE;
  using BX_INSTANCE::separator;
  using BX_INSTANCE::settoplevel;
};

struct open_db : BX_DB {
  using BX_DB::BX_DB;
  using BX_DB::getcachedname;
};

/// Calls settoplevel on any instance.
inline void bind(BX_INSTANCE& inst, BX_DB* db) { (inst.*(&open_instance::settoplevel))(db); }

/// Interns a text in any database.
inline char* intern(BX_DB& db, const char* text) { return (db.*(&open_db::getcachedname))(text); }

inline BX_INSTANCE* make(const char* name, bx_long x1, bx_long y1, bx_long x2, bx_long y2) {
  return new BX_INSTANCE(name, x1, y1, x2, y2);
}

/// Makes an instance and adds it to the parent.
inline BX_INSTANCE* add(BX_INSTANCE& parent, const char* name, bx_long x1, bx_long y1, bx_long x2, bx_long y2) {
  BX_INSTANCE* inst = make(name, x1, y1, x2, y2);
  parent.addinstance(inst);
  return inst;
}

inline void add_wire(BX_INSTANCE& inst, const char* name, bx_long x = 0, bx_long y = 0) {
  const BX_WIRE wire(name, x, y);
  inst.addwire(&wire);
}

inline void add_wires(BX_INSTANCE& inst, std::initializer_list<const char*> names) {
  for (const char* name : names) add_wire(inst, name);
}

inline std::vector<std::string> wire_names(const BX_INSTANCE& inst) {
  std::vector<std::string> names;
  for (const BX_WIRE& wire : inst.wires) names.emplace_back(wire.name);
  return names;
}

inline std::vector<std::string> child_names(const BX_INSTANCE& inst) {
  std::vector<std::string> names;
  for (const BX_INSTANCE* child : inst.instances) names.emplace_back(child->name);
  return names;
}

/// "xmin xmax ymin ymax".
inline std::string rectangle(const UT_EXTREMA& box) {
  return std::to_string(box.xmin) + " " + std::to_string(box.xmax) + " " + std::to_string(box.ymin) + " " +
         std::to_string(box.ymax);
}

/// What a message manager was told, one line each.
class recording_manager : public UT_MSGMAN {
 public:
  void msgdetail(const char* text, int reserved) override {
    lines.push_back(std::string("detail ") + text + " " + std::to_string(reserved));
  }
  void msgfatal(const char* message, const char* tag, const char* source, short, const char* version, bx_long code,
                bx_long reserved) override {
    lines.push_back(std::string("fatal ") + message);
    origins.push_back(std::string(source) + " " + version + " " + std::to_string(code) + " " +
                      std::to_string(reserved));
    tags.emplace_back(tag);
  }

  std::vector<std::string> lines;
  std::vector<std::string> origins;
  std::vector<std::string> tags;
};

struct fatal_report : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class throwing_manager : public UT_MSGMAN {
 public:
  void msgfatal(const char* message, const char*, const char*, short, const char*, bx_long, bx_long) override {
    throw fatal_report(message);
  }
};

/// Puts a message manager in place while the object lives.
class substitute {
 public:
  explicit substitute(UT_MSGMAN& manager) : old_(ut_msgman) { ut_msgman = &manager; }
  substitute(const substitute&) = delete;
  substitute& operator=(const substitute&) = delete;
  ~substitute() { ut_msgman = old_; }

 private:
  UT_MSGMAN* old_;
};

/// Sets BX_DB::MPAR_FLOW while the object lives.
class flow {
 public:
  explicit flow(bx_long value) : old_(BX_DB::MPAR_FLOW) { BX_DB::MPAR_FLOW = value; }
  flow(const flow&) = delete;
  flow& operator=(const flow&) = delete;
  ~flow() { BX_DB::MPAR_FLOW = old_; }

 private:
  bx_long old_;
};

}  // namespace test
