// Summary figures of one column, computed with the module's natives.
#pragma once

#include "ndArrayClient.h"

// What is printed of a column.
struct ColumnSummary {
  std::size_t count;
  double sum;
  double mean;
  double deviation;  // standard deviation of the sample, divisor count - 1; NaN for a single value
  double minimum;
  double maximum;
  double median;
  std::size_t outliers;  // values more than three deviations from the mean
};

// Summarizes a column of at least one value. Throws LanguageError when a native raises.
ColumnSummary summarizeColumn(const NdArrayClient& client, const std::vector<double>& column);

// A column moved to mean zero.
struct CenteredColumn {
  Array values;
  double mean;
};
// Subtracts the mean of an array of `count` values. Throws like summarizeColumn.
CenteredColumn centerColumn(const NdArrayClient& client, const Array& column, std::size_t count);

// The square root of the sum of squares.
double euclideanNorm(const NdArrayClient& client, const Array& array);
