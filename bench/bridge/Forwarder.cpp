// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/bridge/Forwarder.h"

#include <stdexcept>

namespace spotwell::bench
{

Forwarder::Forwarder(const QString& program, const QStringList& arguments)
{
    desktop_.startBus();
    process_.setProcessEnvironment(desktop_.environment());
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.start(program, arguments);
    QByteArray line = lineOf(process_);
    for (; !line.isEmpty() && !line.endsWith("receiving spots"); line = lineOf(process_)) {
        if (line.contains("listening on "))
            port_ = line.mid(line.lastIndexOf(':') + 1).toUShort();
    }
    if (line.isEmpty() || port_ == 0)
        throw std::runtime_error(program.toStdString() + " does not start");
}

Forwarder::~Forwarder()
{
    end(process_);
}

} // namespace spotwell::bench
