// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "tools/spotwell-bridge/Alarm.h"

#include <QString>

#include <map>

namespace spotwell::bridge
{

/// Complaints about what others send, at most one line a second of each kind: what comes in between is
/// counted. Belongs to the thread of its event loop.
class Complaints
{
public:
    /// The log outlives this object.
    explicit Complaints(Log& log);

    /// The text is the kind; there are few, and none holds what others sent.
    void complain(const QString& text);

private:
    void tellCounts();

    Log& log_;
    /// How often each was complained of since its last line.
    std::map<QString, unsigned> counts_;
    Alarm alarm_;
};

} // namespace spotwell::bridge
