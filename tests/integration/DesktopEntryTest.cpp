// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/XReplies.h"

#include <QFileInfo>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

/// What a desktop finds the program's name and icon by: what the window says of itself and what the desktop
/// entry says of the window.
class DesktopEntryTest : public ProgramFixture
{
protected:
    DesktopEntryTest() : connection_(xcb_connect(nullptr, nullptr)) {}
    ~DesktopEntryTest() override { xcb_disconnect(connection_); }

    /// The value of a key of the desktop entry.
    static QString entry(const QString& key)
    {
        for (const QString& line : QString::fromUtf8(contentOf(QStringLiteral(DESKTOP_ENTRY))).split(u'\n')) {
            if (line.startsWith(key + u'='))
                return line.mid(key.size() + 1);
        }
        return {};
    }
    /// A property of the program's window, whose class is to be known; empty without such a window.
    QByteArray property(const char* name) const
    {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        const Owned<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root), nullptr));
        if (!tree)
            return {};
        const xcb_window_t* const children = xcb_query_tree_children(tree.get());
        for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index) {
            const auto title = propertyOf(connection_, children[index], XCB_ATOM_WM_NAME);
            const auto found = propertyOf(connection_, children[index], atomOf(connection_, name));
            if (title && found && bytesOf(*title) == "spotwell" && !bytesOf(*found).empty())
                return QByteArray(bytesOf(*found).data(), static_cast<qsizetype>(bytesOf(*found).size()));
        }
        return {};
    }

private:
    xcb_connection_t* const connection_;
};

TEST_F(DesktopEntryTest, isTheOneOfTheWindow)
{
    startConnected();
    QByteArray kind;
    ASSERT_TRUE(waitUntil([&] { return !(kind = property("WM_CLASS")).isEmpty(); }));
    // The instance's name and the class.
    const QByteArrayList names = kind.split('\0');
    ASSERT_EQ(names.size(), 3);
    EXPECT_EQ(QString::fromUtf8(names[1]), entry(u"StartupWMClass"_s));
    const QString id = QFileInfo(QStringLiteral(DESKTOP_ENTRY)).completeBaseName();
    EXPECT_EQ(entry(u"Icon"_s), id);
    EXPECT_EQ(entry(u"Exec"_s), u"spotwell"_s);
    // With its pictures, for desktops that have no such icon.
    EXPECT_FALSE(property("_NET_WM_ICON").isEmpty());
}

} // namespace
} // namespace spotwell
