// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace spotwell::bench
{

/// What the lines of a chunk are.
enum class NodeText {
    spots,       ///< spot lines in ASCII
    latin1Spots, ///< the same, one line in eight with a letter that only Latin-1 gives
    chatter,     ///< announcements and weather, no spots
};

/// What one read of a busy connection gives: whole lines with their line ends, at most 16,383 bytes.
[[nodiscard]] QByteArray nodeChunk(NodeText text);

/// The lines of a chunk in ASCII, without line ends.
[[nodiscard]] QStringList nodeLines(NodeText text);

/// How many bytes the lines of `lines` are, in ASCII and without line ends.
[[nodiscard]] std::size_t sizeOf(const QStringList& lines);

} // namespace spotwell::bench
