// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArrayView>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace spotwell
{

/// The bytes of one run, taken from the front. When they are used up numbers are 0 and texts empty.
class Input
{
public:
    Input(const unsigned char* data, std::size_t size) : rest_(data, static_cast<qsizetype>(size)) {}

    [[nodiscard]] bool isEmpty() const { return rest_.isEmpty(); }

    /// At most `count` bytes.
    QByteArrayView bytes(qsizetype count)
    {
        const QByteArrayView taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.sliced(taken.size());
        return taken;
    }
    QByteArrayView all() { return bytes(rest_.size()); }

    template <typename Number>
    Number number()
    {
        Number value{};
        const QByteArrayView taken = bytes(sizeof value);
        if (taken.size() == sizeof value)
            std::copy_n(taken.data(), sizeof value, reinterpret_cast<char*>(&value));
        return value;
    }
    unsigned byte() { return number<std::uint8_t>(); }

private:
    QByteArrayView rest_;
};

} // namespace spotwell
