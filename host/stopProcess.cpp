#include "host/stopProcess.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace host {

void stopProcess(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::fputs("vesk host: ", stderr);
  std::vfprintf(stderr, format, arguments);
  std::fputc('\n', stderr);
  va_end(arguments);
  std::abort();
}

}  // namespace host
