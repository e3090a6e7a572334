// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cluster/ClusterHost.h"
#include "cluster/LineAssembly.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/Queues.h"
#include "platform/RunningApplications.h"
#include "platform/ScriptRunner.h"

namespace spotwell::bench
{

// Stand-ins that keep nothing, so that a benchmark of any length measures what calls them.

class NoLog final : public Log
{
public:
    void line(const QString&) override {}
};

/// Drops its tasks, which costs their making and destroying.
class NoMainQueue final : public MainQueue
{
public:
    void async(Task) override {}
    void after(Seconds, Task) override {}
    void every(Seconds, Task) override {}
    [[nodiscard]] bool isMainThread() const override { return true; }
};

class NoSerialQueue final : public SerialQueue
{
public:
    void async(Task) override {}
    bool pause(Seconds) override { return true; }
    [[nodiscard]] QString label() const override { return {}; }
};

class NoNotificationCenter final : public NotificationCenter
{
public:
    void post(const QString&, const QString&, const UserInfo& userInfo) override { keys_ += userInfo.size(); }

private:
    std::size_t keys_ = 0;
};

class NoScriptRunner final : public ScriptRunner
{
public:
    std::optional<QString> run(const QString&) override { return {}; }
};

/// One logger that takes notifications.
class OneLogger final : public RunningApplications
{
public:
    std::vector<RunningApplication> runningApplications() override
    {
        return {{QStringLiteral("Logwright"), BundleInformation{QStringLiteral("6.45")}, {}}};
    }
};

/// A connection after the login, with a password: every line is searched for every prompt.
class ArmedLine final : public LoginLine
{
public:
    [[nodiscard]] bool promptsAreArmed() const override { return true; }
    void sendTelnet(const QString&) override {}
    void setLoggedIn() override {}
};

class NoHost final : public ClusterHost
{
public:
    [[nodiscard]] QString dxclusterText() const override { return {}; }
    [[nodiscard]] QString portText() const override { return {}; }
    [[nodiscard]] QString callsignText() const override { return {}; }
    [[nodiscard]] QString passwordText() const override { return {}; }
    [[nodiscard]] bool passwordIsEmpty() const override { return false; }
    [[nodiscard]] bool reconnectIsOn() const override { return true; }
    void setReconnect(bool) override {}
    void setConnected(bool) override {}
    void appendText(const QString&) override {}
    void postText(const QString&) override {}
    void threadCheckWarning() const override {}
    [[nodiscard]] SerialQueue& bufferQueue() override { return queue_; }
    void takeSpotLine(const QString&, const QString&) override { ++spots; }

    std::size_t spots = 0;

private:
    NoSerialQueue queue_;
};

} // namespace spotwell::bench
