// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <string_view>

namespace spotwell::bench
{

/// Whether `process` has the ASCII `text` in memory it has written, in characters of one, two or four bytes.
[[nodiscard]] bool hasInMemory(qint64 process, std::string_view text);

} // namespace spotwell::bench
