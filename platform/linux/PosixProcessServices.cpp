// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/PosixProcessServices.h"

#include <QFile>

#include <array>
#include <cstdlib>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

namespace spotwell
{

void PosixProcessServices::reopenStandardError(const QString& path)
{
    // Not freopen(): where it fails it leaves descriptor 2 free for the next socket, and the log would go
    // there.
    const int file =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file < 0)
        return;
    ::dup2(file, STDERR_FILENO);
    ::close(file);
}

QStringList PosixProcessServices::callStackSymbols() const
{
    std::array<void*, 64> frames{};
    const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
    QStringList symbols;
    if (char** names = ::backtrace_symbols(frames.data(), count)) {
        for (int i = 0; i < count; ++i)
            symbols.append(QString::fromLocal8Bit(names[i]));
        std::free(static_cast<void*>(names));
    }
    return symbols;
}

} // namespace spotwell
