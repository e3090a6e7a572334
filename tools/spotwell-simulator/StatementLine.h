// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/ScenarioWords.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <cstddef>
#include <vector>

namespace spotwell::simulator
{

/// The words of one line, read from the left. The first error stays; after it nothing is read any more.
class StatementLine
{
public:
    explicit StatementLine(const std::vector<Word>& words) : words_(words) {}

    /// What is wrong with the line; null when nothing is.
    [[nodiscard]] const QString& error() const { return error_; }
    [[nodiscard]] bool failed() const { return !error_.isNull(); }
    [[nodiscard]] bool atEnd() const { return position_ == words_.size() || failed(); }
    /// Whether a text or a variable's value comes next.
    [[nodiscard]] bool textFollows() const;
    void fail(const QString& message);

    /// Takes the keyword if it comes next.
    bool take(QStringView keyword);
    /// Takes keywords that have to come next, each separated by a blank.
    void demand(const QString& keywords);
    /// Takes any bare word; `what` names it in the error.
    QString keyword(const QString& what);
    /// A decimal number from `least` to `most`; `what` names it in the error.
    double number(const QString& what, double least, double most, bool whole);
    Seconds seconds();
    /// One or more texts, joined, with an optional character set in front.
    QByteArray bytes();
    /// Fails when something is left.
    void finish();

private:
    [[nodiscard]] QString insteadOf() const;

    const std::vector<Word>& words_;
    std::size_t position_ = 0;
    QString error_;
};

} // namespace spotwell::simulator
