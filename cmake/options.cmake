# What every target of the project is compiled with. The exactness flags stand on the targets, behind whatever a user
# puts into CMAKE_CXX_FLAGS, so that no outside flag can fuse, reassociate or raise the instruction set.
add_library(vesk_exact INTERFACE)
target_compile_options(vesk_exact INTERFACE -fno-fast-math -fno-unsafe-math-optimizations
                       -fno-associative-math -fno-reciprocal-math -fno-finite-math-only -fsigned-zeros
                       -ffp-contract=off -march=x86-64 -mtune=generic)
target_link_options(vesk_exact INTERFACE -fno-fast-math)

add_library(vesk_options INTERFACE)
target_link_libraries(vesk_options INTERFACE vesk_exact Threads::Threads)
target_compile_options(vesk_options INTERFACE -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wno-psabi)
# g++ 12 sees overlapping copies in its own std::string.
target_compile_options(vesk_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(VESK_DEVELOPER)
  target_compile_options(vesk_options INTERFACE -Werror)
endif()
if(VESK_SANITIZE)
  # g++ 12 sees uninitialized parts of std::optional in instrumented code.
  target_compile_options(vesk_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_compile_options(vesk_options INTERFACE -fsanitize=${VESK_SANITIZE} -fno-sanitize-recover=all
                         -fno-omit-frame-pointer)
  target_link_options(vesk_options INTERFACE -fsanitize=${VESK_SANITIZE})
endif()
