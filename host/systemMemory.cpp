#include "host/systemMemory.h"

#include <sys/mman.h>

#include <cstdint>

#include "host/stopProcess.h"

namespace host {

namespace {

void* mapSystemMemory(unsigned long bytes) {
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  return memory == MAP_FAILED ? nullptr : memory;
}

}  // namespace

void* mapAlignedSystemMemory(unsigned long bytes, unsigned long alignment) {
  auto* memory = static_cast<char*>(mapSystemMemory(bytes + alignment));
  if (memory == nullptr) return nullptr;
  const unsigned long before = -reinterpret_cast<std::uintptr_t>(memory) & (alignment - 1);
  if (before != 0) munmap(memory, before);
  munmap(memory + before + bytes, alignment - before);
  return memory + before;
}

void* mapTableOrStop(unsigned long bytes) {
  void* memory = mapSystemMemory(bytes);
  if (memory == nullptr) stopProcess("no memory for the heap's own tables");
  return memory;
}

void unmapTable(void* memory, unsigned long bytes) { munmap(memory, bytes); }

}  // namespace host
