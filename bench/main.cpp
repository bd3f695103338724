// One round of the table: every part of every row once. scripts/bench runs rounds and makes the table.
#include <cstdio>

#include "harness.h"
#include "kernels/cpuDispatch.h"

int main(int argc, char** argv) {
  if (!ndArrayCanUseAvx2()) {
    std::fputs("the limits of the table need a processor with AVX2\n", stderr);
    return 1;
  }
  const host::AttachedThread attached;
  host::registerModuleImage(reinterpret_cast<const void*>(&ndArrayCanUseAvx2));
  bench::addAccessRows();
  bench::addElementwiseRows();
  bench::addLibraryRows();
  bench::addReductionRows();
  bench::addMatrixRows();
  bench::addListRows();
  bench::addEigenRows();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
