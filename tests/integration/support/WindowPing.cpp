// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/WindowPing.h"

#include "tests/integration/support/XReplies.h"

#include <QFile>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <string_view>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

} // namespace

struct WindowPing::Atoms {
    explicit Atoms(xcb_connection_t* connection)
        : protocols(atomOf(connection, "WM_PROTOCOLS")), ping(atomOf(connection, "_NET_WM_PING"))
    {
    }
    xcb_atom_t protocols;
    xcb_atom_t ping;
};

WindowPing::WindowPing(const QString& display) : display_(display)
{
    connection_ = xcb_connect(display.toLatin1().constData(), nullptr);
    if (xcb_connection_has_error(connection_) != 0) {
        xcb_disconnect(connection_);
        throw std::runtime_error("no screen at " + display.toStdString());
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    // Answers are sent to the root window, for the window manager and for those who select this.
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &events);
    thread_ = std::thread([this] { work(); });
}

WindowPing::~WindowPing()
{
    ended_ = true;
    thread_.join();
    xcb_disconnect(connection_);
    report();
}

bool WindowPing::answers(std::chrono::milliseconds deadline) const
{
    const std::uint32_t before = [this] {
        const std::lock_guard guard(mutex_);
        return asked_;
    }();
    return waitUntil(
        [this, before] {
            const std::lock_guard guard(mutex_);
            return answered_ > before;
        },
        deadline);
}

WindowPing::Duration WindowPing::longest() const
{
    const std::lock_guard guard(mutex_);
    const Duration missing = waiting_ ? std::chrono::steady_clock::now() - askedAt_ : Duration{};
    return std::max(longest_, missing);
}

void WindowPing::forget()
{
    const std::lock_guard guard(mutex_);
    longest_ = {};
}

void WindowPing::work()
{
    constexpr auto pause = 10ms;
    const Atoms atoms(connection_);
    xcb_window_t window = XCB_WINDOW_NONE;
    while (!ended_ && xcb_connection_has_error(connection_) == 0) {
        if (window == XCB_WINDOW_NONE)
            window = findWindow(root_, atoms);
        if (window != XCB_WINDOW_NONE && !isWaiting())
            ask(window, atoms);
        pollfd socket{xcb_get_file_descriptor(connection_), POLLIN, 0};
        (void)::poll(&socket, 1, static_cast<int>(pause.count()));
        if (!takeEvents(atoms))
            window = XCB_WINDOW_NONE;
        if (!isWaiting())
            std::this_thread::sleep_for(pause);
    }
}

bool WindowPing::isWaiting() const
{
    const std::lock_guard guard(mutex_);
    return waiting_;
}

std::uint32_t WindowPing::findWindow(std::uint32_t below, const Atoms& atoms) const
{
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection_, xcb_query_tree(connection_, below), nullptr));
    if (!tree)
        return XCB_WINDOW_NONE;
    const xcb_window_t* const children = xcb_query_tree_children(tree.get());
    for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index) {
        const xcb_window_t child = children[index];
        const auto kind = propertyOf(connection_, child, XCB_ATOM_WM_CLASS);
        const auto protocols = propertyOf(connection_, child, atoms.protocols);
        const Owned<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
            connection_, xcb_get_window_attributes(connection_, child), nullptr));
        // The instance's name comes first, with its terminating zero.
        if (kind && protocols && attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
            bytesOf(*kind).substr(0, 9) == std::string_view("spotwell", 9)) {
            const std::string_view list = bytesOf(*protocols);
            const std::string_view wanted(reinterpret_cast<const char*>(&atoms.ping), sizeof atoms.ping);
            for (std::size_t at = 0; at + wanted.size() <= list.size(); at += wanted.size()) {
                if (list.substr(at, wanted.size()) != wanted)
                    continue;
                // To be told of its end.
                const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
                xcb_change_window_attributes(connection_, child, XCB_CW_EVENT_MASK, &events);
                return child;
            }
        }
        if (const xcb_window_t found = findWindow(child, atoms))
            return found;
    }
    return XCB_WINDOW_NONE;
}

void WindowPing::ask(std::uint32_t window, const Atoms& atoms)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atoms.protocols;
    message.data.data32[0] = atoms.ping;
    message.data.data32[2] = window;
    {
        const std::lock_guard guard(mutex_);
        // Stands where the time of the event is; the answer repeats it.
        message.data.data32[1] = ++asked_;
        waiting_ = true;
        askedAt_ = std::chrono::steady_clock::now();
    }
    xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
}

/// Whether the window is still there.
bool WindowPing::takeEvents(const Atoms& atoms)
{
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        const std::lock_guard guard(mutex_);
        const auto kind = event->response_type & 0x7f;
        if (kind == 0 || kind == XCB_DESTROY_NOTIFY) {
            waiting_ = false;
            return false;
        }
        if (kind != XCB_CLIENT_MESSAGE)
            continue;
        xcb_client_message_event_t message{};
        std::memcpy(&message, event.get(), sizeof message);
        if (!waiting_ || message.type != atoms.protocols || message.data.data32[0] != atoms.ping ||
            message.data.data32[1] != asked_)
            continue;
        waiting_ = false;
        answered_ = asked_;
        longest_ = std::max(longest_, std::chrono::steady_clock::now() - askedAt_);
    }
    return true;
}

void WindowPing::report() const
{
    const QString path = qEnvironmentVariable("SPOTWELL_FIGURES");
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    if (path.isEmpty() || test == nullptr)
        return;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    // A question that the program's end has left open says nothing of its window.
    const double milliseconds = std::chrono::duration<double, std::milli>(longest_).count();
    file.write(QStringLiteral("%1.%2\t%3\t%4\n")
                   .arg(QString::fromLatin1(test->test_suite_name()), QString::fromLatin1(test->name()))
                   .arg(milliseconds, 0, 'f', 1)
                   .arg(answered_)
                   .toLatin1());
}

} // namespace spotwell
