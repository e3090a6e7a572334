// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QIcon>
#include <QString>

namespace spotwell
{

/// The program's image of this name, in the sizes it is shown in: "green_ball" (lit), "gray_ball" (unlit: an
/// empty ring, told from the other without colour) or "spotwell". An icon without a picture for any other.
[[nodiscard]] QIcon imageNamed(const QString& name);

} // namespace spotwell
