#include "kernels/cpuDispatch.h"

bool ndArrayCanUseAvx2() {
  static const bool kHasAvx2 = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
  }();
  return kHasAvx2;
}
