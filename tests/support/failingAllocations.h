#pragma once

#include <functional>

// Makes single allocations of an operation fail. A program linked with failingAllocations.cpp has its own malloc(),
// calloc(), realloc(), free(), operator new and operator delete, to which the dynamic linker also binds the library, Qt
// and the C++ library. They call those of libc or AddressSanitizer.
//
//     failEachAllocation([] {
//         std::vector<int> out;                                            // prepares
//         const bool done = attempt([&] { list(bytes, out); });            // the operation under test
//         EXPECT_TRUE(done ? out.size() == 2 : out.empty());               // the state afterwards
//     });
//
// The trial runs once without a failure, then with the first allocation of its attempt() failing, the second one, and
// so on until the attempt ends before that allocation: first this allocation alone, then all from this one on. Other
// threads are not affected. A trial fails if it leaves a block or a descriptor that it did not find.
//
// Reports "<trials> trials, <failures> failed allocations" as properties of the running test.
void failEachAllocation(const std::function<void()>& trial);

// The same for an operation that may end the program, because a call of Qt does so if it has no memory: each trial runs in
// a child process, and an abort() counts as a failed allocation, not as a failure of the test.
void failEachAllocationInChild(const std::function<void()>& trial);

// Runs the operation of a trial. Returns true if it ended normally, false if it ended with std::bad_alloc. Any other
// exception fails the test.
bool attempt(const std::function<void()>& operation);

// Number of allocations that failed in the attempt. If it is above 0 after an attempt that ended normally, the
// operation handled the failure.
long failedAllocations();

// Excludes the blocks that the trial has allocated so far, because libc keeps them.
void keepBlocks();

// Makes no allocation of this thread fail, and does not count the blocks allocated, while it exists: for what a trial
// needs but does not examine.
class AllocationsUntouched {
public:
    AllocationsUntouched();
    ~AllocationsUntouched();
    AllocationsUntouched(const AllocationsUntouched&) = delete;
    AllocationsUntouched& operator=(const AllocationsUntouched&) = delete;

private:
    bool wasCounting;
};
