// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/QuitQuestion.h"

#include <QMessageBox>
#include <QPushButton>

namespace spotwell
{

bool asksToQuit(QWidget& window)
{
    QMessageBox alert(&window);
    alert.setObjectName(QStringLiteral("quitQuestion"));
    alert.setIcon(QMessageBox::Warning);
    alert.setText(QStringLiteral("Do you want to quit spotwell ?"));
    QPushButton* const quit = alert.addButton(QStringLiteral("Quit"), QMessageBox::AcceptRole);
    QPushButton* const stay = alert.addButton(QStringLiteral("Continue"), QMessageBox::RejectRole);
    alert.setDefaultButton(quit);
    alert.setEscapeButton(stay);
    alert.exec();
    return alert.clickedButton() == quit;
}

} // namespace spotwell
