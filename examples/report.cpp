#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace {

constexpr int kShownDigits = 10;
constexpr int kAllDigits = 15;  // what a double holds and the certified values give

std::string number(double value, int digits = kShownDigits) {
  if (std::isnan(value)) return "-";
  char text[40];
  std::snprintf(text, sizeof text, "%.*g", digits, value);
  return text;
}

using Row = std::vector<std::string>;

// Columns as wide as their widest cell: the first flush left, the others flush right.
void printRows(std::ostream& out, const std::vector<Row>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const Row& row : rows)
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  for (const Row& row : rows) {
    out << row[0] << std::string(widths[0] - row[0].size(), ' ');
    for (std::size_t i = 1; i < row.size(); ++i) out << "  " << std::string(widths[i] - row[i].size(), ' ') << row[i];
    out << '\n';
  }
}

// The decimal digits in which two numbers agree: minus the logarithm of the relative error.
double agreeingDigits(double computed, double certified) {
  if (computed == certified) return kAllDigits;
  return std::clamp(-std::log10(std::fabs((computed - certified) / certified)), 0.0, static_cast<double>(kAllDigits));
}

}  // namespace

void printSummaries(std::ostream& out, const Table& table, const std::vector<ColumnSummary>& summaries) {
  std::vector<Row> rows{{"column", "count", "sum", "mean", "deviation", "minimum", "maximum", "median", "|z| > 3"}};
  for (std::size_t i = 0; i < summaries.size(); ++i) {
    const ColumnSummary& summary = summaries[i];
    rows.push_back({table.names[i], std::to_string(summary.count), number(summary.sum), number(summary.mean),
                    number(summary.deviation), number(summary.minimum), number(summary.maximum), number(summary.median),
                    std::to_string(summary.outliers)});
  }
  printRows(out, rows);
}

void printFit(std::ostream& out, const Table& table, const Fit& fit) {
  out << "\nLeast-squares fit of " << table.names.back() << "\n\n";
  std::vector<Row> rows{{"coefficient", "estimate", "standard error"}};
  for (std::size_t i = 0; i < fit.coefficients.size(); ++i) {
    const Coefficient& coefficient = fit.coefficients[i];
    const std::string& name = i == 0 ? "(intercept)" : table.names[i - 1];
    rows.push_back({name, number(coefficient.estimate), number(coefficient.error)});
  }
  printRows(out, rows);
  out << "\nresidual deviation  " << number(fit.residualDeviation) << "\nR squared           " << number(fit.rSquared)
      << '\n';
}

double printComparison(std::ostream& out, const Fit& fit, const Table& certified) {
  std::vector<Coefficient> computed = fit.coefficients;
  computed.push_back({fit.residualDeviation, fit.rSquared});
  if (certified.columns.size() != 2 || certified.rowCount() != computed.size())
    throw std::runtime_error("the certified values must be " + std::to_string(computed.size()) + " rows of two");

  std::vector<Row> rows{{"", "computed", "certified", "digits that agree"}};
  double fewest = kAllDigits;
  for (std::size_t i = 0; i < computed.size(); ++i)
    for (const bool second : {false, true}) {
      const double value = second ? computed[i].error : computed[i].estimate;
      const double wanted = certified.columns[second ? 1 : 0][i];
      const double digits = agreeingDigits(value, wanted);
      const bool last = i + 1 == computed.size();
      const std::string name = last ? (second ? "R squared" : "residual deviation")
                                    : (second ? "standard error " : "coefficient ") + std::to_string(i);
      rows.push_back({name, number(value, kAllDigits), number(wanted, kAllDigits), number(digits, 3)});
      fewest = std::min(fewest, digits);
    }
  out << '\n';
  printRows(out, rows);
  return fewest;
}
