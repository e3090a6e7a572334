// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/bus/PrivateBus.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <systemd/sd-bus.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace spotwell
{

/// A control as the accessibility tree has it.
struct AccessibleControl {
    QString name;
    QString description;
    /// What it is called: "check box".
    QString role;
    /// Bits of AtspiStateType.
    std::uint64_t states = 0;
    /// What can be done with it, first what a press does.
    QStringList actions;
    /// Its keys, as the first action has them.
    QString keys;
};

/// The numbers of states (AtspiStateType).
enum class AccessibleState : unsigned {
    checked = 4,
    editable = 7,
    enabled = 8,
    focusable = 11,
    focused = 12,
    multiLine = 17,
    sensitive = 24,
    showing = 25,
    visible = 30,
    readOnly = 43,
};

[[nodiscard]] bool has(std::uint64_t states, AccessibleState state);

/// Somebody who cannot see the window and has it read to him, by the ways of AT-SPI (freedesktop.org). All
/// that he hears is answered by the program's main thread at that moment.
///
/// Controls go by their accessible names.
class ScreenReader
{
public:
    enum class Hears { nothing, events };

    /// Is there for the programs on this bus, those that run already included.
    explicit ScreenReader(const PrivateBus& bus, Hears hears = Hears::nothing);
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
    /// All that has a name in the window, in the tree's order.
    [[nodiscard]] QList<AccessibleControl> controls();
    /// What was told of objects so far, as "EVENT DETAIL NUMBER NAME": "StateChanged focused 1 Console". The
    /// name is the object's when this was first asked.
    [[nodiscard]] QStringList events();
    /// Whether the program knows that somebody hears.
    [[nodiscard]] bool isKnownToHear() const { return toldEvents_; }

private:
    using Message = std::shared_ptr<sd_bus_message>;

    static int giveAddress(sd_bus_message* call, void* self, sd_bus_error* error);
    static int tellState(sd_bus* bus, const char* path, const char* interface, const char* property,
                         sd_bus_message* reply, void* self, sd_bus_error* error);
    static int giveEvents(sd_bus_message* call, void* self, sd_bus_error* error);
    static int leaveKey(sd_bus_message* call, void* self, sd_bus_error* error);
    static int hear(sd_bus_message* signal, void* self, sd_bus_error* error);
    static int embed(sd_bus_message* call, void* self, sd_bus_error* error);

    void serve();
    /// Calls a method of the program; absent when that fails.
    Message call(const std::string& path, const char* interface, const char* method,
                 const char* types = nullptr, int first = 0, int second = 0);
    /// The path of a control; empty when there is none.
    std::string find(const QString& control);
    /// False until it has come.
    bool findProgram();
    void forget();
    void collect(const std::string& path);
    QString property(const std::string& path, const char* name);
    AccessibleControl describe(const std::string& path);

    const std::string address_;
    std::shared_ptr<sd_bus> service_;
    std::shared_ptr<sd_bus> questions_;
    std::mutex mutex_;
    /// The program's name on the bus; empty until it has come.
    std::string program_;
    /// The program that `paths_` are of.
    std::string known_;
    std::map<std::string, std::string> paths_;
    /// In the tree's order.
    std::vector<std::string> order_;
    struct Event {
        QString words;
        std::string path;
        /// Absent until it was asked for.
        std::optional<QString> name = std::nullopt;
    };
    /// Guarded; those that were not asked for yet.
    std::vector<Event> events_;
    std::vector<Event> heard_;
    std::atomic<bool> toldEvents_ = false;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

} // namespace spotwell
