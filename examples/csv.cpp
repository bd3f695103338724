#include "csv.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace {

struct Cell {
  std::string text;
  std::size_t column;  // where it begins in its line, from 1
};

struct Position {
  const std::string& file;
  std::size_t line = 0;

  [[noreturn]] void fail(std::size_t column, const std::string& reason) const {
    throw std::runtime_error(file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + reason);
  }
};

// In quotes for a message: shortened, control characters replaced.
std::string shown(const std::string& text) {
  constexpr std::size_t kLongest = 40;
  std::string result = text.size() > kLongest ? text.substr(0, kLongest) + "..." : text;
  for (char& c : result)
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
  return "'" + result + "'";
}

std::size_t skipBlanks(const std::string& line, std::size_t at) {
  while (at < line.size() && (line[at] == ' ' || line[at] == '\t')) ++at;
  return at;
}

// A quoted cell from its opening quote on; a doubled quote stands for one. Leaves `at` behind the closing quote.
Cell readQuoted(const Position& position, const std::string& line, std::size_t& at) {
  Cell cell{"", at + 1};
  for (++at; at < line.size(); ++at) {
    if (line[at] == '"' && (++at == line.size() || line[at] != '"')) return cell;
    cell.text += line[at];
  }
  position.fail(cell.column, "the quoted cell does not end");
}

Cell readPlain(const std::string& line, std::size_t& at) {
  const std::size_t start = at;
  at = std::min(line.find(',', at), line.size());
  std::size_t end = at;
  while (end > start && (line[end - 1] == ' ' || line[end - 1] == '\t')) --end;
  return {line.substr(start, end - start), start + 1};
}

std::vector<Cell> splitLine(const Position& position, const std::string& line) {
  std::vector<Cell> cells;
  for (std::size_t at = 0;; ++at) {
    at = skipBlanks(line, at);
    const bool quoted = at < line.size() && line[at] == '"';
    cells.push_back(quoted ? readQuoted(position, line, at) : readPlain(line, at));
    at = skipBlanks(line, at);
    if (at == line.size()) return cells;
    if (line[at] != ',') position.fail(at + 1, "a comma must follow the quoted cell");
  }
}

// A finite decimal number in a notation of its own: independent of the locale, no "inf", no hexadecimal digits.
std::optional<double> parseNumber(const std::string& text) {
  const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  const char* end = text.data() + text.size();
  double value = 0.0;
  const auto [stop, error] = std::from_chars(text.data() + (plus ? 1 : 0), end, value);
  if (error != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

bool isHeader(const std::vector<Cell>& cells) {
  for (const Cell& cell : cells)
    if (!parseNumber(cell.text)) return true;
  return false;
}

void startTable(Table& table, const std::vector<Cell>& cells, bool named) {
  for (const Cell& cell : cells)
    table.names.push_back(named ? cell.text : "column " + std::to_string(table.names.size() + 1));
  table.columns.resize(cells.size());
}

void appendRow(Table& table, const Position& position, const std::vector<Cell>& cells) {
  if (cells.size() != table.names.size()) {
    const std::size_t odd = std::min(cells.size(), table.names.size() + 1) - 1;  // the last one, or the first too many
    position.fail(cells[odd].column, "the row has " + std::to_string(cells.size()) + " cells, the first one has " +
                                         std::to_string(table.names.size()));
  }
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::optional<double> value = parseNumber(cells[i].text);
    if (!value) position.fail(cells[i].column, "not a finite decimal number: " + shown(cells[i].text));
    table.columns[i].push_back(*value);
  }
}

bool isSkipped(const std::string& line) { return skipBlanks(line, 0) == line.size() || line[0] == '#'; }

Table readTable(std::istream& in, const std::string& file) {
  Table table;
  Position position{file};
  std::string line;
  while (std::getline(in, line)) {
    ++position.line;
    if (position.line == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);  // byte order mark
    if (line.ends_with('\r')) line.pop_back();
    if (isSkipped(line)) continue;
    const std::vector<Cell> cells = splitLine(position, line);
    const bool first = table.names.empty();
    const bool header = first && isHeader(cells);
    if (first) startTable(table, cells, header);
    if (!header) appendRow(table, position, cells);
  }
  if (in.bad()) throw std::runtime_error(file + ": cannot be read");
  ++position.line;
  if (table.columns.empty() || table.columns.front().empty()) position.fail(1, "the table ends without any numbers");
  return table;
}

}  // namespace

Table readTable(const std::string& path) {
  if (path == "-") return readTable(std::cin, "<stdin>");
  std::ifstream in(path);
  if (!in) throw std::runtime_error(path + ": " + std::generic_category().message(errno));
  return readTable(in, path);
}
