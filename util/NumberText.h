// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace spotwell
{

/// `value` with that many decimals behind a full stop, as the C conversion "%.*f" writes it whatever the
/// locale (C17, 7.21.6.1): exact ties go to the even digit. Any thread.
[[nodiscard]] QString fixedNumber(double value, int decimals);

} // namespace spotwell
