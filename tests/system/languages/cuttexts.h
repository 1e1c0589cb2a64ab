// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QStringList>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QTabBar>
#include <QTextDocument>
#include <QToolButton>

/// Finds texts in a shown window for which there is less room than they need.
class CutTexts
{
public:
    /// One line for each text that is cut off in \a window or in a widget that it shows.
    static QStringList in(QWidget *window)
    {
        CutTexts finder;
        const QList<QWidget *> widgets = window->findChildren<QWidget *>();
        for (QWidget *widget : widgets) {
            if (widget->isVisible())
                finder.look(widget);
        }
        return finder.m_found;
    }

private:
    void look(QWidget *widget)
    {
        if (auto *label = qobject_cast<QLabel *>(widget))
            lookAtLabel(label);
        else if (auto *button = qobject_cast<QAbstractButton *>(widget))
            lookAtButton(button);
        else if (auto *box = qobject_cast<QGroupBox *>(widget))
            need(box, box->title(), textSize(box, box->title()), box->size());
        else if (auto *tabs = qobject_cast<QTabBar *>(widget))
            lookAtTabs(tabs);
        else if (auto *header = qobject_cast<QHeaderView *>(widget))
            lookAtHeader(header);
        else if (auto *bar = qobject_cast<QMenuBar *>(widget))
            lookAtMenuBar(bar);
        else if (auto *menu = qobject_cast<QMenu *>(widget))
            need(menu, menu->title(), menu->sizeHint(), menu->size());
        else if (auto *choice = qobject_cast<QComboBox *>(widget))
            lookAtChoice(choice);
        else if (auto *field = qobject_cast<QLineEdit *>(widget))
            lookAtField(field);
    }

    static QSize textSize(const QWidget *widget, const QString &text)
    {
        return widget->fontMetrics().size(Qt::TextShowMnemonic, text);
    }

    void need(const QWidget *widget, const QString &text, const QSize &needed, const QSize &room)
    {
        if (text.isEmpty())
            return;
        if (needed.width() > room.width() || needed.height() > room.height())
            report(widget, text,
                   QStringLiteral("needs %1x%2, has %3x%4")
                       .arg(needed.width())
                       .arg(needed.height())
                       .arg(room.width())
                       .arg(room.height()));
        else
            stayInside(widget, text);
    }

    /// Something further out may show only a part of \a widget. What scrolls into view is not cut off.
    void stayInside(const QWidget *widget, const QString &text)
    {
        bool across = true, down = true;
        for (const QWidget *outer = widget->parentWidget(); outer && !widget->isWindow(); outer = outer->parentWidget()) {
            if (auto *area = qobject_cast<const QAbstractScrollArea *>(outer->parentWidget());
                area && area->viewport() == outer) {
                across = across && area->horizontalScrollBarPolicy() == Qt::ScrollBarAlwaysOff;
                down = down && area->verticalScrollBarPolicy() == Qt::ScrollBarAlwaysOff;
            }
            const QRect place(widget->mapTo(outer, QPoint()), widget->size());
            if ((across && (place.left() < 0 || place.right() >= outer->width()))
                || (down && (place.top() < 0 || place.bottom() >= outer->height())))
                return report(widget, text, QStringLiteral("reaches out of %1").arg(nameOf(outer)));
            if (outer->isWindow())
                return;
        }
    }

    void lookAtLabel(const QLabel *label)
    {
        if (label->text().isEmpty() || (label->pixmap(Qt::ReturnByValue).isNull() == false))
            return;
        const QSize room = label->contentsRect().size();
        if (label->wordWrap())
            need(label, label->text(), QSize(0, label->heightForWidth(label->width())), label->size());
        else if (label->textFormat() == Qt::PlainText || !Qt::mightBeRichText(label->text()))
            need(label, label->text(), textSize(label, label->text()), room);
        else
            need(label, label->text(), label->sizeHint(), label->size());
    }

    void lookAtButton(const QAbstractButton *button)
    {
        // Those of a tool bar and of a tab bar show pictures.
        if (!qobject_cast<const QToolButton *>(button))
            need(button, button->text(), button->sizeHint(), button->size());
    }

    void lookAtTabs(const QTabBar *tabs)
    {
        for (int i = 0; i < tabs->count(); ++i) {
            const QRect place = tabs->tabRect(i);
            need(tabs, tabs->tabText(i), textSize(tabs, tabs->tabText(i)), place.size());
            if (place.right() >= tabs->width())
                report(tabs, tabs->tabText(i), QStringLiteral("the tab lies outside of the bar"));
        }
    }

    void lookAtHeader(const QHeaderView *header)
    {
        const int margin = header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
        const int arrow = header->style()->pixelMetric(QStyle::PM_HeaderMarkSize, nullptr, header);
        for (int i = 0; i < header->count(); ++i) {
            if (header->isSectionHidden(i) || header->orientation() == Qt::Vertical)
                continue;
            const QString text = header->model()->headerData(i, header->orientation()).toString();
            const bool sorted = header->isSortIndicatorShown() && header->sortIndicatorSection() == i;
            const QSize room(header->sectionSize(i) - 2 * margin - (sorted ? arrow : 0), header->height());
            const QRect needed =
                header->fontMetrics().boundingRect(QRect(0, 0, room.width(), 1000), int(header->defaultAlignment()), text);
            if (needed.width() > room.width() || needed.height() > room.height())
                report(header, text,
                       QStringLiteral("needs %1x%2, has %3x%4")
                           .arg(needed.width())
                           .arg(needed.height())
                           .arg(room.width())
                           .arg(room.height()));
        }
    }

    void lookAtMenuBar(QMenuBar *bar)
    {
        const QList<QAction *> actions = bar->actions();
        for (QAction *action : actions) {
            const QRect place = bar->actionGeometry(action);
            if (action->text().isEmpty())
                continue;
            if (!bar->rect().contains(place) || textSize(bar, action->text()).width() > place.width())
                report(bar, action->text(), QStringLiteral("has no room in the menu bar"));
        }
    }

    void lookAtChoice(const QComboBox *choice)
    {
        QStyleOptionComboBox option;
        option.initFrom(choice);
        const QRect room = choice->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, choice);
        for (int i = 0; i < choice->count(); ++i)
            need(choice, choice->itemText(i), QSize(textSize(choice, choice->itemText(i)).width(), 0), room.size());
    }

    void lookAtField(const QLineEdit *field)
    {
        constexpr int margin = 2; // that a line edit keeps left and right of its text
        const QSize room = field->contentsRect().size() - QSize(2 * margin, 0);
        need(field, field->text(), QSize(field->fontMetrics().horizontalAdvance(field->text()), 0), room);
    }

    static QString nameOf(const QWidget *widget)
    {
        return QStringLiteral("%1 \"%2\"").arg(QLatin1String(widget->metaObject()->className()), widget->objectName());
    }

    void report(const QWidget *widget, const QString &text, const QString &why)
    {
        m_found << QStringLiteral("%1: \"%2\" %3").arg(nameOf(widget), text, why);
    }

    QStringList m_found;
};
