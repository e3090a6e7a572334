// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/ForeignProgram.h"

namespace spotwell::bridge
{

std::vector<std::string> foreignCommand(const Home& home, const QStringList& variables,
                                        const QStringList& command)
{
    const QStringList words = QStringList{QStringLiteral("env"),
                                          QStringLiteral("-i"),
                                          QStringLiteral("-C"),
                                          home.filePath({}),
                                          QStringLiteral("PATH=/usr/bin:/bin"),
                                          QStringLiteral("LC_ALL=C.UTF-8")} +
                              home.environment() + variables + command;
    std::vector<std::string> result;
    for (const QString& word : words)
        result.push_back(word.toStdString());
    return result;
}

} // namespace spotwell::bridge
