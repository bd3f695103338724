// Tables of numbers in comma-separated text: an optional header row, then rows of equally many finite decimal numbers.
// Cells may be quoted; blank lines and lines that begin with # are skipped.
#pragma once

#include <string>
#include <vector>

struct Table {
  std::vector<std::string> names;            // from the header, else "column 1", "column 2", ...
  std::vector<std::vector<double>> columns;  // as many as names, equally long, at least one value each

  std::size_t rowCount() const { return columns.front().size(); }
};

// The table in the file, or on standard input for "-". The first row is the header when any of its cells is not a
// number. Throws std::runtime_error with "file:line:column: reason", or "file: reason" when it cannot be read at all.
Table readTable(const std::string& path);
