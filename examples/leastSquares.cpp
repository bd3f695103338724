#include "leastSquares.h"

#include <cmath>
#include <limits>

#include "statistics.h"

namespace {

constexpr int kRefinements = 3;
constexpr double kSmallestPivot = 1e-12;  // of columns of length one; below it they count as dependent

// The centred and scaled problem: `columns` and `target` times their scales are the original ones less their means.
struct Standardized {
  std::size_t rows = 0, count = 0;
  std::vector<double> means, scales;  // of the columns, then of the target
  Array columns, columnsTransposed, target;
};

// A square matrix in row-major order; only the upper triangle is used.
struct Triangle {
  std::size_t order;
  std::vector<double> values;

  double& at(std::size_t row, std::size_t column) { return values[row * order + column]; }
  double at(std::size_t row, std::size_t column) const { return values[row * order + column]; }
};

Array transposed(const NdArrayClient& client, const Array& matrix, std::size_t rows, std::size_t columns) {
  std::vector<double> values;
  for (std::size_t j = 0; j < columns; ++j)
    for (std::size_t i = 0; i < rows; ++i) values.push_back(client.at(matrix, i, j));
  return client.matrix(columns, rows, values);
}

Standardized standardize(const NdArrayClient& client, const Table& table) {
  Standardized problem;
  problem.rows = table.rowCount();
  problem.count = table.columns.size() - 1;
  std::vector<double> values;  // column after column
  for (const std::vector<double>& column : table.columns) {
    const CenteredColumn centered = centerColumn(client, client.fromDoubles(column), problem.rows);
    const double norm = euclideanNorm(client, centered.values);
    const double scale = norm > 0.0 ? norm : 1.0;
    const Array scaled = client.divide(centered.values, client.filled({problem.rows}, scale));
    for (const double value : client.values(scaled, problem.rows)) values.push_back(value);
    problem.means.push_back(centered.mean);
    problem.scales.push_back(scale);
  }
  const auto target = values.end() - static_cast<std::ptrdiff_t>(problem.rows);
  problem.target = client.matrix(problem.rows, 1, {target, values.end()});
  problem.columnsTransposed = client.matrix(problem.count, problem.rows, {values.begin(), target});
  problem.columns = transposed(client, problem.columnsTransposed, problem.count, problem.rows);
  return problem;
}

// R with R'R = `gram`, or nothing when a pivot vanishes (or is NaN).
std::optional<Triangle> choleskyFactor(const Triangle& gram) {
  Triangle factor{gram.order, std::vector<double>(gram.values.size())};
  for (std::size_t i = 0; i < gram.order; ++i)
    for (std::size_t j = i; j < gram.order; ++j) {
      double rest = gram.at(i, j);
      for (std::size_t k = 0; k < i; ++k) rest -= factor.at(k, i) * factor.at(k, j);
      if (i == j && !(rest > kSmallestPivot)) return std::nullopt;
      factor.at(i, j) = i == j ? std::sqrt(rest) : rest / factor.at(i, i);
    }
  return factor;
}

// `left` times the inverse of `factor`, both upper triangular: solves X factor = left row by row.
Triangle divideByFactor(const Triangle& left, const Triangle& factor) {
  Triangle result{left.order, std::vector<double>(left.values.size())};
  for (std::size_t i = 0; i < left.order; ++i)
    for (std::size_t j = i; j < left.order; ++j) {
      double rest = left.at(i, j);
      for (std::size_t k = i; k < j; ++k) rest -= result.at(i, k) * factor.at(k, j);
      result.at(i, j) = rest / factor.at(j, j);
    }
  return result;
}

// The upper triangular W that makes the columns of Z W orthonormal, so that inverse(Z'Z) = W W'.
std::optional<Triangle> orthonormalizer(const NdArrayClient& client, const Standardized& problem) {
  const std::size_t order = problem.count;
  Triangle result{order, std::vector<double>(order * order)};
  for (std::size_t i = 0; i < order; ++i) result.at(i, i) = 1.0;
  for (int pass = 0; pass < 2; ++pass) {
    const Array basis = client.matmul(problem.columns, client.matrix(order, order, result.values));
    const Array gram = client.matmul(transposed(client, basis, problem.rows, order), basis);
    Triangle square{order, {}};
    for (std::size_t i = 0; i < order * order; ++i) square.values.push_back(client.at(gram, i / order, i % order));
    const std::optional<Triangle> factor = choleskyFactor(square);
    if (!factor) return std::nullopt;
    result = divideByFactor(result, *factor);
  }
  return result;
}

// The solution of Z b = target, each round adding the solution for what the last one left over.
Array solve(const NdArrayClient& client, const Standardized& problem, const Array& weights) {
  const Array basis = client.matmul(problem.columns, weights);
  const Array basisTransposed = transposed(client, basis, problem.rows, problem.count);
  Array solution = client.filled({problem.count, 1}, 0.0);
  for (int round = 0; round <= kRefinements; ++round) {
    const Array residual = client.subtract(problem.target, client.matmul(problem.columns, solution));
    solution = client.add(solution, client.matmul(weights, client.matmul(basisTransposed, residual)));
  }
  return solution;
}

// The squared length of W'u for a row vector u: the variance factor of u times the coefficients.
double varianceFactor(const Triangle& weights, const std::vector<double>& u) {
  double sum = 0.0;
  for (std::size_t j = 0; j < weights.order; ++j) {
    double component = 0.0;
    for (std::size_t i = 0; i <= j; ++i) component += u[i] * weights.at(i, j);
    sum += component * component;
  }
  return sum;
}

// Back to the original units; the intercept is what the means leave over.
std::vector<Coefficient> coefficientsOf(const Standardized& problem, const Triangle& weights,
                                        const std::vector<double>& solution, double deviation) {
  std::vector<Coefficient> result(1);
  std::vector<double> meansInScale;
  double intercept = problem.means.back();
  for (std::size_t j = 0; j < problem.count; ++j) {
    std::vector<double> unit(problem.count);
    unit[j] = 1.0 / problem.scales[j];
    const double estimate = solution[j] * problem.scales.back() / problem.scales[j];
    result.push_back({estimate, deviation * std::sqrt(varianceFactor(weights, unit))});
    intercept -= estimate * problem.means[j];
    meansInScale.push_back(problem.means[j] / problem.scales[j]);
  }
  const double factor = 1.0 / static_cast<double>(problem.rows) + varianceFactor(weights, meansInScale);
  result[0] = {intercept, deviation * std::sqrt(factor)};
  return result;
}

}  // namespace

std::optional<Fit> fitLastColumn(const NdArrayClient& client, const Table& table) {
  const std::size_t unknowns = table.columns.size();  // the intercept takes the place of the last column
  if (unknowns < 2 || table.rowCount() <= unknowns) return std::nullopt;
  const Standardized problem = standardize(client, table);
  const std::optional<Triangle> weights = orthonormalizer(client, problem);
  if (!weights) return std::nullopt;

  const Array solution = solve(client, problem, client.matrix(problem.count, problem.count, weights->values));
  std::vector<double> scaledSolution;
  for (std::size_t j = 0; j < problem.count; ++j) scaledSolution.push_back(client.at(solution, j, 0));
  const Array residual = client.subtract(problem.target, client.matmul(problem.columns, solution));
  const double left = euclideanNorm(client, residual);  // the target has length one, or zero when it is constant
  const double total = euclideanNorm(client, problem.target);
  const double deviation = left * problem.scales.back() / std::sqrt(static_cast<double>(table.rowCount() - unknowns));
  if (!std::isfinite(deviation)) return std::nullopt;
  const double rSquared = total > 0.0 ? 1.0 - left * left : std::numeric_limits<double>::quiet_NaN();
  return Fit{coefficientsOf(problem, *weights, scaledSolution, deviation), deviation, rSquared};
}
