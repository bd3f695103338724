// Runs the tests of a program with the checks that hold for each of them. Options: --stress collects before every
// allocation; --require-simd=none|avx|avx2 insists on what the processor can do, for runs on other processor models.
#include <cstdio>
#include <cstring>
#include <optional>

#include "support/verbs.h"

namespace {

// After each test nothing is left behind: no slot, no lock, no exception, and a sound heap.
class BalanceListener : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override { check_.emplace(); }
  void OnTestEnd(const testing::TestInfo&) override {
    EXPECT_EQ(check_->problem().value_or(""), "");
    EXPECT_EQ(leftovers(), "");
    releaseKept();
    host::collect();
    EXPECT_EQ(host::checkHeap().value_or(""), "");
  }

  std::optional<host::NativeCallCheck> check_;
};

bool processorIsAsRequired(const char* wanted) {
  const bool avx2 = __builtin_cpu_supports("avx2") != 0, avx = __builtin_cpu_supports("avx") != 0;
  const char* found = avx2 ? "avx2" : avx ? "avx" : "none";
  if (std::strcmp(wanted, found) == 0) return true;
  std::fprintf(stderr, "processor: wanted %s, found %s\n", wanted, found);
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const host::AttachedThread attached;
  for (int i = 1; i < argc; ++i) {
    constexpr const char* kRequire = "--require-simd=";
    if (std::strcmp(argv[i], "--stress") == 0) host::setStressMode(true);
    if (std::strncmp(argv[i], kRequire, std::strlen(kRequire)) == 0 &&
        !processorIsAsRequired(argv[i] + std::strlen(kRequire)))
      return 1;
  }
  testing::UnitTest::GetInstance()->listeners().Append(new BalanceListener);
  return RUN_ALL_TESTS();
}
