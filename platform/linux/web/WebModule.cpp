// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/WebModule.h"

#include <QFile>

#include <dlfcn.h>

namespace spotwell
{

QString webModulePath(const QString& programDirectory)
{
    // The version in the name keeps a program that outlives its update from the newer module.
    return programDirectory + QStringLiteral("/" SPOTWELL_WEB_MODULE);
}

std::unique_ptr<UrlSession> makeUrlSession(const QString& path, const UrlSessionConfiguration& configuration,
                                           const QString& userAgent, QString& error)
{
    void* const module = ::dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    void* const function = module != nullptr ? ::dlsym(module, webModuleFunction) : nullptr;
    if (function == nullptr) {
        error = QStringLiteral("The web module cannot be loaded: ") + QString::fromLocal8Bit(::dlerror());
        return nullptr;
    }
    const auto make = reinterpret_cast<WebModuleFunction>(function);
    return std::unique_ptr<UrlSession>(make(configuration, userAgent));
}

} // namespace spotwell
