// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace spotwell
{

/// A network of the program's own, with its own names and its own authority for certificates. Whatever host
/// the program asks for is at one address, and the servers there are the test's.
class PrivateNetwork
{
public:
    /// Where a node is.
    static constexpr std::uint16_t nodePort = 7300;
    /// The listening sockets at that address; they are the receiver's to close.
    struct Listeners {
        int http;
        int https;
        /// Of nodePort.
        int node;
    };

    /// Why this machine does not permit such networks; absent when it does.
    [[nodiscard]] static std::optional<QString> refusal();

    /// `directory`, which is made, keeps the network's files. `hosts` are the names that can be resolved.
    /// Throws when that fails.
    PrivateNetwork(const QString& directory, const QStringList& hosts);
    ~PrivateNetwork();
    PrivateNetwork(const PrivateNetwork&) = delete;
    PrivateNetwork& operator=(const PrivateNetwork&) = delete;

    /// From now on these are the names that can be resolved.
    void know(const QStringList& hosts) const;
    /// What has to stand before the command that is to be on this network; for one command.
    [[nodiscard]] QStringList launcher() const;
    /// Waits for the command, which begins when this returns; throws when it does not come. Nobody listens
    /// for web services then unless they are `served`.
    [[nodiscard]] Listeners takeListeners(bool served = true) const;

private:
    const QString directory_;
    int receiver_ = -1;
};

} // namespace spotwell
