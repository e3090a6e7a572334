// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace spotwell
{

/// The diagnostics log: one entry a call, from any thread.
///
/// Entries of one thread keep their order and no two entries mix. The log puts date, time, process and thread
/// in front and makes sure that nothing inside `text` can be taken for an entry of its own.
class Log
{
public:
    virtual ~Log() = default;
    virtual void line(const QString& text) = 0;
};

} // namespace spotwell
