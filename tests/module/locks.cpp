// Whoever reads a list outside its lock finds nothing there: during a native call every list that the module looks at,
// or makes, has a lock, and while that is free its elements are elsewhere.
#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include "support/catalogue.h"

namespace {

constexpr std::size_t kMostLists = 32;

struct Hiding {
  host::Handle memory{Vesk_gcAlloc(kMostLists * sizeof(ListData))};  // scanned: what is hidden stays alive
  struct Place {
    ListData* list;
    host::Handle owner;
    bool isHidden;
  };
  std::vector<Place> places;

  Hiding() { std::memset(memory.get(), 0, kMostLists * sizeof(ListData)); }
  void exchange(std::size_t i) {
    auto* here = reinterpret_cast<unsigned char*>(places.at(i).list);
    auto* elsewhere = static_cast<unsigned char*>(memory.get()) + i * sizeof(ListData);
    constexpr std::size_t kFirst = offsetof(ListData, primitiveKind);
    std::swap_ranges(here + kFirst, here + offsetof(ListData, mutex), elsewhere + kFirst);
    places[i].isHidden = !places[i].isHidden;
  }
};
Hiding* gHiding = nullptr;  // null out of the calls that are watched

void hide(const pthread_mutex_t* mutex, bool hidden) {
  for (std::size_t i = 0; gHiding != nullptr && i < gHiding->places.size(); ++i)
    if (gHiding->places[i].list->mutex == mutex && gHiding->places[i].isHidden != hidden) gHiding->exchange(i);
}

template <class Function>
Function* nextNamed(const char* name, Function*) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand before the operations of the same names.
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto lock = nextNamed("pthread_mutex_lock", pthread_mutex_lock);
  const int error = lock(mutex);
  if (error == 0) hide(mutex, false);
  return error;
}
extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  static const auto lock = nextNamed("pthread_mutex_trylock", pthread_mutex_trylock);
  const int error = lock(mutex);
  if (error == 0) hide(mutex, false);
  return error;
}
extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static const auto unlock = nextNamed("pthread_mutex_unlock", pthread_mutex_unlock);
  hide(mutex, true);
  return unlock(mutex);
}
ListData* getListData(void* object) {
  static const auto get = nextNamed("_Z11getListDataPv", getListData);
  ListData* list = get(object);
  if (gHiding == nullptr) return list;
  for (const Hiding::Place& place : gHiding->places)
    if (place.list == list) return list;
  if (list->mutex == nullptr) host::giveListLock(object);
  gHiding->places.push_back({list, host::Handle(object), false});
  gHiding->exchange(gHiding->places.size() - 1);
  return list;
}

TEST(Locks, areHeldWheneverElementsAreReadOrWritten) {
  for (const Scenario& scenario : catalogue()) {
    if (scenario.native->operation->name.rfind("sumNdArrayAs", 0) == 0) continue;  // the host reads these lists itself
    Operation watched = *scenario.native->operation;
    watched.call = [&](void* entry, const Values& arguments) {
      Hiding hiding;
      struct Watch {
        explicit Watch(Hiding& made) { gHiding = &made; }
        ~Watch() {
          for (std::size_t i = 0; i < gHiding->places.size(); ++i)
            if (gHiding->places[i].isHidden) gHiding->exchange(i);
          gHiding = nullptr;
        }
      } const watch(hiding);
      return scenario.native->operation->call(entry, arguments);
    };
    const Native native{scenario.native->name, &watched, scenario.native->entry};
    EXPECT_EQ(checkCall(native, makeArguments(scenario)), "") << scenario.text();
    releaseKept();
  }
}
