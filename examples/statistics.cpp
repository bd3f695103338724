#include "statistics.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace {

constexpr double kOutlierDeviations = 3.0;

double squareRoot(const NdArrayClient& client, double value) {
  return client.at(client.sqrt(client.filled({1}, value)), 0);
}

// With a deviation of zero every score is NaN, and none counts.
std::size_t countOutliers(const NdArrayClient& client, const Array& centered, double deviation, std::size_t count) {
  const Array scores = client.abs(client.divide(centered, client.filled({count}, deviation)));
  std::size_t outliers = 0;
  for (std::size_t i = 0; i < count; ++i) outliers += client.at(scores, i) > kOutlierDeviations ? 1 : 0;
  return outliers;
}

}  // namespace

ColumnSummary summarizeColumn(const NdArrayClient& client, const std::vector<double>& column) {
  const std::size_t count = column.size();
  const Array values = client.fromDoubles(column);
  const CenteredColumn centered = centerColumn(client, values, count);

  ColumnSummary summary{};
  summary.count = count;
  summary.sum = client.sum(values);
  summary.mean = centered.mean;
  const double squares = client.sum(client.pow(centered.values, 2.0));
  summary.deviation = count > 1 ? squareRoot(client, squares / static_cast<double>(count - 1))
                                : std::numeric_limits<double>::quiet_NaN();
  summary.outliers = countOutliers(client, centered.values, summary.deviation, count);

  const Array sorted = client.fromDoubles(column);
  client.sort(sorted);
  summary.minimum = client.at(sorted, 0);
  summary.maximum = client.at(sorted, count - 1);
  summary.median = std::midpoint(client.at(sorted, (count - 1) / 2), client.at(sorted, count / 2));
  return summary;
}

// A second pass over the differences removes the rounding error of the first mean.
CenteredColumn centerColumn(const NdArrayClient& client, const Array& column, std::size_t count) {
  const auto divisor = static_cast<double>(count);
  const double rough = client.sum(column) / divisor;
  const double rest = client.sum(client.subtract(column, client.filled({count}, rough))) / divisor;
  const double mean = rough + rest;
  return {client.subtract(column, client.filled({count}, mean)), mean};
}

double euclideanNorm(const NdArrayClient& client, const Array& array) {
  return squareRoot(client, client.sum(client.pow(array, 2.0)));
}
