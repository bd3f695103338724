// summarize [--log] [--certified FILE] [FILE]: a summary of every column of a table of numbers and the least-squares
// fit of the last column on the others; the array arithmetic is the module's. Reads standard input without a FILE or
// for "-".
#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string_view>

#include "report.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr double kWantedDigits = 12.0;

struct Options {
  std::string file = "-";
  std::string certified;    // empty: no comparison
  bool logarithms = false;  // of every column, before anything else
};

std::optional<Options> parseOptions(int count, char** arguments) {
  Options options;
  bool fileGiven = false;
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--log") {
      options.logarithms = true;
    } else if (argument == "--certified" && i + 1 < count) {
      options.certified = arguments[++i];
    } else if ((argument == "-" || !argument.starts_with('-')) && !fileGiven) {
      options.file = argument;
      fileGiven = true;
    } else {
      return std::nullopt;
    }
  }
  return options;
}

void takeLogarithms(const NdArrayClient& client, Table& table) {
  for (std::vector<double>& column : table.columns)
    column = client.values(client.log(client.fromDoubles(column)), column.size());
}

// Prints the whole report into `out`; false when it does not agree with the certified values.
bool report(std::ostream& out, const Options& options) {
  Table table = readTable(options.file);
  const host::AttachedThread attached;
  const NdArrayClient client{host::Module(host::defaultModulePath())};
  if (options.logarithms) takeLogarithms(client, table);

  std::vector<ColumnSummary> summaries;
  for (const std::vector<double>& column : table.columns) summaries.push_back(summarizeColumn(client, column));
  printSummaries(out, table, summaries);
  const std::optional<Fit> fit = fitLastColumn(client, table);
  if (fit) printFit(out, table, *fit);
  if (!fit) out << "\nNo fit: too few rows, columns that depend on each other, or numbers too large\n";
  if (options.certified.empty()) return true;

  if (!fit) throw std::runtime_error("there is no fit to compare with " + options.certified);
  const double digits = printComparison(out, *fit, readTable(options.certified));
  out << "\nAll agree to " << std::floor(digits * 10) / 10 << " digits or more; wanted are " << kWantedDigits << '\n';
  return digits >= kWantedDigits;
}

}  // namespace

int main(int count, char** arguments) {
  const std::optional<Options> options = parseOptions(count, arguments);
  if (!options) {
    std::fputs("usage: summarize [--log] [--certified FILE] [FILE | -]\n", stderr);
    return kWrongUsage;
  }
  try {
    std::ostringstream out;  // so that a failure leaves nothing half printed
    const bool good = report(out, *options);
    std::cout << out.str() << std::flush;
    if (!std::cout) throw std::runtime_error("<stdout>: cannot be written");
    return good ? 0 : kFailed;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return kFailed;
  }
}
