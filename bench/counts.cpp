// What the hot paths ask of the host per call. Under callgrind every path's instructions go to a dump of its own, in
// the order of these lines.
#include <valgrind/callgrind.h>

#include <cstdio>

#include "harness.h"

namespace {

constexpr unsigned long kCalls = 100;

template <class Call>
void report(const char* path, Call call) {
  for (int i = 0; i < 3; ++i) call();  // what happens once has happened
  host::collect();
  CALLGRIND_TOGGLE_COLLECT;
  for (unsigned long i = 0; i < kCalls; ++i) call();
  CALLGRIND_TOGGLE_COLLECT;
  CALLGRIND_DUMP_STATS_AT(path);
  const host::OperationCounter asked;
  for (unsigned long i = 0; i < kCalls; ++i) call();
  const host::OperationCounts counts = asked.counts();
  const auto perCall = [](unsigned long count) { return static_cast<double>(count) / kCalls; };
  std::printf(R"({"path": "%s", "calls": %lu, "operations": %g, "allocations": %g, "rootSlots": %g, )", path, kCalls,
              perCall(counts.operations), perCall(counts.allocations), perCall(counts.rootSlots));
  std::printf("\"typeNames\": %g, \"fieldAccesses\": %g}\n", perCall(counts.typeNames), perCall(counts.fieldAccesses));
}

}  // namespace

int main() {
  const host::AttachedThread attached;
  auto* const get1D = bench::native<double(void*, long long)>("getDouble1DNative");
  auto* const set1D = bench::native<void(void*, long long, double)>("setDouble1DNative");
  auto* const get2D = bench::native<double(void*, long long, long long)>("getDouble2DNative");
  auto* const set2D = bench::native<void(void*, long long, long long, double)>("setDouble2DNative");
  auto* const add = bench::native<bench::BinaryNative>("_addNative");
  auto* const sqrt = bench::native<bench::UnaryNative>("_sqrtNative");
  auto* const sum = bench::native<bench::UnaryNative>("sumNative");
  void* const three = bench::doubleArray(3);
  void* const matrix = bench::squareMatrix(8);

  report("get 1D", [=] { get1D(three, 1); });
  report("get 2D", [=] { get2D(matrix, 1, 2); });
  report("set 1D", [=] { set1D(three, 1, 0.5); });
  report("set 2D", [=] { set2D(matrix, 1, 2, 0.5); });
  report("add of 3", [=] { add(three, three); });
  report("sqrt of 3", [=] { sqrt(three); });
  report("sum from the cache", [=] { sum(three); });
  return 0;
}
