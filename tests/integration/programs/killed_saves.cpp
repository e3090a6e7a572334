// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Preloaded, kills the program before the step of a save that the variable SPOTWELL_KILLED_AT numbers, from 1
// on. A save begins where a file is opened to be written in a directory "tarnbrooksoftware" that is not the
// log's; its steps are that call and all that do something to files from then on.

#include <atomic>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

std::atomic<int> steps = 0;

template <typename Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

void takeStep()
{
    const char* const last = std::getenv("SPOTWELL_KILLED_AT");
    if (last != nullptr && ++steps == std::atoi(last))
        (void)::raise(SIGKILL);
}

void takeStepOfRunningSave()
{
    if (steps > 0)
        takeStep();
}

bool isSaveOf(const char* path, int flags)
{
    const std::string_view text(path);
    return (flags & O_ACCMODE) != O_RDONLY && text.find("/tarnbrooksoftware") != std::string_view::npos &&
           text.find("debug_log_files") == std::string_view::npos;
}

bool isFile(int descriptor)
{
    struct stat status {
    };
    return descriptor > STDERR_FILENO && ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

extern "C" int open64(const char* path, int flags, ...)
{
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    if (isSaveOf(path, flags))
        takeStep();
    return next<int (*)(const char*, int, mode_t)>("open64")(path, flags, mode);
}

extern "C" ssize_t write(int descriptor, const void* bytes, size_t count)
{
    if (steps > 0 && isFile(descriptor))
        takeStep();
    return next<ssize_t (*)(int, const void*, size_t)>("write")(descriptor, bytes, count);
}

extern "C" int ftruncate64(int descriptor, off64_t size) noexcept
{
    takeStepOfRunningSave();
    return next<int (*)(int, off64_t)>("ftruncate64")(descriptor, size);
}

extern "C" int fchmod(int descriptor, mode_t mode) noexcept
{
    takeStepOfRunningSave();
    return next<int (*)(int, mode_t)>("fchmod")(descriptor, mode);
}

extern "C" int fdatasync(int descriptor)
{
    takeStepOfRunningSave();
    return next<int (*)(int)>("fdatasync")(descriptor);
}

extern "C" int linkat(int from, const char* oldPath, int to, const char* newPath, int flags) noexcept
{
    takeStepOfRunningSave();
    return next<int (*)(int, const char*, int, const char*, int)>("linkat")(from, oldPath, to, newPath,
                                                                            flags);
}

extern "C" int rename(const char* oldPath, const char* newPath) noexcept
{
    takeStepOfRunningSave();
    return next<int (*)(const char*, const char*)>("rename")(oldPath, newPath);
}

extern "C" int unlink(const char* path) noexcept
{
    takeStepOfRunningSave();
    return next<int (*)(const char*)>("unlink")(path);
}
