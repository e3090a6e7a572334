// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace spotwell
{

/// An HTTP server on the loopback address whose answers a test writes byte by byte. Plain sockets, a thread
/// each.
class LoopbackHttpServer
{
public:
    /// One connection, as the thread that answers sees it.
    class Connection
    {
    public:
        explicit Connection(int descriptor) : descriptor_(descriptor) {}
        /// The head of the next request; empty when the client has closed.
        std::string readHead();
        /// False when the client has gone.
        bool send(std::string_view bytes);
        /// A whole answer: status line, Content-Length, further header lines and body.
        bool answer(const std::string& status, std::string_view body, const std::string& headers = {});
        /// Ends the connection, with a reset instead of a regular end if `hard`.
        void close(bool hard = false);
        /// Waits for the client to close, at most `milliseconds`; whether it has.
        bool waitForClose(int milliseconds = -1);

    private:
        friend class LoopbackHttpServer;
        const int descriptor_;
        bool closed_ = false;
    };
    /// Answers one request; `head` is what came.
    using Handler = std::function<void(Connection& connection, const std::string& head)>;

    explicit LoopbackHttpServer(Handler handler);
    /// Takes a socket that listens already; closes it in the end.
    LoopbackHttpServer(Handler handler, int listener);
    ~LoopbackHttpServer();
    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    [[nodiscard]] QString url(const QString& path = QStringLiteral("/")) const;
    [[nodiscard]] int port() const { return port_; }
    /// The heads of all requests so far.
    [[nodiscard]] std::vector<std::string> heads() const;

private:
    void acceptAll();
    void serve(Connection& connection);

    const Handler handler_;
    const int listener_;
    const int port_;
    mutable std::mutex mutex_;
    bool ending_ = false;
    std::vector<std::string> heads_;
    std::list<Connection> connections_;
    std::list<std::thread> threads_;
    std::thread acceptor_;
};

} // namespace spotwell
