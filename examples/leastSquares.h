// Least-squares fit of the last column of a table on all the others and a constant.
#pragma once

#include <optional>

#include "csv.h"
#include "ndArrayClient.h"

struct Coefficient {
  double estimate;
  double error;  // standard error
};

struct Fit {
  std::vector<Coefficient> coefficients;  // the intercept, then one per column in order
  double residualDeviation;               // with (rows - coefficients) degrees of freedom
  double rSquared;                        // NaN when the last column is constant
};

// The fit, or nothing when the rows do not determine it: too few of them, columns that depend on
// each other, or squares beyond the range of a double.
//
// The columns are centred, so that the intercept drops out, and scaled to length one: the matrix Z. Cholesky's factor R
// of Z'Z makes Z inverse(R) nearly orthonormal, and doing so twice makes it orthonormal to rounding ("CholeskyQR2":
// Y. Yamamoto et al., "Roundoff error analysis of the CholeskyQR2 algorithm", ETNA 44, 2015), so collinear columns lose
// no more digits than in an orthogonal factorisation. The solution is then corrected by the fit of its own residuals.
std::optional<Fit> fitLastColumn(const NdArrayClient& client, const Table& table);
