// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace spotwell
{

/// The code blocks of docs/logger-interface.md that stand under the second-level heading `heading`, in order.
[[nodiscard]] QStringList codeBlocks(const QString& heading);

/// The commands of a code block: comments gone, continued lines joined.
[[nodiscard]] QStringList commands(const QString& block);

/// What introspection XML says of its interfaces, but for those of D-Bus itself: each by its name, with its
/// members one to a line as "property NAME TYPE ACCESS", "method NAME IN OUT" and "signal NAME TYPES". Names
/// of arguments and annotations are left out: they are not part of the interface.
[[nodiscard]] QMap<QString, QStringList> interfaces(const QString& xml);

} // namespace spotwell
