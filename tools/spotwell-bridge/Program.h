// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "platform/linux/HostResolver.h"
#include "platform/linux/bus/SessionBus.h"
#include "tools/spotwell-bridge/Bridge.h"
#include "tools/spotwell-bridge/Complaints.h"
#include "tools/spotwell-bridge/ErrorLog.h"
#include "tools/spotwell-bridge/LimitedLog.h"
#include "tools/spotwell-bridge/LineWriter.h"
#include "tools/spotwell-bridge/LoggerOnBus.h"
#include "tools/spotwell-bridge/N1mmSender.h"
#include "tools/spotwell-bridge/Options.h"
#include "tools/spotwell-bridge/ServiceManager.h"
#include "tools/spotwell-bridge/StandingReport.h"
#include "tools/spotwell-bridge/telnet/SpotNode.h"

#include <QString>

#include <memory>
#include <optional>

namespace spotwell::bridge
{

/// The program between its command line and its exit code: puts the parts together, says how it stands to
/// whoever reads the standard error, the standard output and the service manager, and ends in good order.
class Program final : private LoggerListener
{
public:
    /// The clock outlives the program.
    Program(Options options, const Clock& clock);

    /// Runs until it is told to end (SIGTERM, SIGINT, SIGHUP, the options' count or duration) or cannot go
    /// on. The exit code. Needs a QCoreApplication.
    int run();

private:
    /// Keeps what was said last.
    struct LastLine final : Log {
        void line(const QString& text) override { last = text; }
        QString last;
    };

    void standingChanged(Standing standing) override;
    void notificationArrived(const Notification& notification) override;
    void notificationLeftOut() override;
    void commandArrived(const QString& text) override;
    void commandRefused() override;
    void answersChanged() override;

    bool start();
    void tellStanding(std::optional<Standing> before, Standing standing);
    Outlets outlets();
    void sendLine(const QString& line);
    void becomeReady(bool queued);
    void complainOfSilence();
    void outputFailed(int error);
    void endIfDone();
    void end(int code);
    void fail(const QString& reason);
    [[nodiscard]] QString busReason() const;
    void finish();

    const Options options_;
    const Clock& clock_;
    ErrorLog log_;
    ServiceManager manager_;
    Complaints complaints_;
    LimitedLog nodeLog_;
    LineWriter output_;
    LastLine busWords_;
    SessionBus sessionBus_;
    HostResolver resolver_;
    /// Tells the resolver that the sender below is there.
    const std::shared_ptr<int> senderIsAlive_ = std::make_shared<int>();
    std::unique_ptr<N1mmSender> sender_;
    std::unique_ptr<SpotNode> node_;
    StandingReport report_;
    LoggerOnBus logger_;
    Bridge bridge_;
    /// Where telnet clients are served; empty when they are not.
    QString listening_;
    std::optional<Standing> standing_;
    bool ending_ = false;
    unsigned received_ = 0;
};

} // namespace spotwell::bridge
