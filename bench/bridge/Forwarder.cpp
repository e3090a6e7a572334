#include "bench/bridge/Forwarder.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <stdexcept>

namespace spotwell::bench
{

Forwarder::Forwarder(const QString& program, const QStringList& arguments)
{
    desktop_.startBus();
    process_.setProcessEnvironment(desktop_.environment());
    process_.setStandardErrorFile(QProcess::nullDevice());
    process_.start(program, arguments);
    const QString place =
        QJsonDocument::fromJson(lineOf(process_)).object().value(QStringLiteral("telnet")).toString();
    port_ = place.section(QLatin1Char(':'), -1).toUShort();
    if (port_ == 0)
        throw std::runtime_error(program.toStdString() + " does not start");
}

Forwarder::~Forwarder()
{
    end(process_);
}

} // namespace spotwell::bench
