// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/SentLines.h"

namespace spotwell::bridge
{

void SentLines::add(const QByteArray& line)
{
    lines_.push_back(line);
    bytes_ += line.size();
    while (lines_.size() > 1 && (lines_.size() > limits_.lines || bytes_ > limits_.bytes)) {
        bytes_ -= lines_.front().size();
        lines_.pop_front();
        ++begin_;
    }
}

} // namespace spotwell::bridge
