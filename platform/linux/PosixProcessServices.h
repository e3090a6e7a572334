// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/ProcessServices.h"

namespace spotwell
{

/// The process by POSIX and the C library.
class PosixProcessServices final : public ProcessServices
{
public:
    void reopenStandardError(const QString& path) override;
    [[nodiscard]] QStringList callStackSymbols() const override;
};

} // namespace spotwell
