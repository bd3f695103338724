// Seeds of the threads' fast random streams.
#pragma once

#include <cstdint>

namespace host {

// The state with which the next thread begins: the same in every run, different for every thread.
std::uint64_t freshRandomState();

}  // namespace host
