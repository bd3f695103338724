// Looking an operation up in its family's table, which has one row per operation in the order of the codes.
#pragma once

#include <cstddef>

// Whether row i of a table belongs to code i; asserted beside every table.
template <class Row, std::size_t Count>
constexpr bool rowsFollowTheirCodes(const Row (&rows)[Count]) {
  for (std::size_t i = 0; i < Count; ++i) {
    if (static_cast<std::size_t>(rows[i].op) != i) return false;
  }
  return true;
}

// The operation's row; a code outside the table counts as the first operation.
template <class Row, std::size_t Count>
constexpr const Row& rowOf(const Row (&rows)[Count], decltype(Row::op) op) {
  const auto code = static_cast<std::size_t>(op);  // negative codes become large ones
  return rows[code < Count ? code : 0];
}
