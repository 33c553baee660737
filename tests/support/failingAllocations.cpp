#include "support/failingAllocations.h"

#include "support/plainSockets.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <new>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

// --- The allocator that is called ---------------------------------------------------------------------------------

extern "C" {
// Those of a sanitizer, null without one.
[[gnu::weak]] void* __interceptor_malloc(size_t);
[[gnu::weak]] void* __interceptor_calloc(size_t, size_t);
[[gnu::weak]] void* __interceptor_realloc(void*, size_t);
[[gnu::weak]] void __interceptor_free(void*);

void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void __libc_free(void*);
}

#define REAL(function) (__interceptor_##function != nullptr ? __interceptor_##function : __libc_##function)

// --- Blocks of the trial ------------------------------------------------------------------------------------------

// Addresses of the blocks that the trial has allocated and not freed: an open hash table without allocations of its
// own. Any thread may free a block.
class Blocks {
public:
    void add(void* block)
    {
        const Lock lock(busy);
        size_t at = home(block);
        while (places[at] > freed)
            at = (at + 1) % capacity;
        places[at] = reinterpret_cast<uintptr_t>(block);
        if (++count > long(capacity) / 2)
            abort();
    }

    // Returns true if the block was there.
    bool remove(void* block)
    {
        if (count == 0)
            return false;
        const Lock lock(busy);
        size_t at = home(block);
        for (size_t tried = 0; places[at] != 0 && tried < capacity; ++tried, at = (at + 1) % capacity) {
            if (places[at] == reinterpret_cast<uintptr_t>(block)) {
                places[at] = freed;
                --count;
                return true;
            }
        }
        return false;
    }

    long size() const { return count; }

    void clear()
    {
        for (uintptr_t& place : places)
            place = 0;
        count = 0;
    }

private:
    struct Lock {
        explicit Lock(std::atomic_flag& flag) : held(flag)
        {
            while (held.test_and_set(std::memory_order_acquire)) {
            }
        }
        ~Lock() { held.clear(std::memory_order_release); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

        std::atomic_flag& held;
    };

    static constexpr size_t capacity = 1 << 14;
    static constexpr uintptr_t freed = 1; // in a place whose block is gone; 0 if it never had one

    static size_t home(void* block) { return (reinterpret_cast<uintptr_t>(block) >> 4) * 2654435761U % capacity; }

    std::atomic_flag busy = ATOMIC_FLAG_INIT;
    std::atomic<long> count{0};
    uintptr_t places[capacity] = {};
};

static Blocks blocks;

// --- What fails ---------------------------------------------------------------------------------------------------

struct Failing {
    long first = LONG_MAX; // number of the allocation, counted from 1
    bool more = false;     // all after it fail too
};

static thread_local bool isCounting = false;   // blocks are recorded
static thread_local bool isAttempting = false; // allocations can fail
static thread_local long allocated = 0;        // in the attempt, including the failed ones
static thread_local long failed = 0;
static Failing failing;

static bool fails()
{
    if (!isAttempting || !isCounting)
        return false;
    ++allocated;
    if (allocated != failing.first && !(failing.more && allocated > failing.first))
        return false;
    ++failed;
    errno = ENOMEM;
    return true;
}

static void* counted(void* block)
{
    if (isCounting && block != nullptr)
        blocks.add(block);
    return block;
}

extern "C" {

void* malloc(size_t size)
{
    return fails() ? nullptr : counted(REAL(malloc)(size));
}

void* calloc(size_t number, size_t size)
{
    return fails() ? nullptr : counted(REAL(calloc)(number, size));
}

void* realloc(void* block, size_t size)
{
    if (fails())
        return nullptr;
    const bool wasCounted = block != nullptr && blocks.remove(block);
    void* const moved = REAL(realloc)(block, size);
    if (block == nullptr)
        return counted(moved);
    if (wasCounted && moved != nullptr)
        blocks.add(moved);
    return moved;
}

void free(void* block)
{
    if (block != nullptr)
        blocks.remove(block);
    REAL(free)(block);
}
}

// AddressSanitizer has operators of its own, which do not call malloc().
void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return malloc(size > 0 ? size : 1);
}

void* operator new(size_t size)
{
    if (void* block = operator new(size, std::nothrow))
        return block;
    throw std::bad_alloc();
}

void* operator new[](size_t size)
{
    return operator new(size);
}

void* operator new[](size_t size, const std::nothrow_t&) noexcept
{
    return operator new(size, std::nothrow);
}

void operator delete(void* block) noexcept
{
    free(block);
}

void operator delete(void* block, size_t) noexcept
{
    free(block);
}

void operator delete[](void* block) noexcept
{
    free(block);
}

void operator delete[](void* block, size_t) noexcept
{
    free(block);
}

// --- Trials -------------------------------------------------------------------------------------------------------

AllocationsUntouched::AllocationsUntouched() : wasCounting(isCounting)
{
    isCounting = false;
}

AllocationsUntouched::~AllocationsUntouched()
{
    isCounting = wasCounting;
}

long failedAllocations()
{
    return failed;
}

void keepBlocks()
{
    blocks.clear();
}

bool attempt(const std::function<void()>& operation)
{
    bool done = false;
    isAttempting = true;
    try {
        operation();
        done = true;
    } catch (const std::bad_alloc&) {
        isAttempting = false;
    } catch (...) {
        isAttempting = false;
        ADD_FAILURE() << "another exception than std::bad_alloc";
    }
    isAttempting = false;
    EXPECT_TRUE(done || failed > 0) << "std::bad_alloc although no allocation failed";
    return done;
}

// Runs the trial with the allocation of this number failing. Returns the number of allocations that failed.
static long runTrial(const std::function<void()>& trial, long first, bool more)
{
    const testing::ScopedTrace trace(__FILE__, __LINE__,
                                     "allocation " + std::to_string(first) + (more ? " and all after it" : ""));
    const std::set<int> descriptors = openDescriptors();
    failing = {first, more};
    allocated = failed = 0;
    blocks.clear();
    isCounting = true;
    trial();
    isCounting = false;
    tzset(); // replaces the name of the time zone that libc keeps
    const long left = blocks.size();
    blocks.clear();
    EXPECT_EQ(left, 0) << "blocks are left";
    EXPECT_TRUE(openedSince(descriptors).empty()) << "descriptors are left";
    return failed;
}

// Returns the number of allocations that failed, or -1 if they ended the child.
static long runTrialInChild(const std::function<void()>& trial, long first, bool more)
{
    const Pipe pipe;
    const pid_t child = ::fork();
    if (child == 0) {
        const long count = runTrial(trial, first, more);
        const bool sent = ::write(pipe.writeEnd, &count, sizeof count) == sizeof count;
        ::_exit(sent && !testing::Test::HasFailure() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    long count = -1;
    if (!(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT)) {
        EXPECT_EQ(status, 0);
        EXPECT_EQ(::read(pipe.readEnd, &count, sizeof count), ssize_t(sizeof count));
    }
    return count;
}

using Run = long (*)(const std::function<void()>& trial, long first, bool more);

static void failEach(const std::function<void()>& trial, Run run)
{
    static const testing::TestInfo* test = nullptr;
    static long trials = 0; // of the running test, as all three
    static long failures = 0;
    static long aborts = 0;
    if (const auto* running = testing::UnitTest::GetInstance()->current_test_info(); running != test) {
        test = running;
        trials = failures = aborts = 0;
    }
    failed = 0;
    trial(); // fills caches that stay
    for (const bool more : {false, true}) {
        for (long first = 1;; ++first) {
            const long count = run(trial, first, more);
            if (count == 0)
                break;
            ++trials;
            failures += std::labs(count);
            aborts += count < 0 ? 1 : 0;
        }
    }
    testing::Test::RecordProperty("trials", std::to_string(trials));
    testing::Test::RecordProperty("failures", std::to_string(failures));
    testing::Test::RecordProperty("aborts", std::to_string(aborts));
}

void failEachAllocation(const std::function<void()>& trial)
{
    failEach(trial, runTrial);
}

void failEachAllocationInChild(const std::function<void()>& trial)
{
    failEach(trial, runTrialInChild);
}
