#include "device-check/shared_library.h"

#include <dlfcn.h>

#ifdef __arm__
// The names that these calls have in every C library of 32-bit ARM, old ones included.
__asm__(".symver dlopen, dlopen@GLIBC_2.4");
__asm__(".symver dlsym, dlsym@GLIBC_2.4");
__asm__(".symver dlerror, dlerror@GLIBC_2.4");
#endif

namespace tavro::device_check {

void load(const char* name, Binding binding) {
    const int flag = binding == Binding::AtOnce ? RTLD_NOW : RTLD_LAZY;
    if (::dlopen(name, flag | RTLD_GLOBAL) == nullptr)
        throw Wrong(::dlerror());
}

void need(const char* name) {
    try {
        load(name);
    } catch (const Wrong&) {
        throw Skipped(std::string(name) + " does not load");
    }
}

void* addressOf(const char* name) {
    return ::dlsym(RTLD_DEFAULT, name);
}

}  // namespace tavro::device_check
