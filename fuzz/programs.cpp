// libFuzzer runs the bytes as a program over all natives, checked against the model after every call.
#include "support/program.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "host/host.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const host::AttachedThread attached;
  host::setHeapLimit(256UL << 20);
  std::string problem = runProgram({data, data + size}, size % 2 == 1);
  problem += host::checkHeap().value_or("");
  if (problem.empty()) return 0;
  std::fprintf(stderr, "%s\n", problem.c_str());
  std::abort();
}
