// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/DesktopFileViewer.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>

#include <system_error>
#include <utility>

namespace spotwell
{

namespace
{

BusMessage showItems(sd_bus* bus, const QString& file)
{
    const QByteArray address = QUrl::fromLocalFile(file).toEncoded(QUrl::FullyEncoded);
    sd_bus_message* created = nullptr;
    sd_bus_message_new_method_call(bus, &created, "org.freedesktop.FileManager1",
                                   "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1",
                                   "ShowItems");
    if (created != nullptr)
        sd_bus_message_append(created, "ass", 1, address.constData(), "");
    return BusMessage(created);
}

} // namespace

DesktopFileViewer::DesktopFileViewer(SessionBus& bus, Log& log, FolderOpener openFolder,
                                     std::chrono::milliseconds limit)
    : bus_(bus), log_(log), openFolder_(std::move(openFolder)), limit_(limit)
{
}

DesktopFileViewer::~DesktopFileViewer()
{
    stop();
}

void DesktopFileViewer::selectFile(const QString& file, const QString& folder)
{
    stop();
    stopping_.clear();
    try {
        worker_ = std::thread([this, file, folder] { show(file, folder); });
    } catch (const std::system_error& error) {
        openFolderInstead(QString::fromLocal8Bit(error.what()), folder);
    }
}

void DesktopFileViewer::stop()
{
    stopping_.wake();
    if (worker_.joinable())
        worker_.join();
}

void DesktopFileViewer::show(const QString& file, const QString& folder)
{
    BusConnection connection(bus_, "file manager");
    BusReply reply{BusReply::End::lost, {}, {}};
    if (connection.open())
        reply = connection.call(showItems(connection.get(), file).get(), BusConnection::Clock::now() + limit_,
                                &stopping_);
    if (reply.end == BusReply::End::answered || reply.end == BusReply::End::woken)
        return;
    const bool answered = reply.end == BusReply::End::failed;
    openFolderInstead(answered ? reply.error : QStringLiteral("no answer"), folder);
}

void DesktopFileViewer::openFolderInstead(const QString& reason, const QString& folder)
{
    log_.line(
        QStringLiteral("selectFile: no file manager shows the file (%1), opening the folder").arg(reason));
    openFolder_(folder);
}

void openFolderOnDesktop(const QString& folder)
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [folder] { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); },
        Qt::QueuedConnection);
}

} // namespace spotwell
