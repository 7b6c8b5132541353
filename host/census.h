// What was taken and not yet returned, and what was done wrong.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/object.h"

namespace host {

// What one object, or one piece of string data, holds on to.
struct Holding {
  std::string what;  // "Picture #7 (20 x 10)"
  int64_t references = 0;
  int64_t descriptionLocks = 0;
  int64_t pixelLocks = 0;
  friend bool operator==(const Holding&, const Holding&) = default;
};

// Everything that lives at one moment.
struct Snapshot {
  std::map<uint64_t, Holding> holdings;  // by serial number
  size_t errors = 0;                     // so many there were
};

class Census {
 public:
  // Every live object; string data that "PluginGetStringData" gave and nobody disposed of counts as
  // one with a reference. A Core Foundation bundle whose code is loaded stays for the life of the
  // process and isn't in it.
  Snapshot Take() const;

  // One line for every object that holds more or less than it did, and for every new error since;
  // empty when all is balanced:
  //   "Picture #9 (20 x 10): 1 reference, 1 description lock not returned".
  std::vector<std::string> Difference(const Snapshot& before) const;
  // The same, in one text of a line each.
  std::string DifferenceText(const Snapshot& before) const;

  // Objects alive of one kind.
  int64_t Live(Kind kind) const;

  // Every live object, a line each.
  std::string Listing() const;

  // What the plug-in did wrong, in order: references given back that it didn't have, handles used
  // after their object's end or of the wrong kind, locks undone that weren't, pictures ended by the
  // plug-in while locked, writes beside pixel, block or instance memory, rows that can't be
  // registered. None of these stops the host.
  const std::vector<std::string>& Errors() const { return errors; }
  void ClearErrors() { errors.clear(); }

  // For the host's own functions.
  void Add(std::string error) { errors.push_back(std::move(error)); }

 private:
  std::vector<std::string> errors;
};

}  // namespace host
