// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/MemoryText.h"

#include <QByteArray>
#include <QFile>
#include <QList>

#include <array>
#include <string>
#include <sys/uio.h>

namespace spotwell::bench
{

namespace
{

constexpr std::array characterSizes{std::size_t{1}, std::size_t{2}, std::size_t{4}};

/// `text` in little-endian characters of `size` bytes.
std::string widened(std::string_view text, std::size_t size)
{
    std::string wide;
    for (const char character : text) {
        wide += character;
        wide.append(size - 1, '\0');
    }
    return wide;
}

std::string copyOf(qint64 process, quint64 begin, quint64 end)
{
    std::string bytes(end - begin, '\0');
    const iovec here{bytes.data(), bytes.size()};
    const iovec there{reinterpret_cast<void*>(begin), bytes.size()};
    const ssize_t count = ::process_vm_readv(static_cast<pid_t>(process), &here, 1, &there, 1, 0);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

} // namespace

bool hasInMemory(qint64 process, std::string_view text)
{
    constexpr quint64 largest = quint64{256} << 20;
    QFile maps(QStringLiteral("/proc/%1/maps").arg(process));
    if (!maps.open(QIODevice::ReadOnly))
        return false;
    // "BEGIN-END rw-p ...", in hexadecimal.
    for (const QByteArray& map : maps.readAll().split('\n')) {
        const QList<QByteArray> fields = map.split(' ');
        if (fields.size() < 2 || !fields[1].startsWith("rw"))
            continue;
        const QList<QByteArray> range = fields[0].split('-');
        const quint64 begin = range.constFirst().toULongLong(nullptr, 16);
        const quint64 end = range.constLast().toULongLong(nullptr, 16);
        if (end - begin > largest)
            continue;
        const std::string bytes = copyOf(process, begin, end);
        for (const std::size_t size : characterSizes) {
            if (bytes.find(widened(text, size)) != std::string::npos)
                return true;
        }
    }
    return false;
}

} // namespace spotwell::bench
