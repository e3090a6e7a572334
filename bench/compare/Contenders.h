// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/PrivateDesktop.h"
#include "bench/compare/Hands.h"

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <vector>

namespace spotwell::bench
{

/// A program that is compared, and how one makes it show what a node sends.
struct Contender {
    QString name;
    /// The title of its window, a regular expression.
    QString title;
    /// Puts into the desktop's home what it finds there at its start. May be empty.
    std::function<void(const PrivateDesktop& desktop, std::uint16_t port)> prepare;
    /// The program and its arguments.
    std::function<QStringList(std::uint16_t port)> command;
    /// What a user does until the program connects, and then until it gives its callsign. May be empty.
    std::function<void(const Hands& hands)> connect;
    std::function<void(const Hands& hands)> giveCallsign;
    /// Whether it connects at all: the bare window does not.
    bool connects = true;
    /// Whether it hands the lines to a logger.
    bool delivers = false;
};

/// spotwell, the bare window (both in the folder `programs`), xdx, KLog and nc in xterm. `klogHome` is a home
/// that makeKlogHome() has made.
[[nodiscard]] std::vector<Contender> contenders(const QString& programs, const QString& klogHome);

/// What the programs find in their environment.
[[nodiscard]] QProcessEnvironment environmentOn(const PrivateDesktop& desktop);

/// Lets KLog set up its database and its list of countries in the empty directory `home`: half a minute.
/// Throws std::runtime_error when it does not.
void makeKlogHome(const QString& home);

/// The windows' common size, which is the one KLog begins with.
inline constexpr int windowWidth = 1110;
inline constexpr int windowHeight = 682;

} // namespace spotwell::bench
