// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/AppDelegate.h"

#include "app/BuiltInTests.h"
#include "app/Images.h"
#include "app/QuitQuestion.h"
#include "app/Settings.h"
#include "app/ShownSettings.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QScopedValueRollback>

#include <utility>

namespace spotwell
{

namespace
{

constexpr Seconds statusInterval{5.0};
constexpr Seconds tickInterval{1.0};

UrlSessionConfiguration mediumTimeoutConfiguration()
{
    UrlSessionConfiguration configuration;
    configuration.requestCachePolicy = UrlSessionConfiguration::CachePolicy::reloadIgnoringLocalCacheData;
    configuration.timeoutIntervalForRequest = Seconds{30.0};
    configuration.timeoutIntervalForResource = Seconds{45.0};
    return configuration;
}

} // namespace

AppDelegate::AppDelegate(Platform platform, MainWindow& mainWindow, QString logDirectory,
                         const FeedAddresses& addresses, const QString& version)
    : platform_(std::move(platform)),
      window(mainWindow),
      colours_(mainWindow, platform_.desktopContrast),
      logDirectory_(std::move(logDirectory)),
      statusLine_(*mainWindow.statusLine, platform_.mainQueue),
      consoleInbox_(platform_.mainQueue, [this](const QString& text) { appendText(text, &statusLine_); }),
      diagnostics_(platform_.log, platform_.clock, platform_.mainQueue, platform_.process, version),
      presence_(platform_.runningApplications, platform_.log),
      spotNotification_([this](const QString& text) { appendText(text); }, platform_.notificationCenter),
      lineDelivery_(presence_, platform_.notificationCenter, platform_.scriptRunner, platform_.log,
                    {[this](bool running) { showLineFinding(running); },
                     [this](const QString& text) { postText(text); }}),
      lineBacklog_(platform_.log,
                   [this](const QString& line, const QString& node) {
                       lineDelivery_.sendSpotLineToLogwright(line, node);
                   }),
      clusterSession_(*this, platform_.sockets, platform_.mainQueue, platform_.clock, platform_.textConverter,
                      platform_.log),
      supervision_(*this, clusterSession_, platform_.clock, platform_.log),
      dxsummitFeed_(*this, platform_.log),
      potaFeed_(*this, platform_.log),
      wsprnetFeed_(*this, platform_.clock, platform_.log),
      wsprnetPoller_(
          wsprnetPollerValues(addresses.wsprnet),
          pollerHost(window.wsprnetCheckBox, nullptr, wsprnet_background_queue,
                     [this](const QByteArray& body, bool) { wsprnetFeed_.parseWsprnetData(body); }),
          _lastWsprnetTime, platform_.clock, platform_.log),
      dxsummitPoller_(dxsummitPollerValues(addresses.dxsummit),
                      pollerHost(window.dxsummitCheckBox, window.dxsExclusiveCheckBox,
                                 dxsummit_background_queue,
                                 [this](const QByteArray& body, bool dxsExclusive) {
                                     dxsummitFeed_.parseDxSummitData(body, dxsExclusive);
                                 }),
                      _lastDxsummitTime, platform_.clock, platform_.log),
      potaPoller_(potaPollerValues(addresses.pota),
                  pollerHost(window.potaCheckBox, window.skimmersCheckBox, pota_background_queue,
                             [this](const QByteArray& body, bool showSkimmers) {
                                 potaFeed_.parsePotaData(body, showSkimmers);
                             }),
                  _lastPotaTime, platform_.clock, platform_.log)
{
}

void AppDelegate::applicationDidFinishLaunching()
{
    setTb_medium_timeout_session(platform_.makeUrlSession(mediumTimeoutConfiguration()));
    diagnostics_.setDebugPath(logDirectory_);
    diagnostics_.createDebugDirectory();
    diagnostics_.redirectConsoleLogToDocumentFolder();
    platform_.log.line(
        QStringLiteral("applicationDidFinishLaunching:%1").arg(diagnostics_.displayLongVersionString()));
    greenBulb = imageNamed(QStringLiteral("green_ball"));
    greyBulb = imageNamed(QStringLiteral("gray_ball"));
    createQueues();
    wireControls();
    showSettings(readSettings(platform_.userDefaults), window);
    colours_.begin();
    darkWindows(window.darkCheckBox->isChecked());
    _lastWsprnetTime = distantPast;
    _lastDxsummitTime = distantPast;
    _lastPotaTime = distantPast;
    double version = 0;
    (void)presence_.appIsRunning(loggerName(), true, &version);
    scheduleTimers();
    connectAtLaunch();
    colours_.follow();
}

void AppDelegate::createQueues()
{
    const auto make = [this](const char* role) {
        return platform_.makeSerialQueue(QStringLiteral("com.tarnbrooksoftware.spotwell_") +
                                         QLatin1String(role));
    };
    spotwell_queue = make("queue");
    spotwell_buffer_queue = make("telnet_buffer_queue");
    wsprnet_background_queue = make("wsprnet_background_queue");
    dxsummit_background_queue = make("dxsummit_background_queue");
    pota_background_queue = make("pota_background_queue");
}

void AppDelegate::wireControls()
{
    const auto onClick = [this](const QAbstractButton* button, void (AppDelegate::*action)()) {
        QObject::connect(button, &QAbstractButton::clicked, &window, [this, action] { (this->*action)(); });
    };
    onClick(window.connected, &AppDelegate::connectedPressed);
    onClick(window.wsprnetCheckBox, &AppDelegate::wsprnetPressed);
    onClick(window.dxsummitCheckBox, &AppDelegate::dxsummitPressed);
    onClick(window.potaCheckBox, &AppDelegate::potaPressed);
    onClick(window.skimmersCheckBox, &AppDelegate::skimmersPressed);
    onClick(window.dxsExclusiveCheckBox, &AppDelegate::dxsExclusivePressed);
    onClick(window.darkCheckBox, &AppDelegate::darkCheckBoxChanged);
    onClick(window.showDebugLogButton, &AppDelegate::showDebugLogFolder);
    window.shouldClose = [this] { return applicationShouldTerminateAfterLastWindowClosed(); };
    QObject::connect(window.password, &QLineEdit::textChanged, &window,
                     [this](const QString& text) { passwordIsEmpty_ = text.isEmpty(); });
}

void AppDelegate::scheduleTimers()
{
    MainQueue& queue = platform_.mainQueue;
    queue.every(statusInterval, [this] { lgwtStatusTimer(); });
    queue.every(tickInterval, [this] { loginTimeoutTimer(); });
    queue.every(tickInterval, [this] { reconnectTimer(); });
    queue.every(tickInterval, [this] { wsprnetTimer(); });
    queue.every(tickInterval, [this] { dxsummitTimer(); });
    queue.every(tickInterval, [this] { potaTimer(); });
}

void AppDelegate::connectAtLaunch()
{
    if (!reconnectIsOn()) {
        appendText(QStringLiteral("Auto Connect is disabled"));
    } else if (!dxclusterText().isEmpty() && !callsignText().isEmpty()) {
        setConnected(true);
        clusterSession_.openTelnetConnection();
    }
}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed()
{
    // Asked once at a time, however often the window is told to close.
    if (isAskingToQuit_)
        return false;
    const QScopedValueRollback asking(isAskingToQuit_, true);
    if (asksToQuit(window))
        return true;
    // A minimised window stays where it is when it is only shown.
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
    return false;
}

void AppDelegate::applicationWillTerminate()
{
    prefsChanged();
    clusterSession_.closeTelnetConnection();
}

void AppDelegate::prefsChanged()
{
    writeSettings(platform_.userDefaults, shownSettings(window));
}

void AppDelegate::darkWindows(bool dark)
{
    colours_.show(dark);
}

void AppDelegate::appendText(const QString& text)
{
    consoleInbox_.handOver();
    appendText(text, &statusLine_);
}

void AppDelegate::appendText(const QString& text, ConsoleView* textView)
{
    if (textView)
        textView->appendText(text, statusLine_);
}

void AppDelegate::connectedPressed()
{
    const bool on = window.connected->isChecked();
    platform_.log.line(QStringLiteral("connectedPressed:[%1]").arg(on ? 1 : 0));
    if (on)
        clusterSession_.openTelnetConnection();
    else
        clusterSession_.closeTelnetConnection();
}

void AppDelegate::wsprnetPressed()
{
    prefsChanged();
}

void AppDelegate::dxsummitPressed()
{
    window.dxsExclusiveCheckBox->setEnabled(window.dxsummitCheckBox->isChecked());
    prefsChanged();
}

void AppDelegate::potaPressed()
{
    window.skimmersCheckBox->setEnabled(window.potaCheckBox->isChecked());
    prefsChanged();
}

void AppDelegate::skimmersPressed()
{
    prefsChanged();
}

void AppDelegate::dxsExclusivePressed()
{
    prefsChanged();
}

void AppDelegate::darkCheckBoxChanged()
{
    darkWindows(window.darkCheckBox->isChecked());
    prefsChanged();
}

void AppDelegate::showDebugLogFolder()
{
    platform_.fileViewer.selectFile(diagnostics_.debugLogFilePath(), diagnostics_.debugPath());
}

void AppDelegate::testSendSpotLine()
{
    lineDelivery_.sendSpotLineToLogwright(builtInTestLine(platform_.textConverter, platform_.log),
                                          clusterSession_.telnetHostName());
}

void AppDelegate::testSendSpot()
{
    spotNotification_.sendSpotCall(builtInTestSpot(platform_.clock.now()));
}

void AppDelegate::setTb_medium_timeout_session(std::unique_ptr<UrlSession> session)
{
    _tb_medium_timeout_session = std::move(session);
}

void AppDelegate::lgwtStatusTimer()
{
    double version = 0;
    finding_ = presence_.appIsRunning(loggerName(), false, &version);
    showFinding();
}

void AppDelegate::showFinding()
{
    const bool running = finding_.load() == true;
    const QIcon& bulb = running ? greenBulb : greyBulb;
    // The image that is there already would be painted again each time.
    if (window.lgwtRunningButton->icon().cacheKey() != bulb.cacheKey())
        window.lgwtRunningButton->setIcon(bulb);
    window.setLogwrightRunning(running);
}

void AppDelegate::showLineFinding(bool running)
{
    // Every line brings a finding, mostly the one before: not worth waking the main thread, nor laying out
    // and painting the bulb.
    if (finding_.exchange(running) != running)
        platform_.mainQueue.async([this] { showFinding(); });
}

QString AppDelegate::dxclusterText() const
{
    return window.dxcluster->text();
}

QString AppDelegate::portText() const
{
    return window.port->text();
}

QString AppDelegate::callsignText() const
{
    return window.callsign->text();
}

QString AppDelegate::passwordText() const
{
    return window.password->text();
}

bool AppDelegate::reconnectIsOn() const
{
    return window.reconnectCheckBox->isChecked();
}

void AppDelegate::setReconnect(bool on)
{
    window.reconnectCheckBox->setChecked(on);
}

void AppDelegate::setConnected(bool on)
{
    window.connected->setChecked(on);
}

WebPollerHost AppDelegate::pollerHost(const QCheckBox* feed, const QCheckBox* option,
                                      const std::unique_ptr<SerialQueue>& queue,
                                      std::function<void(const QByteArray&, bool)> parse)
{
    return {[feed] { return feed->isChecked(); }, [option] { return option && option->isChecked(); },
            [&queue]() -> SerialQueue& { return *queue; }, [this] { return tb_medium_timeout_session(); },
            std::move(parse)};
}

void AppDelegate::forward(const Spot& spot)
{
    platform_.mainQueue.async([this, spot] { spotNotification_.sendSpotCall(spot); });
}

bool AppDelegate::pause(Seconds duration)
{
    UrlSession* const session = tb_medium_timeout_session();
    return session && session->pause(duration);
}

void AppDelegate::takeSpotLine(const QString& line, const QString& node)
{
    lineBacklog_.add(*spotwell_queue, line, node);
}

} // namespace spotwell
