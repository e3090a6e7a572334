// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Accessibility.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QFrame>
#include <QKeySequence>

namespace spotwell
{

namespace
{

class SwitchInterface final : public QAccessibleWidget
{
public:
    explicit SwitchInterface(QAbstractButton* button)
        : QAccessibleWidget(button, QAccessible::CheckBox), button_(*button)
    {
    }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Accelerator)
            return button_.shortcut().toString(QKeySequence::NativeText);
        return QAccessibleWidget::text(kind);
    }

    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = button_.isChecked();
        state.pressed = button_.isDown();
        return state;
    }

    [[nodiscard]] QStringList actionNames() const override
    {
        const QStringList others = QAccessibleWidget::actionNames();
        return button_.isEnabled() ? QStringList(toggleAction()) + others : others;
    }

    void doAction(const QString& name) override
    {
        if (name == toggleAction())
            button_.click();
        else
            QAccessibleWidget::doAction(name);
    }

    [[nodiscard]] QStringList keyBindingsForAction(const QString& name) const override
    {
        return name == toggleAction() ? QStringList(text(QAccessible::Accelerator)) : QStringList();
    }

private:
    QAbstractButton& button_;
};

class AnnouncerInterface final : public QAccessibleObject
{
public:
    explicit AnnouncerInterface(Announcer* announcer) : QAccessibleObject(announcer), announcer_(*announcer)
    {
    }

    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Notification; }
    [[nodiscard]] QAccessible::State state() const override { return {}; }
    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? announcer_.words() : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    [[nodiscard]] QAccessibleInterface* parent() const override
    {
        return QAccessible::queryAccessibleInterface(announcer_.parent());
    }
    [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }

private:
    const Announcer& announcer_;
};

/// Asked for each class of an object, from its own to QObject.
QAccessibleInterface* makeInterface(const QString&, QObject* object)
{
    if (auto* const announcer = qobject_cast<Announcer*>(object))
        return new AnnouncerInterface(announcer);
    // Else a frame in the window is announced as a window is.
    if (object->metaObject() == &QFrame::staticMetaObject)
        return new QAccessibleWidget(qobject_cast<QWidget*>(object), QAccessible::Grouping);
    auto* const button = qobject_cast<QAbstractButton*>(object);
    return button && button->isCheckable() ? new SwitchInterface(button) : nullptr;
}

} // namespace

void installAccessibility()
{
    QAccessible::installFactory(&makeInterface);
}

Announcer::Announcer(QWidget& window) : QObject(&window) {}

void Announcer::announce(const QString& words)
{
    words_ = words;
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}

} // namespace spotwell
