#include "host/moduleImages.h"

#include <link.h>

#include <algorithm>
#include <cstdint>

#include "host/heap.h"
#include "host/host.h"
#include "host/stopProcess.h"
#include "host/systemMemory.h"

namespace host {

namespace {

// Load addresses of the registered images. Guarded by the heap lock.
SystemVector<std::uintptr_t>& imageBases() {
  static auto& bases = *new (mapTableOrStop(sizeof(SystemVector<std::uintptr_t>))) SystemVector<std::uintptr_t>;
  return bases;
}

struct Search {
  std::uintptr_t address;
  bool found;
  std::uintptr_t base;
};

int findImage(dl_phdr_info* image, std::size_t, void* data) {
  auto& search = *static_cast<Search*>(data);
  for (const ElfW(Phdr)* part = image->dlpi_phdr; part != image->dlpi_phdr + image->dlpi_phnum; ++part) {
    if (part->p_type != PT_LOAD || search.address - image->dlpi_addr - part->p_vaddr >= part->p_memsz) continue;
    search.found = true;
    search.base = image->dlpi_addr;
    return 1;
  }
  return 0;
}

using Visit = void (*)(const char*, unsigned long);

int visitImage(dl_phdr_info* image, std::size_t, void* data) {
  const auto visit = *static_cast<const Visit*>(data);
  const auto& bases = imageBases();
  if (std::find(bases.begin(), bases.end(), image->dlpi_addr) == bases.end()) return 0;
  for (const ElfW(Phdr)* part = image->dlpi_phdr; part != image->dlpi_phdr + image->dlpi_phnum; ++part) {
    if (part->p_type == PT_LOAD && (part->p_flags & PF_W) != 0) {
      const std::uintptr_t start = (image->dlpi_addr + part->p_vaddr + 7) & ~std::uintptr_t{7};
      visit(reinterpret_cast<const char*>(start), image->dlpi_addr + part->p_vaddr + part->p_memsz - start);
    } else if (part->p_type == PT_TLS && image->dlpi_tls_data != nullptr) {  // null until the thread first uses it
      visit(static_cast<const char*>(image->dlpi_tls_data), part->p_memsz);
    }
  }
  return 0;
}

}  // namespace

void forEachModuleSegment(Visit visit) {
  if (!imageBases().empty()) dl_iterate_phdr(visitImage, &visit);
}

void registerModuleImage(const void* addressInside) {
  Search search = {reinterpret_cast<std::uintptr_t>(addressInside), false, 0};
  dl_iterate_phdr(findImage, &search);
  if (!search.found) stopProcess("registerModuleImage: %p is in no loaded image", addressInside);
  const HeapLock lock;
  auto& bases = imageBases();
  if (std::find(bases.begin(), bases.end(), search.base) == bases.end()) bases.push_back(search.base);
}

}  // namespace host
