#include "tools/spotwell-simulator/NodeServer.h"

#include <QMetaObject>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::simulator
{

NodeServer::NodeServer(Scenario scenario, const Clock& clock, const Report& report,
                       std::function<void()> sessionOver, NodeLimits limits)
    : scenario_(std::move(scenario)),
      clock_(clock),
      report_(report),
      sessionOver_(std::move(sessionOver)),
      limits_(limits)
{
}

NodeServer::~NodeServer()
{
    accepting_.reset();
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

QString NodeServer::listen(std::uint16_t port)
{
    descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int yes = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* anyAddress = reinterpret_cast<sockaddr*>(&address);
    if (descriptor_ < 0 || setsockopt(descriptor_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
        bind(descriptor_, anyAddress, length) != 0 || ::listen(descriptor_, SOMAXCONN) != 0 ||
        getsockname(descriptor_, anyAddress, &length) != 0)
        return QStringLiteral("127.0.0.1:%1: %2").arg(port).arg(QString::fromLocal8Bit(std::strerror(errno)));
    port_ = ntohs(address.sin_port);
    accepting_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(accepting_.get(), &QSocketNotifier::activated, accepting_.get(), [this] { accept(); });
    report_.add(Event{"listening", Moment::clock::now()}
                    .with("scenario", scenario_.name)
                    .with("port", qint64{port_}));
    return {};
}

void NodeServer::accept()
{
    while (sessions_.size() < mostConnections) {
        const int descriptor = accept4(descriptor_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0)
            return;
        // A session ends deep inside its own calls, so it is cleared away later.
        auto over = [this] {
            QMetaObject::invokeMethod(
                accepting_.get(), [this] { clear(); }, Qt::QueuedConnection);
        };
        sessions_.emplace_back(descriptor, ++connections_,
                               NodeSession::Setting{scenario_, clock_, report_, limits_}, over);
        sessions_.back().start();
    }
    accepting_->setEnabled(false);
}

void NodeServer::clear()
{
    for (auto session = sessions_.begin(); session != sessions_.end();) {
        if (!session->isOver()) {
            ++session;
            continue;
        }
        ++played_;
        passed_ += session->passedChecks();
        failed_ += session->failedChecks();
        session = sessions_.erase(session);
        accepting_->setEnabled(true);
        sessionOver_();
    }
}

bool NodeServer::allPlayed() const
{
    return static_cast<std::size_t>(played_) >= scenario_.sessions.size();
}

void NodeServer::stop()
{
    if (descriptor_ < 0)
        return;
    for (NodeSession& session : sessions_)
        session.abandon();
    clear();
    accepting_.reset();
    ::close(std::exchange(descriptor_, -1));
    report_.add(Event{"done", Moment::clock::now()}
                    .with("scenario", scenario_.name)
                    .with("connections", qint64{connections_})
                    .with("passed", qint64{passed_})
                    .with("failed", qint64{failed_}));
}

} // namespace spotwell::simulator
