#pragma once

#include "Tokwatch/Display/StatusTitle.h"
#include "TokwatchCore/Support/Date.h"

#include <QColor>
#include <QImage>
#include <QObject>
#include <QQuickPaintedItem>
#include <QString>
#include <qqmlregistration.h>

namespace tokwatch {

class Preferences;

/// What the status item would show, for pictures of it.
struct TitlePreview {
    Q_GADGET
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(QString provider MEMBER provider)
    Q_PROPERTY(int severity MEMBER severity)
    Q_PROPERTY(int percent MEMBER percent)
    Q_PROPERTY(bool isSample MEMBER isSample)
    Q_PROPERTY(QString missing MEMBER missing)
    Q_PROPERTY(QString spoken MEMBER spoken)
  public:
    QString text;          ///< "42% · 3h 5m"; empty with the icon alone
    QString provider;      ///< a raw value; empty for the application's own mark
    int severity = 0;      ///< a Severity
    int percent = -1;      ///< the number in the text, negative without one
    bool isSample = false; ///< no limit is known yet
    QString missing;       ///< why the chosen provider has no number; empty when it has one
    QString spoken;
    friend bool operator==(const TitlePreview&, const TitlePreview&) = default;
};

/// The item by the present settings and limits; while no enabled provider has any, with made-up
/// limits, so that the settings show what they do.
TitlePreview titlePreview(const Preferences& preferences, const LimitsByProvider& limits, Date now);

/// What a light or a dark panel looks like.
QColor panelColor(bool isDark);

/// A picture of the status item, drawn as the item itself is: "StatusPreview" in QML. It is as
/// large as what it shows.
class StatusPreview : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tokwatch::TitlePreview title MEMBER shown NOTIFY titleChanged)
    Q_PROPERTY(bool onDarkPanel MEMBER dark NOTIFY panelChanged)
    Q_PROPERTY(bool isSquare MEMBER square NOTIFY shapeChanged)
    Q_PROPERTY(QColor panelColor READ panelColor NOTIFY panelChanged)
  public:
    explicit StatusPreview(QQuickItem* parent = nullptr);

    QColor panelColor() const { return tokwatch::panelColor(dark); }

    void paint(QPainter* painter) override;

  signals:
    void titleChanged();
    void panelChanged();
    void shapeChanged();

  protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void componentComplete() override;

  private:
    void redraw();

    TitlePreview shown;
    bool dark = false;
    bool square = false; ///< as hosts show it that give every item a square
    QImage picture;
};

} // namespace tokwatch
