// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QByteArray>

#include <cstdint>

namespace spotwell::bridge
{

// What the node says. Lines end in CR LF, but for the question for the callsign, which the answer follows.
//
// Cluster clients answer words such as "call:" or "password:" wherever they stand in a line. So none of these
// texts may hold one, whatever callsign stands in it, but the question itself.

/// The question for the callsign.
[[nodiscard]] QByteArray callsignQuestion();
/// The answer to what cannot be a callsign.
[[nodiscard]] QByteArray notACallsign();
/// What follows a good callsign, ahead of the first prompt.
[[nodiscard]] QByteArray greeting(const QByteArray& callsign);
/// N0CALL de SPOTWELL 21-Nov-2026 1428Z spotwell >
[[nodiscard]] QByteArray prompt(const QByteArray& callsign, TimePoint now);
/// The one line for a command that the node does not have. `word` may be any bytes.
[[nodiscard]] QByteArray unknownCommand(const QByteArray& word);
/// The answer to sh/dx with anything behind it but a number above 0.
[[nodiscard]] QByteArray badSpotCount();
/// The answer to sh/dx before the first spot.
[[nodiscard]] QByteArray noSpotsYet();
[[nodiscard]] QByteArray lineTooLong();
/// Stands where `count` (above 0) spots would have stood.
[[nodiscard]] QByteArray spotsLeftOut(std::uint64_t count);
/// For a client for which there is no room.
[[nodiscard]] QByteArray noRoom();
[[nodiscard]] QByteArray farewell();

} // namespace spotwell::bridge
