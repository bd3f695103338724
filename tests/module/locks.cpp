// Whoever reads a list outside its lock finds nothing there: during a native call every list that the module looks at,
// or makes, has a lock, and while that is free its elements are elsewhere.
#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include "support/catalogue.h"

namespace {

constexpr std::size_t kMostLists = 32;

// While it exists, every list is hidden that is asked for.
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

int shown(const pthread_mutex_t* mutex, int error) {
  if (error == 0) hide(mutex, false);
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
  return shown(mutex, lock(mutex));
}
extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  static const auto lock = nextNamed("pthread_mutex_trylock", pthread_mutex_trylock);
  return shown(mutex, lock(mutex));
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
