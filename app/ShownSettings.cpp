// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/ShownSettings.h"

#include "app/MainWindow.h"

#include <QLineEdit>

namespace spotwell
{

namespace
{

/// Of a text that is too long for its field the beginning shows.
void show(QLineEdit& field, const std::optional<QString>& text)
{
    field.setText(text.value_or(QString()));
    field.setCursorPosition(0);
}

} // namespace

void showSettings(const Settings& settings, const MainWindow& window)
{
    show(*window.dxcluster, settings.dxcluster);
    show(*window.password, settings.password);
    show(*window.port, settings.port);
    show(*window.callsign, settings.callsign);
    window.reconnectCheckBox->setChecked(settings.reconnect);
    window.wsprnetCheckBox->setChecked(settings.wsprnet);
    window.dxsummitCheckBox->setChecked(settings.dxsummit);
    window.potaCheckBox->setChecked(settings.pota);
    window.skimmersCheckBox->setChecked(settings.skimmers);
    window.dxsExclusiveCheckBox->setChecked(settings.dxsexclusive);
    window.dxsExclusiveCheckBox->setEnabled(settings.dxsummit);
    window.skimmersCheckBox->setEnabled(settings.pota);
    window.darkCheckBox->setChecked(settings.dark);
}

Settings shownSettings(const MainWindow& window)
{
    Settings settings;
    settings.dxcluster = window.dxcluster->text();
    settings.password = window.password->text();
    settings.port = window.port->text();
    settings.callsign = window.callsign->text();
    settings.reconnect = window.reconnectCheckBox->isChecked();
    settings.wsprnet = window.wsprnetCheckBox->isChecked();
    settings.dxsummit = window.dxsummitCheckBox->isChecked();
    settings.pota = window.potaCheckBox->isChecked();
    settings.skimmers = window.skimmersCheckBox->isChecked();
    settings.dxsexclusive = window.dxsExclusiveCheckBox->isChecked();
    settings.dark = window.darkCheckBox->isChecked();
    return settings;
}

} // namespace spotwell
