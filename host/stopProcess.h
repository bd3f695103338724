// The end for misuse that no caller could recover from: a message on stderr, then abort.
#pragma once

namespace host {

[[noreturn]] [[gnu::format(printf, 1, 2)]] void stopProcess(const char* format, ...);

}  // namespace host
