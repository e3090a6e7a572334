// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cluster/ClusterHost.h"
#include "tests/fakes/FakeTime.h"
#include "tests/fakes/Note.h"

#include <QStringList>

#include <utility>
#include <vector>

namespace spotwell
{

/// The program around a cluster session, by hand.
class FakeClusterHost final : public ClusterHost
{
public:
    [[nodiscard]] QString dxclusterText() const override { return dxcluster; }
    [[nodiscard]] QString portText() const override { return port; }
    [[nodiscard]] QString callsignText() const override { return callsign; }
    [[nodiscard]] QString passwordText() const override { return password; }
    [[nodiscard]] bool passwordIsEmpty() const override { return password.isEmpty(); }
    [[nodiscard]] bool reconnectIsOn() const override { return reconnect; }
    void setReconnect(bool on) override { reconnect = on; }
    void setConnected(bool on) override
    {
        note(QStringLiteral("connected %1").arg(on));
        connected = on;
    }
    void appendText(const QString& text) override
    {
        note(QStringLiteral("console ") + text);
        console.append(text);
    }
    void postText(const QString& text) override
    {
        posted.append(text);
        appendText(text);
    }
    void threadCheckWarning() const override
    {
        note(QStringLiteral("thread check"));
        ++threadChecks;
    }
    [[nodiscard]] SerialQueue& bufferQueue() override { return buffer; }
    void takeSpotLine(const QString& line, const QString& node) override
    {
        spots.append(line);
        nodes.append(node);
    }

    QString dxcluster = QStringLiteral("dxc.example.org");
    QString port = QStringLiteral("7300");
    QString callsign = QStringLiteral("N0CALL");
    QString password;
    bool reconnect = true;
    bool connected = false;
    QStringList console;
    /// What of it was posted.
    QStringList posted;
    QStringList spots;
    QStringList nodes;
    FakeSerialQueue buffer;
    mutable int threadChecks = 0;
    Note note = ignore;
};

} // namespace spotwell
