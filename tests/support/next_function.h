#pragma once

#include <dlfcn.h>

/// The function `name` that a test's own one of the same name stands before.
template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}
