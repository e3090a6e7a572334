// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/ClientBacklog.h"

#include "tools/spotwell-bridge/telnet/NodeTexts.h"

namespace spotwell::bridge
{

void ClientBacklog::follow()
{
    follows_ = true;
    position_ = lines_.end();
}

bool ClientBacklog::isEmpty() const
{
    return piece_.isEmpty() && answers_.isEmpty() && !isBehind();
}

QByteArrayView ClientBacklog::next()
{
    if (piece_.isEmpty())
        refill();
    return QByteArrayView(piece_).sliced(sent_);
}

void ClientBacklog::taken(qsizetype count)
{
    sent_ += count;
    if (sent_ == piece_.size()) {
        piece_ = {};
        sent_ = 0;
    }
}

void ClientBacklog::refill()
{
    while (!answers_.isEmpty() && piece_.size() < pieceSize)
        piece_ += answers_.takeFirst();
    if (!piece_.isEmpty() || !isBehind())
        return;
    if (position_ < lines_.begin()) {
        piece_ = spotsLeftOut(lines_.begin() - position_);
        position_ = lines_.begin();
    }
    // A single line is shared with all other clients, not copied.
    for (; isBehind() && piece_.size() < pieceSize; ++position_)
        piece_ += lines_.at(position_);
}

} // namespace spotwell::bridge
