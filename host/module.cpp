// Loading a module the way a runtime does: the host's operations are made global first, the module stays local.
#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <stdexcept>

#include "host/host.h"

namespace host {

namespace {

std::string ownPath() {
  Dl_info info;
  if (dladdr(reinterpret_cast<const void*>(&attachThread), &info) == 0)
    throw std::runtime_error("host library unknown");
  return info.dli_fname;
}

std::runtime_error loaderError() {
  const char* reason = dlerror();
  return std::runtime_error(reason == nullptr ? "unknown loader error" : reason);
}

}  // namespace

Module::Module(const std::string& path) {
  if (dlopen(ownPath().c_str(), RTLD_NOW | RTLD_GLOBAL | RTLD_NOLOAD) == nullptr) throw loaderError();
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) throw loaderError();
  link_map* image = nullptr;
  if (dlinfo(handle_, RTLD_DI_LINKMAP, static_cast<void*>(&image)) != 0) throw loaderError();
  registerModuleImage(image->l_ld);
}

void* Module::native(std::string_view package, std::string_view className, std::string_view method) const {
  std::string name(package);
  std::replace(name.begin(), name.end(), '.', '_');
  if (!name.empty()) name += '_';
  return symbol(name.append(className).append("_").append(method));
}

void* Module::symbol(const std::string& name) const {
  void* address = dlsym(handle_, name.c_str());
  if (address == nullptr) throw loaderError();
  return address;
}

std::string defaultModulePath() {
  const std::string path = ownPath();
  return path.substr(0, path.rfind('/') + 1) + "libvesk_math.so";
}

}  // namespace host
