// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "platform/linux/IcuTextConverter.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeSocketStreams.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/Printers.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

namespace spotwell
{

/// A process that keeps what it was asked.
class FakeProcessServices final : public ProcessServices
{
public:
    void reopenStandardError(const QString& path) override
    {
        note(QStringLiteral("reopen standard error"));
        reopened.append(path);
    }
    [[nodiscard]] QStringList callStackSymbols() const override
    {
        return {QStringLiteral("frame 0"), QStringLiteral("frame 1")};
    }
    QStringList reopened;
    Note note = ignore;
};

/// The whole program on fakes: the real delegate and window, everything below by hand.
struct FakeProgram {
    FakeProgram() = default;

    void launch()
    {
        delegate.applicationDidFinishLaunching();
        mainQueue.runPending();
    }
    /// Keeps in one journal, from now on, what the program asks of its platform.
    void keepJournal()
    {
        const Note note = [this](const QString& entry) { journal.append(entry); };
        mainQueue.note = note;
        sockets.note = note;
        applications.note = note;
        desktopContrast.note = note;
        defaults.note = note;
        process.note = note;
        log.note = note;
        factories = note;
        for (FakeSerialQueue* made : queues)
            made->note = note;
    }
    /// The console's entries.
    [[nodiscard]] QStringList console() const
    {
        return delegate.console().text().split(QLatin1Char('\n')).mid(1);
    }
    /// The queue with the given end of its label.
    FakeSerialQueue& queue(const char* role)
    {
        for (FakeSerialQueue* candidate : queues) {
            if (candidate->label() == QStringLiteral("com.tarnbrooksoftware.spotwell_") + QLatin1String(role))
                return *candidate;
        }
        ADD_FAILURE() << "no queue " << role;
        return *queues.front();
    }
    /// Lets a line go its way from the node to the logger.
    void runQueues()
    {
        queue("telnet_buffer_queue").runPending();
        queue("queue").runPending();
        mainQueue.runPending();
    }

    QTemporaryDir directory;
    QString logDirectory = directory.filePath(QStringLiteral("state/debug_log_files"));
    FakeClock clock;
    FakeMainQueue mainQueue{clock};
    FakeSocketStreams sockets;
    FakeNotificationCenter center;
    FakeRunningApplications applications;
    FakeScriptRunner scripts;
    FakeFileViewer fileViewer;
    FakeDesktopContrast desktopContrast;
    FakeUserDefaults defaults;
    IcuTextConverter converter;
    FakeProcessServices process;
    FakeLog log;
    /// What keepJournal() kept.
    QStringList journal;
    Note factories = ignore;
    std::vector<FakeSerialQueue*> queues;
    FakeUrlSession* urlSession = nullptr;
    MainWindow window;
    AppDelegate delegate{Platform{clock, mainQueue,
                                  [this](const QString& label) {
                                      factories(QStringLiteral("queue ") + label);
                                      auto made = std::make_unique<FakeSerialQueue>(label);
                                      queues.push_back(made.get());
                                      return made;
                                  },
                                  [this](const UrlSessionConfiguration& configuration) {
                                      factories(QStringLiteral("URL session"));
                                      auto made = std::make_unique<FakeUrlSession>(configuration);
                                      urlSession = made.get();
                                      return made;
                                  },
                                  sockets, center, applications, scripts, fileViewer, desktopContrast,
                                  defaults, converter, process, log},
                         window, logDirectory,
                         FeedAddresses{QStringLiteral("https://pota.example.org/spot/activator"),
                                       QStringLiteral("http://dxsummit.example.org/api/v1/spots"),
                                       QStringLiteral("http://wsprnet.example.org/drupal/wsprnet/spots")},
                         QStringLiteral("1.2.3")};
};

} // namespace spotwell
