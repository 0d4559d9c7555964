/* Loading the library of transfers; see transfer_library.h. */
#include "platform/softswitch/services/transfer_library.h"

#include "platform/api/l7proc.h"

#include <dlfcn.h>

namespace softswitch {

static const transfer_functions *load() {
  /* It is found beside the library or program that the switch is in, by that one's run path. */
  void *library = dlopen("libkestrel_transfer.so", RTLD_NOW | RTLD_LOCAL);
  void *found = library ? dlsym(library, "kestrel_transfer_functions") : nullptr;
  const transfer_functions *functions =
      found ? reinterpret_cast<decltype(&kestrel_transfer_functions)>(found)() : nullptr;
  if (functions) return functions;
  const char *reason = found ? "it cannot be initialised" : dlerror();
  l7proc_logf(L7PROC_ERROR, 0, "transfer_library.cpp", __LINE__,
              "transfers need a library that is not usable: %s", reason);
  return nullptr;
}

const transfer_functions *transfer_library() {
  static const transfer_functions *loaded = nullptr;
  if (!loaded) loaded = load();
  return loaded;
}

} // namespace softswitch
