// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/platform/bus/PrivateBus.h"

#include <QString>
#include <QStringList>
#include <systemd/sd-bus.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace spotwell
{

/// Somebody who cannot see the window and has it read to him, by the ways of AT-SPI (freedesktop.org). All
/// that he hears is answered by the program's main thread at that moment.
///
/// Controls go by their accessible names.
class ScreenReader
{
public:
    /// Is there for the programs on this bus, those that run already included.
    explicit ScreenReader(const PrivateBus& bus);
    ~ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    /// The console's lines, the oldest first; empty when the program does not answer.
    [[nodiscard]] QStringList console();
    /// Whether a toggle or a box is on; absent when the program does not answer.
    [[nodiscard]] std::optional<bool> isOn(const QString& control);
    /// What a field of the window holds.
    [[nodiscard]] QString text(const QString& control);
    /// Presses a toggle or a box; false when that fails.
    [[nodiscard]] bool press(const QString& control);

private:
    using Message = std::shared_ptr<sd_bus_message>;

    static int giveAddress(sd_bus_message* call, void* self, sd_bus_error* error);
    static int tellState(sd_bus* bus, const char* path, const char* interface, const char* property,
                         sd_bus_message* reply, void* self, sd_bus_error* error);
    static int embed(sd_bus_message* call, void* self, sd_bus_error* error);

    void serve();
    /// Calls a method of the program; absent when that fails.
    Message call(const std::string& path, const char* interface, const char* method,
                 const char* types = nullptr, int first = 0, int second = 0);
    /// The path of a control; empty when there is none.
    std::string find(const QString& control);
    void collect(const std::string& path);

    const std::string address_;
    std::shared_ptr<sd_bus> service_;
    std::shared_ptr<sd_bus> questions_;
    std::mutex mutex_;
    /// The program's name on the bus; empty until it has come.
    std::string program_;
    /// The program that `paths_` are of.
    std::string known_;
    std::map<std::string, std::string> paths_;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

} // namespace spotwell
