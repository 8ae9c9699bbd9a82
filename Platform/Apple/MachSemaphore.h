// Mach semaphores (the calls of <mach/semaphore.h>) on the C++ standard library.
//
// Same names, argument orders and return codes as the kernel's, so that code written
// against Mach reads unchanged and a macOS build can include the real header instead.
// A semaphore is named by a number, as a Mach port is; a name that was destroyed is
// refused with KERN_INVALID_NAME instead of touching freed memory.
#pragma once

namespace Quillmere::Velmira {

typedef int kern_return_t;
typedef unsigned int mach_port_t;
typedef mach_port_t task_t;
typedef mach_port_t semaphore_t;

// The kernel's codes, with the kernel's values; only those these calls return.
constexpr kern_return_t KERN_SUCCESS = 0;
constexpr kern_return_t KERN_INVALID_ARGUMENT = 4;
constexpr kern_return_t KERN_RESOURCE_SHORTAGE = 6;
constexpr kern_return_t KERN_INVALID_NAME = 15;
constexpr kern_return_t KERN_TERMINATED = 37;

// Wake order among waiting threads: oldest waiter first, or newest waiter first.
constexpr int SYNC_POLICY_FIFO = 0;
constexpr int SYNC_POLICY_LIFO = 2;

constexpr semaphore_t SEMAPHORE_NULL = 0;

// The calling task. There is one task, the process; any other task is refused.
extern const task_t mach_task_self_;

// Makes a semaphore with the start count `value` (0 or more). On failure `*semaphore`
// is left untouched: KERN_INVALID_ARGUMENT for a foreign task, an unknown policy or a
// negative count, KERN_RESOURCE_SHORTAGE when memory runs out.
kern_return_t semaphore_create(task_t task, semaphore_t* semaphore, int policy, int value);

// Wakes every waiter with KERN_TERMINATED and retires the name.
kern_return_t semaphore_destroy(task_t task, semaphore_t semaphore);

// Takes one from the count, or blocks (no time-out) until a signal is handed to this
// thread. KERN_TERMINATED when the semaphore is destroyed meanwhile.
kern_return_t semaphore_wait(semaphore_t semaphore);

// Hands the signal to one waiter chosen by the policy, or adds one to the count when
// nobody waits.
kern_return_t semaphore_signal(semaphore_t semaphore);

// Wakes every thread that waits now. With nobody waiting the count does not change.
kern_return_t semaphore_signal_all(semaphore_t semaphore);

// Not a Mach call: the number of threads blocked in semaphore_wait. Tests use it to
// know that a thread has queued before they start the next one.
kern_return_t semaphore_waiter_count(semaphore_t semaphore, int* count);

}  // namespace Quillmere::Velmira
