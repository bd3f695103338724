// What natives may expect of lists that other threads use too: nothing outside the lock, and inside it no more than
// what they keep alive themselves.
#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include "support/catalogue.h"

namespace {

constexpr std::size_t kMostLists = 32;

// While it exists, every list that the module looks at, or makes, has a lock; while that is free its elements are
// elsewhere.
struct Hiding {
  struct Place {
    ListData* list;
    host::Handle owner;
    pthread_mutex_t own = PTHREAD_ERRORCHECK_MUTEX_INITIALIZER_NP;  // for a list without one
    bool isHidden = false;
  };
  host::Handle memory{Vesk_gcAlloc(kMostLists * sizeof(ListData))};  // scanned: what is hidden stays alive
  std::deque<Place> places;

  Hiding();
  ~Hiding();
  void add(void* object, ListData* list) {
    Place& place = places.emplace_back(Place{list, host::Handle(object)});
    if (list->mutex == nullptr) list->mutex = &place.own;
    list->needsLock = 1;
    exchange(places.size() - 1);
  }
  void exchange(std::size_t i) {
    EXPECT_LT(i, kMostLists);
    auto* here = reinterpret_cast<unsigned char*>(places[i].list);
    auto* elsewhere = static_cast<unsigned char*>(memory.get()) + i * sizeof(ListData);
    constexpr std::size_t kFirst = offsetof(ListData, primitiveKind);
    std::swap_ranges(here + kFirst, here + offsetof(ListData, mutex), elsewhere + kFirst);
    places[i].isHidden = !places[i].isHidden;
  }
};
Hiding* gHiding = nullptr;

Hiding::Hiding() {
  std::memset(memory.get(), 0, kMostLists * sizeof(ListData));
  gHiding = this;
}
Hiding::~Hiding() {
  gHiding = nullptr;
  for (std::size_t i = 0; i < places.size(); ++i) {
    EXPECT_TRUE(places[i].isHidden) << "its lock is still held";
    if (places[i].isHidden) exchange(i);
    if (places[i].list->mutex == &places[i].own) places[i].list->needsLock = 0, places[i].list->mutex = nullptr;
  }
}

void hide(const pthread_mutex_t* mutex, bool hidden) {
  for (std::size_t i = 0; gHiding != nullptr && i < gHiding->places.size(); ++i)
    if (gHiding->places[i].list->mutex == mutex && gHiding->places[i].isHidden != hidden) gHiding->exchange(i);
}

// Arrays whose data list goes, as another thread may replace it, when its lock is taken.
thread_local const Values* gRobbed = nullptr;

void* dataListOf(const Value& argument) {
  void* object = argument.object;
  return object != nullptr && hasObjectMagic(object) ? Vesk_getField_ptr(object, "_data") : nullptr;
}

void rob(const pthread_mutex_t* mutex) {
  const Values* arguments = std::exchange(gRobbed, nullptr);  // the host takes locks too
  for (std::size_t i = 0; arguments != nullptr && i < arguments->size(); ++i)
    if (void* list = dataListOf((*arguments)[i]); list != nullptr && getListData(list)->mutex == mutex)
      Vesk_setField_ptr((*arguments)[i].object, "_data", nullptr);
  gRobbed = arguments;
}

int taken(pthread_mutex_t* mutex, int error) {
  if (error == 0) hide(mutex, false), rob(mutex);
  return error;
}

template <class Function>
Function* nextNamed(const char* name, Function*) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand before the operations of the same names.
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto lock = nextNamed("pthread_mutex_lock", pthread_mutex_lock);
  return taken(mutex, lock(mutex));
}
extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  static const auto lock = nextNamed("pthread_mutex_trylock", pthread_mutex_trylock);
  return taken(mutex, lock(mutex));
}
extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static const auto unlock = nextNamed("pthread_mutex_unlock", pthread_mutex_unlock);
  hide(mutex, true);
  return unlock(mutex);
}
ListData* getListData(void* object) {
  static const auto get = nextNamed("_Z11getListDataPv", getListData);
  ListData* list = get(object);
  const auto isIt = [=](const Hiding::Place& place) { return place.list == list; };
  if (gHiding != nullptr && std::none_of(gHiding->places.begin(), gHiding->places.end(), isIt))
    gHiding->add(object, list);
  return list;
}

TEST(Locks, areHeldWheneverElementsAreReadOrWritten) {
  for (const Scenario& scenario : catalogue()) {
    if (scenario.native->operation->name.rfind("sumNdArrayAs", 0) == 0) continue;  // the host reads these lists itself
    Operation watched = *scenario.native->operation;
    watched.call = [&](void* entry, const Values& arguments) {
      const Hiding hiding;
      return scenario.native->operation->call(entry, arguments);
    };
    const Native native{scenario.native->name, &watched, scenario.native->entry};
    EXPECT_EQ(checkCall(native, makeArguments(scenario)), "") << scenario.text();
    releaseKept();
  }
}

TEST(Locks, keepTheListAliveThatAnotherThreadReplaces) {
  for (const Scenario& scenario : catalogue()) {
    const std::vector<std::string>& forms = scenario.arguments;
    if (scenario.native->operation->parameters[0] != 'o' || forms.back() == "sharesData") continue;
    const auto outcome = [&](bool robbed) {
      const Values arguments = makeArguments(scenario);
      releaseKept();
      for (const Value& argument : arguments) keep(argument.object);
      for (const Value& argument : arguments)
        if (void* list = dataListOf(argument)) host::giveListLock(list);
      gRobbed = robbed ? &arguments : nullptr;
      const Outcome made = callNative(*scenario.native, arguments);
      gRobbed = nullptr;
      World world;
      const auto isResult = [&](const Value& argument) { return argument.object == made.result.object; };
      const bool isNew = std::none_of(arguments.begin(), arguments.end(), isResult);
      return made.raised + " " + (isNew ? contentOf(world.see(made.result.object)) : "");
    };
    EXPECT_TRUE(outcome(true) == outcome(false)) << scenario.text();
    releaseKept();
  }
}
