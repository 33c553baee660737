#include "support/allocationLimit.h"

#include <cstdlib>
#include <new>

#include <sys/mman.h>
#include <unistd.h>

std::size_t allocationLimit = 100'000'000;

// --- Repeated memory ----------------------------------------------------------------------------------------------

static constexpr std::size_t pageSize = 4096;
static constexpr std::size_t pieceSize = 16 << 20; // what a block repeats

struct Block {
    char* start;      // of the memory, after an inaccessible page
    std::size_t size; // a multiple of pieceSize
};

static int pieceFile = -1; // open while a RepeatedMemory exists
static Block blocks[4];

RepeatedMemory::RepeatedMemory()
{
    pieceFile = memfd_create("piece", 0);
    if (ftruncate(pieceFile, pieceSize) != 0)
        abort();
}

RepeatedMemory::~RepeatedMemory()
{
    close(pieceFile);
    pieceFile = -1;
}

static void* repeatedBlock(std::size_t size)
{
    const std::size_t whole = (size + pieceSize - 1) / pieceSize * pieceSize;
    void* const room =
        mmap(nullptr, whole + 2 * pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (room == MAP_FAILED)
        return nullptr;
    char* const start = static_cast<char*>(room) + pageSize;
    for (std::size_t at = 0; at < whole; at += pieceSize) {
        if (mmap(start + at, pieceSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, pieceFile, 0) == MAP_FAILED)
            abort();
    }
    for (Block& block : blocks) {
        if (block.start == nullptr) {
            block = {start, whole};
            return start;
        }
    }
    abort();
}

static bool freeRepeatedBlock(void* start)
{
    for (Block& block : blocks) {
        if (start != nullptr && block.start == start) {
            munmap(block.start - pageSize, block.size + 2 * pageSize);
            block = {};
            return true;
        }
    }
    return false;
}

// --- Replaced operators -------------------------------------------------------------------------------------------

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    if (size > allocationLimit)
        return pieceFile >= 0 ? repeatedBlock(size) : nullptr;
    return std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size)
{
    if (void* block = operator new(size, std::nothrow))
        return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    if (!freeRepeatedBlock(block))
        std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}
