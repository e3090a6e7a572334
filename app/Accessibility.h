// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace spotwell
{

/// What the toolkit's own accessibility lacks, for the whole application from now on: announcers, and boxes
/// and toggles that assistive technology switches as a click does. The toolkit's own way changes the state
/// alone: it skips QAbstractButton::clicked(), which the work of the switch hangs on. Done again, it changes
/// nothing.
void installAccessibility();

/// News for assistive technology, whatever has the focus: an object of the accessibility tree that says the
/// latest. It takes no part in the layout.
class Announcer : public QObject
{
    Q_OBJECT

public:
    explicit Announcer(QWidget& window);

    /// Costs nothing while nobody listens.
    void announce(const QString& words);
    [[nodiscard]] const QString& words() const { return words_; }

private:
    QString words_;
};

} // namespace spotwell
