// The run-time library's nothrow new throws and catches inside, and that alone takes memory: a thread that
// asks when there is none ends on the spot. The standard's in-place fallbacks (std::stable_sort) rely on
// getting null.
#include <cstdlib>
#include <new>

void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    return std::malloc(size ? size : 1);
}

void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
    return std::malloc(size ? size : 1);
}

void operator delete(void *block, const std::nothrow_t &) noexcept {
    std::free(block);
}

void operator delete[](void *block, const std::nothrow_t &) noexcept {
    std::free(block);
}
