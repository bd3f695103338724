// Sixteen threads inside the module at once: on arrays of their own, on shared ones, at first use and at exit.
#include <array>
#include <atomic>
#include <filesystem>
#include <thread>

#include "support/catalogue.h"
#include "support/program.h"

namespace {

constexpr unsigned long kThreads = 16;

template <class Run>
void onThreads(Run run) {
  std::vector<std::thread> threads;
  for (unsigned long i = 0; i < kThreads; ++i)
    threads.emplace_back([i, &run] {
      const host::AttachedThread attached;
      run(i);
      EXPECT_EQ(leftovers(), "");
      releaseKept();
    });
  for (std::thread& thread : threads) thread.join();
}

// What a call gives: the elements of an array, or a double.
std::vector<double> called(const Native& native, const Values& arguments) {
  const Outcome outcome = callNative(native, arguments);
  EXPECT_EQ(outcome.raised, "");
  void* result = outcome.result.object;
  if (result == nullptr) return {outcome.result.real};
  keep(result);
  double number = 0;
  return extractArrayElementDouble(result, number) ? std::vector<double>{number} : valuesOf(result);
}

// A module of its own, as if just loaded.
host::Module freshModule() {
  const auto copy = std::filesystem::temp_directory_path() / ("vesk_math_" + std::to_string(getpid()) + ".so");
  std::filesystem::copy_file(host::defaultModulePath(), copy, std::filesystem::copy_options::overwrite_existing);
  const host::Module module(copy.string());
  std::filesystem::remove(copy);
  return module;
}

}  // namespace

TEST(Threads, workOnArraysOfTheirOwn) {
  natives();
  onThreads([](unsigned long i) { EXPECT_EQ(runProgram(randomBytes(1000 + i, 3000), false), ""); });
}

// Operands are packed lists, and nothing is known of their types, when the race begins; a thread adds them in either
// order.
TEST(Threads, shareListsAndReadyBuffers) {
  const std::string ints = "Int packed 1..40 lock";
  const std::string floats = "Float packed 0..1/40 lock";
  const std::string ready = "Double buffer 1..40 meta sum=820";
  using Case = std::array<std::string, 3>;
  const Case cases[] = {{"add", ints, floats},
                        {"add", floats, ints},
                        {"pow", floats, ints},
                        {"abs", ints, "null"},
                        {"sqrt", floats, "null"},
                        {"pow", ints, ints},
                        {"sumNdArray", ready, "null"},
                        {"exp", ready, "null"},
                        {"hypot", ready, floats},
                        {"getNdArrayFlat", ints, "null"},
                        {"sortNdArray1D", floats, "null"}};
  std::map<std::string, Value> shared{{"null", {}}};
  for (const std::string& form : {ints, floats, ready}) shared[form].object = makeObject(form);
  const auto run = [](const Case& one, const Value& first, const Value& second) {
    return called(nativeOf(one[0]), {first, second});
  };
  std::map<Case, std::vector<double>> expected;
  for (const Case& one : cases)
    expected[one] = run(one, {.object = makeObject(one[1])}, {.object = makeObject(one[2])});
  onThreads([&](unsigned long i) {
    for (unsigned long round = i; round < i + 200; ++round) {
      const Case& one = cases[round % std::size(cases)];
      expectSameDoubles(run(one, shared.at(one[1]), shared.at(one[2])), expected.at(one));
    }
  });
}

TEST(Threads, meetAtTheFirstUse) {
  const host::Module fresh = freshModule();
  const Native fill = nativeOf("initNdArrayFilled", fresh), sum = nativeOf("sumNdArray", fresh);
  const Native element = nativeOf("getNdArrayFlat", fresh);
  for (unsigned long round = 0; round < 60; ++round) {
    void* list = makeObject("list UInt packed " + std::string(round % 2 == 0 ? "fresh,7" : "fresh"));
    void* unknown = makeObject("Double buffer 1..8");  // all find out at once what it holds
    std::atomic<unsigned long> ready{0};
    std::vector<void*> shapes(kThreads);
    onThreads([&](unsigned long i) {
      void* array = makeObject("Double none size=0");
      void* ones = makeObject("Double buffer 1..8");
      for (++ready; ready < kThreads;) std::this_thread::yield();
      element.operation->call(element.entry, {{.object = unknown}, {.integer = 1}});
      called(fill, {{.object = array}, {.object = list}, {.object = nullptr}});
      EXPECT_EQ(called(sum, {{.object = ones}})[0], 36.0);
      shapes[i] = Vesk_getField_ptr(array, "_shape");
    });
    for (void* shape : shapes) EXPECT_EQ(shape, shapes[0]);
  }
}

// The process exits, and the statics of the module are gone, while threads go on calling it.
TEST(Threads, goOnWhileTheProcessExits) {
  static std::atomic<unsigned long> calls{0};
  static const auto waitForCalls = [] {
    for (const unsigned long before = calls; calls < before + 20 * kThreads;) std::this_thread::yield();
  };
  const auto exitBusy = [] {
    std::atexit([] { waitForCalls(); });  // runs when the module's destructors have run
    static const Native fill = nativeOf("initNdArrayFilled", freshModule());
    for (unsigned long i = 0; i < kThreads; ++i)
      std::thread([i] {
        host::attachThread();
        for (unsigned long round = 0;; ++round, ++calls) {
          Values arguments{{.object = makeObject("Double none size=0")}, {.object = nullptr}, {.object = nullptr}};
          arguments[1].object = packedList(7, {static_cast<Number>(i + 1), static_cast<Number>(round % 90 + 1)});
          if (!callNative(fill, arguments).raised.empty()) std::abort();
          releaseKept();
        }
      }).detach();
    waitForCalls();
    std::exit(0);
  };
  EXPECT_EXIT(exitBusy(), testing::ExitedWithCode(0), "");
}
