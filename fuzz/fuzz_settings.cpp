// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Any bytes as the settings file, and any texts as settings: a file is read within bounds, and what is saved
// is read back.

#include "app/Settings.h"
#include "fuzz/Check.h"
#include "fuzz/Input.h"
#include "platform/linux/SettingsUserDefaults.h"
#include "tests/fakes/FakeServices.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <array>

namespace
{

using namespace spotwell;
using namespace Qt::Literals::StringLiterals;

/// The program around a settings store, and a directory for its file, in memory where there is such a one.
class Place
{
public:
    /// A file that no run had before, for QSettings keeps what it has read by the file's name.
    QString nextFile() { return directory_.filePath(QString::number(++files_)); }

private:
    int count_ = 1;
    std::array<char, 2> name_{'f', '\0'};
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    QCoreApplication application_{count_, arguments_.data()}; // the store has a timer
    QTemporaryDir directory_{(QDir(u"/dev/shm"_s).exists() ? u"/dev/shm"_s : QDir::tempPath()) +
                             u"/spotwell-fuzz"_s};
    unsigned long files_ = 0;
};

bool isSame(const Settings& a, const Settings& b)
{
    const auto text = [](const std::optional<QString>& each) { return each.value_or(QString()); };
    return text(a.dxcluster) == text(b.dxcluster) && text(a.password) == text(b.password) &&
           text(a.port) == text(b.port) && text(a.callsign) == text(b.callsign) &&
           a.reconnect == b.reconnect && a.wsprnet == b.wsprnet && a.dxsummit == b.dxsummit &&
           a.pota == b.pota && a.skimmers == b.skimmers && a.dxsexclusive == b.dxsexclusive &&
           a.dark == b.dark;
}

/// What the program finds in a file of `bytes`, and how many lines of the log that takes.
Settings settingsIn(const QString& path, QByteArrayView bytes, qsizetype mostLogLines)
{
    QFile file(path);
    check(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
              file.write(bytes.data(), bytes.size()) == bytes.size(),
          "there is a file");
    file.close();
    FakeLog log;
    Settings settings;
    {
        const SettingsUserDefaults defaults(path, log);
        settings = readSettings(defaults);
    }
    check(file.size() == bytes.size(), "reading leaves the file alone");
    check(log.lines.size() <= mostLogLines, "a damaged file takes a line of the log, any other none");
    for (const auto& text : {settings.dxcluster, settings.password, settings.port, settings.callsign})
        check(!text || text->size() <= bytes.size(), "a text is no longer than the file");
    file.remove();
    return settings;
}

void checkSaved(Place& place, const Settings& settings)
{
    SettingsTexts texts{{u"dxcluster"_s, settings.dxcluster.value_or(QString())},
                        {u"password"_s, settings.password.value_or(QString())},
                        {u"port"_s, settings.port.value_or(QString())},
                        {u"callsign"_s, settings.callsign.value_or(QString())}};
    for (const auto& [key, value] : {std::pair{u"reconnect"_s, settings.reconnect},
                                     {u"wsprnet"_s, settings.wsprnet},
                                     {u"dxsummit"_s, settings.dxsummit},
                                     {u"pota"_s, settings.pota},
                                     {u"skimmers"_s, settings.skimmers},
                                     {u"dxsexclusive"_s, settings.dxsexclusive},
                                     {u"dark"_s, settings.dark}})
        texts.insert(key, value ? u"true"_s : u"false"_s);
    check(isSame(settingsIn(place.nextFile(), settingsFileText(texts), 0), settings),
          "what is saved is read back");
}

/// Settings of any texts, each of at most 255 units.
Settings anySettings(Input& input)
{
    Settings settings;
    for (auto* const text : {&settings.dxcluster, &settings.password, &settings.port, &settings.callsign}) {
        const QByteArray units = input.bytes(2 * static_cast<qsizetype>(input.byte())).toByteArray();
        *text = QString(reinterpret_cast<const QChar*>(units.constData()), units.size() / 2);
    }
    const unsigned boxes = input.byte();
    settings.reconnect = (boxes & 1U) != 0;
    settings.pota = (boxes & 2U) != 0;
    settings.dark = (boxes & 4U) != 0;
    return settings;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static Place place;
    Input input(data, size);
    const unsigned kind = input.byte();
    if ((kind & 1U) != 0) {
        checkSaved(place, anySettings(input));
        return 0;
    }
    const Settings settings = settingsIn(place.nextFile(), input.all(), 1);
    if ((kind & 2U) != 0)
        checkSaved(place, settings);
    return 0;
}
