// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/platform/ThreadShortage.h"

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

namespace
{

thread_local bool isShort = false;

} // namespace

// In place of the C library's.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                              void* argument) noexcept
{
    if (isShort)
        return EAGAIN;
    static const auto next =
        reinterpret_cast<decltype(&pthread_create)>(::dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, routine, argument);
}

namespace spotwell
{

ThreadShortage::ThreadShortage()
{
    isShort = true;
}

ThreadShortage::~ThreadShortage()
{
    isShort = false;
}

} // namespace spotwell
