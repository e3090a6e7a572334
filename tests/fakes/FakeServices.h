// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/DesktopContrast.h"
#include "platform/FileViewer.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/RunningApplications.h"
#include "platform/ScriptRunner.h"
#include "platform/TextConverter.h"
#include "platform/UrlSession.h"
#include "platform/UserDefaults.h"
#include "tests/fakes/Note.h"

#include <QStringList>

#include <deque>
#include <map>
#include <utility>
#include <vector>

namespace spotwell
{

/// Keeps every entry as it was given.
class FakeLog final : public Log
{
public:
    void line(const QString& text) override
    {
        note(QStringLiteral("log ") + text);
        lines.append(text);
    }
    QStringList lines;
    Note note = ignore;
};

/// Keeps every notification.
class FakeNotificationCenter final : public NotificationCenter
{
public:
    struct Posted {
        QString name;
        QString object;
        UserInfo userInfo;
    };

    void post(const QString& name, const QString& object, const UserInfo& userInfo) override
    {
        note(QStringLiteral("post ") + name);
        posted.push_back({name, object, userInfo});
    }
    std::vector<Posted> posted;
    Note note = ignore;
};

/// Answers with a list the test sets, and counts how often it was read.
class FakeRunningApplications final : public RunningApplications
{
public:
    std::vector<RunningApplication> runningApplications() override
    {
        note(QStringLiteral("look for applications"));
        ++reads;
        return applications;
    }
    /// Adds an application with a version text, or without one.
    void add(const QString& displayName, const std::optional<QString>& version)
    {
        applications.push_back({displayName, BundleInformation{version}, {}});
    }
    std::vector<RunningApplication> applications;
    int reads = 0;
    Note note = ignore;
};

/// Keeps every script; answers with the error the test sets.
class FakeScriptRunner final : public ScriptRunner
{
public:
    std::optional<QString> run(const QString& source) override
    {
        note(QStringLiteral("run a script"));
        scripts.append(source);
        return error;
    }
    QStringList scripts;
    std::optional<QString> error;
    Note note = ignore;
};

/// Keeps what was asked to be shown.
class FakeFileViewer final : public FileViewer
{
public:
    void selectFile(const QString& file, const QString& folder) override { shown.emplace_back(file, folder); }
    std::vector<std::pair<QString, QString>> shown;
};

/// Keeps whom it has to answer.
class FakeDesktopContrast final : public DesktopContrast
{
public:
    void ask(std::function<void(bool high)> answer) override
    {
        note(QStringLiteral("ask for the contrast"));
        asked.push_back(std::move(answer));
    }
    std::vector<std::function<void(bool high)>> asked;
    Note note = ignore;
};

/// A store in memory that also keeps the order of the writes.
class FakeUserDefaults final : public UserDefaults
{
public:
    [[nodiscard]] std::optional<QString> string(const QString& key) const override
    {
        note(QStringLiteral("read ") + key);
        const auto found = strings.find(key);
        return found == strings.end() ? std::nullopt : std::optional{found->second};
    }
    [[nodiscard]] bool boolean(const QString& key) const override
    {
        note(QStringLiteral("read ") + key);
        const auto found = booleans.find(key);
        return found != booleans.end() && found->second;
    }
    void setString(const QString& key, const QString& value) override
    {
        note(QStringLiteral("write ") + key);
        strings[key] = value;
        written.append(key);
    }
    void setBoolean(const QString& key, bool value) override
    {
        note(QStringLiteral("write ") + key);
        booleans[key] = value;
        written.append(key);
    }
    std::map<QString, QString> strings;
    std::map<QString, bool> booleans;
    QStringList written;
    Note note = ignore;
};

/// Converts as the test says: encodings without an entry fail.
class FakeTextConverter final : public TextConverter
{
public:
    [[nodiscard]] std::optional<QString> convert(QByteArrayView, unsigned long encoding) const override
    {
        tried.push_back(encoding);
        const auto found = results.find(encoding);
        return found == results.end() ? std::nullopt : std::optional{found->second};
    }
    [[nodiscard]] DetectedText detect(QByteArrayView) const override { return detected; }
    std::map<unsigned long, QString> results;
    DetectedText detected;
    mutable std::vector<unsigned long> tried;
};

/// Keeps every request until the test answers it.
class FakeUrlSession final : public UrlSession
{
public:
    explicit FakeUrlSession(UrlSessionConfiguration asked = {}) : configuration(asked) {}
    void dataTask(const QString& url, CompletionHandler completionHandler) override
    {
        requests.emplace_back(url, std::move(completionHandler));
    }
    bool pause(Seconds duration) override
    {
        pauses.push_back(duration);
        return !ending;
    }
    UrlSessionConfiguration configuration;
    std::deque<std::pair<QString, CompletionHandler>> requests;
    std::vector<Seconds> pauses;
    bool ending = false;
};

} // namespace spotwell
