// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <memory>
#include <string>

namespace spotwell::bench
{

/// A user's session of the benchmark's own in a temporary directory: home, session bus and, on request, a
/// display without window manager and compositor. What cannot be started ends with std::runtime_error.
class PrivateDesktop
{
public:
    PrivateDesktop();
    ~PrivateDesktop();
    PrivateDesktop(const PrivateDesktop&) = delete;
    PrivateDesktop& operator=(const PrivateDesktop&) = delete;

    void startBus();
    void startDisplay();

    [[nodiscard]] std::string busAddress() const;
    [[nodiscard]] qint64 busProcess() const { return bus_.processId(); }
    [[nodiscard]] qint64 displayProcess() const { return display_.processId(); }
    /// What a program of this session finds in its environment.
    [[nodiscard]] QProcessEnvironment environment() const;
    /// Writes the settings of a user who connects to `port` of this machine at the start.
    void writeSettings(int port) const;
    /// The home directory.
    [[nodiscard]] QString home() const { return directory_.path(); }
    /// Writes what the screen shows to `path`, as an X window dump.
    void keepPicture(const QString& path) const;
    /// About how many pixels of the screen are not black, as all are at first.
    [[nodiscard]] qint64 litPixels() const;
    /// A rough sum of what the screen shows; it changes when something is painted.
    [[nodiscard]] quint64 screenSum() const;

private:
    [[nodiscard]] QString path(const char* name) const;
    [[nodiscard]] qint64 screenWords() const { return screenBytes_ / qint64{sizeof(quint64)}; }
    [[nodiscard]] quint64 word(qint64 index) const
    {
        return static_cast<const volatile quint64*>(screen_)[index];
    }

    QTemporaryDir directory_;
    QProcess bus_;
    QProcess display_;
    QByteArray displayName_;
    const quint64* screen_ = nullptr;
    qint64 screenBytes_ = 0;
};

/// Waits for a line of `process`'s standard output, 20 s at most, and gives it without its line end.
[[nodiscard]] QByteArray lineOf(QProcess& process);

/// Asks `process` to end and waits for it; kills it after 5 s.
void end(QProcess& process);

} // namespace spotwell::bench
