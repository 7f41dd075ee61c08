// Threads and locks over POSIX threads.
#include "pf_thread.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <new>

#include <pthread.h>
#include <sched.h>
#include <sys/eventfd.h>
#include <unistd.h>

// Shared by the thread and by who holds its handle; the last of the two releases it.
struct pf_thread {
    void (*entry)(void *argument);
    void             *argument;
    pthread_t         id;
    int               wake;           // eventfd, readable once a stop was asked for
    std::atomic<int>  holders{2};
    std::atomic<bool> stopping{false};
    pthread_mutex_t   lock = PTHREAD_MUTEX_INITIALIZER; // guards what is below
    pthread_cond_t    changed = PTHREAD_COND_INITIALIZER;
    bool              away = false;  // in foreign code
    bool              ended = false;
    pf_mutex         *wanted = nullptr; // that it waits for, so that a stop can call it off
};

// Held or not, and who waits is told: a waiting thread can then be asked to end.
struct pf_mutex {
    pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER; // guards `held`, for moments only
    pthread_cond_t  freed = PTHREAD_COND_INITIALIZER;
    bool            held = false;
};

namespace {

thread_local pf_thread *self = nullptr;

void drop(pf_thread *thread)
{
    if (thread->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        close(thread->wake);
        pthread_cond_destroy(&thread->changed);
        pthread_mutex_destroy(&thread->lock);
        delete thread;
    }
}

void set_away(pf_thread *thread, bool away)
{
    pthread_mutex_lock(&thread->lock);
    thread->away = away;
    pthread_cond_broadcast(&thread->changed);
    pthread_mutex_unlock(&thread->lock);
}

void set_wanted(pf_mutex *mutex)
{
    if (self == nullptr)
        return;
    pthread_mutex_lock(&self->lock);
    self->wanted = mutex;
    pthread_mutex_unlock(&self->lock);
}

/// Wakes a thread that waits in poll or for a mutex.
void wake_up(pf_thread *thread)
{
    const std::uint64_t            one = 1;
    [[maybe_unused]] const ssize_t written = write(thread->wake, &one, sizeof one);
    pthread_mutex_lock(&thread->lock);
    pf_mutex *const wanted = thread->wanted;
    pthread_mutex_unlock(&thread->lock);
    if (wanted != nullptr) {
        pthread_mutex_lock(&wanted->lock);
        pthread_cond_broadcast(&wanted->freed);
        pthread_mutex_unlock(&wanted->lock);
    }
}

void *run(void *argument)
{
    self = static_cast<pf_thread *>(argument);
    self->entry(self->argument);
    pthread_mutex_lock(&self->lock);
    self->ended = true;
    pthread_cond_broadcast(&self->changed);
    pthread_mutex_unlock(&self->lock);
    drop(self);
    return nullptr;
}

bool create(pf_thread *thread, std::uint32_t stack_size)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return false;
    const long least = std::max<long>(sysconf(_SC_THREAD_STACK_MIN), PTHREAD_STACK_MIN);
    const bool created =
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED) == 0 &&
        pthread_attr_setstacksize(&attributes, static_cast<std::size_t>(least) + stack_size) == 0 &&
        pthread_create(&thread->id, &attributes, run, thread) == 0;
    pthread_attr_destroy(&attributes);
    return created;
}

} // namespace

pf_thread *pf_thread_start(void (*entry)(void *argument), void *argument, std::uint32_t stack_size)
{
    const int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wake < 0)
        return nullptr;
    auto *thread = new (std::nothrow) pf_thread{entry, argument, {}, wake};
    if (thread == nullptr || !create(thread, stack_size)) {
        close(wake);
        delete thread;
        return nullptr;
    }
    return thread;
}

void pf_thread_stop(pf_thread *thread)
{
    thread->stopping.store(true, std::memory_order_release);
    wake_up(thread);
    if (thread != self) {
        pthread_mutex_lock(&thread->lock);
        while (!thread->ended && !thread->away)
            pthread_cond_wait(&thread->changed, &thread->lock);
        pthread_mutex_unlock(&thread->lock);
    }
    drop(thread);
}

bool pf_thread_stopping()
{
    return self != nullptr && self->stopping.load(std::memory_order_acquire);
}

void pf_thread_leave()
{
    if (self != nullptr)
        set_away(self, true);
}

bool pf_thread_return()
{
    if (self == nullptr)
        return true;
    // Under the lock, so that a stop either finds the thread away for good or waits for its end.
    pthread_mutex_lock(&self->lock);
    const bool stays = !self->stopping.load(std::memory_order_acquire);
    if (stays)
        self->away = false;
    pthread_mutex_unlock(&self->lock);
    return stays;
}

void pf_thread_yield()
{
    sched_yield();
}

int pf_thread_wake_descriptor()
{
    return self == nullptr ? -1 : self->wake;
}

pf_mutex *pf_mutex_create()
{
    return new (std::nothrow) pf_mutex;
}

bool pf_mutex_take(pf_mutex *mutex)
{
    set_wanted(mutex);
    pthread_mutex_lock(&mutex->lock);
    while (mutex->held && !pf_thread_stopping())
        pthread_cond_wait(&mutex->freed, &mutex->lock);
    const bool taken = !mutex->held;
    mutex->held = true;
    pthread_mutex_unlock(&mutex->lock);
    set_wanted(nullptr);
    return taken;
}

void pf_mutex_release(pf_mutex *mutex)
{
    pthread_mutex_lock(&mutex->lock);
    mutex->held = false;
    pthread_cond_signal(&mutex->freed);
    pthread_mutex_unlock(&mutex->lock);
}

bool pf_mutex_is_free(pf_mutex *mutex)
{
    pthread_mutex_lock(&mutex->lock);
    const bool free = !mutex->held;
    pthread_mutex_unlock(&mutex->lock);
    return free;
}
