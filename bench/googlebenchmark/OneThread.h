#pragma once

// For the sources of Google Benchmark, with the compiler of the Windows target, which has no std::mutex and
// std::condition_variable, and a std::thread that cannot be made. A program with these measures on one
// thread.

#include <mutex>
#include <system_error>
#include <thread>

#ifndef _GLIBCXX_HAS_GTHREADS
namespace std {

class mutex
{
public:
    void lock() {}
    bool try_lock() { return true; }
    void unlock() {}
};

class condition_variable
{
public:
    void notify_all() {}
    template <typename Lock, typename Condition>
    void wait(Lock&, Condition)
    {
    }
};

class no_thread
{
public:
    no_thread() = default;
    template <typename... Call>
    explicit no_thread(Call&&...)
    {
        throw system_error(make_error_code(errc::not_supported));
    }
    void join() {}
};

} // namespace std

#define thread no_thread
#endif
