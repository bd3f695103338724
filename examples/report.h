// The program's results as text.
#pragma once

#include <iosfwd>

#include "leastSquares.h"
#include "statistics.h"

// One line per column, under the column's name.
void printSummaries(std::ostream& out, const Table& table, const std::vector<ColumnSummary>& summaries);
// The coefficients with their standard errors, the residual deviation and R squared.
void printFit(std::ostream& out, const Table& table, const Fit& fit);

// The fit beside certified values with the decimal digits in which they agree; the fewest of those digits is returned.
// The rows of `certified` are the coefficients with their standard errors, then the residual deviation with R squared.
// Throws std::runtime_error when it has another number of rows or columns.
double printComparison(std::ostream& out, const Fit& fit, const Table& certified);
