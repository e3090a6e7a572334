// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

using WebModuleFaultTest = ProgramFixture;

TEST_F(WebModuleFaultTest, aProgramWithoutItsModuleSaysSoAtEachPollAndServesTheNode)
{
    SettingsTexts settings = settingsFor(node.port());
    settings.insert(u"wsprnet"_s, u"true"_s);
    settings.insert(u"pota"_s, u"true"_s);
    home.writeSettings(settings);
    // From here it has nothing beside it.
    const QString copy = home.filePath(u"spotwell"_s);
    program.emplace(home, bus.address(), QStringList{},
                    QStringList{u"sh"_s, u"-c"_s, u"cp \"$1\" \"$0\" && exec \"$0\""_s, copy});

    const QString reason = u":error:[The web module cannot be loaded: "_s + home.filePath(u"../lib"_s);
    const auto saysSo = [this, &reason](const QString& operation) {
        return waitUntil([&] {
            const QStringList all = entries();
            return std::any_of(all.begin(), all.end(), [&](const QString& entry) {
                return entry.startsWith(operation + reason) &&
                       entry.endsWith(u": cannot open shared object file: No such file or directory]");
            });
        });
    };
    EXPECT_TRUE(saysSo(u"potaTimer"_s));
    EXPECT_TRUE(saysSo(u"wsprnetTimer"_s));

    ASSERT_TRUE(node.accept());
    say("login: ");
    EXPECT_TRUE(hears("N0CALL\n"));
    end();
}

} // namespace
} // namespace spotwell
