// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "fuzz/Check.h"
#include "platform/linux/bus/BusText.h"

#include <QByteArrayView>
#include <QString>

#include <string>

namespace spotwell
{

/// Whether the bus carries what is made of `text`, whole and cut.
inline void checkBusText(const QString& text)
{
    const std::string whole = busSafeText(text);
    check(whole.find('\0') == std::string::npos, "no NUL is sent");
    check(QByteArrayView(whole).isValidUtf8(), "texts are sent in UTF-8");
    check(whole.size() <= maxBusTextBytes && whole.size() <= 3 * static_cast<std::size_t>(text.size()),
          "texts are bounded");
    check(text.isEmpty() == whole.empty(), "nothing becomes nothing, and nothing else does");
    if (text.isValidUtf16() && !text.contains(QChar(u'\0')) && whole.find("\xEF\xBF") == std::string::npos &&
        text.size() == QString::fromUtf8('x' + QByteArray::fromStdString(whole)).size() - 1)
        check(whole == text.toUtf8().toStdString(), "what can be carried is");

    const std::size_t limit = whole.size() / 2;
    const std::string cut = busSafeText(text, limit);
    check(whole.starts_with(cut) && cut.size() <= limit && cut.size() + 4 > limit, "texts are cut late");
    check(QByteArrayView(cut).isValidUtf8(), "texts are cut after a whole character");
}

} // namespace spotwell
