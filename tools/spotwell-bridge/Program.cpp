// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Program.h"

#include "platform/linux/TerminationSignals.h"
#include "tools/spotwell-bridge/Alarm.h"
#include "tools/spotwell-bridge/JsonReport.h"

#include <QCoreApplication>

#include <system_error>
#include <unistd.h>
#include <utility>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

/// After what time a bus that has not answered at the start is complained of.
constexpr auto silence = 2s;
/// How long the bus may take to take in the last words.
constexpr auto busEnding = 200ms;
/// How long each piece of the last output may take, and all of it.
constexpr auto outputPatience = 200ms;
constexpr auto outputEnding = 500ms;

const QString nameText = QString::fromLatin1(loggerBusName);

QString statusOf(Standing standing)
{
    switch (standing) {
    case Standing::owner:
        return QStringLiteral("Receiving spots");
    case Standing::queued:
        return QStringLiteral("Receiving spots; another logger has the bus name");
    default:
        return QStringLiteral("Waiting for the session bus");
    }
}

QString errorText(int error)
{
    return QString::fromStdString(std::generic_category().message(error));
}

} // namespace

Program::Program(Options options, const Clock& clock)
    : options_(std::move(options)),
      clock_(clock),
      log_(STDERR_FILENO),
      manager_(qgetenv("NOTIFY_SOCKET")),
      complaints_(log_),
      nodeLog_(log_, QStringLiteral("telnet")),
      output_(STDOUT_FILENO,
              {[this] {
                   log_.line(
                       QStringLiteral("the standard output is not taken in, its oldest lines are lost"));
               },
               [this](std::size_t lost) {
                   log_.line(QStringLiteral("lines of the standard output that were lost: %1").arg(lost));
               },
               [this](int error) { outputFailed(error); }}),
      sessionBus_(busWords_),
      report_([this](std::optional<Standing> before, Standing standing) { tellStanding(before, standing); }),
      logger_(sessionBus_, options_.identity, options_.answers, *this),
      bridge_(outlets(), complaints_)
{
}

int Program::run()
{
    const TerminationSignals signals([this] { end(0); });
    if (!start())
        return 1;
    Alarm silent([this] { complainOfSilence(); });
    silent.set(Alarm::Clock::now() + silence);
    Alarm over([this] { end(0); });
    if (options_.duration)
        over.set(Alarm::Clock::now() + *options_.duration);
    const int code = QCoreApplication::exec();
    finish();
    return code;
}

bool Program::start()
{
    if (options_.n1mm) {
        const auto lookUp = [this](const QString& host, N1mmSender::LookedUp lookedUp) {
            resolver_.lookUp(host, options_.n1mm->port, senderIsAlive_, std::move(lookedUp));
        };
        sender_ = std::make_unique<N1mmSender>(*options_.n1mm, lookUp, log_);
        sender_->begin(std::chrono::steady_clock::now());
    }
    if (!logger_.start()) {
        log_.line(busReason());
        return false;
    }
    if (options_.telnet) {
        node_ = std::make_unique<SpotNode>(clock_, nodeLog_);
        const auto& [address, port] = *options_.telnet;
        const QString error = node_->listen(address, port);
        if (!error.isNull()) {
            log_.line(QStringLiteral("cannot listen on %1: %2").arg(endpointText(address, port), error));
            return false;
        }
        listening_ = endpointText(address, node_->port());
        log_.line(QStringLiteral("listening on %1").arg(listening_));
    }
    return true;
}

Outlets Program::outlets()
{
    Outlets outlets;
    if (options_.telnet || options_.printing == Printing::text)
        outlets.line = [this](const QString& line) { sendLine(line); };
    if (options_.n1mm)
        outlets.datagram = [this](const QByteArray& datagram) {
            sender_->send(datagram, std::chrono::steady_clock::now());
        };
    return outlets;
}

void Program::sendLine(const QString& line)
{
    if (node_)
        node_->send(line);
    if (options_.printing == Printing::text)
        output_.write(line.toUtf8());
}

void Program::standingChanged(Standing standing)
{
    const bool isFirst = !std::exchange(standing_, standing);
    if (standing == Standing::refused)
        return fail(QStringLiteral("the session bus refuses the name %1").arg(nameText));
    if (standing == Standing::gone && isFirst)
        return fail(busReason());
    report_.change(standing);
    if (standing == Standing::gone)
        endIfDone(); // nobody is owed an answer any more
}

void Program::tellStanding(std::optional<Standing> before, Standing standing)
{
    manager_.status(statusOf(standing));
    if (standing == Standing::gone)
        return log_.line(QStringLiteral("the session bus is gone"));
    if (before == Standing::gone)
        log_.line(QStringLiteral("the session bus is back"));
    if (standing == Standing::queued)
        log_.line(QStringLiteral("another logger has the name %1, waiting for it").arg(nameText));
    else if (before == Standing::queued)
        log_.line(QStringLiteral("the name %1 is free now and taken").arg(nameText));
    if (!before)
        becomeReady(standing == Standing::queued);
}

void Program::becomeReady(bool queued)
{
    const bool handsNothingOn = !options_.telnet && !options_.n1mm && options_.printing == Printing::nothing;
    if (options_.printing == Printing::json || handsNothingOn)
        output_.write(readyJson(options_.identity, listening_, queued));
    else
        log_.line(QStringLiteral("receiving spots"));
    if (ending_) // nobody reads
        return;
    if (handsNothingOn)
        log_.line(QStringLiteral("hands nothing on; spotwell-bridge --help shows how it does"));
    manager_.ready();
}

void Program::notificationArrived(const Notification& notification)
{
    if (ending_)
        return;
    const TimePoint now = clock_.now();
    if (options_.printing == Printing::json)
        output_.write(notificationJson(notification, now));
    bridge_.handOn(notification, now);
    ++received_;
    endIfDone();
}

void Program::notificationLeftOut()
{
    complaints_.complain(QStringLiteral("a notification of another shape was left out"));
}

void Program::commandArrived(const QString& text)
{
    if (ending_)
        return;
    const TimePoint now = clock_.now();
    if (options_.printing == Printing::json)
        output_.write(commandJson(text, now));
    bridge_.handOnLine(text, now);
    ++received_;
}

void Program::commandRefused()
{
    complaints_.complain(QStringLiteral("a command with a line that is too long was refused"));
}

void Program::answersChanged()
{
    endIfDone();
}

void Program::complainOfSilence()
{
    if (!standing_)
        log_.line(QStringLiteral("the session bus does not answer yet"));
}

void Program::outputFailed(int error)
{
    const QString reason = QStringLiteral("the standard output cannot be written: %1").arg(errorText(error));
    if (!options_.telnet && !options_.n1mm)
        return fail(reason);
    log_.line(QStringLiteral("%1; nothing more is printed").arg(reason));
}

void Program::endIfDone()
{
    if (!options_.count || received_ < *options_.count)
        return;
    logger_.takeNoMore();
    if (!logger_.owesAnswers())
        end(0);
}

void Program::end(int code)
{
    if (!std::exchange(ending_, true))
        QCoreApplication::exit(code);
}

void Program::fail(const QString& reason)
{
    log_.line(reason);
    end(1);
}

/// Why there is no session bus; its own words begin with their speaker.
QString Program::busReason() const
{
    if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") &&
        !qEnvironmentVariableIsSet("XDG_RUNTIME_DIR"))
        return QStringLiteral("no session bus: neither DBUS_SESSION_BUS_ADDRESS nor XDG_RUNTIME_DIR is set");
    return QString(busWords_.last).remove(QStringLiteral("SessionBus: "));
}

void Program::finish()
{
    manager_.stopping();
    if (node_)
        node_->stop();
    logger_.stop(busEnding);
    output_.finish(outputPatience, outputEnding);
    log_.finish();
}

} // namespace spotwell::bridge
