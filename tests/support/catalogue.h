// The ways through every native, from a file of blocks, and the making of arguments from the text of a scenario.
#pragma once

#include "support/natives.h"

struct Scenario {
  const Native* native;
  std::vector<std::string> arguments;
  bool inSweeps;  // every combination of arguments is, with one of its operations in turn

  std::string text() const;
};

const std::vector<Scenario>& catalogue();
Values makeArguments(const Scenario& scenario);

// An object from its description:
//   null, foreign (no language object), text (a string), same (the first argument),
//   sharesData (an array over the first argument's data list), "box Int 7",
//   "list Int packed 1,2,3 lock" or, for an array, "Int packed 1,2,3 lock shape=3x1".
// The element type may be a full array type name. Forms: packed, unnamed (no element name), boxes, one (every item one
// box), none (no list), buffer (ready native values); "packed=UInt" and the like name another type for the elements.
// Values: numbers, null, text, foreign, "Long:5" for a box of another type, "1..9" and "0..1/40" for so many steps,
// "fresh" for an integer that was not there before, "random33/7" for 33 numbers of all magnitudes, the seventh such
// sample ("positive33/7" without signs, "odd33/7" with special cases); "-" for none. Flags: lock, meta (metadata
// record), shape=AxB, shapelist=TYPE/FORM/VALUES, size=N, ndim=N, noshape, known (as an array of doubles), stale (the
// remembered extents are invalid), sum=X (cached), named=TYPE (what the list says it holds).
void* makeObject(const std::string& description, const Values& earlier = {});
