// Replaces the allocation of the program that it is linked into: more than 100 MB at once fails as it would on a
// machine without the memory. So counts beyond any memory can be tried wherever the tests run, under AddressSanitizer
// too.

#include <cstdlib>
#include <new>

static constexpr std::size_t allocationLimit = 100'000'000;

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return size > allocationLimit ? nullptr : std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size)
{
    if (void* block = operator new(size, std::nothrow))
        return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
