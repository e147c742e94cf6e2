#pragma once

#include "KivoMenuBar/DBusMenu.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <QVariantList>
#include <qqmlregistration.h>

#include <vector>

namespace tokwatch {

/// One line of the menu; a separator when it has no label.
struct MenuRow {
    Q_GADGET
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(QString shortcut MEMBER shortcut)
  public:
    QString label;
    QString shortcut; ///< "Ctrl+R"; empty without one
    friend bool operator==(const MenuRow&, const MenuRow&) = default;
};

/// A context menu that we draw ourselves. Main thread only.
class MenuView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(QVariantList rows READ rows CONSTANT)
    Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY currentChanged)
  public:
    explicit MenuView(std::vector<kivo::MenuEntry> entries);

    QVariantList rows() const; ///< of MenuRow
    /// The row that the keyboard is at; -1 for none. Never a separator.
    int current() const { return place; }
    void setCurrent(int row);
    /// To the next row in a direction, 1 or -1, around the ends and past separators.
    Q_INVOKABLE void move(int direction);
    /// Closes the menu, and then does what the row says.
    Q_INVOKABLE void choose(int row);

  signals:
    void currentChanged();
    void closeRequested();

  private:
    bool isEntry(int row) const;

    const std::vector<kivo::MenuEntry> entries;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(MenuView, int, place, -1, &MenuView::currentChanged)
};

} // namespace tokwatch
