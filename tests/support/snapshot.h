// What a test sees of language values: a graph of plain nodes, read out of the host before and after a call, in which
// identity counts. The slow model works on such a graph and adds the nodes that it expects a native to make.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/verbs.h"

struct Node;
using Ref = Node*;

// The native values of an array. Values that nobody can know are either left out (the vector is empty) or random.
struct Buffer {
  unsigned long count = 0;
  bool heap = false, ready = false, sumValid = false, random = false;
  double sum = 0;
  std::vector<double> values;
};

struct Node {
  enum class Kind { Other, Box, List, Array };

  Kind kind = Kind::Other;
  void* address = nullptr;  // null for a node that the model made
  std::string shared;       // what the object is, when it is one of those that the module shares process-wide
  std::string type;         // short for boxes, full for arrays

  Number value = 0;  // of a box; integers of all types as signed 64-bit values

  unsigned char packed = 0;  // of a list: its kind, or 0 for `items`
  std::string elementName;   // empty when the list holds no name
  Numbers elements;
  std::vector<Ref> items;

  long long ndim = 0, size = 0;  // of an array
  Ref shape = nullptr, strides = nullptr, data = nullptr;
  bool hasMetadata = false, prefixValid = false;
  long long dim0 = 0, dim1 = 0;
  std::optional<Buffer> buffer;
};

class World {
 public:
  // The node of a live object and of everything that it reaches; null for null.
  Ref see(void* object);
  Ref make(Node::Kind kind, const std::string& type);
  bool knows(void* object) const { return seen_.count(object) != 0; }

 private:
  std::deque<Node> nodes_;
  std::map<void*, Ref> seen_;
};

// A node and all that it refers to, to the last bit, without addresses; all NaNs are one.
std::string contentOf(Ref root);

// Compares what a native did with what was expected of it, through as many values as `compare` is called with.
class Comparison {
 public:
  // `before` holds the objects that existed before the call; `expected` nodes without an address must be new ones.
  explicit Comparison(const World& before) : before_(before) {}
  void compare(const std::string& path, const Node* expected, const Node* actual);
  // Where the two differ first; empty when they agree.
  const std::string& difference() const { return difference_; }

 private:
  void differ(const std::string& text) { difference_ = difference_.empty() ? text : difference_; }
  bool isRightObject(const Node& expected, const Node& actual);

  const World& before_;
  std::map<const Node*, const Node*> pairs_, reverse_;  // expected to actual nodes, and back
  std::string difference_;
};
