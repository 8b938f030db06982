// Lets a program that is built with a new C library for 32-bit ARM start with an old one: the new
// one's start-up object asks for a start function that an old one lacks, and leaves the
// constructors to it.

#ifdef __arm__

extern "C" {

using Constructor = void(int, char**, char**);
using Main = int(int, char**, char**);

// Set by the linker.
[[gnu::visibility("hidden")]] extern Constructor* __init_array_start[];
[[gnu::visibility("hidden")]] extern Constructor* __init_array_end[];

// What every C library has, old ones included.
int startWithAnyLibrary(Main* main, int count, char** values, Constructor* construct,
                        void (*destruct)(), void (*loaderEnd)(), void* stackEnd);
__asm__(".symver startWithAnyLibrary, __libc_start_main@GLIBC_2.4");

/// Runs the program's constructors, as the start-up objects of old libraries did.
static void constructAll(int count, char** values, char** environment) {
    for (Constructor** constructor = __init_array_start; constructor != __init_array_end;
         ++constructor)
        (*constructor)(count, values, environment);
}

/// Stands before the C library's function for this program's start-up object.
[[gnu::visibility("hidden")]] int __libc_start_main(Main* main, int count, char** values,
                                                    Constructor*, void (*destruct)(),
                                                    void (*loaderEnd)(), void* stackEnd) {
    return startWithAnyLibrary(main, count, values, constructAll, destruct, loaderEnd, stackEnd);
}
}

#endif
