// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/NodeLines.h"

#include "tools/spotwell-simulator/SpotLines.h"

#include <array>

namespace spotwell::bench
{

namespace
{

constexpr qsizetype mostBytes = 16383;
// Where a spot line's comment has a letter.
constexpr qsizetype letterColumn = 50;
constexpr char latin1Letter = '\xFC';

constexpr std::array chatterLines{
    "To ALL de DL1ABC <1428Z> : the club meets tonight at 20 local on 3.690\r\n",
    "WWV de W0MU <18Z> :   SFI=151, A=9, K=2, Minor w/G1 -> No Storms\r\n",
    "WCY de DK0WCY-1 <14> : K=2 expK=2 A=9 R=112 SFI=151 SA=eru GMF=qui Au=no\r\n",
    "F5XYZ de GB7DXC 19-Mar-2024 1428Z dxspider >\r\n",
};

QByteArray line(NodeText text, int number, simulator::SpotLines& spots)
{
    if (text == NodeText::chatter)
        return chatterLines[static_cast<std::size_t>(number) % chatterLines.size()];
    QByteArray spot = spots.next({}, TimePoint{std::chrono::sys_days{std::chrono::year{2024} / 3 / 19}});
    if (text == NodeText::latin1Spots && number % 8 == 7)
        spot[letterColumn] = latin1Letter;
    return spot;
}

} // namespace

QByteArray nodeChunk(NodeText text)
{
    simulator::SpotLines spots;
    QByteArray chunk;
    for (int number = 0;; ++number) {
        const QByteArray next = line(text, number, spots);
        if (chunk.size() + next.size() > mostBytes)
            return chunk;
        chunk += next;
    }
}

QStringList nodeLines(NodeText text)
{
    return QString::fromLatin1(nodeChunk(text)).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
}

std::size_t sizeOf(const QStringList& lines)
{
    std::size_t bytes = 0;
    for (const QString& each : lines)
        bytes += static_cast<std::size_t>(each.size());
    return bytes;
}

} // namespace spotwell::bench
