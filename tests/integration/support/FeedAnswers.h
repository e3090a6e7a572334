// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

#include <string>

namespace spotwell
{

// What the web services answer. Spots are numbered from 1 on; the number is a spot's id and its time in
// seconds (in minutes with WSPRnet), and the call has it: N1A with POTA, N1B with DXSummit, N1C with WSPRnet.
// Answers list the newest first.

/// A whole answer of so many spots.
[[nodiscard]] std::string potaAnswer(int count);
[[nodiscard]] std::string dxSummitAnswer(int count);
[[nodiscard]] std::string wsprnetPage(int count);

/// One spot in it.
[[nodiscard]] std::string potaElement(int number);
[[nodiscard]] std::string dxSummitElement(int number);
[[nodiscard]] std::string wsprnetRow(int number);

/// The calls of so many spots, the oldest first: "N1A", "N2A" and so on.
[[nodiscard]] QStringList callsUpTo(int count, char last);

} // namespace spotwell
