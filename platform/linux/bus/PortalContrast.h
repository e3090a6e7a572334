// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/DesktopContrast.h"
#include "platform/Queues.h"
#include "platform/linux/WakeUp.h"
#include "platform/linux/bus/BusConnection.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace spotwell
{

/// Asks the desktop's settings portal over the session bus (org.freedesktop.portal.Settings,
/// freedesktop.org): for the contrast that all desktops can tell, and for GNOME's own switch, which older
/// portals have alone. A portal that does not run is not started.
class PortalContrast final : public DesktopContrast
{
public:
    /// `limit` is how long the portal may take.
    PortalContrast(SessionBus& bus, MainQueue& mainQueue, std::unique_ptr<SerialQueue> worker,
                   std::chrono::milliseconds limit = std::chrono::seconds{2});
    ~PortalContrast() override;
    PortalContrast(const PortalContrast&) = delete;
    PortalContrast& operator=(const PortalContrast&) = delete;

    void ask(std::function<void(bool high)> answer) override;

private:
    void read(const std::function<void(bool high)>& answer);

    SessionBus& bus_;
    MainQueue& mainQueue_;
    const std::chrono::milliseconds limit_;
    WakeUp stopping_;
    std::atomic<bool> asking_ = false;
    std::unique_ptr<SerialQueue> worker_;
};

} // namespace spotwell
