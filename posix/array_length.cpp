// A container that is asked for more elements than any can have calls one of these functions, which
// the C++ run time has only since 2021. Ours, hidden, does what older ones did, so that all that we
// build loads beside them; weak, so that a run time that is linked statically may have its own.
// Declared here: a header of the run time would make it visible.

// NOLINTBEGIN(cert-dcl58-cpp,*-reserved-identifier): names and place are the run time's
namespace std {

[[noreturn]] void __throw_bad_alloc();

[[noreturn, gnu::weak, gnu::visibility("hidden")]] void __throw_bad_array_new_length();

void __throw_bad_array_new_length() {
    __throw_bad_alloc();
}

}  // namespace std
// NOLINTEND(cert-dcl58-cpp,*-reserved-identifier)
