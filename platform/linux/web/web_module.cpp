// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The web module: what the program loads when it is to poll a web service.

#include "platform/linux/web/QtUrlSession.h"
#include "platform/linux/web/WebModule.h"

extern "C" [[gnu::visibility("default")]] spotwell::UrlSession*
spotwellMakeUrlSession(const spotwell::UrlSessionConfiguration& configuration, const QString& userAgent)
{
    return std::make_unique<spotwell::QtUrlSession>(configuration, userAgent).release();
}

static_assert(std::is_same_v<spotwell::WebModuleFunction, decltype(&spotwellMakeUrlSession)>);
