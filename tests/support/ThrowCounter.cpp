// No headers here: the standard ones declare the runtime's throw entry, which this file wraps.
#if defined(__linux__)
extern "C" void* dlsym(void* handle, const char* name);

namespace {
long thrown = 0;
} // namespace

// Every throw in the test program passes here on its way to the real runtime.
extern "C" [[noreturn]] void __cxa_throw(void* exception, void* type, void (*destroy)(void*)) {
    ++thrown;
    using Throw = void (*)(void*, void*, void (*)(void*));
    static const auto real =
        reinterpret_cast<Throw>(dlsym(reinterpret_cast<void*>(-1L), "__cxa_throw")); // RTLD_NEXT
    real(exception, type, destroy);
    __builtin_unreachable();
}

extern "C" long tessarkExceptionsThrown() {
    return thrown;
}
#else
extern "C" long tessarkExceptionsThrown() {
    return -1;
}
#endif
