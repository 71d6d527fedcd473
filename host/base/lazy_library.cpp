#include "host/base/lazy_library.h"

#include <dlfcn.h>

#include <string>

#include "host/base/errors.h"

namespace Nifikral {
namespace {

[[noreturn]] void RefuseLibrary(const std::string& file) {
    const char* const reason = dlerror();
    throw HostError(ExitCode::Failed, file + " cannot be used (" + (reason ? reason : "unknown reason") +
                                          "); install the package that brings it");
}

}  // namespace

LazyLibrary::LazyLibrary(const char* file) : m_file(file), m_handle(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {
    if (!m_handle) RefuseLibrary(file);
}

void* LazyLibrary::Find(const char* name) const {
    void* const found = dlsym(m_handle, name);
    if (!found) RefuseLibrary(m_file);
    return found;
}

}  // namespace Nifikral
