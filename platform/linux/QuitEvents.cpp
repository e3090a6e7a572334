// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/QuitEvents.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace spotwell
{

QuitEvents::QuitEvents(std::function<void()> requested) : requested_(std::move(requested))
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool QuitEvents::eventFilter(QObject* receiver, QEvent* event)
{
    if (receiver != QCoreApplication::instance() || event->type() != QEvent::Quit)
        return false;
    requested_();
    return true;
}

} // namespace spotwell
