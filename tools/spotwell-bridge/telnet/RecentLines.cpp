// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/RecentLines.h"

#include <QCryptographicHash>

#include <cstring>

namespace spotwell::bridge
{

bool RecentLines::add(const QByteArray& line, Moment now)
{
    while (!byAge_.empty() && now - byAge_.front().time > memory)
        forgetOldest();
    const Digest digest = digestOf(line);
    if (!known_.insert(digest).second)
        return false;
    byAge_.push_back({now, digest});
    if (byAge_.size() > most_)
        forgetOldest();
    return true;
}

RecentLines::Digest RecentLines::digestOf(const QByteArray& line)
{
    const QByteArray bytes = QCryptographicHash::hash(line, QCryptographicHash::Blake2s_128);
    Digest digest{};
    static_assert(sizeof digest == 16);
    std::memcpy(digest.data(), bytes.constData(), sizeof digest);
    return digest;
}

void RecentLines::forgetOldest()
{
    known_.erase(byAge_.front().digest);
    byAge_.pop_front();
}

} // namespace spotwell::bridge
