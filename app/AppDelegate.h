// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "app/DiagnosticsLog.h"
#include "app/MainWindow.h"
#include "app/WindowColours.h"
#include "cluster/ClusterHost.h"
#include "cluster/ClusterSession.h"
#include "cluster/Supervision.h"
#include "delivery/LineBacklog.h"
#include "delivery/LineDelivery.h"
#include "delivery/LoggerPresence.h"
#include "delivery/SpotNotification.h"
#include "feeds/DxSummitFeed.h"
#include "feeds/FeedAddresses.h"
#include "feeds/FeedHost.h"
#include "feeds/PotaFeed.h"
#include "feeds/WebPoller.h"
#include "feeds/WsprnetFeed.h"
#include "platform/Platform.h"
#include "util/ConsoleInbox.h"
#include "util/ConsoleView.h"

#include <QIcon>

#include <atomic>
#include <memory>
#include <optional>

namespace spotwell
{

/// The one controller: owns the program's state for the life of the process and routes between the window,
/// the subsystems and the platform. Main thread, unless it says otherwise.
class AppDelegate final : private ClusterHost, private FeedHost
{
public:
    /// `version` is the program's own; the log file of each run goes to `logDirectory`.
    AppDelegate(Platform platform, MainWindow& window, QString logDirectory, const FeedAddresses& addresses,
                const QString& version);

    /// Start-up: everything the program does by itself begins here. Once.
    void applicationDidFinishLaunching();
    /// Asks the user whether to quit. On false the window is to stay; it is in front then.
    [[nodiscard]] bool applicationShouldTerminateAfterLastWindowClosed();
    /// Saves the settings and closes the cluster connection. Once, when the process is about to end.
    void applicationWillTerminate();

    /// Writes all eleven settings from the controls.
    void prefsChanged();
    /// Gives the window its dark or its light appearance.
    void darkWindows(bool dark);
    /// Appends an entry to `textView`; null for none.
    void appendText(const QString& text, ConsoleView* textView);

    // The controls' actions.
    void connectedPressed();
    void wsprnetPressed();
    void dxsummitPressed();
    void potaPressed();
    void skimmersPressed();
    void dxsExclusivePressed();
    void darkCheckBoxChanged();
    void showDebugLogFolder();

    /// Sends the built-in test line to the logger and waits for it on the calling thread; an older logger,
    /// which takes scripts, may be slow. From any thread.
    void testSendSpotLine();
    /// Shows and posts the built-in test spot.
    void testSendSpot();

    /// The session that every web poller uses; null before start-up.
    [[nodiscard]] UrlSession* tb_medium_timeout_session() const { return _tb_medium_timeout_session.get(); }
    /// To be replaced before the first poll only.
    void setTb_medium_timeout_session(std::unique_ptr<UrlSession> session);

    /// The console, for whoever looks at the whole program.
    [[nodiscard]] const ConsoleView& console() const { return statusLine_; }

private:
    void wireControls();
    void createQueues();
    void scheduleTimers();
    void connectAtLaunch();
    void showFinding();
    /// Shows what a line's delivery found out about the logger. From any thread.
    void showLineFinding(bool running);

    void lgwtStatusTimer();
    void loginTimeoutTimer() { supervision_.loginTimeoutTimer(); }
    void reconnectTimer() { supervision_.reconnectTimer(); }
    void wsprnetTimer() { wsprnetPoller_.tick(); }
    void dxsummitTimer() { dxsummitPoller_.tick(); }
    void potaTimer() { potaPoller_.tick(); }

    /// What a poller needs, with the feed's box, its option's box (null for none), its queue and its parser.
    [[nodiscard]] WebPollerHost pollerHost(const QCheckBox* feed, const QCheckBox* option,
                                           const std::unique_ptr<SerialQueue>& queue,
                                           std::function<void(const QByteArray&, bool)> parse);

    [[nodiscard]] QString dxclusterText() const override;
    [[nodiscard]] QString portText() const override;
    [[nodiscard]] QString callsignText() const override;
    [[nodiscard]] QString passwordText() const override;
    [[nodiscard]] bool passwordIsEmpty() const override { return passwordIsEmpty_; }
    [[nodiscard]] bool reconnectIsOn() const override;
    void setReconnect(bool on) override;
    void setConnected(bool on) override;
    void appendText(const QString& text) override;
    void postText(const QString& text) override { consoleInbox_.add(text); }
    void threadCheckWarning() const override { diagnostics_.threadCheckWarning(); }
    [[nodiscard]] SerialQueue& bufferQueue() override { return *spotwell_buffer_queue; }
    void takeSpotLine(const QString& line, const QString& node) override;

    void forward(const Spot& spot) override;
    bool pause(Seconds duration) override;

    Platform platform_;
    MainWindow& window;
    // depends-on: window, the desktop's contrast
    WindowColours colours_;
    const QString logDirectory_;
    // depends-on: window, the main queue
    ConsoleView statusLine_;
    // depends-on: statusLine_, the main queue
    ConsoleInbox consoleInbox_;
    QIcon greenBulb;
    QIcon greyBulb;
    // Whether the logger runs, by the latest tick or line, whichever came last; nothing before the first.
    // What the bulb shows, or is about to.
    std::atomic<std::optional<bool>> finding_{std::nullopt};
    // depends-on: the log, the clock, the main queue, the process services
    DiagnosticsLog diagnostics_;
    // What the buffer queue may know of the password field.
    std::atomic<bool> passwordIsEmpty_ = true;
    // depends-on: the running applications, the log
    LoggerPresence presence_;
    // depends-on: statusLine_, the notification center
    SpotNotification spotNotification_;
    // depends-on: presence_, statusLine_, window, the notification center, the script runner, the main queue,
    // the log
    LineDelivery lineDelivery_;
    // depends-on: lineDelivery_, the log
    LineBacklog lineBacklog_;
    // depends-on: this object as its host, the sockets, the main queue, the clock, the converter, the log
    ClusterSession clusterSession_;

    // depends-on: this object as its host, clusterSession_, the clock, the log
    Supervision supervision_;

    // When each feed was last polled; written on the URL session's callback queue, too.
    std::atomic<TimePoint> _lastWsprnetTime = distantPast;
    std::atomic<TimePoint> _lastDxsummitTime = distantPast;
    std::atomic<TimePoint> _lastPotaTime = distantPast;
    // depends-on: this object as their host, the clock, the log
    DxSummitFeed dxsummitFeed_;
    PotaFeed potaFeed_;
    WsprnetFeed wsprnetFeed_;
    // depends-on: window, the stamps, the feeds, the clock, the log; the queues and the URL session when they
    // poll
    WebPoller wsprnetPoller_;
    WebPoller dxsummitPoller_;
    WebPoller potaPoller_;
    bool isAskingToQuit_ = false;

    // depends-on: all of the above; ending one drops its work and waits for the piece in hand
    std::unique_ptr<UrlSession> _tb_medium_timeout_session;
    std::unique_ptr<SerialQueue> spotwell_queue;
    std::unique_ptr<SerialQueue> spotwell_buffer_queue;
    std::unique_ptr<SerialQueue> wsprnet_background_queue;
    std::unique_ptr<SerialQueue> dxsummit_background_queue;
    std::unique_ptr<SerialQueue> pota_background_queue;
};

} // namespace spotwell
