#include "hostkit/module/library.h"

#include <stdexcept>

#ifdef _WIN32
#include <system_error>

#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace hostkit::library {

// Always an absolute path: a bare name would be searched for in the system's folders.

#ifdef _WIN32

void* load(const std::filesystem::path& path) {
    HMODULE library = LoadLibraryW(std::filesystem::absolute(path).make_preferred().c_str());
    if (library == nullptr)
        throw std::runtime_error(path.string() + ": " +
                                 std::system_category().message(static_cast<int>(GetLastError())));
    // Pinned, so that FreeLibrary by another user of the library does not unload it.
    HMODULE pinned = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(library), &pinned);
    return library;
}

void* loaded(const std::filesystem::path& path) {
    return GetModuleHandleW(std::filesystem::absolute(path).make_preferred().c_str());
}

void* functionIn(void* library, const std::string& name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name.c_str()));
}

#else

void* load(const std::filesystem::path& path) {
    void* library =
        dlopen(std::filesystem::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr)
        throw std::runtime_error(path.string() + ": " + dlerror());
    return library;
}

void* loaded(const std::filesystem::path& path) {
    return dlopen(std::filesystem::absolute(path).c_str(), RTLD_NOW | RTLD_NOLOAD);
}

void* functionIn(void* library, const std::string& name) {
    return dlsym(library, name.c_str());
}

#endif

} // namespace hostkit::library
