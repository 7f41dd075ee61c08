// Threads and locks of the plug-in: the little that the channels need.
//
// A thread is never killed: it is asked to end.  Every call of pf_socket.h that can block, and the wait for a mutex,
// returns at once with an error of its own in a thread that was asked, so a reader leaves its locks and sockets in
// order on its way out.
#pragma once

#include <cstdint>

struct pf_thread; ///< a running thread
struct pf_mutex;  ///< not recursive

/// Starts a thread with at least `stack_size` octets of stack, or a null pointer.
pf_thread *pf_thread_start(void (*entry)(void *argument), void *argument, std::uint32_t stack_size);

/// Asks the thread to end and waits until it has, unless it stands between pf_thread_leave and pf_thread_return:
/// then it ends by itself at its return.  The handle is gone afterwards.  May be called by the thread itself.
void pf_thread_stop(pf_thread *thread);

/// True in a thread that was asked to end.
bool pf_thread_stopping();

/// Around foreign code that the thread calls: a stop does not wait for it.
void pf_thread_leave();
/// False when the thread was asked to end meanwhile; it must then return without touching shared state.
bool pf_thread_return();

/// Lets other threads run.
void pf_thread_yield();

/// Descriptor that becomes readable when the calling thread is asked to end; -1 outside of pf_thread_start.
int pf_thread_wake_descriptor();

/// A null pointer when there is none to be had.
pf_mutex *pf_mutex_create();
/// Waits for it; false when it could not be taken, or when the calling thread was asked to end meanwhile.
bool pf_mutex_take(pf_mutex *mutex);
void pf_mutex_release(pf_mutex *mutex);
/// True when nobody has it.
bool pf_mutex_is_free(pf_mutex *mutex);
