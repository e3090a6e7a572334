// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Inbox.h"

#include <algorithm>

namespace spotwell::simulator
{

void Inbox::add(const QByteArray& bytes, Moment at)
{
    if (bytes.isEmpty())
        return;
    bytes_.append(bytes);
    arrivals_.push_back({bytes_.size(), at});
}

Inbox::Comparison Inbox::matched(qsizetype length) const
{
    const auto arrival = std::find_if(arrivals_.begin(), arrivals_.end(),
                                      [length](const Arrival& candidate) { return candidate.end >= length; });
    return {Match::matched, length, arrival->at};
}

Inbox::Comparison Inbox::compare(const QByteArray& expected) const
{
    if (bytes_.startsWith(expected))
        return matched(expected.size());
    return {expected.startsWith(bytes_) ? Match::waiting : Match::different, 0, {}};
}

Inbox::Comparison Inbox::compareLine() const
{
    const qsizetype end = bytes_.indexOf('\n');
    return end < 0 ? Comparison{} : matched(end + 1);
}

void Inbox::take(qsizetype length)
{
    bytes_.remove(0, length);
    std::erase_if(arrivals_, [length](const Arrival& arrival) { return arrival.end <= length; });
    for (Arrival& arrival : arrivals_)
        arrival.end -= length;
}

} // namespace spotwell::simulator
