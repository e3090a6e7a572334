// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/UserFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>

#include <array>
#include <chrono>
#include <csignal>
#include <optional>
#include <random>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

/// The settings are on a disk, where there is one: it takes longer to save there than in memory.
class KillTest : public UserFixture
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(::symlink(QFile::encodeName(disk_.path()).constData(),
                            QFile::encodeName(home.filePath(u"config"_s)).constData()),
                  0);
    }
    /// The files that can be saved while three boxes are switched.
    QSet<QByteArray> legalFiles() const
    {
        QSet<QByteArray> files;
        const std::array keys{u"dark"_s, u"pota"_s, u"dxsummit"_s};
        for (unsigned choice = 0; choice < 1U << keys.size(); ++choice) {
            SettingsTexts settings;
            for (const char* text : {"dxcluster", "port", "callsign", "password"})
                settings.insert(QLatin1String(text), QString());
            settings[u"password"_s] = u"secret"_s;
            for (const char* box : {"reconnect", "wsprnet", "skimmers", "dxsexclusive"})
                settings.insert(QLatin1String(box), u"false"_s);
            for (std::size_t key = 0; key < keys.size(); ++key)
                settings.insert(keys[key], (choice >> key & 1U) != 0 ? u"true"_s : u"false"_s);
            home.writeSettings(settings);
            files.insert(saved());
        }
        return files;
    }
    /// What clicks on the three boxes, each of which is a save, for longer than the program lives.
    std::vector<std::string> clicking() const
    {
        std::vector<std::string> command{"xdotool"};
        for (int round = 0; round < 500; ++round) {
            for (const QString& box : {u"darkCheckBox"_s, u"potaCheckBox"_s, u"dxsummitCheckBox"_s}) {
                const QRect place = placeOf(box);
                for (const std::string& word :
                     {std::string("mousemove"), std::to_string(place.left() + 8),
                      std::to_string(place.center().y()), std::string("click"), std::string("1")})
                    command.push_back(word);
            }
        }
        return command;
    }
    QString directory() const { return QFileInfo(home.settingsFile()).path(); }
    static unsigned modeOf(const QString& path)
    {
        struct stat status {
        };
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
    void expectFilesOfTheUserAlone() const
    {
        for (const QString& file : QDir(directory()).entryList(QDir::Files | QDir::Hidden))
            EXPECT_EQ(modeOf(directory() + u'/' + file), 0600U) << file.toStdString();
    }
    QByteArray saved() const
    {
        QFile file(home.settingsFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    const QTemporaryDir disk_;
};

TEST_F(KillTest, atRandomMomentsWhileBoxesAreSwitchedLeavesOneOfTheFilesThatWereSaved)
{
    const int seed =
        qEnvironmentVariableIsSet("SPOTWELL_SEED") ? qEnvironmentVariableIntValue("SPOTWELL_SEED") : 5;
    std::cout << "The seed (SPOTWELL_SEED) is " << seed << ".\n";
    std::mt19937 random(static_cast<unsigned>(seed));
    const QSet<QByteArray> legal = legalFiles();
    const std::vector<std::string> screenVariable{"DISPLAY=" + screen.display().toStdString()};
    for (int time = 0; time < (sanitized ? 6 : 20); ++time) {
        const QByteArray before = saved();
        program.reset();
        open();
        std::optional<ChildProcess> clicks(std::in_place, clicking(), screenVariable);
        if (time % 2 == 0) { // in the others it may not have come to a save yet
            ASSERT_TRUE(waitUntil([&] { return saved() != before; })) << "nothing is saved";
        }
        std::this_thread::sleep_for(milliseconds(random() % (250U * slowness)));
        program->signal(SIGKILL);
        ASSERT_TRUE(waitUntil([this] { return !program->isRunning(); }));
        clicks.reset();
        ChildProcess({"xdotool", "mouseup", "1"}, screenVariable).wait();
        EXPECT_TRUE(legal.contains(saved())) << time << ": " << saved().constData();
    }
    expectFilesOfTheUserAlone();
    program.reset();
    open();
    end();
    EXPECT_TRUE(legal.contains(saved()));
}

TEST_F(KillTest, beforeAnyStepOfASaveLeavesTheOldFileOrTheNewOne)
{
    const SettingsTexts settings{{u"callsign"_s, u"N0CALL"_s}};
    home.writeSettings(settings);
    const QByteArray oldFile = saved();
    QByteArray newFile;
    int steps = 0;
    for (bool isKilled = true; isKilled; ++steps) {
        home.writeSettings(settings);
        program.reset();
        start(QStringList{u"LD_PRELOAD=" KILLED_SAVES ""_s, u"ASAN_OPTIONS=verify_asan_link_order=0"_s,
                          u"SPOTWELL_KILLED_AT=%1"_s.arg(steps + 1)} +
              variables());
        ASSERT_TRUE(waitUntil([&] { return home.log().count("applicationDidFinishLaunching:v") > steps; }));
        isKilled = !program->end(SIGTERM);
        const QByteArray found = saved();
        if (newFile.isEmpty() && found != oldFile)
            newFile = found;
        EXPECT_EQ(found, newFile.isEmpty() ? oldFile : newFile) << "before step " << steps + 1;
        ASSERT_LT(steps, 20);
    }
    EXPECT_TRUE(newFile.startsWith("[General]\n") && newFile.endsWith("\nwsprnet=false\n"));
    std::cout << "A save has " << steps - 1 << " steps.\n";
    EXPECT_GE(steps, 5) << "to open, to write, to bring it onto the disk, to give it its name";
    expectFilesOfTheUserAlone();
}

} // namespace
} // namespace spotwell
