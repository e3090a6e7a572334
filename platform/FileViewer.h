// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace spotwell
{

/// The desktop's file manager.
class FileViewer
{
public:
    virtual ~FileViewer() = default;
    /// Shows `file` selected in a view of `folder`. Does not wait for the file manager. Main thread.
    virtual void selectFile(const QString& file, const QString& folder) = 0;
};

} // namespace spotwell
