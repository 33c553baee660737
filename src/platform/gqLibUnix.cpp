#include "gqLibUnix.h"

#include <sched.h>
#include <unistd.h>

namespace gqdb {

// --- CThread ------------------------------------------------------------------------------------------------------

static void* start_thread(void* arg)
{
    CThread* thread = static_cast<CThread*>(arg);
    thread->run();
    thread->setExitState(); // not reached by a cancelled thread: isRunning() deliberately stays true
    return nullptr;
}

// The only plain read of the handle while the thread may be writing it.
static pthread_t readCell(const pthread_t* cell)
{
    return *cell;
}

CThread::CThread() : threadId(0), threadHandle(new pthread_t(0)) {}

CThread::~CThread()
{
    if (threadHandle != nullptr) {
        *threadHandle = 0;
        delete threadHandle;
        threadHandle = nullptr;
    }
}

bool CThread::start()
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setinheritsched(&attributes, PTHREAD_INHERIT_SCHED);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    const int result = pthread_create(threadHandle, &attributes, start_thread, this);
    pthread_attr_destroy(&attributes);
    threadId = static_cast<int>(readCell(threadHandle));
    return result == 0;
}

void CThread::terminate()
{
    if (threadHandle == nullptr)
        return;
    const pthread_t handle = readCell(threadHandle);
    if (handle != 0)
        pthread_cancel(handle);
}

bool CThread::isRunning()
{
    return readCell(threadHandle) != 0;
}

void CThread::setExitState()
{
    if (threadHandle != nullptr)
        *threadHandle = 0;
}

// --- Locks --------------------------------------------------------------------------------------------------------

static void initRecursive(pthread_mutex_t& mutex)
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

CMutex::CMutex()
{
    initRecursive(handle);
}

CMutex::~CMutex()
{
    pthread_mutex_destroy(&handle);
}

void CMutex::lock()
{
    pthread_mutex_lock(&handle);
}

void CMutex::unlock()
{
    pthread_mutex_unlock(&handle);
}

CMutexLocker::CMutexLocker(CMutex* mutexToLock) : mutex(mutexToLock)
{
    mutex->lock();
}

CMutexLocker::~CMutexLocker()
{
    mutex->unlock();
}

CReadWriteLock::CReadWriteLock() : readerCount(0)
{
    initRecursive(readerGuard);
    initRecursive(writeMutex);
}

CReadWriteLock::~CReadWriteLock()
{
    pthread_mutex_destroy(&readerGuard);
    pthread_mutex_destroy(&writeMutex);
}

void CReadWriteLock::lockForRead()
{
    pthread_mutex_lock(&readerGuard);
    if (readerCount == 0)
        pthread_mutex_lock(&writeMutex); // with the guard held: further readers wait for the guard
    ++readerCount;
    pthread_mutex_unlock(&readerGuard);
}

void CReadWriteLock::unlockForRead()
{
    pthread_mutex_lock(&readerGuard);
    const int left = readerCount - 1;
    if (left > 0) {
        readerCount = left;
    } else {
        readerCount = 0;
        pthread_mutex_unlock(&writeMutex); // deliberately fails without notice in any thread but the first reader's
    }
    pthread_mutex_unlock(&readerGuard);
}

void CReadWriteLock::lockForWrite()
{
    pthread_mutex_lock(&writeMutex);
}

void CReadWriteLock::unlockForWrite()
{
    pthread_mutex_unlock(&writeMutex);
}

// --- Small helpers ------------------------------------------------------------------------------------------------

void sleep(int ms)
{
    if (ms <= 0) {
        sched_yield();
        return;
    }
    if (ms < 1000) {
        ::usleep(static_cast<useconds_t>(ms) * 1000);
        return;
    }
    ::sleep(static_cast<unsigned int>(ms / 1000));
    if (ms % 1000 != 0)
        ::usleep(static_cast<useconds_t>(ms % 1000) * 1000);
}

void usleep(int us)
{
    if (us > 0)
        ::usleep(static_cast<useconds_t>(us));
}

long long int2Int64(int high, int low)
{
    const auto upper = static_cast<unsigned long long>(high) << 32;
    return static_cast<long long>(upper | static_cast<unsigned long long>(low)); // sign-extended, deliberately
}

unsigned long long int2UInt64(unsigned int high, unsigned int low)
{
    return static_cast<unsigned long long>(high) << 32 | low;
}

} // namespace gqdb
