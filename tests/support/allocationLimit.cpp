#include "support/allocationLimit.h"

#include <cstdlib>
#include <new>

std::size_t allocationLimit = 100'000'000;

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
