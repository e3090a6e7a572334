// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/TextConverter.h"

#include <QByteArrayView>
#include <QString>

namespace spotwell
{

// From a node's bytes to text. Encodings go by the numbers of TextConverter. Callable from any thread.

/// The text of the NUL-terminated `line`: UTF-8 where it is valid, else the first of the known encodings that
/// takes all its bytes. Empty, with a line in `log`, when none does; empty without one when `line` is empty
/// or null.
[[nodiscard]] QString decodeClusterLine(const char* line, const TextConverter& converter, Log& log);

/// The text of `bytes`, found as decodeClusterLine() does.
[[nodiscard]] QString decodeStringData(QByteArrayView bytes, const TextConverter& converter, Log& log);

/// The display name of an encoding number; "Unknown:" and the number when it names none.
[[nodiscard]] QString encodingString(unsigned long encoding);

/// The text of `bytes` in the encoding that the platform detects, which may replace what does not fit. Empty
/// when none was found. `log` is told of a failed or lossy detection and of an empty text.
[[nodiscard]] QString stringUnknownEncoding(QByteArrayView bytes, const TextConverter& converter, Log& log);

} // namespace spotwell
